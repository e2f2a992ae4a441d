#include "FieldChoice.h"

#include "NearPoints.h"
#include "Report.h"
#include "Text.h"

#include <algorithm>
#include <set>

namespace veltrane
{
namespace
{

bool contains(const std::vector<std::string>& names, const std::string& name)
{
    return std::ranges::find(names, name) != names.end();
}

/// What a transfer has written about itself is not transferred unless it is asked for.
bool isOfATransfer(const std::string& name)
{
    return name == distanceFieldName || name == gaussPointMaskName;
}

bool hasFloatingPointData(const MeshFile& file)
{
    return std::ranges::any_of(file.pointArrays(), [](const PointArray& array)
                               { return array.isFloatingPoint && !isOfATransfer(array.name); });
}

/// Point data of the same name goes before.
bool isGaussField(const MeshFile& file, const std::string& name)
{
    return file.hasGaussField(name) && !file.hasArray(ArrayPlace::points, name);
}

/// Point data need not be there if there are Gauss-point fields.
void addAll(const MeshFile& file, std::string_view done, std::vector<ChosenField>& chosen)
{
    if (hasFloatingPointData(file) || file.gaussFields().empty())
    {
        for (const std::string& name : chooseFields(file, {}, done))
        {
            chosen.push_back({name, name});
        }
    }
    for (const std::string& name : file.gaussFields())
    {
        if (isGaussField(file, name) && !isOfATransfer(name))
        {
            chosen.push_back({name, name});
        }
    }
}

/// Names may have equal signs themselves: NAME ends at the first one before which there is the name of an array.
ChosenField parseRequest(const MeshFile& file, const std::string& request)
{
    const auto isName = [&](const std::string& name)
    { return file.hasArray(ArrayPlace::points, name) || file.hasGaussField(name); };
    if (isName(request))
    {
        return {request, request};
    }
    std::size_t sign = request.find('=');
    while (sign != std::string::npos && !isName(request.substr(0, sign)))
    {
        sign = request.find('=', sign + 1);
    }
    const std::string name = request.substr(0, sign);
    return {name, sign == std::string::npos ? name : request.substr(sign + 1)};
}

} // namespace

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

std::vector<ChosenField> chooseAndRename(const MeshFile& file, const std::vector<std::string>& requested,
                                         std::string_view done)
{
    std::vector<ChosenField> chosen;
    std::vector<std::string> pointData;
    for (const std::string& request : requested)
    {
        chosen.push_back(parseRequest(file, request));
        if (!isGaussField(file, chosen.back().name))
        {
            pointData.push_back(chosen.back().name);
        }
    }
    if (requested.empty())
    {
        addAll(file, done, chosen);
    }
    else if (!pointData.empty())
    {
        chooseFields(file, pointData, done); // throws if there is no such array
    }
    std::set<std::string> newNames;
    for (const ChosenField& field : chosen)
    {
        if (field.newName.empty())
        {
            throw InvalidOption(text("--field ", field.name, "= gives the field no new name"));
        }
        if (!newNames.insert(field.newName).second)
        {
            throw InvalidOption(text("--field gives two fields the name '", field.newName, "'"));
        }
    }
    return chosen;
}

std::vector<std::string> chooseFields(const MeshFile& file, const std::vector<std::string>& requested,
                                      std::string_view done)
{
    std::vector<std::string> available;
    for (const PointArray& array : file.pointArrays())
    {
        if (!array.isFloatingPoint || (requested.empty() && isOfATransfer(array.name)))
        {
            continue;
        }
        available.push_back(array.name);
        if (array.componentCount > maxComponentCount && requested.empty())
        {
            available.pop_back();
            warn(text("left out point-data array '", array.name, "' of '", file.path().string(), "': it has ",
                      array.componentCount, " components, more than the ", maxComponentCount, " that can be ", done),
                 text("components of ", array.name));
        }
    }
    if (available.empty())
    {
        throw BadFile(text("'", file.path().string(), "' has no floating-point point data to be ", done));
    }
    for (const std::string& name : requested)
    {
        if (!contains(available, name))
        {
            throw BadFile(text("'", file.path().string(), "' has no floating-point point-data array '", name,
                               "', only ", quotedNames(available),
                               contains(file.floatingPointCellArrays(), name)
                                   ? "; --cells-as-nodes makes one of the cell data of this name"
                                   : ""));
        }
    }
    return requested.empty() ? available : requested;
}

} // namespace veltrane
