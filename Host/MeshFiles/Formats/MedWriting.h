/// Grids as MED files.
#ifndef VELTRANE_HOST_MED_WRITING_H
#define VELTRANE_HOST_MED_WRITING_H

#include "FileFormat.h"
#include "MedFile.h"

class vtkUnstructuredGrid;

namespace veltrane
{

/// Writes the mesh, families for its materials, and its fields. What a MED file cannot hold is added to `leftOut`.
/// Throws MedFailure.
///
/// \pre MED has all cells of the grid
void writeMed(const MedFile& file, vtkUnstructuredGrid& grid, LeftOut& leftOut);

} // namespace veltrane

#endif
