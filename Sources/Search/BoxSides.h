/// The boxes of a stretch of a bucket's list, side by side: one comparison serves several boxes.
#ifndef VELTRANE_BOX_SIDES_H
#define VELTRANE_BOX_SIDES_H

#include <cstddef>
#include <cstdint>

/// A set of the first items of a list: bit i is item i.
using ItemSet = std::uint64_t;
inline constexpr std::size_t maxItemSetSize = 64;

/// Minimum x, y, z, maximum x, y, z of the items. All are initialised up to a whole number of the widest packs.
struct BoxSides
{
    std::size_t nbItems;
    alignas(64) float values[6][maxItemSetSize];
};

/// The items whose box holds the point.
using BoxesAround = ItemSet (*)(const BoxSides& sides, const float* point);

#endif
