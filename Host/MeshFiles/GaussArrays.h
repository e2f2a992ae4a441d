/// Values at Gauss points in a data set, by VTK's convention: an array of the field data holds those of all cells one
/// after another and names a cell-data array of offsets into it, which knows the scheme of each cell type.
#ifndef VELTRANE_HOST_GAUSS_ARRAYS_H
#define VELTRANE_HOST_GAUSS_ARRAYS_H

#include "ElementKind.h"

#include <vtkSmartPointer.h>
#include <vtkType.h>

#include <string>
#include <utility>
#include <vector>

class vtkAbstractArray;
class vtkDataArray;
class vtkIdTypeArray;
class vtkQuadratureSchemeDefinition;
class vtkUnstructuredGrid;

namespace veltrane
{

/// The Gauss points of the cells of a type.
struct GaussScheme
{
    int cellType;
    std::vector<std::vector<double>> shapeValues{}; ///< per Gauss point, of each node in the order of the cell's nodes
    std::vector<double> weights{};
};

/// The points of the library's rule for cells of a type that are elements; none for others.
GaussScheme gaussSchemeOf(int cellType, GaussPointRule rule = GaussPointRule::full);

/// Whether a scheme has just the points of one of the library's rules for its cells, in any order.
bool isUsable(const GaussScheme& scheme);

/// Adds an array of offsets, one per cell, for the schemes of the cells' types.
void addGaussOffsets(vtkUnstructuredGrid& grid, vtkIdTypeArray& offsets, const std::vector<GaussScheme>& schemes);

/// Adds values of Gauss points, in the places that an array of offsets of this name tells.
void addGaussValues(vtkUnstructuredGrid& grid, vtkDataArray& values, const char* offsetsName);

/// The name of the offsets of an array of the field data; null if it has no values of Gauss points.
const char* gaussOffsetsName(vtkAbstractArray& values);

/// Arrays of the field data with values at Gauss points, and the names of their offsets.
std::vector<std::pair<std::string, std::string>> gaussArraysOf(vtkUnstructuredGrid& grid);

/// "the field 'S' at Gauss points" for each of them.
std::vector<std::string> gaussArrayTexts(vtkUnstructuredGrid& grid);

/// Null if the offsets know none for cells of the type.
vtkQuadratureSchemeDefinition* findScheme(vtkDataArray& offsets, int cellType);

} // namespace veltrane

#endif
