#include "PlacedFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace veltrane
{
namespace
{

[[noreturn]] void throwReason()
{
    const bool isFull = errno == ENOSPC || errno == EDQUOT || errno == EFBIG;
    throw CannotWrite(isFull ? "there is not enough disk space" : std::strerror(errno));
}

} // namespace

PlacedFile::PlacedFile(const std::filesystem::path& path)
    : file_(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666))
{
    if (!file_.isValid())
    {
        throwReason();
    }
}

void PlacedFile::write(std::span<const std::byte> bytes, std::uint64_t place) const
{
    while (!bytes.empty())
    {
        const ssize_t count = ::pwrite(file_.get(), bytes.data(), bytes.size(), static_cast<off_t>(place));
        if (count < 0 && errno == EINTR)
        {
            continue;
        }
        if (count <= 0)
        {
            throwReason();
        }
        bytes = bytes.subspan(static_cast<std::size_t>(count));
        place += static_cast<std::uint64_t>(count);
    }
}

void PlacedFile::close()
{
    if (::close(file_.release()) != 0)
    {
        throwReason();
    }
}

} // namespace veltrane
