/// Arrays of VTK as fields, and back.
#ifndef VELTRANE_HOST_FIELD_ARRAYS_H
#define VELTRANE_HOST_FIELD_ARRAYS_H

#include "Field.h"

#include <vtkSmartPointer.h>
#include <vtkType.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

class vtkAbstractArray;
class vtkDataArray;
class vtkFieldData;
class vtkPointSet;
class vtkUnstructuredGrid;

namespace veltrane
{

/// A point-data array of a file.
struct PointArray
{
    std::string name;
    int componentCount;
    bool isFloatingPoint;
};

/// Those that have names.
std::vector<PointArray> listArrays(vtkFieldData& data);

/// Throws BadFile, naming the array, unless all point and cell arrays have one value for each point or cell.
void checkTupleCounts(vtkPointSet& dataSet, const std::filesystem::path& path);

/// The same of a data set whose cells are kept elsewhere.
void checkTupleCounts(vtkPointSet& dataSet, vtkIdType cellCount, const std::filesystem::path& path);

/// Adds to the point data what the floating-point cell data is at the nodes: the mean over the cells of the highest
/// dimension around each. Throws BadFile if there is point data of the same name.
void averageCellsAtNodes(vtkUnstructuredGrid& grid, const std::filesystem::path& path);

/// The point-data array of this name as a node field of a new name. Throws BadFile if it is null or not of
/// floating-point numbers.
Field toField(vtkAbstractArray* array, const std::string& name, const std::string& newName,
              const std::filesystem::path& path);

/// Of the field's name, components and precision; the values are the field's, which must live longer.
vtkSmartPointer<vtkDataArray> toArray(const Field& field);

} // namespace veltrane

#endif
