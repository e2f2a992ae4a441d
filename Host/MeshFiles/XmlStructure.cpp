#include "XmlStructure.h"

#include "AppendedData.h"
#include "DataSetReader.h"
#include "Text.h"

#include <vtkXMLDataElement.h>

#include <climits>
#include <cstdlib>
#include <set>
#include <string_view>

namespace veltrane
{
namespace
{

void checkCountAttribute(vtkXMLDataElement& element, const char* attribute, long long smallest,
                         const std::filesystem::path& path)
{
    const char* value = element.GetAttribute(attribute);
    const long long count = value == nullptr ? smallest : std::strtoll(value, nullptr, 10);
    if (count < smallest || count > INT_MAX)
    {
        throw BadFile(text("cannot read ", quoted(path), ": it has a ", element.GetName(), " with ", attribute, " \"",
                           value, "\"",
                           count > INT_MAX ? text(", more than the ", INT_MAX, " that can be counted") : ""));
    }
}

void checkStructure(vtkXMLDataElement& root, int depth, const std::filesystem::path& path)
{
    constexpr int mostDepth = 64; // VTK's own files need some
    if (depth > mostDepth)
    {
        throw BadFile(text("cannot read ", quoted(path), ": its elements are nested more than ", mostDepth, " deep"));
    }
    const std::string_view section = root.GetName();
    std::set<std::string_view> names;
    for (int i = 0; i < root.GetNumberOfNestedElements(); ++i)
    {
        vtkXMLDataElement& child = *root.GetNestedElement(i);
        if (const char* piece = child.GetAttribute("Source"))
        {
            checkReadable(path.parent_path() / piece); // VTK would not say which one it is
            checkAppendedData(path.parent_path() / piece);
        }
        checkCountAttribute(child, "NumberOfPoints", 0, path);
        checkCountAttribute(child, "NumberOfCells", 0, path);
        checkCountAttribute(child, "NumberOfComponents", 1, path);
        if (section == "PointData" || section == "CellData")
        {
            const std::string_view kind = section == "PointData" ? "point" : "cell";
            const char* name = child.GetAttribute("Name");
            if (name == nullptr)
            {
                throw BadFile(text(quoted(path), " has a ", kind, "-data array without a name"));
            }
            if (!names.insert(name).second)
            {
                throwTwoArrays(path, kind, name);
            }
        }
        checkStructure(child, depth + 1, path);
    }
}

} // namespace

void checkStructure(vtkXMLDataElement& root, const std::filesystem::path& path)
{
    checkStructure(root, 0, path);
}

} // namespace veltrane
