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

} // namespace veltrane

#endif
