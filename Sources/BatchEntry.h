/// The order in which a batch of points is visited: bucket by bucket.
#ifndef VELTRANE_BATCH_ENTRY_H
#define VELTRANE_BATCH_ENTRY_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

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

/// Sorts entries by bucket, those of one bucket in the order that they had: by one digit of the bucket after another,
/// from the last. `room` is for as many entries.
inline void sortByBucket(std::span<BatchEntry> entries, std::span<BatchEntry> room)
{
    constexpr int digitBits = 11;
    constexpr std::size_t nbDigits = 1 << digitBits;
    BatchEntry differing = 0;
    for (const BatchEntry entry : entries)
    {
        differing |= entry ^ entries.front();
    }
    for (int shift = batchPositionBits; shift < 64 && differing >> shift != 0; shift += digitBits)
    {
        const auto digitOf = [shift](BatchEntry entry) { return (entry >> shift) % nbDigits; };
        std::array<std::uint32_t, nbDigits> next{};
        for (const BatchEntry entry : entries)
        {
            ++next[digitOf(entry)];
        }
        std::uint32_t first = 0;
        for (std::uint32_t& digit : next)
        {
            first += std::exchange(digit, first);
        }
        for (const BatchEntry entry : entries)
        {
            room[next[digitOf(entry)]++] = entry;
        }
        std::copy_n(room.begin(), entries.size(), entries.begin());
    }
}

#endif
