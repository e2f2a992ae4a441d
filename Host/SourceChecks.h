/// Checks that keep a source mesh away from faults on which the library ends the process.
#ifndef VELTRANE_HOST_SOURCE_CHECKS_H
#define VELTRANE_HOST_SOURCE_CHECKS_H

#include "Mesh.h"

namespace veltrane
{

/// Throws InvalidData, naming the element, unless every element is a volume element with a regular Jacobian at the
/// point where the library begins its search for reference coordinates. For linear tetrahedra, whose Jacobian is the
/// same everywhere, this says all; the Jacobian of the other kinds can still become singular on the way.
void checkSourceElements(const Mesh& source);

} // namespace veltrane

#endif
