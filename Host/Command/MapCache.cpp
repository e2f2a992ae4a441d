#include "MapCache.h"

namespace veltrane
{

template <typename Target>
TransferResult MapCache::carry(const Mesh& source, std::span<const Field> fields, const Target& target,
                               const TransferOptions& options)
{
    checkTransfer(source, fields, options);
    if (!isKept_)
    {
        return transferWith(Map(source, target, mapOptions(fields, options)), fields, options);
    }
    if (!map_ || !map_->isFrom(source) || !map_->isTo(target))
    {
        validator_.reset();
        map_.reset(); // before the new one takes its memory
        MapOptions choices = mapOptions(fields, options);
        choices.takesChecksums = true; // by which the next step tells whether it can use the map
        map_.emplace(source, target, choices);
    }
    return transferWith(*map_, fields, options);
}

TransferResult MapCache::transfer(const Mesh& source, std::span<const Field> fields, const Mesh& target,
                                  const TransferOptions& options)
{
    return carry(source, fields, target, options);
}

Validation MapCache::validate(const Mesh& source, std::span<const Field> fields, const Mesh& target,
                              std::span<const Field> targetFields, const TransferOptions& options)
{
    if (!validator_)
    {
        ValidationOptions choices;
        choices.apply.fieldOptions = options.fieldOptions;
        choices.targetMapping = options.targetMapping;
        choices.rules.inDoublePrecision = options.rules.inDoublePrecision;
        choices.tuning = options.tuning;
        choices.threads = options.threads;
        choices.progress = options.progress;
        validator_.emplace(*map_, source, target, choices);
    }
    return validator_->validate(source, target, fields, targetFields);
}

TransferResult MapCache::sample(const Mesh& source, std::span<const Field> fields, const PointCloud& points,
                                const TransferOptions& options)
{
    return carry(source, fields, points, atPoints(fields, options));
}

} // namespace veltrane
