/// The two correspondences of the reference implementation.
#ifndef REFERENCE_CORRESPONDENCE_H
#define REFERENCE_CORRESPONDENCE_H

#include "ReferenceTypes.h"

namespace reference
{

struct CorrespondenceRequest
{
    MeshArrays source;
    MeshArrays target;
    const int* targetMatlMappingFlags = nullptr;
    Tuning tuning;
    HostCallback callback;
};

/// Per target node the 1-based number of its source node.
Outcome matchNodes(const CorrespondenceRequest& request, int* nodeCorrespondence);

/// Per target element and Gauss point the 1-based numbers of the source element and of its Gauss point.
Outcome matchGaussPoints(const CorrespondenceRequest& request, int** sourceElements, int** sourceGaussPoints);

} // namespace reference

#endif
