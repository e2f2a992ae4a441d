/// Unstructured grids in VTK's XML files as VTK's own writers write them, read on all cores.
#ifndef VELTRANE_HOST_VTU_FILE_H
#define VELTRANE_HOST_VTU_FILE_H

#include "CellTable.h"
#include "StoredArrays.h"

#include <vtkSmartPointer.h>

#include <filesystem>
#include <memory>
#include <optional>

class vtkUnsignedCharArray;
class vtkUnstructuredGrid;

namespace veltrane
{

/// What is in a file.
struct VtuContents
{
    vtkSmartPointer<vtkUnstructuredGrid> grid{}; ///< points and arrays, no cells
    vtkSmartPointer<vtkUnsignedCharArray> types{};
    CellTable cells{};
    StoredArrays stored{}; ///< those that a writer can take over
};

/// Reads a file in one piece with arrays as bytes, in letters or raw, compressed by zlib or not. Nothing if there is
/// anything else about the file, above all anything wrong: VTK's reader knows what to make of it. Nothing in the
/// process is touched, so that several files can be read at once. May throw std::bad_alloc.
///
/// \param threads  0: as many as usableThreadCount() tells
std::optional<VtuContents> readVtu(const std::filesystem::path& path, int threads);

} // namespace veltrane

#endif
