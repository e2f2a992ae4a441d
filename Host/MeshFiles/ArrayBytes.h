/// The bytes of an array, wherever they come from.
#ifndef VELTRANE_HOST_ARRAY_BYTES_H
#define VELTRANE_HOST_ARRAY_BYTES_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <utility>

namespace veltrane
{

/// What an array is to look like in a file: borrowed memory, or bytes that are made when they are asked for.
class ArrayBytes
{
public:
    /// Puts the bytes from the place `first` on into the room. May be called from several threads at once.
    using Fill = std::function<void(std::uint64_t first, std::span<std::byte> room)>;

    explicit ArrayBytes(std::span<const std::byte> memory) : memory_(memory), size_(memory.size()) {}
    ArrayBytes(std::uint64_t size, Fill fill) : size_(size), fill_(std::move(fill)) {}

    std::uint64_t size() const { return size_; }

    /// Some of the bytes, in the room or where they are; as many as there is room for.
    std::span<const std::byte> part(std::uint64_t first, std::span<std::byte> room) const
    {
        if (fill_)
        {
            fill_(first, room);
            return room;
        }
        return memory_.subspan(first, room.size());
    }

private:
    std::span<const std::byte> memory_;
    std::uint64_t size_;
    Fill fill_;
};

} // namespace veltrane

#endif
