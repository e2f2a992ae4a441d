/// What the header of an element kind provides, and what the kinds share.
///
///     typeCode, nbNodes, nbGaussPoints
///     initialGuess          where the search for a point's reference coordinates starts
///     shapeFunctions(point, values)
///     shapeFunctionDerivatives(point, derivatives)      d/dxi, d/deta, d/dzeta per node
///     shapeFunctionsAtGaussPoint(gaussPoint, values)
///     contains(point, margin)        inside the reference domain, `margin` reference units tolerated
///     gaussPointsToNodes(gaussPointValues, nodeValues)  what the element gives to the average at each node
///
/// Values are computed in double precision from the single-precision reference point and stored as single.
#ifndef VELTRANE_REFERENCE_ELEMENT_H
#define VELTRANE_REFERENCE_ELEMENT_H

#include "../VectorHelpers.h"

#include <array>
#include <cstddef>

template <int nbNodes> using NodeValues = std::array<float, nbNodes>;
template <int nbNodes> using NodeGradients = std::array<Vector3, nbNodes>;

/// 1/sqrt(3), the Gauss-Legendre abscissa of two points on [-1, 1], stored as single before it is used.
inline constexpr float gaussAbscissa = single(0.57735026918962576451);

/// A gradient computed in double precision.
constexpr Vector3 gradient(double dXi, double dEta, double dZeta)
{
    return {single(dXi), single(dEta), single(dZeta)};
}

#endif
