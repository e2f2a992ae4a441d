// Exodus files in parts, one for each process that computed it: result.e.4.0 to result.e.4.3. One of the names stands
// for all of them.
#include "BlockJoining.h"
#include "DataSetReader.h"
#include "ExodusReading.h"
#include "FormatList.h"
#include "GroupNames.h"
#include "Text.h"

#include <vtkCellData.h>
#include <vtkDataArray.h>
#include <vtkFieldData.h>
#include <vtkIdList.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkUnstructuredGrid.h>

#include <array>
#include <charconv>
#include <unordered_map>

namespace veltrane
{
namespace
{

constexpr std::array<std::string_view, 3> stems{".e", ".exo", ".ex2"};

/// A name as "result.e", 4 and 0.
struct PartName
{
    std::string stem;
    int count;
    std::size_t digits; ///< of each part's number
};

/// Cuts the last number and the point before it off a name; empty if there is none.
std::string_view cutNumber(std::string_view& name)
{
    const std::size_t point = name.rfind('.');
    if (point == std::string_view::npos || point + 1 == name.size() ||
        name.find_first_not_of("0123456789", point + 1) != std::string_view::npos)
    {
        return {};
    }
    const std::string_view number = name.substr(point + 1);
    name = name.substr(0, point);
    return number;
}

std::optional<PartName> partNameOf(std::string_view name)
{
    const std::string_view part = cutNumber(name);
    const std::string_view count = part.empty() ? part : cutNumber(name);
    PartName result{.stem = std::string(name), .count = 0, .digits = part.size()};
    std::from_chars(count.data(), count.data() + count.size(), result.count);
    return result.count > 0 ? std::optional(result) : std::nullopt;
}

bool isPart(std::string_view name)
{
    const std::optional<PartName> part = partNameOf(name);
    if (!part)
    {
        return false;
    }
    for (const std::string_view stem : stems)
    {
        if (part->stem.size() > stem.size() &&
            (part->stem.ends_with(stem) || part->stem.find(std::string(stem) + "-s") != std::string::npos))
        {
            return true;
        }
    }
    return false;
}

std::filesystem::path pathOf(const std::filesystem::path& directory, const PartName& name, int part)
{
    std::string number = std::to_string(part);
    number.insert(0, name.digits - std::min(name.digits, number.size()), '0');
    return directory / text(name.stem, '.', name.count, '.', number);
}

/// Joins points of the same number in the whole mesh.
vtkSmartPointer<vtkUnstructuredGrid> mergePoints(vtkUnstructuredGrid& grid, vtkDataArray& numbers)
{
    vtkNew<vtkIdList> kept;
    std::vector<vtkIdType> places;
    std::unordered_map<long long, vtkIdType> known;
    for (vtkIdType point = 0; point < grid.GetNumberOfPoints(); ++point)
    {
        const auto number = static_cast<long long>(numbers.GetComponent(point, 0));
        const auto [found, isNew] = known.try_emplace(number, kept->GetNumberOfIds());
        if (isNew)
        {
            kept->InsertNextId(point);
        }
        places.push_back(found->second);
    }
    vtkNew<vtkUnstructuredGrid> merged;
    vtkNew<vtkPoints> points;
    points->SetDataType(grid.GetPoints()->GetDataType());
    points->SetNumberOfPoints(kept->GetNumberOfIds());
    grid.GetPoints()->GetPoints(kept, points);
    merged->SetPoints(points);
    merged->Allocate();
    vtkNew<vtkIdList> nodes;
    for (vtkIdType cell = 0; cell < grid.GetNumberOfCells(); ++cell)
    {
        grid.GetCellPoints(cell, nodes);
        for (vtkIdType& node : *nodes)
        {
            node = places[static_cast<std::size_t>(node)];
        }
        merged->InsertNextCell(grid.GetCellType(cell), nodes);
    }
    merged->GetCellData()->ShallowCopy(grid.GetCellData());
    merged->GetFieldData()->ShallowCopy(grid.GetFieldData());
    merged->GetPointData()->CopyAllocate(grid.GetPointData(), kept->GetNumberOfIds());
    merged->GetPointData()->SetNumberOfTuples(kept->GetNumberOfIds());
    for (vtkIdType point = 0; point < kept->GetNumberOfIds(); ++point)
    {
        merged->GetPointData()->CopyData(grid.GetPointData(), kept->GetId(point), point);
    }
    return merged;
}

FileData read(const std::filesystem::path& path, const FileReading& reading)
{
    const PartName name = *partNameOf(path.filename().string());
    std::vector<Block> parts;
    GroupNames names;
    for (int part = 0; part < name.count; ++part)
    {
        const std::filesystem::path file = pathOf(path.parent_path(), name, part);
        checkReadable(file);
        const FileData data = readExodus(file, reading, true);
        names.merge(groupNames(*data.dataSet));
        parts.push_back({"", vtkUnstructuredGrid::SafeDownCast(data.dataSet)});
    }
    vtkSmartPointer<vtkUnstructuredGrid> grid = joinBlocks(parts);
    if (vtkDataArray* numbers = grid->GetPointData()->GetArray(globalNodesName))
    {
        grid = mergePoints(*grid, *numbers);
        grid->GetPointData()->RemoveArray(globalNodesName);
    }
    setGroupNames(*grid, names);
    return {grid};
}

} // namespace

constinit const FileFormat formats::exodusParts{
    .name = "Exodus in parts",
    .isNamed = isPart,
    .reads = {.cells = true, .materials = true, .nodalFields = true, .cellFields = true, .steps = true},
    .read = read,
    .times = readExodusTimes};

} // namespace veltrane
