/// Meshes as they come from Python: cells in VTK's terms, of which some may be left out.
#ifndef VELTRANE_PYTHON_CELL_MESH_H
#define VELTRANE_PYTHON_CELL_MESH_H

#include "Mesh.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace veltrane
{

/// A mesh, and which cell each of its elements is.
struct CellMesh
{
    Mesh mesh;
    std::vector<int> cells; ///< per element, in increasing order
    std::int64_t cellCount; ///< including those that were left out
    bool hasSurfaces;       ///< some elements are no volumes
};

/// Cells in borrowed arrays.
struct CellArrays
{
    std::span<const float> points;              ///< x, y, z of each point
    std::span<const double> exactPoints;        ///< the same in double precision, instead of `points`
    std::span<const std::int64_t> connectivity; ///< point numbers, cell after cell
    std::span<const std::int64_t> offsets;      ///< one more than cells
    std::span<const std::int64_t> types;        ///< VTK's, one per cell
    std::span<const int> materialPerCell;       ///< indices into the materials; empty: one material for all
};

/// Builds the mesh of the cells that are elements. Points and lines are left out, other cells too if they may be.
/// Throws InvalidData, naming the cell.
CellMesh meshOfCells(const CellArrays& arrays, std::vector<Material> materials, bool skipsUnsupported);

/// The same without the elements that are no volumes, as a source needs it. Throws InvalidData if none is left.
CellMesh volumesOf(const CellMesh& mesh);

} // namespace veltrane

#endif
