/// Exact correspondences between two meshes that share their places: node by node, and Gauss point by Gauss point. No
/// values are interpolated; every selected target point has its partner in the source, or there is no result.
/// Any number of computations may run at once.
#ifndef VELTRANE_HOST_MATCH_H
#define VELTRANE_HOST_MATCH_H

#include "CallSettings.h"
#include "Mesh.h"

#include <string>
#include <vector>

namespace veltrane
{

/// The partner of target points that were not selected.
inline constexpr int noPartner = -1;

struct MatchOptions
{
    /// Per target material: its nodes and Gauss points are matched. A node belongs to the material of the first
    /// element that it is part of. Empty: all are.
    std::vector<bool> targetMapping{};
    /// The tolerance serves to find the source element around a target element's centre, so it has an effect on Gauss
    /// points only. How far apart partners may be is not to be set: a thousandth of the mean source element.
    Tuning tuning{};
    Rules rules{};
    int threads = 1; ///< 0: as many as usableThreadCount() tells
    ProgressCallback progress{};
};

struct NodeMatch
{
    std::vector<int> sourceNodes; ///< per target node, from 0, or noPartner
};

struct GaussPointMatch
{
    /// Per target Gauss point, from 0, or noPartner. Gauss points run over the elements in order, and over each
    /// element's points in the order of its kind.
    std::vector<int> sourceElements;
    std::vector<int> sourceGaussPoints; ///< the number within the source element
};

/// Finds the source node at the place of each selected target node, in a material of the same state code.
///
/// Throws InvalidData or InvalidOption if the arguments do not fit each other, TransferError if there are nodes without
/// partners or meshes of such elements are not matched, Cancelled if the progress callback says so.
NodeMatch matchNodes(const Mesh& source, const Mesh& target, const MatchOptions& options = {});

/// Finds the source Gauss point at the place of each Gauss point of the selected target elements, in the source element
/// around the target element's centre, of a material of the same state code. Exceptions as for matchNodes().
GaussPointMatch matchGaussPoints(const Mesh& source, const Mesh& target, const MatchOptions& options = {});

} // namespace veltrane

#endif
