/// Where positions are counted from, so that single precision tells neighbouring nodes apart.
#ifndef VELTRANE_HOST_COMMON_ORIGIN_H
#define VELTRANE_HOST_COMMON_ORIGIN_H

#include "Mesh.h"

#include <array>
#include <span>
#include <vector>

namespace veltrane
{

using Origin = std::array<double, 3>;

inline constexpr Origin noOrigin{};

/// The middle of the source's box, if the spacing of singles at the farthest coordinate of source and target exceeds a
/// tenth of the tolerance of reference coordinates times the smallest side of the box of any volume element of the
/// source; else noOrigin. `targetCoordinates` are x, y, z of each position, and may be empty.
///
/// \param threads  0: as many as usableThreadCount() tells
Origin commonOrigin(const Mesh& source, std::span<const float> targetCoordinates, float tolerance, int threads);

/// The same put together from parts of the source and of the target: the farthest coordinate of all tells which side
/// of an element is small, and the box is that of the whole source.
float farthestCoordinate(std::span<const float> coordinates);
float smallestTellableSide(float farthestCoordinate, float tolerance);
bool hasVolumeElementBelow(const Mesh& mesh, float side, int threads = 1);
Origin middleOf(const Box& box);

/// Coordinates less an origin, rounded to single precision once; `exact` is empty where `coordinates` say it all.
std::vector<float> coordinatesFrom(const Origin& origin, std::span<const float> coordinates,
                                   std::span<const double> exact);

/// A mesh whose coordinates are counted from an origin of its own, if it needs one.
class PositionsInMesh
{
public:
    /// The mesh is borrowed. Threads as in commonOrigin().
    PositionsInMesh(const Mesh& mesh, int threads);
    PositionsInMesh(const Mesh& mesh, const Origin& origin);

    std::span<const float, 3> operator[](int node) const
    {
        return coordinates_.subspan(static_cast<std::size_t>(node) * 3).first<3>();
    }

private:
    std::vector<float> moved_;
    std::span<const float> coordinates_;
};

} // namespace veltrane

#endif
