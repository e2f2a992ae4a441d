/// Groups of surfaces, lines and points beside volumes. They say where loads and supports are, and are no materials.
#ifndef VELTRANE_HOST_LOWER_GROUPS_H
#define VELTRANE_HOST_LOWER_GROUPS_H

#include "ParsedMesh.h"

#include <vtkType.h>

#include <map>
#include <string>
#include <utility>

class vtkDataArray;
class vtkUnstructuredGrid;

namespace veltrane
{

/// Of a dimension and a number.
using LowerGroupNames = std::map<std::pair<int, int>, std::string>;

/// Gives cells along others of the highest dimension the material of those. Returns the groups of all cells, as the
/// file numbers them; nothing if that changes nothing.
std::vector<int> takeMaterialsFromVolumes(ParsedMesh& mesh);

/// Cell data `group`: the file's own numbers of groups, of cells of all dimensions, with names in the field data
/// `group_names`.
void setGroups(vtkUnstructuredGrid& grid, const std::vector<int>& groups, const LowerGroupNames& names);
vtkDataArray* findGroups(vtkUnstructuredGrid& grid); ///< null if there are none
LowerGroupNames lowerGroupNames(vtkUnstructuredGrid& grid);

inline constexpr const char* groupArray = "group";

} // namespace veltrane

#endif
