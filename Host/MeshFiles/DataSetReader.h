/// Files as VTK's data sets, whatever their format.
#ifndef VELTRANE_HOST_DATA_SET_READER_H
#define VELTRANE_HOST_DATA_SET_READER_H

#include "CellTable.h"
#include "FileErrors.h"
#include "FileFormat.h"
#include "StoredArrays.h"

#include <vtkSmartPointer.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class vtkUnsignedCharArray;
class vtkUnstructuredGrid;

namespace veltrane
{

class VtuAhead;

/// 'path'
std::string quoted(const std::filesystem::path& path);

/// Throws BadFile for arrays that only their place in the file tells apart.
///
/// \param kind  "point" or "cell"
[[noreturn]] void throwTwoArrays(const std::filesystem::path& path, std::string_view kind, std::string_view name);

/// Throws NoInput or BadFile unless there is a readable regular file, that is not empty unless it may be.
void checkReadable(const std::filesystem::path& path, bool mayBeEmpty = false);

/// What is in a mesh file.
struct MeshContents
{
    vtkSmartPointer<vtkUnstructuredGrid> grid; ///< points and arrays, and the cells unless they are in the table
    vtkSmartPointer<vtkUnsignedCharArray> types;
    std::optional<CellTable> cells;
    StoredArrays stored{}; ///< those that a writer can take over
    LeftOut leftOut{};
};

/// Throws NoInput or BadFile, naming the file and what is wrong.
///
/// \param ahead  if somebody has begun to read the file
MeshContents readMesh(const std::filesystem::path& path, const FileReading& reading, VtuAhead* ahead);

/// The points of a point file or a mesh file, with the cells that it has, at the last step. Throws NoInput or BadFile,
/// naming the file and what is wrong.
FileData readPoints(const std::filesystem::path& path, int threads, VtuAhead* ahead = nullptr);

/// The times of the steps in a file; none of a file without steps.
std::vector<double> readStepTimes(const std::filesystem::path& path);

} // namespace veltrane

#endif
