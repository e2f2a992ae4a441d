/// How VTK's XML files cut arrays into blocks that are compressed one by one.
#ifndef VELTRANE_HOST_BLOCK_LAYOUT_H
#define VELTRANE_HOST_BLOCK_LAYOUT_H

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace veltrane
{

/// The blocks of an array of so many bytes. What precedes them in a file is their number, the size of all but the last
/// one, the size of the last one if that is smaller and otherwise 0, and the compressed size of each.
struct BlockLayout
{
    static constexpr std::uint64_t blockSize = 32768; // of VTK's own writer; larger ones gain nothing

    std::uint64_t byteCount;

    constexpr std::uint64_t count() const { return byteCount / blockSize + (lastSize() > 0 ? 1 : 0); }
    constexpr std::uint64_t lastSize() const { return byteCount % blockSize; }
    constexpr std::uint64_t first(std::uint64_t block) const { return block * blockSize; }
    constexpr std::size_t sizeOf(std::uint64_t block) const
    {
        return static_cast<std::size_t>(std::min(blockSize, byteCount - first(block)));
    }

    /// Numbers in front of the blocks, 8 bytes each.
    constexpr std::uint64_t headerCount() const { return 3 + count(); }
};

} // namespace veltrane

#endif
