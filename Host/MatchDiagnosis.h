/// Why two meshes do not match. The library stops at the first point without a partner and does not say which; here
/// all are looked for.
#ifndef VELTRANE_HOST_MATCH_DIAGNOSIS_H
#define VELTRANE_HOST_MATCH_DIAGNOSIS_H

#include "Mesh.h"

#include <array>
#include <vector>

namespace veltrane
{

/// Selected target nodes or elements without a partner, in their order.
struct Unmatched
{
    float tolerance;            ///< how far apart partners may be
    int selectedCount = 0;      ///< with and without a partner
    std::vector<int> nowhere{}; ///< at whose place the source has nothing
    std::vector<int>
        elsewhereOnly{}; ///< at whose place the source has something only in materials of other state codes
};

/// The nodes that no source node is near enough to. `selection` is MatchOptions::targetMapping.
Unmatched findUnmatchedNodes(const Mesh& source, const Mesh& target, const std::vector<bool>& selection = {});

/// The elements that have no source element of their kind at their place: one with its nodes where theirs are, or for
/// tetrahedra, whose one Gauss point is their centre, one with the same centre. A mesh can match by Gauss points in
/// spite of such elements, if others have Gauss points at the same places, and fail without any, if the source has
/// elements inside each other.
Unmatched findUnmatchedElements(const Mesh& source, const Mesh& target, const std::vector<bool>& selection = {});

/// The mean of an element's nodes, as the library computes it to match Gauss points.
std::array<float, 3> centreOf(const Mesh& mesh, int element);

} // namespace veltrane

#endif
