/// The kinds of elements of Gmsh as cells of VTK.
#ifndef VELTRANE_HOST_GMSH_CELLS_H
#define VELTRANE_HOST_GMSH_CELLS_H

#include "CellOrders.h"

#include <vtkCellType.h>

namespace veltrane::gmsh
{

inline constexpr std::array<std::int8_t, 10> tetrahedron10{0, 1, 2, 3, 4, 5, 6, 7, 9, 8};
inline constexpr std::array<std::int8_t, 20> hexahedron20{0,  1, 2,  3,  4,  5,  6,  7,  8,  11,
                                                          13, 9, 16, 18, 19, 17, 10, 12, 14, 15};
inline constexpr std::array<std::int8_t, 27> hexahedron27{0,  1,  2,  3,  4,  5,  6,  7,  8,  11, 13, 9,  16, 18,
                                                          19, 17, 10, 12, 14, 15, 22, 23, 21, 24, 20, 25, 26};
inline constexpr std::array<std::int8_t, 15> wedge15{0, 1, 2, 3, 4, 5, 6, 9, 7, 12, 14, 13, 8, 10, 11};
inline constexpr std::array<std::int8_t, 18> wedge18{0, 1, 2, 3, 4, 5, 6, 9, 7, 12, 14, 13, 8, 10, 11, 15, 17, 16};
inline constexpr std::array<std::int8_t, 13> pyramid13{0, 1, 2, 3, 4, 5, 8, 10, 6, 7, 9, 11, 12};
inline constexpr std::array<std::int8_t, 14> pyramid14{0, 1, 2, 3, 4, 5, 8, 10, 6, 7, 9, 11, 12, 13};

/// What Gmsh's own numbers of the kinds are.
inline constexpr std::array cellOrders{
    CellOrder{1, VTK_LINE, 2},
    CellOrder{2, VTK_TRIANGLE, 3},
    CellOrder{3, VTK_QUAD, 4},
    CellOrder{4, VTK_TETRA, 4},
    CellOrder{5, VTK_HEXAHEDRON, 8},
    CellOrder{6, VTK_WEDGE, 6},
    CellOrder{7, VTK_PYRAMID, 5},
    CellOrder{8, VTK_QUADRATIC_EDGE, 3},
    CellOrder{9, VTK_QUADRATIC_TRIANGLE, 6},
    CellOrder{10, VTK_BIQUADRATIC_QUAD, 9},
    CellOrder{11, VTK_QUADRATIC_TETRA, 10, tetrahedron10},
    CellOrder{12, VTK_TRIQUADRATIC_HEXAHEDRON, 27, hexahedron27},
    CellOrder{13, VTK_BIQUADRATIC_QUADRATIC_WEDGE, 18, wedge18},
    CellOrder{14, VTK_LAGRANGE_PYRAMID, 14, pyramid14},
    CellOrder{15, VTK_VERTEX, 1},
    CellOrder{16, VTK_QUADRATIC_QUAD, 8},
    CellOrder{17, VTK_QUADRATIC_HEXAHEDRON, 20, hexahedron20},
    CellOrder{18, VTK_QUADRATIC_WEDGE, 15, wedge15},
    CellOrder{19, VTK_QUADRATIC_PYRAMID, 13, pyramid13},
};

} // namespace veltrane::gmsh

#endif
