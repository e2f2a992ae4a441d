/// Checksums of files, as sha256sum prints them.
#ifndef VELTRANE_COMMAND_SHA256_H
#define VELTRANE_COMMAND_SHA256_H

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

namespace veltrane
{

/// In 64 hexadecimal digits (FIPS 180-4).
std::string sha256Of(std::span<const std::uint8_t> bytes);

/// Of a file's content; empty if it cannot be read.
std::string sha256OfFile(const std::filesystem::path& path);

} // namespace veltrane

#endif
