/// Nodal forces, heat flows and other amounts, distributed over the nodes of another mesh.
#ifndef VELTRANE_HOST_LOADS_H
#define VELTRANE_HOST_LOADS_H

#include "Map.h"

#include <array>
#include <cstddef>
#include <vector>

namespace veltrane
{

/// What loads amount to.
struct LoadSums
{
    std::vector<double> sum; ///< per component
    /// Of 3 components, as forces have them, the moment about a point; of 1, as heat flows have it, the sum of the load
    /// times the way from there; otherwise empty.
    std::vector<double> moment;
    double magnitude = 0;       ///< the sum of the loads' Euclidean norms
    double momentMagnitude = 0; ///< the sum of these times the distances
};

/// The larger one of the differences of sum and moment, each as part of the reference's magnitude; 0 if both are 0, and
/// infinite if the reference's is.
double relativeDifference(const LoadSums& sums, const LoadSums& reference);

/// Sums of loads at nodes. Throws InvalidData if the field is not one at the nodes of the mesh.
LoadSums loadSumsOf(const Field& loads, const Mesh& mesh, const std::array<double, 3>& about);

/// The middle of the box of a mesh's nodes, about which moments lose the fewest digits.
std::array<double, 3> middleOf(const Mesh& mesh);

struct LoadOptions
{
    /// What becomes of loads at nodes too far from the target: in mode `error` there is no result (TargetOutside), and
    /// with `defaultValue` they are left out. `propagate` is an InvalidOption: loads have one place to go to.
    OutsideMode mode = OutsideMode::error;
    /// Of the search for the loaded nodes in the target; those in none of its elements may always be near one.
    Rules rules{};
    Tuning tuning{};
    int threads = 1; ///< 0: as many as usableThreadCount() tells
    ProgressCallback progress{};
};

struct DistributedLoads
{
    Field atTarget;              ///< at the target's nodes, in double precision
    std::array<double, 3> about; ///< the point of all moments: the middle of the source
    LoadSums source;
    LoadSums target;
    LoadSums outside;               ///< what was left out; source = target + outside but for rounding
    std::size_t loadedNodes = 0;    ///< of the source: those with a load that is not 0
    std::size_t nearNodes = 0;      ///< of these: in no element of the target, and taken to the nearest place of one
    double largestNearDistance = 0; ///< by which moments change, other than sums
    std::size_t outsideNodes = 0;
};

/// Distributes what stands at the source's nodes to those of the target's elements around them with these elements'
/// shape functions. Sums are kept, and moments, too, as long as the loaded nodes are in elements of the target. A node
/// belongs to the material of the first element that it is part of, and its load goes to elements of that material.
///
/// Throws InvalidData if the loads do not fit the source or are not all finite, or the target has no volume elements;
/// InvalidOption; TargetOutside; and what the construction of a map throws.
DistributedLoads distributeLoads(const Mesh& source, const Field& loads, const Mesh& target,
                                 const LoadOptions& options = {});

} // namespace veltrane

#endif
