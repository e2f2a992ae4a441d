#include "Base64.h"

#include <array>

namespace veltrane
{
namespace
{

constexpr std::uint32_t none = 1U << 31;

constexpr std::array<std::uint32_t, 256> values = []
{
    std::array<std::uint32_t, 256> table{};
    table.fill(none);
    constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (std::size_t i = 0; i < letters.size(); ++i)
    {
        table[static_cast<unsigned char>(letters[i])] = static_cast<std::uint32_t>(i);
    }
    return table;
}();

std::uint32_t valueOf(char letter)
{
    return values[static_cast<unsigned char>(letter)];
}

/// The three bytes of a group as one number, or `none` and more.
std::uint32_t groupOf(std::string_view letters, std::size_t first)
{
    return valueOf(letters[first]) << 18 | valueOf(letters[first + 1]) << 12 | valueOf(letters[first + 2]) << 6 |
           valueOf(letters[first + 3]) |
           ((valueOf(letters[first]) | valueOf(letters[first + 1]) | valueOf(letters[first + 2]) |
             valueOf(letters[first + 3])) &
            none);
}

std::byte byteOf(std::uint32_t group, int place)
{
    return static_cast<std::byte>(group >> (16 - 8 * place) & 255);
}

} // namespace

bool decodeBase64(std::string_view letters, std::span<std::byte> room)
{
    if (letters.size() < base64Size(room.size()))
    {
        return false;
    }
    const std::size_t groupCount = room.size() / 3;
    std::uint32_t all = 0;
    for (std::size_t i = 0; i < groupCount; ++i)
    {
        const std::uint32_t group = groupOf(letters, 4 * i);
        all |= group;
        room[3 * i] = byteOf(group, 0);
        room[3 * i + 1] = byteOf(group, 1);
        room[3 * i + 2] = byteOf(group, 2);
    }
    const std::size_t left = room.size() - 3 * groupCount;
    if (left > 0)
    {
        // The letters behind those of the bytes that are left may be padding.
        std::array<char, 4> last{'A', 'A', 'A', 'A'};
        for (std::size_t i = 0; i <= left; ++i)
        {
            last[i] = letters[4 * groupCount + i];
        }
        const std::uint32_t group = groupOf({last.data(), last.size()}, 0);
        all |= group;
        for (std::size_t i = 0; i < left; ++i)
        {
            room[3 * groupCount + i] = byteOf(group, static_cast<int>(i));
        }
    }
    return (all & none) == 0;
}

} // namespace veltrane
