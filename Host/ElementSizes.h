/// How large the elements of a mesh are: the longest edges of their boxes.
#ifndef VELTRANE_HOST_ELEMENT_SIZES_H
#define VELTRANE_HOST_ELEMENT_SIZES_H

#include "Mesh.h"

namespace veltrane
{

/// What is farther away than that is not near a mesh.
float largestElementSize(const Mesh& mesh, int threads = 1);

double meanElementSize(const Mesh& mesh);

} // namespace veltrane

#endif
