/// Factors of shape functions along one axis from -1 to 1, and their derivatives.
#ifndef VELTRANE_AXIS_FACTORS_H
#define VELTRANE_AXIS_FACTORS_H

#include "ReferenceElement.h"

/// Those of nodes at -1, 0 and 1.
template <class Wide> struct AxisFactors
{
    std::array<Wide, 3> values;
    std::array<Wide, 3> derivatives;
};

/// 1 - x and 1 + x, and the bubble between them, of serendipity elements.
template <class Wide> constexpr AxisFactors<Wide> serendipityFactors(const Wide& x)
{
    return {{1.0 - x, 1.0 - x * x, 1.0 + x}, {Wide(-1.0), -2.0 * x, Wide(1.0)}};
}

/// The quadratic functions that are 1 at one node and 0 at the others.
template <class Wide> constexpr AxisFactors<Wide> quadraticFactors(const Wide& x)
{
    return {{0.5 * x * (x - 1.0), 1.0 - x * x, 0.5 * x * (1.0 + x)}, {x - 0.5, -2.0 * x, 0.5 + x}};
}

/// Which of the three nodes along each axis a node of a cube is.
template <std::size_t nbNodes>
constexpr std::array<std::array<std::size_t, 3>, nbNodes> placesOf(const std::array<Vector3, nbNodes>& nodes)
{
    std::array<std::array<std::size_t, 3>, nbNodes> places{};
    for (std::size_t node = 0; node < nbNodes; ++node)
    {
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            places[node][axis] = static_cast<std::size_t>(nodes[node][axis] + 1.0F);
        }
    }
    return places;
}

#endif
