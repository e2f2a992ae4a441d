#include "DistributedMap.h"

#include "RankMap.h"

namespace veltrane
{

DistributedMap::DistributedMap(MPI_Comm ranks, const MeshPart& source, const MeshPart& target,
                               const MapOptions& options)
    : map_(std::make_unique<RankMap>(ranks, options))
{
    map_->build(source, target, options);
}

DistributedMap::DistributedMap(MPI_Comm ranks, const MeshPart& source, const PointCloud& points,
                               const MapOptions& options)
    : map_(std::make_unique<RankMap>(ranks, options))
{
    map_->build(source, points, options);
}

DistributedMap::~DistributedMap() = default;
DistributedMap::DistributedMap(DistributedMap&&) noexcept = default;
DistributedMap& DistributedMap::operator=(DistributedMap&&) noexcept = default;

std::size_t DistributedMap::sourceNodeCount() const
{
    return map_->sourceNodeCount();
}

std::size_t DistributedMap::locationCount(Location location) const
{
    return map_->map().locationCount(location);
}

std::vector<Field> DistributedMap::apply(std::span<const Field> fields, const ApplyOptions& options) const
{
    return map_->apply(fields, options);
}

std::vector<Finding> DistributedMap::findings(Location location) const
{
    return map_->findings(location);
}

bool DistributedMap::hasUnreachedNodes() const
{
    return map_->hasUnreachedNodes();
}

DistributedStatistics DistributedMap::statistics() const
{
    return map_->statistics();
}

} // namespace veltrane
