/// Files as VTK's data sets, whatever their format.
#ifndef VELTRANE_HOST_DATA_SET_READER_H
#define VELTRANE_HOST_DATA_SET_READER_H

#include "CellTable.h"
#include "FileErrors.h"

#include <vtkSmartPointer.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class vtkDataObject;
class vtkPointSet;
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

/// Throws NoInput or BadFile unless there is a readable regular file that is not empty.
void checkReadable(const std::filesystem::path& path);

/// What is in a mesh file.
struct MeshContents
{
    vtkSmartPointer<vtkUnstructuredGrid> grid; ///< points and arrays, and the cells unless they are in the table
    vtkSmartPointer<vtkUnsignedCharArray> types;
    std::optional<CellTable> cells;
};

/// Throws NoInput or BadFile, naming the file and what is wrong.
///
/// \param step     of an Exodus file, from 0; the last one if none is given. Files of other formats have no steps.
/// \param threads  0: as many as usableThreadCount() tells
/// \param ahead    if somebody has begun to read the file
MeshContents readMesh(const std::filesystem::path& path, std::optional<int> step, int threads, VtuAhead* ahead);

/// The points of a point file or a mesh file, with the cells that it has. Throws NoInput or BadFile, naming the file
/// and what is wrong.
vtkSmartPointer<vtkPointSet> readPoints(const std::filesystem::path& path, int threads);

/// The times of the steps of an Exodus file; none of a file of another format or without steps.
std::vector<double> readStepTimes(const std::filesystem::path& path);

} // namespace veltrane

#endif
