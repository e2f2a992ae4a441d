/// A file whose parts are written where they belong, in any order.
#ifndef VELTRANE_HOST_PLACED_FILE_H
#define VELTRANE_HOST_PLACED_FILE_H

#include "FileDescriptor.h"
#include "FileErrors.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>

namespace veltrane
{

class PlacedFile
{
public:
    /// Makes the file anew. Throws CannotWrite with nothing but the reason, as all of this.
    explicit PlacedFile(const std::filesystem::path& path);

    /// May be called from several threads at once.
    void write(std::span<const std::byte> bytes, std::uint64_t place) const;

    /// Some file systems tell only now that the disk is full.
    void close();

private:
    FileDescriptor file_;
};

} // namespace veltrane

#endif
