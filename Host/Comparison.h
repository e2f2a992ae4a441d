/// Fields on the same mesh, compared node by node.
#ifndef VELTRANE_HOST_COMPARISON_H
#define VELTRANE_HOST_COMPARISON_H

#include "Field.h"
#include "Mesh.h"

#include <cstddef>
#include <string>

namespace veltrane
{

/// Says where two meshes differ first ("the first has 8 nodes, the second 27"), or nothing if they are the same: as
/// many nodes and elements, elements of the same kinds between the same nodes in the same order, nodes at the same
/// places. Coordinates may differ by the rounding of the largest one to single precision. Materials are not regarded.
std::string meshDifference(const Mesh& first, const Mesh& second);

/// How far a field is from another one. A magnitude is the Euclidean norm over the components at a node, a difference
/// the magnitude of the field minus the reference.
///
/// A node has no usable value in a field if a component there is NaN, infinite or undefined (see undefinedBound).
/// Differences are taken at the nodes that have usable values in both fields. Figures without any node are NaN.
struct FieldComparison
{
    std::size_t comparedNodeCount = 0;
    std::size_t unusableInField = 0;     ///< nodes
    std::size_t unusableInReference = 0; ///< nodes
    double largestReferenceMagnitude;
    double largestDifference;
    int largestDifferenceNode = -1; ///< where it is, the first of several; -1 if there is no node
    double rootMeanSquareDifference;
    /// sqrt(sum |field - reference|^2 / sum |reference|^2) over the nodes. If the reference is zero everywhere, 0 if
    /// the field is, too, and infinite otherwise.
    double relativeDifference;

    /// Whether the relative difference is larger than that. A node without a usable value is beyond any tolerance.
    bool exceeds(double tolerance) const;
};

/// Compares two fields at the nodes, or at the Gauss points, of the same mesh: what is said of nodes goes for Gauss
/// points, too. Throws InvalidData if they do not have the same places and components.
FieldComparison compare(const Field& field, const Field& reference);

} // namespace veltrane

#endif
