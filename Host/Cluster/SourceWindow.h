/// The part of the source that a rank needs for its part of the target.
#ifndef VELTRANE_HOST_SOURCE_WINDOW_H
#define VELTRANE_HOST_SOURCE_WINDOW_H

#include "MovedMesh.h"

#include "BucketSpaceClass.h"

namespace veltrane
{

/// Collective. Every rank gets the elements whose boxes, enlarged by a factor, touch its window of the grid. `boxes`
/// are those of the part's elements, inflated.
MovedMesh gatherSource(const Communicator& ranks, const MeshInParts& part, const BoxTable& boxes,
                       const BucketRanges& ranges, const BucketRange& window, float bucketFactor, bool isExact);

} // namespace veltrane

#endif
