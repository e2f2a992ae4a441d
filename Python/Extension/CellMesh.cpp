#include "CellMesh.h"

#include "CellKinds.h"
#include "Errors.h"
#include "Text.h"

#include <climits>
#include <utility>

namespace veltrane
{
namespace
{

void checkSizes(const CellArrays& arrays)
{
    if (arrays.offsets.size() != arrays.types.size() + 1)
    {
        throw InvalidData(text("there are ", arrays.types.size(), " cell types, but ", arrays.offsets.size(),
                               " offsets instead of one more"));
    }
    if (!arrays.materialPerCell.empty() && arrays.materialPerCell.size() != arrays.types.size())
    {
        throw InvalidData(text("there are ", arrays.types.size(), " cells, but ", arrays.materialPerCell.size(),
                               " materials for them"));
    }
    if (arrays.types.size() > static_cast<std::size_t>(INT_MAX))
    {
        throw InvalidData(
            text("there are ", arrays.types.size(), " cells, more than the ", INT_MAX, " that can be counted"));
    }
}

std::span<const std::int64_t> pointsOf(const CellArrays& arrays, std::size_t cell)
{
    const std::int64_t begin = arrays.offsets[cell];
    const std::int64_t end = arrays.offsets[cell + 1];
    if (begin < 0 || end < begin || end > static_cast<std::int64_t>(arrays.connectivity.size()))
    {
        throw InvalidData(text("the offsets ", begin, " and ", end, " of cell ", cell,
                               " do not delimit a part of the connectivity, which has ", arrays.connectivity.size(),
                               " entries"));
    }
    return arrays.connectivity.subspan(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin));
}

/// Null for a cell that is left out.
const CellKind* kindOf(std::int64_t cellType, std::size_t cell, bool skipsUnsupported)
{
    if (const CellKind* kind = findCellKind(cellType))
    {
        return kind;
    }
    if (!skipsUnsupported && !isPointOrLine(cellType))
    {
        throw InvalidData(text("cell ", cell, " is of type ", cellType,
                               ", which cannot be used; skip_unsupported=True leaves such cells out"));
    }
    return nullptr;
}

void addElement(MeshData& data, std::span<const std::int64_t> points, const CellKind& kind, std::size_t cell)
{
    if (points.size() != kind.nodeOrder.size())
    {
        throw InvalidData(text("cell ", cell, " is a ", findElementKind(kind.kind)->name, " of ", points.size(),
                               " points instead of ", kind.nodeOrder.size()));
    }
    // The coordinates are in one precision only.
    const auto pointCount = static_cast<std::int64_t>((data.coordinates.size() + data.exactCoordinates.size()) / 3);
    for (const int place : kind.nodeOrder)
    {
        const std::int64_t point = points[static_cast<std::size_t>(place)];
        if (point < 0 || point >= pointCount)
        {
            throw InvalidData(text("cell ", cell, " refers to point ", point, ", but there are ", pointCount,
                                   " points, counted from 0"));
        }
        data.connectivity.push_back(static_cast<int>(point));
    }
    data.kinds.push_back(kind.kind);
    data.offsets.push_back(data.connectivity.size());
}

void reserve(MeshData& data, std::size_t elementCount, std::size_t connectivitySize)
{
    data.kinds.reserve(elementCount);
    data.offsets.reserve(elementCount + 1);
    data.materialPerElement.reserve(elementCount);
    data.connectivity.reserve(connectivitySize);
    data.offsets.push_back(0);
}

} // namespace

CellMesh meshOfCells(const CellArrays& arrays, std::vector<Material> materials, bool skipsUnsupported)
{
    checkSizes(arrays);
    MeshData data{.coordinates = {arrays.points.begin(), arrays.points.end()},
                  .exactCoordinates = {arrays.exactPoints.begin(), arrays.exactPoints.end()},
                  .materials = std::move(materials)};
    reserve(data, arrays.types.size(), arrays.connectivity.size());
    std::vector<int> cells;
    cells.reserve(arrays.types.size());
    bool hasSurfaces = false;
    for (std::size_t cell = 0; cell < arrays.types.size(); ++cell)
    {
        const std::span<const std::int64_t> points = pointsOf(arrays, cell);
        if (const CellKind* kind = kindOf(arrays.types[cell], cell, skipsUnsupported))
        {
            addElement(data, points, *kind, cell);
            data.materialPerElement.push_back(arrays.materialPerCell.empty() ? 0 : arrays.materialPerCell[cell]);
            cells.push_back(static_cast<int>(cell));
            hasSurfaces = hasSurfaces || !kind->isVolume;
        }
    }
    return {Mesh(std::move(data)), std::move(cells), static_cast<std::int64_t>(arrays.types.size()), hasSurfaces};
}

CellMesh volumesOf(const CellMesh& mesh)
{
    const Mesh& all = mesh.mesh;
    MeshData data{
        .coordinates = all.coordinates(), .exactCoordinates = all.exactCoordinates(), .materials = all.materials()};
    reserve(data, mesh.cells.size(), 0);
    std::vector<int> cells;
    for (int element = 0; element < all.elementCount(); ++element)
    {
        if (all.kindOf(element).isVolume)
        {
            const std::span<const int> nodes = all.nodesOf(element);
            data.connectivity.insert(data.connectivity.end(), nodes.begin(), nodes.end());
            data.kinds.push_back(all.kindOf(element).kind);
            data.offsets.push_back(data.connectivity.size());
            data.materialPerElement.push_back(all.materialOf(element));
            cells.push_back(mesh.cells[static_cast<std::size_t>(element)]);
        }
    }
    if (cells.empty())
    {
        throw InvalidData("the source has no volume cell");
    }
    CellMesh volumes{Mesh(std::move(data)), std::move(cells), mesh.cellCount, false};
    volumes.mesh.setGaussPointRule(all.gaussPointRule());
    return volumes;
}

} // namespace veltrane
