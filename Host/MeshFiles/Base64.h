/// Bytes written as letters and digits, three bytes in four of them.
#ifndef VELTRANE_HOST_BASE64_H
#define VELTRANE_HOST_BASE64_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace veltrane
{

/// The letters of so many bytes, with what pads them at the end.
constexpr std::uint64_t base64Size(std::uint64_t byteCount)
{
    return (byteCount + 2) / 3 * 4;
}

/// Writes the bytes that whole groups of four letters stand for, no more than there is room for; those of the last
/// group may be padded. False if there are other characters among them, or too few.
bool decodeBase64(std::string_view letters, std::span<std::byte> room);

} // namespace veltrane

#endif
