/// A map between a source and a target that are spread over the ranks of an MPI communicator. What target locations
/// get is what Map gives them from the whole source, to the last bit, for any number of ranks.
#ifndef VELTRANE_HOST_DISTRIBUTED_MAP_H
#define VELTRANE_HOST_DISTRIBUTED_MAP_H

#include "Field.h"
#include "Map.h"
#include "Mesh.h"

#ifndef OMPI_SKIP_MPICXX
#    define OMPI_SKIP_MPICXX 1
#endif
#include <mpi.h>

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace veltrane
{

/// What a rank has of a mesh. A part may be empty, as with Extent::part. Global numbers count from 0, and may have
/// gaps. Each element is on one rank; those of lower numbers come first. A node that is on several ranks has one number
/// and one place on all. Without numbers of elements, those of lower ranks come first; without numbers of nodes, no
/// node is on two ranks.
struct MeshPart
{
    const Mesh& mesh; ///< its materials and its rule of Gauss points are those of all ranks
    std::span<const std::int64_t> elementNumbers{};
    std::span<const std::int64_t> nodeNumbers{};
};

/// Figures of all ranks together. Each location counts once.
struct DistributedStatistics
{
    std::int64_t bucketCount = 0;
    std::int64_t interpolatedPointCount = 0;
    std::int64_t nearNodeCount = 0;
    std::int64_t farNodeCount = 0;
    std::int64_t nearGaussPointCount = 0;
    std::int64_t farGaussPointCount = 0;
    std::int64_t unconvergedPointCount = 0;
    std::vector<std::int64_t> singularElements{}; ///< source elements that were left out for some point, by number
    std::array<double, 3> origin{};
    std::int64_t windowElementCount = 0; ///< of the source, on this rank
    std::int64_t messageCount = 0;       ///< that this rank has sent until now
    std::int64_t byteCount = 0;          ///< in these messages
};

class RankMap;

/// All functions but the plain questions are collective: every rank calls them, in the same order. What makes one rank
/// throw makes all of them throw what the lowest of these ranks has thrown, or an Error with its sentence.
class DistributedMap
{
public:
    /// The communicator is copied. The parts are borrowed until the map is built. Throws what Map throws. A target in
    /// which no location receives values is refused only if that is so on all ranks.
    DistributedMap(MPI_Comm ranks, const MeshPart& source, const MeshPart& target, const MapOptions& options = {});
    DistributedMap(MPI_Comm ranks, const MeshPart& source, const PointCloud& points, const MapOptions& options = {});
    ~DistributedMap();
    DistributedMap(DistributedMap&&) noexcept;
    DistributedMap& operator=(DistributedMap&&) noexcept;

    std::size_t sourceNodeCount() const; ///< of this rank's part
    std::size_t locationCount(Location location) const;

    /// The values of this rank's target locations from those of all ranks' source nodes and Gauss points. All ranks
    /// give the same fields, each with the values of its part. See Map::apply().
    std::vector<Field> apply(std::span<const Field> fields, const ApplyOptions& options = {}) const;

    /// Of this rank's target locations.
    std::vector<Finding> findings(Location location = Location::nodes) const;
    bool hasUnreachedNodes() const;
    DistributedStatistics statistics() const;

private:
    std::unique_ptr<RankMap> map_;
};

} // namespace veltrane

#endif
