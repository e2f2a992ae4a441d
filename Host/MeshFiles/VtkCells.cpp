#include "VtkCells.h"

#include "Text.h"

#include <vtkCellType.h>
#include <vtkCellTypes.h>

#include <algorithm>
#include <string_view>

namespace veltrane
{
namespace
{

constexpr std::array<VtkCellKind, 9> cellKinds{{
    {VTK_TETRA, ElementKind::tetrahedron, {0, 1, 2, 3}},
    {VTK_HEXAHEDRON, ElementKind::hexahedron, {0, 1, 2, 3, 4, 5, 6, 7}},
    // Voxels and pixels count their nodes row by row, elements around their faces.
    {VTK_VOXEL, ElementKind::hexahedron, {0, 1, 3, 2, 4, 5, 7, 6}},
    {VTK_PIXEL, ElementKind::quadrilateral, {0, 1, 3, 2}},
    {VTK_WEDGE, ElementKind::wedge, {0, 1, 2, 3, 4, 5}},
    {VTK_PYRAMID, ElementKind::pyramid, {0, 1, 2, 3, 4}},
    // The origin of the reference tetrahedron is VTK's first corner and the element's third one.
    {VTK_QUADRATIC_TETRA, ElementKind::quadraticTetrahedron, {1, 2, 0, 3, 5, 6, 4, 8, 9, 7}},
    {VTK_TRIANGLE, ElementKind::triangle, {0, 1, 2}},
    {VTK_QUAD, ElementKind::quadrilateral, {0, 1, 2, 3}},
}};

} // namespace

const VtkCellKind* findVtkCellKind(int cellType)
{
    const auto found = std::ranges::find(cellKinds, cellType, &VtkCellKind::cellType);
    return found == cellKinds.end() ? nullptr : &*found;
}

std::string vtkCellName(int cellType)
{
    const std::string_view name = vtkCellTypes::GetClassNameFromTypeId(cellType);
    if (name.empty() || name == "UnknownClass")
    {
        return text("cell type ", cellType);
    }
    return std::string(name);
}

} // namespace veltrane
