#include "FieldChoice.h"

#include "Report.h"
#include "Text.h"

#include <algorithm>
#include <set>

namespace veltrane
{

void checkRequestedFields(const std::vector<std::string>& names, std::string_view option)
{
    std::set<std::string> seen;
    for (const std::string& name : names)
    {
        if (!seen.insert(name).second)
        {
            throw InvalidOption(text(option, " ", name, " is given twice"));
        }
    }
}

std::vector<std::string> chooseFields(const MeshFile& file, const std::vector<std::string>& requested,
                                      std::string_view done)
{
    std::vector<std::string> available;
    for (const PointArray& array : file.pointArrays())
    {
        if (!array.isFloatingPoint)
        {
            continue;
        }
        available.push_back(array.name);
        if (array.componentCount > maxComponentCount && requested.empty())
        {
            available.pop_back();
            warn(text("left out point-data array '", array.name, "' of '", file.path().string(), "': it has ",
                      array.componentCount, " components, more than the ", maxComponentCount, " that can be ", done));
        }
    }
    if (available.empty())
    {
        throw BadFile(text("'", file.path().string(), "' has no floating-point point data to be ", done));
    }
    for (const std::string& name : requested)
    {
        if (std::ranges::find(available, name) == available.end())
        {
            throw BadFile(text("'", file.path().string(), "' has no floating-point point-data array '", name,
                               "', only ", quotedNames(available)));
        }
    }
    return requested.empty() ? available : requested;
}

} // namespace veltrane
