#include "PrivateSurroundings.h"

#include "Errors.h"
#include "Text.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <system_error>

namespace veltrane
{
namespace
{

/// Opens beyond the standard descriptors, which a host may have closed.
FileDescriptor openBeyondStandard(const char* path, int flags)
{
    const FileDescriptor first(::open(path, flags | O_CLOEXEC, 0600));
    FileDescriptor descriptor(first.isValid() ? ::fcntl(first.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1) : -1);
    if (!descriptor.isValid())
    {
        throw Error(text("cannot open '", path, "': ", std::strerror(errno)));
    }
    return descriptor;
}

FileDescriptor openDirectory(const char* path)
{
#ifdef O_PATH
    constexpr int toComeBack = O_PATH | O_DIRECTORY; // needs no permission to read the directory
#else
    constexpr int toComeBack = O_RDONLY | O_DIRECTORY;
#endif
    return openBeyondStandard(path, toComeBack);
}

void flushOutput()
{
    std::cout.flush();
    std::fflush(stdout);
}

} // namespace

TemporaryDirectory::TemporaryDirectory()
{
    std::error_code failure;
    const std::filesystem::path place = std::filesystem::temp_directory_path(failure);
    if (failure)
    {
        throw Error(text("there is no directory for temporary files: ", failure.message()));
    }
    std::string name = (std::filesystem::absolute(place) / "veltrane-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr)
    {
        throw Error(text("cannot create a temporary directory in '", place.string(), "': ", std::strerror(errno)));
    }
    path_ = name;
}

void TemporaryDirectory::remove() noexcept
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

PrivateSurroundings::PrivateSurroundings()
    : usersDirectory_(openDirectory(".")), privateDirectory_(openDirectory(directory_.path().c_str())),
      usersOutput_(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)),
      capture_(openBeyondStandard(file("output.txt").c_str(), O_RDWR | O_CREAT | O_EXCL))
{
}

void PrivateSurroundings::enter()
{
    flushOutput();
    entered_ = true; // from the first change on there is something to be restored
    if (::fchdir(privateDirectory_.get()) != 0 || ::dup2(capture_.get(), STDOUT_FILENO) < 0)
    {
        throw Error(text("cannot work in '", directory_.path().string(), "': ", std::strerror(errno)));
    }
}

void PrivateSurroundings::leave() noexcept
{
    if (!entered_)
    {
        return;
    }
    flushOutput();
    if (usersOutput_.isValid())
    {
        ::dup2(usersOutput_.get(), STDOUT_FILENO);
    }
    else
    {
        ::close(STDOUT_FILENO);
    }
    // It has been the current directory before; if that has become impossible, nothing can be done about it.
    [[maybe_unused]] const int result = ::fchdir(usersDirectory_.get());
    entered_ = false;
}

std::string PrivateSurroundings::capturedOutput() const
{
    std::string output;
    std::array<char, 4096> block;
    for (;;)
    {
        const ssize_t count = ::pread(capture_.get(), block.data(), block.size(), static_cast<off_t>(output.size()));
        if (count <= 0)
        {
            return output;
        }
        output.append(block.data(), static_cast<std::size_t>(count));
    }
}

} // namespace veltrane
