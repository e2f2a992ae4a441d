/// Values taken from a fuzzer's input; an input that has run out gives zeros.
#ifndef VELTRANE_FUZZED_BYTES_H
#define VELTRANE_FUZZED_BYTES_H

#include <cstddef>
#include <cstdint>
#include <cstring>
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

    /// Mostly a number of moderate size, now and then any bit pattern.
    float number()
    {
        if (oneIn(32))
        {
            return take<float>();
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
