#include "CellNames.h"

#include "Text.h"
#include "VtkCells.h"

#include <vtkCellType.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace veltrane
{
namespace
{

struct NameOfType
{
    int cellType;
    std::string_view one;
    std::string_view more;
};

/// Cells without a counterpart among the elements.
constexpr std::array names{
    NameOfType{VTK_EMPTY_CELL, "empty cell", "empty cells"},
    NameOfType{VTK_VERTEX, "point cell", "point cells"},
    NameOfType{VTK_POLY_VERTEX, "group of points", "groups of points"},
    NameOfType{VTK_LINE, "line", "lines"},
    NameOfType{VTK_POLY_LINE, "polyline", "polylines"},
    NameOfType{VTK_TRIANGLE, "triangle", "triangles"},
    NameOfType{VTK_TRIANGLE_STRIP, "triangle strip", "triangle strips"},
    NameOfType{VTK_POLYGON, "polygon", "polygons"},
    NameOfType{VTK_PIXEL, "quadrilateral", "quadrilaterals"},
    NameOfType{VTK_QUAD, "quadrilateral", "quadrilaterals"},
    NameOfType{VTK_TETRA, "tetrahedron", "tetrahedra"},
    NameOfType{VTK_VOXEL, "hexahedron", "hexahedra"},
    NameOfType{VTK_HEXAHEDRON, "hexahedron", "hexahedra"},
    NameOfType{VTK_WEDGE, "wedge", "wedges"},
    NameOfType{VTK_PYRAMID, "pyramid", "pyramids"},
    NameOfType{VTK_PENTAGONAL_PRISM, "pentagonal prism", "pentagonal prisms"},
    NameOfType{VTK_HEXAGONAL_PRISM, "hexagonal prism", "hexagonal prisms"},
    NameOfType{VTK_QUADRATIC_EDGE, "quadratic line", "quadratic lines"},
    NameOfType{VTK_QUADRATIC_TRIANGLE, "quadratic triangle", "quadratic triangles"},
    NameOfType{VTK_QUADRATIC_QUAD, "quadratic quadrilateral", "quadratic quadrilaterals"},
    NameOfType{VTK_QUADRATIC_POLYGON, "quadratic polygon", "quadratic polygons"},
    NameOfType{VTK_QUADRATIC_TETRA, "quadratic tetrahedron", "quadratic tetrahedra"},
    NameOfType{VTK_QUADRATIC_HEXAHEDRON, "quadratic hexahedron", "quadratic hexahedra"},
    NameOfType{VTK_QUADRATIC_WEDGE, "quadratic wedge", "quadratic wedges"},
    NameOfType{VTK_QUADRATIC_PYRAMID, "quadratic pyramid", "quadratic pyramids"},
    NameOfType{VTK_BIQUADRATIC_QUAD, "biquadratic quadrilateral", "biquadratic quadrilaterals"},
    NameOfType{VTK_TRIQUADRATIC_HEXAHEDRON, "triquadratic hexahedron", "triquadratic hexahedra"},
    NameOfType{VTK_TRIQUADRATIC_PYRAMID, "triquadratic pyramid", "triquadratic pyramids"},
    NameOfType{VTK_QUADRATIC_LINEAR_QUAD, "quadratic-linear quadrilateral", "quadratic-linear quadrilaterals"},
    NameOfType{VTK_QUADRATIC_LINEAR_WEDGE, "quadratic-linear wedge", "quadratic-linear wedges"},
    NameOfType{VTK_BIQUADRATIC_QUADRATIC_WEDGE, "biquadratic wedge", "biquadratic wedges"},
    NameOfType{VTK_BIQUADRATIC_QUADRATIC_HEXAHEDRON, "biquadratic hexahedron", "biquadratic hexahedra"},
    NameOfType{VTK_BIQUADRATIC_TRIANGLE, "biquadratic triangle", "biquadratic triangles"},
    NameOfType{VTK_CUBIC_LINE, "cubic line", "cubic lines"},
    NameOfType{VTK_CONVEX_POINT_SET, "convex set of points", "convex sets of points"},
    NameOfType{VTK_POLYHEDRON, "polyhedron", "polyhedra"},
    NameOfType{VTK_LAGRANGE_CURVE, "Lagrange curve", "Lagrange curves"},
    NameOfType{VTK_LAGRANGE_TRIANGLE, "Lagrange triangle", "Lagrange triangles"},
    NameOfType{VTK_LAGRANGE_QUADRILATERAL, "Lagrange quadrilateral", "Lagrange quadrilaterals"},
    NameOfType{VTK_LAGRANGE_TETRAHEDRON, "Lagrange tetrahedron", "Lagrange tetrahedra"},
    NameOfType{VTK_LAGRANGE_HEXAHEDRON, "Lagrange hexahedron", "Lagrange hexahedra"},
    NameOfType{VTK_LAGRANGE_WEDGE, "Lagrange wedge", "Lagrange wedges"},
    NameOfType{VTK_LAGRANGE_PYRAMID, "Lagrange pyramid", "Lagrange pyramids"},
    NameOfType{VTK_BEZIER_CURVE, "Bezier curve", "Bezier curves"},
    NameOfType{VTK_BEZIER_TRIANGLE, "Bezier triangle", "Bezier triangles"},
    NameOfType{VTK_BEZIER_QUADRILATERAL, "Bezier quadrilateral", "Bezier quadrilaterals"},
    NameOfType{VTK_BEZIER_TETRAHEDRON, "Bezier tetrahedron", "Bezier tetrahedra"},
    NameOfType{VTK_BEZIER_HEXAHEDRON, "Bezier hexahedron", "Bezier hexahedra"},
    NameOfType{VTK_BEZIER_WEDGE, "Bezier wedge", "Bezier wedges"},
    NameOfType{VTK_BEZIER_PYRAMID, "Bezier pyramid", "Bezier pyramids"},
};

} // namespace

CellName cellNameOf(int cellType)
{
    if (const VtkCellKind* kind = findVtkCellKind(cellType))
    {
        const ElementKindInfo& info = *findElementKind(kind->kind);
        return {std::string(info.name), std::string(info.plural)};
    }
    const auto found = std::ranges::find(names, cellType, &NameOfType::cellType);
    if (found == names.end())
    {
        return {text("cell of type ", cellType), text("cells of type ", cellType)};
    }
    return {std::string(found->one), std::string(found->more)};
}

} // namespace veltrane
