/// Tells, for much less than an inversion, that a linear tetrahedron would certainly not accept a point.
///
/// The map of a linear tetrahedron is affine, so a point p has exact barycentric coordinates b_i, linear in p with
/// gradient g_i. An inversion that accepts p with reference coordinates x has
///   - every barycentric coordinate of x at least -m, with the margin m = 2 * precisionFactor, and
///   - the position of x, as it was computed, within t = precisionFactor * (smallest box extent) of p.
/// The computed position is off by at most r = 8 u S M (u = 2^-24, half a unit in the last place of 1; M the largest
/// node coordinate of the mesh; S = 1 + 6 m bounds the sum of the magnitudes of x's barycentric coordinates). Hence
///   b_i(p) >= -m - |g_i| (t + 2 r) for every i,
/// and a point for which one of these fails is refused. Multiplied with the volume, b_i and g_i become products of edge
/// vectors; formed in single precision from values of at most L (the largest extent of the box, in which all points
/// are), such a product of three is off by less than 128 u L^3. The bound below takes 1e-5 L^3. Where the volume is not
/// far above that, nothing is refused here, so that a singular element still meets its fate in the inversion.
#ifndef VELTRANE_TETRAHEDRON_REFUSAL_H
#define VELTRANE_TETRAHEDRON_REFUSAL_H

#include "ReferenceCoordinates.h"

#include <algorithm>
#include <cmath>

class TetrahedronRefusal
{
public:
    TetrahedronRefusal() = default;

    /// \param precisionFactor of the inversion; where it is not positive nothing is ever refused
    /// \param largestCoordinate magnitude of the largest node coordinate of the mesh
    TetrahedronRefusal(float precisionFactor, float largestCoordinate)
        : itsPrecisionFactor(precisionFactor), itsMargin(2.0F * precisionFactor * 1.00001F + 1e-6F),
          itsRounding(16.0F * 0x1p-24F * (1.0F + 12.0F * itsMargin) * largestCoordinate),
          itsIsActive(precisionFactor > 0.0F && std::isfinite(itsRounding) && std::isfinite(itsMargin))
    {
    }

    /// `box` is the element's inflated box, which holds the point.
    bool refuses(const ElementNodes<LinearTetrahedron>& nodes, const float* box, const Vector3& point) const
    {
        const Vector3 extents{box[3] - box[0], box[4] - box[1], box[5] - box[2]};
        const float smallest = std::min({extents[0], extents[1], extents[2]});
        const float largest = std::max({extents[0], extents[1], extents[2]});
        const float distance = itsPrecisionFactor * smallest;
        if (!itsIsActive || !(distance * distance > 1e-30F))
        {
            return false; // the inversion may accept its first guess without an iteration
        }
        const Vector3 a = difference(nodes[1], nodes[0]);
        const Vector3 b = difference(nodes[2], nodes[0]);
        const Vector3 c = difference(nodes[3], nodes[0]);
        const Vector3 p = difference(point, nodes[0]);
        const Vector3 normalOfA = crossProduct(b, c);
        const float volume = dotProduct(a, normalOfA);
        const float magnitudeOfVolume = std::fabs(volume);
        const float rounding = 1e-5F * largest * largest * largest;
        if (!(magnitudeOfVolume > 4.0F * rounding + 1e-30F))
        {
            return false;
        }
        const float sign = volume < 0.0F ? -1.0F : 1.0F;
        const float reach = 1.00001F * distance + itsRounding;
        const float least = -itsMargin * (magnitudeOfVolume + rounding) - 2.0F * rounding;
        const float coordinateOfA = sign * dotProduct(p, normalOfA);
        if (coordinateOfA < least - reach * magnitude(normalOfA))
        {
            return true;
        }
        const Vector3 normalOfB = crossProduct(c, a);
        const float coordinateOfB = sign * dotProduct(p, normalOfB);
        if (coordinateOfB < least - reach * magnitude(normalOfB))
        {
            return true;
        }
        const Vector3 normalOfC = crossProduct(a, b);
        const float coordinateOfC = sign * dotProduct(p, normalOfC);
        if (coordinateOfC < least - reach * magnitude(normalOfC))
        {
            return true;
        }
        const float coordinateOfOrigin = magnitudeOfVolume - coordinateOfA - coordinateOfB - coordinateOfC;
        const float magnitudeOfSum = magnitude(normalOfA) + magnitude(normalOfB) + magnitude(normalOfC);
        return coordinateOfOrigin < least - 4.0F * rounding - reach * magnitudeOfSum;
    }

private:
    static Vector3 difference(const Vector3& a, const Vector3& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }

    /// At least the length of a vector, with room for the rounding of its components.
    static float magnitude(const Vector3& v) { return 1.0001F * (std::fabs(v[0]) + std::fabs(v[1]) + std::fabs(v[2])); }

    float itsPrecisionFactor = 0.0F;
    float itsMargin = 0.0F;
    float itsRounding = 0.0F;
    bool itsIsActive = false;
};

#endif
