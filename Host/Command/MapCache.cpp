#include "MapCache.h"

namespace veltrane
{

template <typename Target>
TransferResult MapCache::carry(const Mesh& source, std::span<const Field> fields, const Target& target,
                               const TransferOptions& options)
{
    checkTransfer(source, fields, options);
    if (!map_ || !map_->isFrom(source) || !map_->isTo(target))
    {
        map_.reset(); // before the new one takes its memory
        map_.emplace(source, target, mapOptions(fields, options));
    }
    return transferWith(*map_, fields, options);
}

TransferResult MapCache::transfer(const Mesh& source, std::span<const Field> fields, const Mesh& target,
                                  const TransferOptions& options)
{
    return carry(source, fields, target, options);
}

TransferResult MapCache::sample(const Mesh& source, std::span<const Field> fields, const PointCloud& points,
                                const TransferOptions& options)
{
    return carry(source, fields, points, atPoints(fields, options));
}

} // namespace veltrane
