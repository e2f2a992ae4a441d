/// Gauss-point fields by VTK's convention: an array of the field data holds the values of all cells one after another,
/// names a cell-data array of offsets into it, and that one knows the quadrature scheme of each cell type.
#ifndef VELTRANE_HOST_GAUSS_FIELDS_H
#define VELTRANE_HOST_GAUSS_FIELDS_H

#include "Field.h"
#include "Mesh.h"

#include <vtkType.h>

#include <filesystem>
#include <span>
#include <string>
#include <vector>

class vtkUnstructuredGrid;

namespace veltrane
{

/// The names of those of floating-point numbers.
std::vector<std::string> listGaussFields(vtkUnstructuredGrid& grid);

/// Throws BadFile if the schemes do not have the Gauss points of the elements, in any order, or values are missing.
///
/// \param cells  of the mesh's elements
Field readGaussField(vtkUnstructuredGrid& grid, const Mesh& mesh, std::span<const vtkIdType> cells,
                     const std::string& name, const std::string& newName, const std::filesystem::path& path);

/// Adds the Gauss-point fields among these, and the offsets and schemes that they need.
void addGaussFields(vtkUnstructuredGrid& grid, const Mesh& mesh, std::span<const vtkIdType> cells,
                    std::span<const Field> fields);

} // namespace veltrane

#endif
