/// VTK's data sets as files, whatever their format.
#ifndef VELTRANE_HOST_DATA_SET_WRITER_H
#define VELTRANE_HOST_DATA_SET_WRITER_H

#include "CellTable.h"
#include "FileErrors.h"
#include "FileFormat.h"

#include <filesystem>

class vtkUnsignedCharArray;
class vtkUnstructuredGrid;

namespace veltrane
{

class StoredArrays;

/// Writes cells or points in the format that the file's ending stands for. Points become cells of one point, and cells
/// are left out, where the format needs it. Throws CannotWrite with nothing but the reason. Tells what of the fields
/// has been left out.
LeftOut writeDataSet(vtkPointSet& dataSet, const std::filesystem::path& path, const FileWriting& writing = {});

/// The same for a grid whose cells are kept elsewhere. Stored arrays as for writeVtu().
LeftOut writeGrid(vtkUnstructuredGrid& grid, vtkUnsignedCharArray& types, const CellView& cells,
                  const std::filesystem::path& path, const FileWriting& writing, const StoredArrays* stored);

} // namespace veltrane

#endif
