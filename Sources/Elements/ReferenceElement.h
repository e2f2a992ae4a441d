/// What the header of an element kind provides, and what the kinds share.
///
///     typeCode, nbNodes, nbGaussPoints
///     initialGuess          where the search for a point's reference coordinates starts
///     shapeFunctions(point, values)
///     shapeFunctionDerivatives(point, derivatives)      d/dxi, d/deta, d/dzeta per node
///     isConstantAlong(node, axis)    whether that derivative of the node's function is 0 everywhere
///     shapeFunctionsAtGaussPoint(gaussPoint, values)
///     contains(point, margin)        inside the reference domain, `margin` reference units tolerated; a bool, or a
///                                    mask of the points of a pack
///     gaussPointsToNodes(gaussPointValues, nodeValues)  what the element gives to the average at each node
///
/// Values are those computed in double precision from the single-precision reference point and stored as single. The
/// shape functions and their derivatives do so for any Number: float, or a pack of points that are worked on at once.
#ifndef VELTRANE_REFERENCE_ELEMENT_H
#define VELTRANE_REFERENCE_ELEMENT_H

#include "../VectorHelpers.h"

#include <array>
#include <concepts>
#include <cstddef>

template <int nbNodes, class Number = float> using NodeValues = std::array<Number, nbNodes>;
template <int nbNodes, class Number = float> using NodeGradients = std::array<std::array<Number, 3>, nbNodes>;

/// 1/sqrt(3), the Gauss-Legendre abscissa of two points on [-1, 1], stored as single before it is used.
inline constexpr float gaussAbscissa = single(0.57735026918962576451);

constexpr bool allOf(std::same_as<bool> auto... conditions)
{
    return (conditions && ...);
}

/// Stores a gradient computed in double precision; constant components are plain numbers.
template <class Number, class DXi, class DEta, class DZeta>
constexpr void setGradient(std::array<Number, 3>& gradient, const DXi& dXi, const DEta& dEta, const DZeta& dZeta)
{
    gradient[0] = single(dXi);
    gradient[1] = single(dEta);
    gradient[2] = single(dZeta);
}

#endif
