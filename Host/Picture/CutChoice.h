/// Where a transfer is cut if nothing else is said.
#ifndef VELTRANE_HOST_CUT_CHOICE_H
#define VELTRANE_HOST_CUT_CHOICE_H

#include "Cut.h"

#include <span>

namespace veltrane
{

/// The node or point of the largest magnitude among values of which some may be not a number; 0 if all are.
std::size_t peakOf(std::span<const double> values);

/// The plane through the peak of a mesh's values, across the axis along which the mesh extends least, so that most of
/// it is seen. It lies just beside the faces of elements that are in the plane.
CutPlane planeThroughPeak(const Mesh& mesh, std::span<const double> values);

/// The planes through the peak across each axis, that one first.
std::vector<CutPlane> planesThroughPeak(const Mesh& mesh, std::span<const double> values);

/// For a target of points: the plane through the point of the largest value, across the axis along which the points
/// extend least, within the source. If it does not meet the source, one that goes through its first element.
CutPlane planeThroughPeak(const Mesh& source, const PointCloud& points, std::span<const double> pointValues);

} // namespace veltrane

#endif
