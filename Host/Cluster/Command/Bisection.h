/// A mesh cut into parts of equal numbers of elements.
#ifndef VELTRANE_CLUSTER_BISECTION_H
#define VELTRANE_CLUSTER_BISECTION_H

#include "MovedMesh.h"

namespace veltrane
{

/// Per part its elements in their order. The elements are divided along the longest side of their box, and the halves
/// again; always the same way.
Lists bisected(const Mesh& mesh, int partCount);

} // namespace veltrane

#endif
