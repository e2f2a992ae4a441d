#include "MedCells.h"

#include <vtkCellType.h>

#include <algorithm>
#include <array>

namespace veltrane
{
namespace
{

constexpr std::array point{0};
constexpr std::array line{0, 1, 2};
constexpr std::array triangle{0, 1, 2, 3, 4, 5, 6};
constexpr std::array quadrilateral{0, 1, 2, 3, 4, 5, 6, 7, 8};
constexpr std::array tetrahedron{0, 2, 1, 3, 6, 5, 4, 7, 9, 8};
constexpr std::array hexahedron{0,  3,  2,  1,  4,  7,  6,  5,  11, 10, 9,  8,  15, 14,
                                13, 12, 16, 19, 18, 17, 21, 23, 24, 22, 20, 25, 26};
constexpr std::array wedge{0, 2, 1, 3, 5, 4, 8, 7, 6, 11, 10, 9, 12, 14, 13, 17, 16, 15};
constexpr std::array pyramid{0, 3, 2, 1, 4, 8, 7, 6, 5, 9, 12, 11, 10};

/// The order of the larger kind begins with that of the smaller one.
template <std::size_t size> constexpr std::span<const int> first(std::size_t count, const std::array<int, size>& order)
{
    return std::span<const int>(order).first(count);
}

/// Volumes first, then in the order of MED.
constexpr std::array cells{
    MedCell{MED_TETRA4, "TETRA4", VTK_TETRA, 3, first(4, tetrahedron)},
    MedCell{MED_PYRA5, "PYRA5", VTK_PYRAMID, 3, first(5, pyramid)},
    MedCell{MED_PENTA6, "PENTA6", VTK_WEDGE, 3, first(6, wedge)},
    MedCell{MED_HEXA8, "HEXA8", VTK_HEXAHEDRON, 3, first(8, hexahedron)},
    MedCell{MED_TETRA10, "TETRA10", VTK_QUADRATIC_TETRA, 3, first(10, tetrahedron)},
    MedCell{MED_PYRA13, "PYRA13", VTK_QUADRATIC_PYRAMID, 3, first(13, pyramid)},
    MedCell{MED_PENTA15, "PENTA15", VTK_QUADRATIC_WEDGE, 3, first(15, wedge)},
    MedCell{MED_PENTA18, "PENTA18", VTK_BIQUADRATIC_QUADRATIC_WEDGE, 3, first(18, wedge)},
    MedCell{MED_HEXA20, "HEXA20", VTK_QUADRATIC_HEXAHEDRON, 3, first(20, hexahedron)},
    MedCell{MED_HEXA27, "HEXA27", VTK_TRIQUADRATIC_HEXAHEDRON, 3, first(27, hexahedron)},
    MedCell{MED_TRIA3, "TRIA3", VTK_TRIANGLE, 2, first(3, triangle)},
    MedCell{MED_QUAD4, "QUAD4", VTK_QUAD, 2, first(4, quadrilateral)},
    MedCell{MED_TRIA6, "TRIA6", VTK_QUADRATIC_TRIANGLE, 2, first(6, triangle)},
    MedCell{MED_TRIA7, "TRIA7", VTK_BIQUADRATIC_TRIANGLE, 2, first(7, triangle)},
    MedCell{MED_QUAD8, "QUAD8", VTK_QUADRATIC_QUAD, 2, first(8, quadrilateral)},
    MedCell{MED_QUAD9, "QUAD9", VTK_BIQUADRATIC_QUAD, 2, first(9, quadrilateral)},
    MedCell{MED_SEG2, "SEG2", VTK_LINE, 1, first(2, line)},
    MedCell{MED_SEG3, "SEG3", VTK_QUADRATIC_EDGE, 1, first(3, line)},
    MedCell{MED_POINT1, "POINT1", VTK_VERTEX, 0, first(1, point)},
};

} // namespace

std::span<const MedCell> medCells()
{
    return cells;
}

const MedCell* findMedCell(int cellType)
{
    const auto found = std::ranges::find(cells, cellType, &MedCell::cellType);
    return found == cells.end() ? nullptr : &*found;
}

} // namespace veltrane
