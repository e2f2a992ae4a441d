/// A mesh in another system of coordinates.
#ifndef VELTRANE_HOST_PLACEMENT_H
#define VELTRANE_HOST_PLACEMENT_H

#include "Field.h"

#include <array>

namespace veltrane
{

using Point3 = std::array<double, 3>;

/// Its columns are where the axes come to lie.
using Rotation = std::array<std::array<double, 3>, 3>;

/// About an axis of coordinates, 0 to 2, by degrees, seen against its direction anticlockwise. Multiples of 90 degrees
/// are exact.
Rotation rotationAbout(int axis, double degrees);

/// First `second`, then `first`.
Rotation operator*(const Rotation& first, const Rotation& second);

/// What is done to positions: they are scaled, then turned, then moved.
struct Placement
{
    double scale = 1;
    Rotation rotation{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    Point3 translation{};

    bool isIdentity() const;
    Point3 operator()(const Point3& position) const;
};

/// What turns with a mesh: of fields of 3 components the vectors, of 6 the symmetric tensors xx, yy, zz, xy, yz, xz, of
/// 9 the tensors row by row. Others stay as they are. Computed in double precision.
Field turned(const Field& field, const Rotation& rotation);

} // namespace veltrane

#endif
