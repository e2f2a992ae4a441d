/// Grids of VTK as elements.
#ifndef VELTRANE_HOST_GRID_ELEMENTS_H
#define VELTRANE_HOST_GRID_ELEMENTS_H

#include "Mesh.h"

#include <vtkType.h>

#include <filesystem>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

class vtkDataArray;
class vtkDataSetAttributes;
class vtkPointSet;
class vtkUnstructuredGrid;

namespace veltrane
{

/// What a mesh is read for. A source is made of the volume cells alone: its surface cells, which many mesh generators
/// write beside them, are left out. So is a target whose Gauss points are matched or receive values. Cells of points
/// and lines are always left out.
enum class MeshRole
{
    source,
    target,
    gaussPointTarget
};

struct MeshReading
{
    MeshRole role = MeshRole::target;
    /// Leaves out volume and surface cells without a counterpart among the elements, instead of refusing the file.
    bool skipUnsupported = false;
    /// Makes point data of the floating-point cell data, too.
    bool cellsAsNodes = false;
    /// The array that numbers the materials; the first one of the usual names if none is given.
    std::optional<std::string> materialArray{};
    /// Of an Exodus file, from 0; the last one if none is given.
    std::optional<int> step{};
};

/// A cell type of VTK and how often there are cells of it.
using CellCounts = std::map<int, int>;

struct GridElements
{
    MeshData data{};                ///< all but coordinates and materials
    std::vector<vtkIdType> cells{}; ///< of the elements
    CellCounts skipped{};           ///< cells without a counterpart
};

/// All of these throw BadFile, naming the file and what is wrong where.
GridElements readElements(vtkUnstructuredGrid& grid, const MeshReading& reading, const std::filesystem::path& path);

/// That the cells are whole: their points exist, and are as many as they need. Of a file without cells nothing is said.
void checkCells(vtkUnstructuredGrid& grid, const std::filesystem::path& path);

/// In single precision.
std::vector<float> readCoordinates(vtkPointSet& points, const std::filesystem::path& path);

/// In double precision; empty if the file has them in single precision.
std::vector<double> readExactCoordinates(vtkPointSet& points);

/// In the order in which they are looked for.
std::span<const char* const> usualMaterialArrays();

/// The array of the reading's name or of a usual name; null if there is none of a usual name.
vtkDataArray* findMaterialArray(vtkDataSetAttributes& data, const std::optional<std::string>& name,
                                const std::filesystem::path& path);

struct MaterialNumbers
{
    std::vector<Material> materials{};  ///< in the order of their numbers, which are their names
    std::vector<int> materialPerItem{}; ///< an index into `materials`
};

/// The materials of some cells or points; without an array all are of one material, named "all".
MaterialNumbers readMaterials(vtkDataArray* array, const std::vector<vtkIdType>& items, const std::string& itemName,
                              const std::filesystem::path& path);

/// "3 lines, 1 quadratic hexahedron"
std::string cellCountText(const CellCounts& counts);

} // namespace veltrane

#endif
