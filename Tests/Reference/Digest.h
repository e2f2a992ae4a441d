/// A number that stands for a sequence of values (Fowler, Noll and Vo, variant 1a, 64 bits): two sequences that differ
/// have different numbers but for a chance of one in 2^64. All NaNs count as the same: their sign and payload are the
/// processor's affair.
#ifndef DIGEST_H
#define DIGEST_H

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

class Digest
{
public:
    template <typename Value>
    requires std::is_arithmetic_v<Value>
    void add(Value value)
    {
        // Not a choice between two numbers: a compiler may take one NaN for another.
        if constexpr (std::is_floating_point_v<Value>)
        {
            if (std::isnan(value))
            {
                add(std::string("NaN"));
                return;
            }
        }
        addBytes(std::as_bytes(std::span(&value, 1)));
    }

    template <typename Value> void add(const std::vector<Value>& values)
    {
        for (const Value value : values)
        {
            add(value);
        }
    }

    void add(const std::string& text) { addBytes(std::as_bytes(std::span(text.c_str(), text.size() + 1))); }

    std::uint64_t number() const { return itsNumber; }

private:
    void addBytes(std::span<const std::byte> bytes)
    {
        for (const std::byte byte : bytes)
        {
            itsNumber = (itsNumber ^ std::to_integer<std::uint64_t>(byte)) * 0x100000001b3U;
        }
    }

    std::uint64_t itsNumber = 0xcbf29ce484222325U;
};

#endif
