/// Values taken from a fuzzer's input; an input that has run out gives zeros.
#ifndef VELTRANE_FUZZED_BYTES_H
#define VELTRANE_FUZZED_BYTES_H

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <span>
#include <string>

class FuzzedBytes
{
public:
    explicit FuzzedBytes(std::span<const std::uint8_t> bytes) : itsBytes(bytes) {}

    template <class T> T take()
    {
        T value{};
        const std::size_t size = std::min(sizeof value, itsBytes.size());
        std::memcpy(&value, itsBytes.data(), size);
        itsBytes = itsBytes.subspan(size);
        return value;
    }

    /// A whole number from `low` to `high`.
    int between(int low, int high)
    {
        return low + static_cast<int>(take<std::uint16_t>() % static_cast<unsigned>(high - low + 1));
    }

    bool oneIn(int n) { return between(0, n - 1) == n - 1; }

    /// Mostly a number of moderate size, now and then any bit pattern or one of the ends of the number line.
    float number()
    {
        if (oneIn(32))
        {
            using Limits = std::numeric_limits<float>;
            constexpr float ends[] = {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(),
                                      Limits::max(),       -Limits::max(),     Limits::denorm_min(),
                                      Limits::min(),       -88880002891776.0F};
            const auto bits = take<std::uint32_t>();
            return bits % 2 == 0 ? ends[bits / 2 % std::size(ends)] : std::bit_cast<float>(bits);
        }
        return static_cast<float>(take<std::int16_t>()) / 4096.0F;
    }

    std::string text(std::size_t length)
    {
        length = std::min(length, itsBytes.size());
        std::string result(reinterpret_cast<const char*>(itsBytes.data()), length);
        itsBytes = itsBytes.subspan(length);
        return result;
    }

private:
    std::span<const std::uint8_t> itsBytes;
};

#endif
