/// The boxes of a stretch of a bucket's list, side by side: one comparison serves several boxes. To bring them there
/// costs about what testing them one by one for two points does.
#ifndef VELTRANE_BUCKET_BOXES_H
#define VELTRANE_BUCKET_BOXES_H

#include "BoxTest.h"
#include "Pack.h"

#include <array>
#include <bit>
#include <cstdint>
#include <span>

/// A set of the first items of a list: bit i is item i.
using ItemSet = std::uint64_t;
inline constexpr std::size_t maxItemSetSize = 64;

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
        itsNbPacks = (items.size() + packSize - 1) / packSize;
        for (std::size_t i = 0; i < itsNbPacks; ++i)
        {
            for (std::size_t lane = 0; lane < packSize; ++lane)
            {
                // The last pack is filled up with its stretch's last box, whose further copies do not count.
                const std::size_t item = std::min(packSize * i + lane, items.size() - 1);
                const float* box = boxes + 6 * static_cast<std::int64_t>(items[item]);
                for (std::size_t side = 0; side < 6; ++side)
                {
                    itsSides[i][side][lane] = box[side];
                }
            }
        }
        itsItems = ~ItemSet{0} >> (maxItemSetSize - items.size());
    }

    ItemSet around(const Vector3& point) const
    {
        const auto x = FloatPack<packSize>(point[0]).lanes();
        const auto y = FloatPack<packSize>(point[1]).lanes();
        const auto z = FloatPack<packSize>(point[2]).lanes();
        ItemSet found = 0;
        for (std::size_t i = 0; i < itsNbPacks; ++i)
        {
            const auto& side = itsSides[i];
            const PackMask<packSize> isInBox((side[0] <= x) & (x <= side[3]) & (side[1] <= y) & (y <= side[4]) &
                                             (side[2] <= z) & (z <= side[5]));
            found |= static_cast<ItemSet>(isInBox.bits()) << (packSize * i);
        }
        return found & itsItems;
    }

private:
    static constexpr std::size_t packSize = 4;
    using Lanes = FloatPack<packSize>::Lanes;

    std::size_t itsNbPacks = 0;
    ItemSet itsItems = 0; ///< all of the stretch
    std::array<std::array<Lanes, 6>, maxItemSetSize / packSize> itsSides;
};

#endif
