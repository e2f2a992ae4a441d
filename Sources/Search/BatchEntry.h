/// The order in which a batch of points is visited: bucket by bucket.
#ifndef VELTRANE_BATCH_ENTRY_H
#define VELTRANE_BATCH_ENTRY_H

#include <cstddef>
#include <cstdint>
#include <span>

/// How many points a batch holds at most: the more, the more of them share a bucket.
inline constexpr int batchPositionBits = 16;
inline constexpr std::int64_t batchCapacity = 1 << batchPositionBits;

/// A point's bucket, and its position in the batch. In increasing order the entries go through the grid; a point
/// outside, in bucket -1, comes first.
using BatchEntry = std::uint64_t;

inline BatchEntry entryOf(std::int64_t bucket, std::size_t position)
{
    return static_cast<BatchEntry>(bucket + 1) << batchPositionBits | position;
}

inline std::int64_t bucketOf(BatchEntry entry)
{
    return static_cast<std::int64_t>(entry >> batchPositionBits) - 1;
}

inline std::size_t positionOf(BatchEntry entry)
{
    return entry % batchCapacity;
}

/// Sorts entries by bucket, those of one bucket in the order that they had. `room` is for as many entries.
void sortByBucket(std::span<BatchEntry> entries, std::span<BatchEntry> room);

#endif
