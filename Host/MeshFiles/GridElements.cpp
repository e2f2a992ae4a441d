#include "GridElements.h"

#include "CellNames.h"
#include "DataSetReader.h"
#include "NodeGroups.h"
#include "RepeatedNodes.h"
#include "Text.h"
#include "VtkCells.h"

#include <vtkCellArray.h>
#include <vtkCellType.h>
#include <vtkDataArray.h>
#include <vtkDataSetAttributes.h>
#include <vtkUnsignedCharArray.h>
#include <vtkUnstructuredGrid.h>

#include <algorithm>
#include <string_view>

namespace veltrane
{
namespace
{

/// The cell types, after a check that there are types and offsets for all cells and that these hold together.
vtkUnsignedCharArray& checkedCellTypes(vtkUnstructuredGrid& grid, const std::filesystem::path& path)
{
    const vtkIdType cellCount = grid.GetNumberOfCells();
    vtkUnsignedCharArray* types = grid.GetCellTypesArray();
    if (types == nullptr || types->GetNumberOfValues() != cellCount)
    {
        throw BadFile(text(quoted(path), " does not have one cell type for each of its ", cellCount, " cells"));
    }
    vtkDataArray& offsets = *grid.GetCells()->GetOffsetsArray();
    const vtkIdType connectivitySize = grid.GetCells()->GetConnectivityArray()->GetNumberOfValues();
    auto previous = 0.0;
    for (vtkIdType i = 0; i <= cellCount; ++i)
    {
        const double offset = offsets.GetComponent(i, 0);
        if (offset < previous || offset > static_cast<double>(connectivitySize))
        {
            throw BadFile(text(quoted(path), ": the offset ", offset, " of cell ", std::max<vtkIdType>(i - 1, 0),
                               " does not delimit a part of the connectivity"));
        }
        previous = offset;
    }
    return *types;
}

/// The points of a cell. A check that they exist, and that there are as many as its kind needs, if there is one.
std::span<const vtkIdType> checkedPoints(vtkUnstructuredGrid& grid, vtkIdType cell, const VtkCellKind* cellKind,
                                         const std::filesystem::path& path)
{
    vtkIdType size = 0;
    const vtkIdType* begin = nullptr;
    grid.GetCells()->GetCellAtId(cell, size, begin);
    const std::span points(begin, static_cast<std::size_t>(size));
    const ElementKindInfo* kind = cellKind == nullptr ? nullptr : findElementKind(cellKind->kind);
    if (kind != nullptr && size != kind->nodeCount)
    {
        throw BadFile(text(quoted(path), ": cell ", cell, " is a ", kind->name, " of ", size, " points instead of ",
                           kind->nodeCount));
    }
    const vtkIdType pointCount = grid.GetNumberOfPoints();
    const auto isMissing = [&](vtkIdType point) { return point < 0 || point >= pointCount; };
    const auto missing = std::ranges::find_if(points, isMissing);
    if (missing != points.end())
    {
        throw BadFile(text(quoted(path), ": cell ", cell, " refers to point ", *missing, ", but there are ", pointCount,
                           " points, counted from 0"));
    }
    return points;
}

/// Adds a cell's element to the mesh data.
void addElement(MeshData& data, const VtkCellKind& cellKind, std::span<const vtkIdType> points)
{
    for (const int place : cellKind.nodeOrder)
    {
        data.connectivity.push_back(static_cast<int>(points[static_cast<std::size_t>(place)]));
    }
    data.kinds.push_back(cellKind.kind);
    data.offsets.push_back(data.connectivity.size());
}

/// Goes through the cells of a grid.
class ElementCollector
{
public:
    ElementCollector(vtkUnstructuredGrid& grid, const MeshReading& reading, const std::filesystem::path& path)
        : grid_(grid), reading_(reading), path_(path), isUsed_(static_cast<std::size_t>(grid.GetNumberOfPoints()))
    {
        elements_.data.offsets.push_back(0);
    }

    GridElements run()
    {
        if (grid_.GetNumberOfCells() == 0)
        {
            addLoosePoints();
            return finished();
        }
        types_ = &checkedCellTypes(grid_, path_);
        ghosts_ = grid_.GetCellGhostArray();
        for (vtkIdType cell = 0; cell < grid_.GetNumberOfCells(); ++cell)
        {
            take(cell);
        }
        // Lines and the like along other cells have numbers of materials of their own, and no node that is missing.
        for (const int dimension : {3, 2, 1, 0})
        {
            addNodeGroups(dimension);
        }
        return finished();
    }

private:
    GridElements finished()
    {
        elements_.cells = ItemNumbers(std::move(cells_));
        return std::move(elements_);
    }

    void take(vtkIdType cell)
    {
        if (ghosts_ != nullptr && (ghosts_->GetValue(cell) & vtkDataSetAttributes::DUPLICATECELL) != 0)
        {
            return; // it is a cell of another piece
        }
        const int cellType = types_->GetValue(cell);
        const VtkCellKind* cellKind = findVtkCellKind(cellType);
        const std::optional<int> dimension = cellDimension(cellType);
        const bool isVolume = cellKind == nullptr ? dimension == 3 : findElementKind(cellKind->kind)->isVolume;
        if (dimension == -1 || (reading_.role != MeshRole::target && !isVolume && dimension))
        {
            return;
        }
        if (cellKind != nullptr)
        {
            addCell(cell, cellType, *cellKind);
        }
        else if (reading_.role == MeshRole::target && dimension)
        {
            others_.push_back(cell);
        }
        else
        {
            ++elements_.skipped[cellType];
        }
    }

    void addCell(vtkIdType cell, int cellType, const VtkCellKind& cellKind)
    {
        const std::span<const vtkIdType> points = checkedPoints(grid_, cell, &cellKind, path_);
        const auto plain =
            cellType == VTK_HEXAHEDRON && !reading_.keepsRepeatedNodes ? withoutRepeatedNodes(points) : std::nullopt;
        if (plain)
        {
            addElement(elements_.data, *findVtkCellKind(plain->cellType), plain->points);
        }
        else
        {
            addElement(elements_.data, cellKind, points);
        }
        use(cell, points, 1);
    }

    void addNodeGroups(int dimension)
    {
        for (const vtkIdType cell : others_)
        {
            const int cellType = types_->GetValue(cell);
            if (cellDimension(cellType) != dimension)
            {
                continue;
            }
            const std::span<const vtkIdType> points = checkedPoints(grid_, cell, nullptr, path_);
            const auto isUnused = [&](vtkIdType point) { return !isUsed_[static_cast<std::size_t>(point)]; };
            if (std::ranges::any_of(points, isUnused))
            {
                const int count = addNodeGroup(elements_.data, points);
                ++elements_.nodeGroups[cellType];
                elements_.nodeGroupElementCount += count;
                use(cell, points, count);
            }
        }
    }

    void addLoosePoints()
    {
        for (vtkIdType point = 0; point < grid_.GetNumberOfPoints(); ++point)
        {
            elements_.nodeGroupElementCount += addNodeGroup(elements_.data, {&point, 1});
            cells_.push_back(point);
        }
    }

    void use(vtkIdType cell, std::span<const vtkIdType> points, int elementCount)
    {
        cells_.insert(cells_.end(), static_cast<std::size_t>(elementCount), cell);
        ++elements_.usedCellCount;
        for (const vtkIdType point : points)
        {
            isUsed_[static_cast<std::size_t>(point)] = true;
        }
    }

    vtkUnstructuredGrid& grid_;
    const MeshReading& reading_;
    const std::filesystem::path& path_;
    const vtkUnsignedCharArray* types_ = nullptr;
    const vtkUnsignedCharArray* ghosts_ = nullptr; ///< null if the file knows none
    std::vector<bool> isUsed_;                     ///< per point, whether an element has it
    std::vector<vtkIdType> others_;                ///< cells without a counterpart
    std::vector<vtkIdType> cells_;                 ///< of the elements
    GridElements elements_;
};

std::string_view needOf(MeshRole role)
{
    switch (role)
    {
    case MeshRole::source: return "volume cells, which a source needs";
    case MeshRole::target: return "cells with nodes, which a target needs";
    case MeshRole::gaussPointTarget: break;
    }
    return "volume cells, which have the Gauss points to be matched";
}

} // namespace

GridElements readElements(vtkUnstructuredGrid& grid, const MeshReading& reading, const std::filesystem::path& path)
{
    if (grid.GetNumberOfCells() == 0 && (reading.role != MeshRole::target || grid.GetNumberOfPoints() == 0))
    {
        throw BadFile(text(quoted(path), " has no cells"));
    }
    GridElements elements = ElementCollector(grid, reading, path).run();
    if (!elements.skipped.empty() && !reading.skipUnsupported)
    {
        throw BadFile(text(quoted(path), " has cells that cannot be used: ", cellCountText(elements.skipped),
                           "; --skip-unsupported leaves them out"));
    }
    if (elements.cells.size() == 0)
    {
        throw BadFile(text(quoted(path), " has no ", needOf(reading.role)));
    }
    return elements;
}

void checkCells(vtkUnstructuredGrid& grid, const std::filesystem::path& path)
{
    if (grid.GetNumberOfCells() == 0)
    {
        return;
    }
    const vtkUnsignedCharArray& types = checkedCellTypes(grid, path);
    for (vtkIdType cell = 0; cell < grid.GetNumberOfCells(); ++cell)
    {
        checkedPoints(grid, cell, findVtkCellKind(types.GetValue(cell)), path);
    }
}

std::string cellCountText(const CellCounts& counts)
{
    std::string list;
    for (const auto& [cellType, count] : counts)
    {
        const CellName name = cellNameOf(cellType);
        list += text(list.empty() ? "" : ", ", count, " ", count == 1 ? name.one : name.more);
    }
    return list;
}

} // namespace veltrane
