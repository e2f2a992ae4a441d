// ParaView's collections of files (.pvd), one file per step.
#include "Collection.h"
#include "DataSetReader.h"
#include "FormatList.h"
#include "ReadingGuard.h"
#include "Text.h"
#include "VtkMessages.h"

#include <vtkNew.h>
#include <vtkXMLDataElement.h>
#include <vtkXMLUtilities.h>

#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <set>

namespace veltrane
{
namespace
{

constexpr std::array<std::string_view, 1> endings{".pvd"};
constexpr const char* entryName = "DataSet";

std::vector<Step> readCollection(const std::filesystem::path& path)
{
    const VtkMessages messages;
    const GuardedObject<vtkXMLDataElement> root(
        vtkSmartPointer<vtkXMLDataElement>::Take(
            guarded(path, [&] { return vtkXMLUtilities::ReadElementFromFile(path.c_str()); })),
        path);
    vtkXMLDataElement* collection = root.get() == nullptr ? nullptr : root->FindNestedElementWithName("Collection");
    if (collection == nullptr)
    {
        throw BadFile(text("cannot read ", quoted(path), ": ",
                           messages.errors().empty() ? "it is not a collection of files" : messages.errors().front()));
    }
    std::vector<Step> steps;
    std::set<double> times;
    for (int i = 0; i < collection->GetNumberOfNestedElements(); ++i)
    {
        vtkXMLDataElement& entry = *collection->GetNestedElement(i);
        const char* file = entry.GetAttribute("file");
        double time = static_cast<double>(i);
        if (file == nullptr || std::string_view(entry.GetName()) != entryName)
        {
            throw BadFile(text("cannot read ", quoted(path), ": entry ", i + 1, " names no file"));
        }
        const char* timeText = entry.GetAttribute("timestep");
        if (timeText != nullptr && (entry.GetScalarAttribute("timestep", time) == 0 || !std::isfinite(time)))
        {
            throw BadFile(
                text("cannot read ", quoted(path), ": the time '", timeText, "' of entry ", i + 1, " is not a number"));
        }
        if (!times.insert(time).second)
        {
            throw BadFile(text(quoted(path), " has several files of the time ", time,
                               "; a .pvtu file can name them as the pieces of one"));
        }
        steps.push_back({path.parent_path() / file, std::nullopt, time});
    }
    return steps;
}

} // namespace

constinit const FileFormat formats::collection{.name = "ParaView collection",
                                               .endings = endings,
                                               .reads = {.steps = true},
                                               .writes = {.steps = true},
                                               .steps = readCollection};

void writeCollection(const std::vector<Step>& steps, const std::filesystem::path& path)
{
    vtkNew<vtkXMLDataElement> root;
    root->SetName("VTKFile");
    root->SetAttribute("type", "Collection");
    root->SetAttribute("version", "0.1");
    vtkNew<vtkXMLDataElement> collection;
    collection->SetName("Collection");
    for (const Step& step : steps)
    {
        vtkNew<vtkXMLDataElement> entry;
        entry->SetName(entryName);
        entry->SetDoubleAttribute("timestep", step.time);
        entry->SetAttribute("part", "0");
        entry->SetAttribute("file", step.file.c_str());
        collection->AddNestedElement(entry);
    }
    root->AddNestedElement(collection);
    std::ofstream stream(path);
    vtkIndent indent;
    vtkXMLUtilities::FlattenElement(root, stream, &indent);
    stream.close();
    if (!stream)
    {
        throw CannotWrite(std::strerror(errno));
    }
}

} // namespace veltrane
