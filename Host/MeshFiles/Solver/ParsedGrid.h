/// Parsed meshes as data sets of VTK, and what these know about the numbers in the file.
#ifndef VELTRANE_HOST_PARSED_GRID_H
#define VELTRANE_HOST_PARSED_GRID_H

#include "FileFormat.h"
#include "ParsedMesh.h"

namespace veltrane
{

/// The mesh in the form that FileFormat.h tells of. Volumes come before surfaces, these before lines, so that a node
/// between cells of several dimensions has the material of the volume; see LowerGroups.h for those of surfaces.
///
/// What NodeLabels.h tells of is there unless the numbers of the nodes are 1, 2, 3 ... and there are no instances.
FileData toFileData(ParsedMesh mesh);

/// Throws BadFile unless the file has the step that is wanted.
void checkStep(const FileReading& reading, const ParsedMesh& mesh, const std::filesystem::path& path);

} // namespace veltrane

#endif
