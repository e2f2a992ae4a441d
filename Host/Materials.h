/// Which materials of source and target belong together.
#ifndef VELTRANE_HOST_MATERIALS_H
#define VELTRANE_HOST_MATERIALS_H

#include "Mesh.h"

#include <string>
#include <vector>

namespace veltrane
{

/// Gives materials of the same name the same state code in both meshes, and materials of different names different
/// ones. Returns the names of the target materials that the source does not have.
std::vector<std::string> matchMaterialsByName(Mesh& source, Mesh& target);

} // namespace veltrane

#endif
