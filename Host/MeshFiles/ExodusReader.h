/// Exodus files.
#ifndef VELTRANE_HOST_EXODUS_READER_H
#define VELTRANE_HOST_EXODUS_READER_H

#include <vtkSmartPointer.h>

#include <filesystem>
#include <optional>
#include <vector>

class vtkUnstructuredGrid;

namespace veltrane
{

/// All element blocks in one grid, with the cell array ObjectId telling their numbers, and all results at one step; the
/// last step if none is given. Nodes stand where the file says, whatever displacements it holds. Throws BadFile.
vtkSmartPointer<vtkUnstructuredGrid> readExodus(const std::filesystem::path& path, std::optional<int> step);

/// The times of the steps. Throws BadFile.
std::vector<double> readExodusTimes(const std::filesystem::path& path);

} // namespace veltrane

#endif
