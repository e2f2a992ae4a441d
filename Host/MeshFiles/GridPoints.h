/// The points of VTK's grids as coordinates.
#ifndef VELTRANE_HOST_GRID_POINTS_H
#define VELTRANE_HOST_GRID_POINTS_H

#include "Placement.h"

#include <filesystem>
#include <vector>

class vtkPointSet;
class vtkUnstructuredGrid;

namespace veltrane
{

/// Gives the grid points of its own, in double precision, unless the placement changes nothing.
void place(vtkUnstructuredGrid& grid, const Placement& placement);

/// In single precision.
std::vector<float> readCoordinates(vtkPointSet& points, const std::filesystem::path& path);

/// In double precision; empty if the file has them in single precision.
std::vector<double> readExactCoordinates(vtkPointSet& points);

} // namespace veltrane

#endif
