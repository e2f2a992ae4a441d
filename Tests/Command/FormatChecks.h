/// What grids must be like that have been read from files of all formats.
#ifndef VELTRANE_TESTS_FORMAT_CHECKS_H
#define VELTRANE_TESTS_FORMAT_CHECKS_H

#include "FileFormat.h"

#include <vtkSmartPointer.h>
#include <vtkUnstructuredGrid.h>

#include <filesystem>
#include <string>

/// The file as the command reads it. Fails unless it has cells.
vtkSmartPointer<vtkUnstructuredGrid> readByFormat(const std::filesystem::path& path,
                                                  const veltrane::FileReading& reading = {});

/// 1 + 2 x - 3 y + 5 z + x^2 - 2 y^2 + z x
double quadratic(double x, double y, double z);

/// The nodes of each cell are in VTK's order: no cell is inside out, the middle nodes lie where the corners say, and an
/// array of the values of quadratic() at the nodes, times a factor, gives them within curved cells, too.
void expectNodesInOrder(vtkUnstructuredGrid& grid, const std::string& array, double factor = 1);

#endif
