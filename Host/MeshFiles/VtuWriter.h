/// Unstructured grids as VTK's XML files, the arrays appended as raw bytes and compressed on all cores.
#ifndef VELTRANE_HOST_VTU_WRITER_H
#define VELTRANE_HOST_VTU_WRITER_H

#include "CellTable.h"
#include "Compression.h"
#include "FileErrors.h"

#include <filesystem>

class vtkUnsignedCharArray;
class vtkUnstructuredGrid;

namespace veltrane
{

class StoredArrays;

/// Whether the grid's points and arrays are of usual types, without keys of VTK beside them.
bool canWriteVtu(vtkUnstructuredGrid& grid);

/// Writes points, arrays and these cells. Throws CannotWrite with nothing but the reason.
///
/// \param stored  those of the arrays that another file has; they are taken over as they stand there unless the writing
///                asks for another form
/// \pre canWriteVtu(grid)
void writeVtu(vtkUnstructuredGrid& grid, vtkUnsignedCharArray& types, const CellView& cells,
              const std::filesystem::path& path, const FileWriting& writing, const StoredArrays* stored = nullptr);

} // namespace veltrane

#endif
