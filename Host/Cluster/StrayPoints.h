/// Gauss points of strongly bent elements that lie beyond the boxes of these.
#ifndef VELTRANE_HOST_STRAY_POINTS_H
#define VELTRANE_HOST_STRAY_POINTS_H

#include "Communicator.h"

#include "BucketSpaceClass.h"
#include "ModelClass.h"

#include <vector>

namespace veltrane
{

/// Collective. The buckets of such points of this rank's part of the target, each as a range of one, if an element of
/// any rank touches them: one process would look for the points there. `space` is laid out.
std::vector<BucketRange> bucketsOfStrayPoints(const Communicator& ranks, const ModelClass& part,
                                              const BucketSpaceClass& space, float marginRatio);

} // namespace veltrane

#endif
