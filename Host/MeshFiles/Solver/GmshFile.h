/// Meshes and results of Gmsh (.msh), versions 2 and 4.1, as text and binary.
#ifndef VELTRANE_HOST_GMSH_FILE_H
#define VELTRANE_HOST_GMSH_FILE_H

#include "ParsedMesh.h"
#include "SourceText.h"

#include <optional>

namespace veltrane
{

/// The mesh with physical groups as materials, the times of all steps, and the fields of one of them.
///
/// \param step  from 0; the last one if none is given
///
/// Throws BadFile, naming the line, or the byte of a binary file.
ParsedMesh parseGmsh(const SourceText& source, std::optional<int> step);

} // namespace veltrane

#endif
