#include "ParsedGrid.h"

#include "CellNames.h"
#include "GroupNames.h"
#include "LowerGroups.h"
#include "NodeLabels.h"
#include "Text.h"

#include <vtkCellArray.h>
#include <vtkCellData.h>
#include <vtkDoubleArray.h>
#include <vtkFieldData.h>
#include <vtkIntArray.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkStringArray.h>
#include <vtkTypeInt64Array.h>
#include <vtkUnsignedCharArray.h>
#include <vtkUnstructuredGrid.h>

#include <algorithm>
#include <array>
#include <numeric>

namespace veltrane
{
namespace
{

template <typename Array, typename Number>
vtkSmartPointer<Array> copied(const std::string& name, int componentCount, const std::vector<Number>& values)
{
    vtkNew<Array> array;
    array->SetName(name.c_str());
    array->SetNumberOfComponents(componentCount);
    array->SetNumberOfTuples(static_cast<vtkIdType>(values.size()) / componentCount);
    std::ranges::copy(values, array->GetPointer(0));
    return array;
}

int dimensionOf(unsigned char cellType)
{
    return cellDimension(cellType).value_or(0);
}

/// The cells by dimension, the highest first; empty if they are so already.
std::vector<std::size_t> byDimension(const std::vector<unsigned char>& types)
{
    std::array<int, 256> dimensions{};
    for (int type = 0; type < 256; ++type)
    {
        dimensions[static_cast<std::size_t>(type)] = dimensionOf(static_cast<unsigned char>(type));
    }
    const auto dimensionAt = [&](std::size_t cell) { return -dimensions[types[cell]]; };
    bool isSorted = true;
    for (std::size_t cell = 1; cell < types.size() && isSorted; ++cell)
    {
        isSorted = dimensionAt(cell - 1) <= dimensionAt(cell);
    }
    if (isSorted)
    {
        return {};
    }
    std::vector<std::size_t> order(types.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::stable_sort(order, {}, dimensionAt);
    return order;
}

template <typename Value>
void reorder(std::vector<Value>& values, const std::vector<std::size_t>& order, std::size_t rowLength = 1)
{
    std::vector<Value> sorted;
    sorted.reserve(values.size());
    for (const std::size_t row : order)
    {
        const auto begin = values.begin() + static_cast<std::ptrdiff_t>(row * rowLength);
        sorted.insert(sorted.end(), begin, begin + static_cast<std::ptrdiff_t>(rowLength));
    }
    values = std::move(sorted);
}

void sortCells(ParsedMesh& mesh)
{
    const std::vector<std::size_t> order = byDimension(mesh.cellTypes);
    if (order.empty())
    {
        return;
    }
    std::vector<std::int64_t> connectivity;
    std::vector<std::int64_t> offsets{0};
    connectivity.reserve(mesh.connectivity.size());
    offsets.reserve(mesh.offsets.size());
    for (const std::size_t cell : order)
    {
        connectivity.insert(connectivity.end(), mesh.connectivity.begin() + mesh.offsets[cell],
                            mesh.connectivity.begin() + mesh.offsets[cell + 1]);
        offsets.push_back(static_cast<std::int64_t>(connectivity.size()));
    }
    mesh.connectivity = std::move(connectivity);
    mesh.offsets = std::move(offsets);
    reorder(mesh.cellTypes, order);
    if (!mesh.materials.empty())
    {
        reorder(mesh.materials, order);
    }
    for (ParsedField& field : mesh.fields)
    {
        if (field.isPerCell)
        {
            reorder(field.values, order, static_cast<std::size_t>(field.componentCount));
        }
    }
}

void addNumbers(vtkUnstructuredGrid& grid, const ParsedMesh& mesh)
{
    bool isCount = true;
    for (std::size_t i = 0; i < mesh.nodeNumbers.size() && isCount; ++i)
    {
        isCount = mesh.nodeNumbers[i] == static_cast<long long>(i) + 1;
    }
    if (!isCount)
    {
        grid.GetPointData()->AddArray(copied<vtkTypeInt64Array>(nodeNumberArray, 1, mesh.nodeNumbers));
    }
    if (!mesh.nodeInstances.empty())
    {
        grid.GetPointData()->AddArray(copied<vtkIntArray>(nodeInstanceArray, 1, mesh.nodeInstances));
        vtkNew<vtkStringArray> names;
        names->SetName(instanceNameArray);
        for (const std::string& name : mesh.instanceNames)
        {
            names->InsertNextValue(name);
        }
        grid.GetFieldData()->AddArray(names);
    }
}

} // namespace

FileData toFileData(ParsedMesh mesh)
{
    sortCells(mesh);
    const std::vector<int> groups = takeMaterialsFromVolumes(mesh);
    vtkNew<vtkUnstructuredGrid> grid;
    vtkNew<vtkPoints> points;
    points->SetData(copied<vtkDoubleArray>("", 3, mesh.coordinates));
    grid->SetPoints(points);
    vtkNew<vtkCellArray> cells;
    cells->SetData(copied<vtkTypeInt64Array>("", 1, mesh.offsets), copied<vtkTypeInt64Array>("", 1, mesh.connectivity));
    grid->SetCells(copied<vtkUnsignedCharArray>("", 1, mesh.cellTypes), cells);
    if (!mesh.materials.empty())
    {
        grid->GetCellData()->AddArray(copied<vtkIntArray>("material", 1, mesh.materials));
        setGroupNames(*grid, GroupNames(mesh.materialNames.begin(), mesh.materialNames.end()));
    }
    if (!groups.empty())
    {
        setGroups(*grid, groups, mesh.lowerGroupNames);
    }
    addNumbers(*grid, mesh);
    for (const ParsedField& field : mesh.fields)
    {
        vtkFieldData& data = field.isPerCell ? static_cast<vtkFieldData&>(*grid->GetCellData()) : *grid->GetPointData();
        if (data.HasArray(field.name.c_str()) != 0)
        {
            mesh.leftOut.push_back(text("a second field '", field.name, "'"));
            continue;
        }
        data.AddArray(copied<vtkDoubleArray>(field.name, field.componentCount, field.values));
    }
    return {grid, std::move(mesh.leftOut)};
}

void checkStep(const FileReading& reading, const ParsedMesh& mesh, const std::filesystem::path& path)
{
    static_cast<void>(chosenStep(reading, mesh.times.size(), path));
}

} // namespace veltrane
