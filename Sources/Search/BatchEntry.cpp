#include "BatchEntry.h"

#include <algorithm>
#include <array>
#include <utility>

/// By one digit of the bucket after another, from the last.
void sortByBucket(std::span<BatchEntry> entries, std::span<BatchEntry> room)
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
