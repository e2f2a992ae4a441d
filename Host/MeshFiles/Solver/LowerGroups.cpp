#include "LowerGroups.h"

#include "CellNames.h"
#include "NumberText.h"

#include <vtkCellData.h>
#include <vtkFieldData.h>
#include <vtkIntArray.h>
#include <vtkNew.h>
#include <vtkStringArray.h>
#include <vtkUnstructuredGrid.h>

#include <algorithm>
#include <limits>
#include <span>

namespace veltrane
{
namespace
{

constexpr const char* nameArray = "group_names";
constexpr int rowLength = 3; ///< dimension, number, name

} // namespace

std::vector<int> takeMaterialsFromVolumes(ParsedMesh& mesh)
{
    const auto dimensionAt = [&](std::size_t cell) { return cellDimension(mesh.cellTypes[cell]).value_or(0); };
    const std::size_t cellCount = mesh.cellTypes.size();
    if (mesh.materials.empty() || dimensionAt(0) == dimensionAt(cellCount - 1)) // they are in order of dimension
    {
        return {};
    }
    constexpr int none = std::numeric_limits<int>::min();
    const int highest = dimensionAt(0);
    std::vector<int> materialOfNode(mesh.nodeNumbers.size(), none);
    std::vector<int> groups = mesh.materials;
    bool isChanged = false;
    for (std::size_t cell = 0; cell < cellCount; ++cell)
    {
        const auto begin = static_cast<std::size_t>(mesh.offsets[cell]);
        const std::span nodes(mesh.connectivity.data() + begin,
                              static_cast<std::size_t>(mesh.offsets[cell + 1]) - begin);
        const auto material = [&](std::int64_t node) -> int& { return materialOfNode[static_cast<std::size_t>(node)]; };
        if (dimensionAt(cell) == highest)
        {
            for (const std::int64_t node : nodes)
            {
                material(node) = material(node) == none ? mesh.materials[cell] : material(node);
            }
        }
        else if (std::ranges::none_of(nodes, [&](std::int64_t node) { return material(node) == none; }))
        {
            isChanged = isChanged || mesh.materials[cell] != material(nodes.front());
            mesh.materials[cell] = material(nodes.front());
        }
    }
    return isChanged ? groups : std::vector<int>();
}

void setGroups(vtkUnstructuredGrid& grid, const std::vector<int>& groups, const LowerGroupNames& names)
{
    vtkNew<vtkIntArray> array;
    array->SetName(groupArray);
    array->SetNumberOfValues(static_cast<vtkIdType>(groups.size()));
    std::ranges::copy(groups, array->GetPointer(0));
    grid.GetCellData()->AddArray(array);
    if (names.empty())
    {
        return;
    }
    vtkNew<vtkStringArray> rows;
    rows->SetName(nameArray);
    rows->SetNumberOfComponents(rowLength);
    for (const auto& [group, name] : names)
    {
        rows->InsertNextValue(std::to_string(group.first));
        rows->InsertNextValue(std::to_string(group.second));
        rows->InsertNextValue(name);
    }
    grid.GetFieldData()->AddArray(rows);
}

vtkDataArray* findGroups(vtkUnstructuredGrid& grid)
{
    return grid.GetCellData()->GetArray(groupArray);
}

LowerGroupNames lowerGroupNames(vtkUnstructuredGrid& grid)
{
    LowerGroupNames names;
    auto* rows = vtkStringArray::SafeDownCast(grid.GetFieldData()->GetAbstractArray(nameArray));
    for (vtkIdType i = 0; rows != nullptr && i + rowLength <= rows->GetNumberOfValues(); i += rowLength)
    {
        long long dimension = 0;
        long long number = 0;
        if (isInteger(rows->GetValue(i), dimension) && isInteger(rows->GetValue(i + 1), number))
        {
            names[{static_cast<int>(dimension), static_cast<int>(number)}] = rows->GetValue(i + 2);
        }
    }
    return names;
}

} // namespace veltrane
