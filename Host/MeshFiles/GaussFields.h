/// Gauss-point fields by VTK's convention: an array of the field data holds the values of all cells one after another,
/// names a cell-data array of offsets into it, and that one knows the quadrature scheme of each cell type.
#ifndef VELTRANE_HOST_GAUSS_FIELDS_H
#define VELTRANE_HOST_GAUSS_FIELDS_H

#include "Field.h"
#include "ItemNumbers.h"
#include "Mesh.h"

#include <filesystem>
#include <span>
#include <string>
#include <vector>

class vtkUnsignedCharArray;
class vtkUnstructuredGrid;

namespace veltrane
{

/// The elements of a file: the mesh that they make up, and their cells.
struct FileElements
{
    const Mesh& mesh;
    const ItemNumbers& cells;
    vtkUnsignedCharArray& types; ///< of all cells of the file
};

/// The names of those of floating-point numbers.
std::vector<std::string> listGaussFields(vtkUnstructuredGrid& grid);

/// Throws BadFile if the schemes do not have the Gauss points of the elements, in any order, or values are missing.
Field readGaussField(vtkUnstructuredGrid& grid, const FileElements& elements, const std::string& name,
                     const std::string& newName, const std::filesystem::path& path);

/// Adds the Gauss-point fields among these, and the offsets and schemes that they need.
void addGaussFields(vtkUnstructuredGrid& grid, const FileElements& elements, std::span<const Field> fields);

} // namespace veltrane

#endif
