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

/// A point-data array as a node field of this name. Throws BadFile if there is none, or none of floating-point numbers.
Field toField(vtkAbstractArray* array, const std::string& name, const std::filesystem::path& path);

/// Of the field's name, components and precision.
vtkSmartPointer<vtkDataArray> toArray(const Field& field);

} // namespace veltrane

#endif
