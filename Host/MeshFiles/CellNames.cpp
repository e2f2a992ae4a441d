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
    int dimension; ///< -1 if it has no nodes
    std::string_view one;
    std::string_view more;
};

/// All types that VTK names.
constexpr std::array names{
    NameOfType{VTK_EMPTY_CELL, -1, "empty cell", "empty cells"},
    NameOfType{VTK_VERTEX, 0, "point cell", "point cells"},
    NameOfType{VTK_POLY_VERTEX, 0, "group of points", "groups of points"},
    NameOfType{VTK_LINE, 1, "line", "lines"},
    NameOfType{VTK_POLY_LINE, 1, "polyline", "polylines"},
    NameOfType{VTK_TRIANGLE, 2, "triangle", "triangles"},
    NameOfType{VTK_TRIANGLE_STRIP, 2, "triangle strip", "triangle strips"},
    NameOfType{VTK_POLYGON, 2, "polygon", "polygons"},
    NameOfType{VTK_PIXEL, 2, "quadrilateral", "quadrilaterals"},
    NameOfType{VTK_QUAD, 2, "quadrilateral", "quadrilaterals"},
    NameOfType{VTK_TETRA, 3, "tetrahedron", "tetrahedra"},
    NameOfType{VTK_VOXEL, 3, "hexahedron", "hexahedra"},
    NameOfType{VTK_HEXAHEDRON, 3, "hexahedron", "hexahedra"},
    NameOfType{VTK_WEDGE, 3, "wedge", "wedges"},
    NameOfType{VTK_PYRAMID, 3, "pyramid", "pyramids"},
    NameOfType{VTK_PENTAGONAL_PRISM, 3, "pentagonal prism", "pentagonal prisms"},
    NameOfType{VTK_HEXAGONAL_PRISM, 3, "hexagonal prism", "hexagonal prisms"},
    NameOfType{VTK_QUADRATIC_EDGE, 1, "quadratic line", "quadratic lines"},
    NameOfType{VTK_QUADRATIC_TRIANGLE, 2, "quadratic triangle", "quadratic triangles"},
    NameOfType{VTK_QUADRATIC_QUAD, 2, "quadratic quadrilateral", "quadratic quadrilaterals"},
    NameOfType{VTK_QUADRATIC_POLYGON, 2, "quadratic polygon", "quadratic polygons"},
    NameOfType{VTK_QUADRATIC_TETRA, 3, "quadratic tetrahedron", "quadratic tetrahedra"},
    NameOfType{VTK_QUADRATIC_HEXAHEDRON, 3, "quadratic hexahedron", "quadratic hexahedra"},
    NameOfType{VTK_QUADRATIC_WEDGE, 3, "quadratic wedge", "quadratic wedges"},
    NameOfType{VTK_QUADRATIC_PYRAMID, 3, "quadratic pyramid", "quadratic pyramids"},
    NameOfType{VTK_BIQUADRATIC_QUAD, 2, "biquadratic quadrilateral", "biquadratic quadrilaterals"},
    NameOfType{VTK_TRIQUADRATIC_HEXAHEDRON, 3, "triquadratic hexahedron", "triquadratic hexahedra"},
    NameOfType{VTK_TRIQUADRATIC_PYRAMID, 3, "triquadratic pyramid", "triquadratic pyramids"},
    NameOfType{VTK_QUADRATIC_LINEAR_QUAD, 2, "quadratic-linear quadrilateral", "quadratic-linear quadrilaterals"},
    NameOfType{VTK_QUADRATIC_LINEAR_WEDGE, 3, "quadratic-linear wedge", "quadratic-linear wedges"},
    NameOfType{VTK_BIQUADRATIC_QUADRATIC_WEDGE, 3, "biquadratic wedge", "biquadratic wedges"},
    NameOfType{VTK_BIQUADRATIC_QUADRATIC_HEXAHEDRON, 3, "biquadratic hexahedron", "biquadratic hexahedra"},
    NameOfType{VTK_BIQUADRATIC_TRIANGLE, 2, "biquadratic triangle", "biquadratic triangles"},
    NameOfType{VTK_CUBIC_LINE, 1, "cubic line", "cubic lines"},
    NameOfType{VTK_CONVEX_POINT_SET, 3, "convex set of points", "convex sets of points"},
    NameOfType{VTK_POLYHEDRON, 3, "polyhedron", "polyhedra"},
    NameOfType{VTK_LAGRANGE_CURVE, 1, "Lagrange curve", "Lagrange curves"},
    NameOfType{VTK_LAGRANGE_TRIANGLE, 2, "Lagrange triangle", "Lagrange triangles"},
    NameOfType{VTK_LAGRANGE_QUADRILATERAL, 2, "Lagrange quadrilateral", "Lagrange quadrilaterals"},
    NameOfType{VTK_LAGRANGE_TETRAHEDRON, 3, "Lagrange tetrahedron", "Lagrange tetrahedra"},
    NameOfType{VTK_LAGRANGE_HEXAHEDRON, 3, "Lagrange hexahedron", "Lagrange hexahedra"},
    NameOfType{VTK_LAGRANGE_WEDGE, 3, "Lagrange wedge", "Lagrange wedges"},
    NameOfType{VTK_LAGRANGE_PYRAMID, 3, "Lagrange pyramid", "Lagrange pyramids"},
    NameOfType{VTK_BEZIER_CURVE, 1, "Bezier curve", "Bezier curves"},
    NameOfType{VTK_BEZIER_TRIANGLE, 2, "Bezier triangle", "Bezier triangles"},
    NameOfType{VTK_BEZIER_QUADRILATERAL, 2, "Bezier quadrilateral", "Bezier quadrilaterals"},
    NameOfType{VTK_BEZIER_TETRAHEDRON, 3, "Bezier tetrahedron", "Bezier tetrahedra"},
    NameOfType{VTK_BEZIER_HEXAHEDRON, 3, "Bezier hexahedron", "Bezier hexahedra"},
    NameOfType{VTK_BEZIER_WEDGE, 3, "Bezier wedge", "Bezier wedges"},
    NameOfType{VTK_BEZIER_PYRAMID, 3, "Bezier pyramid", "Bezier pyramids"},
};

const NameOfType* find(int cellType)
{
    const auto found = std::ranges::find(names, cellType, &NameOfType::cellType);
    return found == names.end() ? nullptr : &*found;
}

} // namespace

CellName cellNameOf(int cellType)
{
    if (const VtkCellKind* kind = findVtkCellKind(cellType))
    {
        const ElementKindInfo& info = *findElementKind(kind->kind);
        return {std::string(info.name), std::string(info.plural)};
    }
    const NameOfType* name = find(cellType);
    if (name == nullptr)
    {
        return {text("cell of type ", cellType), text("cells of type ", cellType)};
    }
    return {std::string(name->one), std::string(name->more)};
}

std::optional<int> cellDimension(int cellType)
{
    const NameOfType* name = find(cellType);
    return name == nullptr ? std::nullopt : std::optional(name->dimension);
}

} // namespace veltrane
