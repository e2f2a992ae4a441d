/// Checks that keep meshes away from faults on which the library ends the process.
#ifndef VELTRANE_HOST_ELEMENT_CHECKS_H
#define VELTRANE_HOST_ELEMENT_CHECKS_H

#include "Mesh.h"

#include <span>
#include <string_view>
#include <vector>

namespace veltrane
{

/// Throws InvalidData, naming the element and its side, "source" or "target", and the requirement, unless every element
/// is a volume element; with mapping flags per material, every element of a material whose flag is 1.
void checkVolumeElements(const Mesh& mesh, std::string_view side, std::string_view requirement,
                         std::span<const int> flags = {});

/// The same for all elements of a source.
void checkSourceKinds(const Mesh& source);

/// What is wrong with the shapes of a mesh's volume elements.
struct ElementFaults
{
    /// The elements whose Jacobian is singular at the point where the library begins its search for reference
    /// coordinates: they have no volume there in single precision.
    std::vector<int> flat{};
    /// The elements whose Jacobian is negative there or at any corner: their nodes are in the order of a mirrored
    /// element, or the element is folded.
    std::vector<int> inverted{};
};

/// \param threads  0: as many as usableThreadCount() tells
ElementFaults findElementFaults(const Mesh& mesh, int threads = 1);

/// Throws InvalidData, naming the element, unless every element is a volume element with a regular Jacobian at the
/// point where the library begins its search for reference coordinates. For linear tetrahedra, whose Jacobian is the
/// same everywhere, this says all; the Jacobian of the other kinds can still become singular on the way.
void checkSourceElements(const Mesh& source);

} // namespace veltrane

#endif
