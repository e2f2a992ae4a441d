/// The materials of the cells or points of VTK's grids.
#ifndef VELTRANE_HOST_GRID_MATERIALS_H
#define VELTRANE_HOST_GRID_MATERIALS_H

#include "ItemNumbers.h"
#include "Mesh.h"

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

class vtkDataArray;
class vtkDataSetAttributes;

namespace veltrane
{

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
MaterialNumbers readMaterials(vtkDataArray* array, const ItemNumbers& items, const std::string& itemName,
                              const std::filesystem::path& path);

} // namespace veltrane

#endif
