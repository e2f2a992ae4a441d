/// Which boxes of a stretch of a bucket's list hold a point. To bring boxes side by side costs about what testing them
/// one by one for two points does.
#ifndef VELTRANE_BUCKET_BOXES_H
#define VELTRANE_BUCKET_BOXES_H

#include "BoxSides.h"
#include "BoxTest.h"
#include "PackedInversion.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <span>

/// Takes the first item out of a set that has one.
inline std::size_t takeFirst(ItemSet& items)
{
    const int first = std::countr_zero(items);
    items &= items - 1;
    return static_cast<std::size_t>(first);
}

/// The items, at most maxItemSetSize, whose box holds the point; `boxes` are minimum x, y, z, maximum x, y, z per item.
inline ItemSet itemsAround(const Vector3& point, std::span<const int> items, const float* boxes)
{
    const BoxTest isInBox(point);
    ItemSet found = 0;
    for (std::size_t i = 0; i < items.size(); ++i)
    {
        found |= static_cast<ItemSet>(isInBox(boxes + 6 * static_cast<std::int64_t>(items[i]))) << i;
    }
    return found;
}

/// The same for one stretch and many points.
class BucketBoxes
{
public:
    void gather(std::span<const int> items, const float* boxes)
    {
        itsSides.nbItems = items.size();
        // The last pack is filled up with copies of the last box.
        const std::size_t nbLanes = (items.size() + maxPackSize - 1) / maxPackSize * maxPackSize;
        for (std::size_t i = 0; i < nbLanes; ++i)
        {
            const float* box = boxes + 6 * static_cast<std::int64_t>(items[std::min(i, items.size() - 1)]);
            for (std::size_t side = 0; side < 6; ++side)
            {
                itsSides.values[side][i] = box[side];
            }
        }
    }

    ItemSet around(const Vector3& point, BoxesAround boxesAround) const { return boxesAround(itsSides, point.data()); }

private:
    BoxSides itsSides;
};

#endif
