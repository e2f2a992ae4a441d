/// The cut that shows most of a transfer.
#ifndef VELTRANE_HOST_CUT_CHOICE_H
#define VELTRANE_HOST_CUT_CHOICE_H

#include "Cut.h"

#include <span>

namespace veltrane
{

/// The cuts of both meshes by one plane.
struct CutPair
{
    CutPlane plane;
    Cut source;
    Cut target;
};

/// Tries planes across each axis: through the middle of the target, at its quarters, and where its value is largest.
/// Takes the one on which the target differs most from its mean, or leaves the source most, seen over the area.
CutPair mostTellingCut(const CutMesh& source, const CutMesh& target, const Mesh& targetMesh,
                       std::span<const double> targetValues);

/// A plane, and the cut of the source by it.
struct SourceCut
{
    CutPlane plane;
    Cut cut;
};

/// For a target of points: tries planes through some of them across each axis. Takes the one to which most points are
/// near and on which the source differs most from its mean.
///
/// \param sourceValues, pointValues  not a number where there is no usable one
SourceCut mostTellingCut(const CutMesh& source, const Mesh& sourceMesh, std::span<const double> sourceValues,
                         const PointCloud& points, std::span<const double> pointValues);

} // namespace veltrane

#endif
