/// Meshes and fields as files of Gmsh.
#ifndef VELTRANE_HOST_GMSH_WRITING_H
#define VELTRANE_HOST_GMSH_WRITING_H

#include "FileFormat.h"

namespace veltrane
{

/// Writes version 4.1 as text, with materials as physical groups, point data as $NodeData and cell data as
/// $ElementData. Symmetric tensors of 6 components become all 9, vectors of 2 components have a third of 0, as Gmsh
/// needs them; rows without a value are left out. Throws CannotWrite with nothing but the reason.
LeftOut writeGmsh(vtkPointSet& dataSet, const std::filesystem::path& path, const FileWriting& writing);

} // namespace veltrane

#endif
