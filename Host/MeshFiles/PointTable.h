/// Tables of points (.csv), the first line of which names the columns.
#ifndef VELTRANE_HOST_POINT_TABLE_H
#define VELTRANE_HOST_POINT_TABLE_H

#include <vtkSmartPointer.h>

#include <filesystem>

class vtkPointSet;
class vtkPolyData;

namespace veltrane
{

/// Points at x, y and z, or Points:0, Points:1 and Points:2, with the other columns as point data. Throws BadFile.
vtkSmartPointer<vtkPolyData> readPointTable(const std::filesystem::path& path);

/// The columns x, y and z, then one per component of each point-data array: name, or name:0, name:1, ... Numbers are
/// written so that reading them gives the same ones. Throws CannotWrite.
void writePointTable(vtkPointSet& points, const std::filesystem::path& path);

} // namespace veltrane

#endif
