/// Unstructured grids as VTK's XML files, the arrays appended as raw bytes and compressed on all cores.
#ifndef VELTRANE_HOST_VTU_WRITER_H
#define VELTRANE_HOST_VTU_WRITER_H

#include "Compression.h"
#include "FileErrors.h"

#include <filesystem>

class vtkUnstructuredGrid;

namespace veltrane
{

/// Whether the grid holds nothing but points, cells and arrays of usual types: no polyhedra, and no keys of VTK beside
/// an array.
bool canWriteVtu(vtkUnstructuredGrid& grid);

/// Throws CannotWrite with nothing but the reason.
///
/// \pre canWriteVtu(grid)
void writeVtu(vtkUnstructuredGrid& grid, const std::filesystem::path& path, const FileWriting& writing);

} // namespace veltrane

#endif
