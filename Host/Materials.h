/// Which materials of source and target belong together.
#ifndef VELTRANE_HOST_MATERIALS_H
#define VELTRANE_HOST_MATERIALS_H

#include "Mesh.h"

#include <map>
#include <string>
#include <vector>

namespace veltrane
{

/// State codes of materials by their names.
using StateCodes = std::map<std::string, int>;

/// Gives materials of the same name the same state code in both meshes: a given one or else one of its own, which no
/// other name has. Returns the names of the target materials whose state code no source material has. Throws
/// InvalidData for the code -1.
std::vector<std::string> matchMaterialsByName(Mesh& source, Mesh& target, const StateCodes& given = {});
std::vector<std::string> matchMaterialsByName(Mesh& source, PointCloud& target, const StateCodes& given = {});

} // namespace veltrane

#endif
