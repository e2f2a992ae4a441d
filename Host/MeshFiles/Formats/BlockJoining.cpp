#include "BlockJoining.h"

#include "GridMaterials.h"
#include "GroupNames.h"
#include "VtkReading.h"

#include <vtkCellData.h>
#include <vtkCellType.h>
#include <vtkCompositeDataIterator.h>
#include <vtkCompositeDataSet.h>
#include <vtkDataArray.h>
#include <vtkDataObjectTree.h>
#include <vtkDataObjectTreeIterator.h>
#include <vtkDataSet.h>
#include <vtkFieldData.h>
#include <vtkIdList.h>
#include <vtkInformation.h>
#include <vtkIntArray.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkUnstructuredGrid.h>

#include <algorithm>
#include <array>
#include <limits>

namespace veltrane
{
namespace
{

/// Adds a cell whose points have numbers that are smaller than those of the grid by `shift`.
void addCell(vtkUnstructuredGrid& grid, vtkUnstructuredGrid& block, vtkIdType cell, vtkIdType shift, vtkIdList& points)
{
    const int cellType = block.GetCellType(cell);
    if (cellType == VTK_POLYHEDRON)
    {
        block.GetFaceStream(cell, &points); // how many faces, and of each how many points, and which
        vtkIdType* place = points.GetPointer(1);
        for (vtkIdType face = 0; face < points.GetId(0); ++face)
        {
            const vtkIdType pointCount = *place++;
            std::for_each(place, place + pointCount, [&](vtkIdType& point) { point += shift; });
            place += pointCount;
        }
    }
    else
    {
        block.GetCellPoints(cell, &points);
        std::for_each(points.begin(), points.end(), [&](vtkIdType& point) { point += shift; });
    }
    grid.InsertNextCell(cellType, &points);
}

vtkDataSetAttributes& dataOf(vtkUnstructuredGrid& grid, bool isOfPoints)
{
    return isOfPoints ? static_cast<vtkDataSetAttributes&>(*grid.GetPointData())
                      : static_cast<vtkDataSetAttributes&>(*grid.GetCellData());
}

vtkSmartPointer<vtkDataArray> joinedArray(const std::vector<Block>& blocks, vtkDataArray& model, bool isOfPoints)
{
    const auto joined = vtkSmartPointer<vtkDataArray>::Take(model.NewInstance());
    joined->SetName(model.GetName());
    joined->SetNumberOfComponents(model.GetNumberOfComponents());
    vtkIdType count = 0;
    for (const Block& block : blocks)
    {
        count += isOfPoints ? block.grid->GetNumberOfPoints() : block.grid->GetNumberOfCells();
    }
    joined->SetNumberOfTuples(count);
    const bool isFloatingPoint = model.GetDataType() == VTK_FLOAT || model.GetDataType() == VTK_DOUBLE;
    joined->Fill(isFloatingPoint ? std::numeric_limits<double>::quiet_NaN() : 0);
    vtkIdType first = 0;
    for (const Block& block : blocks)
    {
        vtkDataArray* array = dataOf(*block.grid, isOfPoints).GetArray(model.GetName());
        const vtkIdType tuples = isOfPoints ? block.grid->GetNumberOfPoints() : block.grid->GetNumberOfCells();
        if (array != nullptr && array->GetNumberOfComponents() == model.GetNumberOfComponents() &&
            array->GetNumberOfTuples() == tuples)
        {
            joined->InsertTuples(first, tuples, 0, array);
        }
        first += tuples;
    }
    return joined;
}

/// Arrays without names cannot be told apart; they are left out.
void joinArrays(vtkUnstructuredGrid& grid, const std::vector<Block>& blocks, bool isOfPoints)
{
    vtkDataSetAttributes& data = dataOf(grid, isOfPoints);
    for (const Block& block : blocks)
    {
        vtkDataSetAttributes& ofBlock = dataOf(*block.grid, isOfPoints);
        for (int i = 0; i < ofBlock.GetNumberOfArrays(); ++i)
        {
            vtkDataArray* array = ofBlock.GetArray(i);
            if (array != nullptr && array->GetName() != nullptr && data.HasArray(array->GetName()) == 0)
            {
                data.AddArray(joinedArray(blocks, *array, isOfPoints));
            }
        }
    }
}

void joinCells(vtkUnstructuredGrid& grid, const std::vector<Block>& blocks, bool haveSamePoints)
{
    grid.Allocate();
    const vtkNew<vtkIdList> points;
    vtkIdType shift = 0;
    for (const Block& block : blocks)
    {
        for (vtkIdType cell = 0; cell < block.grid->GetNumberOfCells(); ++cell)
        {
            addCell(grid, *block.grid, cell, shift, *points);
        }
        shift += haveSamePoints ? 0 : block.grid->GetNumberOfPoints();
    }
}

vtkSmartPointer<vtkPoints> joinedPoints(const std::vector<Block>& blocks)
{
    const bool isDouble = std::ranges::any_of(
        blocks, [](const Block& block)
        { return block.grid->GetPoints() != nullptr && block.grid->GetPoints()->GetDataType() == VTK_DOUBLE; });
    vtkNew<vtkPoints> points;
    points->SetDataType(isDouble ? VTK_DOUBLE : VTK_FLOAT);
    for (const Block& block : blocks)
    {
        for (vtkIdType point = 0; point < block.grid->GetNumberOfPoints(); ++point)
        {
            std::array<double, 3> place{};
            block.grid->GetPoint(point, place.data());
            points->InsertNextPoint(place.data());
        }
    }
    return points;
}

bool hasMaterials(vtkUnstructuredGrid& grid)
{
    return std::ranges::any_of(usualMaterialArrays(),
                               [&](const char* name) { return grid.GetCellData()->HasArray(name) != 0; });
}

void addMaterials(vtkUnstructuredGrid& grid, const std::vector<Block>& blocks)
{
    vtkNew<vtkIntArray> materials;
    materials->SetName("material");
    GroupNames names;
    int number = 0;
    for (const Block& block : blocks)
    {
        const vtkIdType cellCount = block.grid->GetNumberOfCells();
        number += cellCount > 0 ? 1 : 0;
        for (vtkIdType cell = 0; cell < cellCount; ++cell)
        {
            materials->InsertNextValue(number);
        }
        if (cellCount > 0 && !block.name.empty())
        {
            names[number] = block.name;
        }
    }
    if (number > 1)
    {
        grid.GetCellData()->AddArray(materials);
        setGroupNames(grid, names);
    }
}

/// Readers give cells of types that they do not know as empty ones.
LeftOut unknownCells(vtkCompositeDataSet& tree)
{
    long long count = 0;
    const auto iterator = vtkSmartPointer<vtkCompositeDataIterator>::Take(tree.NewIterator());
    for (iterator->InitTraversal(); iterator->IsDoneWithTraversal() == 0; iterator->GoToNextItem())
    {
        auto* grid = vtkUnstructuredGrid::SafeDownCast(iterator->GetCurrentDataObject());
        for (vtkIdType cell = 0; grid != nullptr && cell < grid->GetNumberOfCells(); ++cell)
        {
            count += grid->GetCellType(cell) == VTK_EMPTY_CELL ? 1 : 0;
        }
    }
    return count == 0 ? LeftOut() : LeftOut{text("cells of types that VTK's reader does not know: ", count)};
}

} // namespace

int plainCellType(int cellType, vtkIdList& points)
{
    if (cellType != VTK_VOXEL && cellType != VTK_PIXEL)
    {
        return cellType;
    }
    // These count their points along the axes, others around.
    for (vtkIdType first = 0; first + 4 <= points.GetNumberOfIds(); first += 4)
    {
        std::swap(*points.GetPointer(first + 2), *points.GetPointer(first + 3));
    }
    return cellType == VTK_VOXEL ? VTK_HEXAHEDRON : VTK_QUAD;
}

vtkSmartPointer<vtkUnstructuredGrid> toGrid(vtkDataSet& dataSet)
{
    if (auto* grid = vtkUnstructuredGrid::SafeDownCast(&dataSet))
    {
        return grid;
    }
    vtkNew<vtkUnstructuredGrid> grid;
    vtkNew<vtkPoints> points;
    points->SetDataTypeToDouble();
    points->SetNumberOfPoints(dataSet.GetNumberOfPoints());
    for (vtkIdType point = 0; point < dataSet.GetNumberOfPoints(); ++point)
    {
        points->SetPoint(point, dataSet.GetPoint(point));
    }
    grid->SetPoints(points);
    grid->Allocate();
    const vtkNew<vtkIdList> cellPoints;
    for (vtkIdType cell = 0; cell < dataSet.GetNumberOfCells(); ++cell)
    {
        dataSet.GetCellPoints(cell, cellPoints);
        const int cellType = dataSet.GetCellType(cell); // VTK_EMPTY_CELL of one that is blanked
        grid->InsertNextCell(plainCellType(cellType, *cellPoints), cellPoints);
    }
    grid->GetPointData()->ShallowCopy(dataSet.GetPointData());
    grid->GetCellData()->ShallowCopy(dataSet.GetCellData());
    grid->GetFieldData()->ShallowCopy(dataSet.GetFieldData());
    return grid;
}

std::vector<Block> blocksOf(vtkCompositeDataSet& tree)
{
    std::vector<Block> blocks;
    const auto iterator = vtkSmartPointer<vtkCompositeDataIterator>::Take(tree.NewIterator());
    for (iterator->InitTraversal(); iterator->IsDoneWithTraversal() == 0; iterator->GoToNextItem())
    {
        auto* dataSet = vtkDataSet::SafeDownCast(iterator->GetCurrentDataObject());
        if (dataSet == nullptr || dataSet->GetNumberOfPoints() == 0)
        {
            continue;
        }
        const bool isNamed = iterator->HasCurrentMetaData() != 0 &&
                             iterator->GetCurrentMetaData()->Has(vtkCompositeDataSet::NAME()) != 0;
        blocks.push_back(
            {isNamed ? iterator->GetCurrentMetaData()->Get(vtkCompositeDataSet::NAME()) : "", toGrid(*dataSet)});
    }
    return blocks;
}

vtkSmartPointer<vtkUnstructuredGrid> joinBlocks(const std::vector<Block>& blocks)
{
    if (blocks.size() == 1)
    {
        return blocks.front().grid;
    }
    vtkNew<vtkUnstructuredGrid> grid;
    grid->SetPoints(joinedPoints(blocks));
    joinCells(*grid, blocks, false);
    joinArrays(*grid, blocks, true);
    joinArrays(*grid, blocks, false);
    if (!hasMaterials(*grid))
    {
        addMaterials(*grid, blocks);
    }
    return grid;
}

vtkSmartPointer<vtkUnstructuredGrid> joinBlocksOfSamePoints(const std::vector<Block>& blocks)
{
    vtkUnstructuredGrid& first = *blocks.front().grid;
    vtkNew<vtkUnstructuredGrid> grid;
    grid->SetPoints(first.GetPoints());
    grid->GetPointData()->ShallowCopy(first.GetPointData());
    grid->GetFieldData()->ShallowCopy(first.GetFieldData());
    joinCells(*grid, blocks, true);
    joinArrays(*grid, blocks, false);
    return grid;
}

FileData readBlocks(vtkAlgorithm& reader, const VtkMessages& messages, const FileReading& reading,
                    const std::filesystem::path& path)
{
    guarded(path, [&] { reader.UpdateInformation(); });
    readStep(reader, messages, reading, path);
    auto* tree = vtkCompositeDataSet::SafeDownCast(reader.GetOutputDataObject(0));
    const std::vector<Block> blocks = tree == nullptr ? std::vector<Block>() : blocksOf(*tree);
    if (blocks.empty())
    {
        throw BadFile(text(quoted(path), " has no cells"));
    }
    return {joinBlocks(blocks), unknownCells(*tree)};
}

} // namespace veltrane
