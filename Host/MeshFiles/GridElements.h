/// Grids of VTK as elements.
#ifndef VELTRANE_HOST_GRID_ELEMENTS_H
#define VELTRANE_HOST_GRID_ELEMENTS_H

#include "ItemNumbers.h"
#include "Mesh.h"
#include "Placement.h"

#include <vtkType.h>

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class vtkUnstructuredGrid;

namespace veltrane
{

class VtuAhead;

/// What a mesh is read for. A source is made of the volume cells alone: its surfaces, lines and points of any order,
/// which many mesh generators write beside them, are left out. So is a target whose Gauss points are matched or receive
/// values. Of another target all cells count.
enum class MeshRole
{
    source,
    target,
    gaussPointTarget
};

struct MeshReading
{
    MeshRole role = MeshRole::target;
    /// Leaves out volume cells without a counterpart among the elements, instead of refusing the file.
    bool skipUnsupported = false;
    /// Makes point data of the floating-point cell data, too.
    bool cellsAsNodes = false;
    /// The array that numbers the materials; the first one of the usual names if none is given.
    std::optional<std::string> materialArray{};
    /// Of a file with several steps, from 0; the last one if none is given.
    std::optional<int> step{};
    /// What is done to the points. Fields stay as they are in the file.
    Placement placement{};
    /// Hexahedra with repeated nodes stay hexahedra, as values at their Gauss points need it.
    bool keepsRepeatedNodes = false;
    GaussPointRule gaussPointRule = GaussPointRule::full; ///< of the mesh
    /// Of a file in pieces the share with this number, if it is divided into so many.
    int piece = 0;
    int pieceCount = 1;
    int threads = 1; ///< to read with; 0: as many as usableThreadCount() tells
    /// The file, if somebody has begun to read it.
    std::shared_ptr<VtuAhead> ahead{};
};

/// A cell type of VTK and how often there are cells of it.
using CellCounts = std::map<int, int>;

struct GridElements
{
    MeshData data{};         ///< all but coordinates and materials
    ItemNumbers cells{};     ///< of the elements; of a target without cells its points
    CellCounts skipped{};    ///< cells that cannot be used
    CellCounts nodeGroups{}; ///< cells of which only the nodes count, see addNodeGroup()
    int nodeGroupElementCount = 0;
    int usedCellCount = 0;
};

/// All of these throw BadFile, naming the file and what is wrong where.
GridElements readElements(vtkUnstructuredGrid& grid, const MeshReading& reading, const std::filesystem::path& path);

/// That the cells are whole: their points exist, and are as many as they need. Of a file without cells nothing is said.
void checkCells(vtkUnstructuredGrid& grid, const std::filesystem::path& path);

/// "3 lines, 1 quadratic hexahedron"
std::string cellCountText(const CellCounts& counts);

} // namespace veltrane

#endif
