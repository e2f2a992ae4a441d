/// Inversions of several points at once, each in an element of its own of one kind: what invertPoint() does, lane by
/// lane.
#ifndef VELTRANE_PACKED_INVERSION_H
#define VELTRANE_PACKED_INVERSION_H

#include "Pack.h"
#include "ReferenceCoordinates.h"

#include <array>

using Vector3Pack = std::array<FloatPack, 3>;

/// Picks the lanes from four triples of coordinates that can be indexed.
template <class A> Vector3Pack packOf(const A& a, const A& b, const A& c, const A& d)
{
    return {FloatPack(a[0], b[0], c[0], d[0]), FloatPack(a[1], b[1], c[1], d[1]), FloatPack(a[2], b[2], c[2], d[2])};
}

/// `areFinite`: all coordinates of the nodes are known to be finite. `tolerances` are the squared distances at which
/// the lanes have converged.
template <class Kind>
std::array<Inversion, packSize> invertPoints(const ElementNodes<Kind, FloatPack>& nodes, bool areFinite,
                                             FloatPack tolerances, const Vector3Pack& points, float precisionFactor)
{
    const bool hasShortJacobian = std::is_same_v<Kind, LinearTetrahedron> && areFinite;
    Vector3Pack xi{FloatPack(Kind::initialGuess[0]), FloatPack(Kind::initialGuess[1]),
                   FloatPack(Kind::initialGuess[2])};
    Vector3Pack position = physicalPosition<Kind>(nodes, xi);
    FloatPack squaredError = FloatPack(2.0F) * tolerances;
    PackMask isSingular;
    PackMask isActive = squaredError > tolerances;
    FloatPack nbIterations; // a small number, exact in single precision
    for (int i = 0; i < maxNbInversionIterations && !isActive.isEmpty(); ++i)
    {
        FloatPack jacobian[3][3];
        FloatPack inverse[3][3];
        if (hasShortJacobian)
        {
            if constexpr (std::is_same_v<Kind, LinearTetrahedron>)
            {
                jacobianOfFiniteTetrahedron(nodes, jacobian);
            }
        }
        else
        {
            jacobianMatrix<Kind>(nodes, xi, jacobian);
        }
        const FloatPack determinant = adjugate33(jacobian, inverse);
        const PackMask isZero = determinant == FloatPack();
        isSingular = isSingular | (isActive & isZero);
        isActive = isActive & ~isZero;
        divideAdjugate33(inverse, determinant);
        const Vector3Pack residual{points[0] - position[0], points[1] - position[1], points[2] - position[2]};
        const Vector3Pack step = matrixTimesVector(inverse, residual);
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            xi[axis] = select(isActive, xi[axis] + step[axis], xi[axis]);
        }
        position = physicalPosition<Kind>(nodes, xi);
        squaredError = squaredDistance(position, points);
        nbIterations = select(isActive, nbIterations + FloatPack(1.0F), nbIterations);
        isActive = isActive & (squaredError > tolerances);
    }

    std::array<Inversion, packSize> inversions;
    for (std::size_t lane = 0; lane < packSize; ++lane)
    {
        Inversion& inversion = inversions[lane];
        inversion.referenceCoords = {xi[0][lane], xi[1][lane], xi[2][lane]};
        if (isSingular[lane])
        {
            inversion.result = Inversion::singular;
        }
        else if (!isActive[lane])
        {
            inversion.nbIterations = static_cast<int>(nbIterations[lane]);
            inversion.result = Kind::contains(inversion.referenceCoords, 2.0 * precisionFactor) ? Inversion::inside
                                                                                                : Inversion::outside;
        }
    }
    return inversions;
}

#endif
