/// A checksum of plain data, to tell one mesh from another and to notice damage; not against intent.
#ifndef VELTRANE_CHECKSUM_H
#define VELTRANE_CHECKSUM_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

/// Takes bytes in, in one call or in several.
class Checksum
{
public:
    void add(const void* data, std::size_t size)
    {
        const auto* bytes = static_cast<const std::byte*>(data);
        if (itsNbWaiting > 0)
        {
            const std::size_t taken = size < groupSize - itsNbWaiting ? size : groupSize - itsNbWaiting;
            wait(bytes, taken);
            bytes += taken;
            size -= taken;
            if (itsNbWaiting < groupSize)
            {
                return;
            }
            addGroup(itsWaiting);
            itsNbWaiting = 0;
        }
        for (; size >= groupSize; bytes += groupSize, size -= groupSize)
        {
            addGroup(bytes);
        }
        wait(bytes, size);
    }

    template <class T> void addValue(const T& value) { add(&value, sizeof value); }

    std::uint64_t value() const
    {
        Checksum whole = *this;
        std::memset(whole.itsWaiting + itsNbWaiting, 0, groupSize - itsNbWaiting);
        whole.addGroup(whole.itsWaiting);
        std::uint64_t result = itsNbWaiting;
        for (const std::uint64_t lane : whole.itsLanes)
        {
            result = std::rotl(result ^ lane, 29) * secondFactor;
            result ^= result >> 32;
        }
        return result;
    }

private:
    static constexpr std::size_t groupSize = 32;
    // Odd numbers without a pattern; any others would do, but stored maps have checksums made with these.
    static constexpr std::uint64_t firstFactor = 0x9E3779B97F4A7C15;
    static constexpr std::uint64_t secondFactor = 0xC2B2AE3D27D4EB4F;

    /// Four lanes side by side do not wait for each other.
    void addGroup(const std::byte* bytes)
    {
        for (std::size_t i = 0; i < 4; ++i)
        {
            std::uint64_t word = 0;
            std::memcpy(&word, bytes + 8 * i, sizeof word);
            itsLanes[i] = std::rotl(itsLanes[i] + word * secondFactor, 31) * firstFactor;
        }
    }

    /// Keeps what does not make a whole group yet.
    void wait(const std::byte* bytes, std::size_t size)
    {
        if (size > 0)
        {
            std::memcpy(itsWaiting + itsNbWaiting, bytes, size);
            itsNbWaiting += size;
        }
    }

    std::uint64_t itsLanes[4] = {1, 2, 3, 4};
    std::byte itsWaiting[groupSize]{};
    std::size_t itsNbWaiting = 0;
};

#endif
