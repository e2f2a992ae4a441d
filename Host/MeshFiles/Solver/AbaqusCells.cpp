#include "AbaqusCells.h"

#include <vtkCellType.h>

#include <charconv>
#include <optional>

namespace veltrane
{
namespace
{

constexpr std::array<std::int8_t, 3> middleSecond{0, 2, 1};
/// The nodes within the faces: below, above, then those around from the first side on; the centre comes first.
constexpr std::array<std::int8_t, 27> hexahedron27{0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13,
                                                   14, 15, 16, 17, 18, 19, 26, 24, 23, 25, 21, 22, 20};

constexpr std::array volumes{
    CellOrder{4, VTK_TETRA, 4},
    CellOrder{5, VTK_PYRAMID, 5},
    CellOrder{6, VTK_WEDGE, 6},
    CellOrder{8, VTK_HEXAHEDRON, 8},
    CellOrder{10, VTK_QUADRATIC_TETRA, 10},
    CellOrder{13, VTK_QUADRATIC_PYRAMID, 13},
    CellOrder{15, VTK_QUADRATIC_WEDGE, 15},
    CellOrder{20, VTK_QUADRATIC_HEXAHEDRON, 20},
    CellOrder{27, VTK_TRIQUADRATIC_HEXAHEDRON, 27, hexahedron27},
};

constexpr std::array surfaces{
    CellOrder{3, VTK_TRIANGLE, 3},           CellOrder{4, VTK_QUAD, 4},
    CellOrder{6, VTK_QUADRATIC_TRIANGLE, 6}, CellOrder{8, VTK_QUADRATIC_QUAD, 8},
    CellOrder{9, VTK_BIQUADRATIC_QUAD, 9},
};

constexpr std::array lines{
    CellOrder{2, VTK_LINE, 2},
    CellOrder{3, VTK_QUADRATIC_EDGE, 3, middleSecond},
};

/// What stands before the number of nodes in the names of types.
constexpr std::string_view volumeNames[] = {"C3D",  "DC3D",  "AC3D",  "DCC3D", "Q3D", "FC3D",
                                            "EC3D", "EMC3D", "COH3D", "GK3D",  "SC",  "CSS"};
constexpr std::string_view surfaceNames[] = {"S",    "STRI", "M3D",  "SFM3D", "R3D",  "F3D",  "CPS",  "CPE",
                                             "CPEG", "CAX",  "CGAX", "DS",    "DC2D", "DCAX", "AC2D", "ACAX"};
constexpr std::string_view lineNames[] = {"T2D", "T3D", "R2D", "RAX", "DC1D"};
/// Before their dimension and 1 or 3 for linear and cubic ones with 2 nodes, 2 for those with 3: B32.
constexpr std::string_view beamNames[] = {"B2", "B3", "PIPE2", "PIPE3"};

/// The number behind one of the names; nothing if the type begins with none of them.
std::optional<int> numberBehind(std::span<const std::string_view> names, std::string_view type)
{
    for (const std::string_view name : names)
    {
        int number = 0;
        if (type.starts_with(name) &&
            std::from_chars(type.data() + name.size(), type.data() + type.size(), number).ec == std::errc())
        {
            return number;
        }
    }
    return std::nullopt;
}

} // namespace

AbaqusKind abaqusKindOf(std::string_view type)
{
    if (const auto nodeCount = numberBehind(volumeNames, type))
    {
        return {findOrder(volumes, *nodeCount), true};
    }
    if (const auto nodeCount = numberBehind(surfaceNames, type))
    {
        constexpr int sixNodesFiveFreedoms = 65; // of STRI65
        return {findOrder(surfaces, *nodeCount == sixNodesFiveFreedoms ? 6 : *nodeCount), false};
    }
    if (const auto nodeCount = numberBehind(lineNames, type))
    {
        return {findOrder(lines, *nodeCount), false};
    }
    if (const auto order = numberBehind(beamNames, type))
    {
        return {findOrder(lines, *order == 2 ? 3 : 2), false};
    }
    return {};
}

} // namespace veltrane
