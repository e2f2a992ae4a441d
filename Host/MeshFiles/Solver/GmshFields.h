/// Fields of Gmsh's files: the sections $NodeData and $ElementData.
#ifndef VELTRANE_HOST_GMSH_FIELDS_H
#define VELTRANE_HOST_GMSH_FIELDS_H

#include "GmshNumbers.h"
#include "NodeNumbers.h"
#include "ParsedMesh.h"

#include <optional>
#include <string>
#include <vector>

namespace veltrane
{

/// A section that is not part of the mesh.
struct GmshSection
{
    std::string name;  ///< "$NodeData"
    const char* begin; ///< behind the line of the name
};

/// Adds to the mesh the times of all steps, and the fields of the one that is wanted or else of the last one.
void takeGmshFields(const std::vector<GmshSection>& sections, GmshNumbers& numbers, const NodeNumbers& nodes,
                    std::optional<int> step, ParsedMesh& mesh);

} // namespace veltrane

#endif
