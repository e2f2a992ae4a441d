/// Ownership of POSIX file descriptors.
#ifndef VELTRANE_HOST_FILE_DESCRIPTOR_H
#define VELTRANE_HOST_FILE_DESCRIPTOR_H

#include <unistd.h>

#include <utility>

namespace veltrane
{

/// Closes the descriptor that it holds, if any.
class FileDescriptor
{
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~FileDescriptor()
    {
        if (isValid())
        {
            ::close(descriptor_);
        }
    }

    bool isValid() const { return descriptor_ >= 0; }
    int get() const { return descriptor_; }

    /// Lets go of it: closing it is up to the caller.
    int release() { return std::exchange(descriptor_, -1); }

private:
    int descriptor_ = -1;
};

} // namespace veltrane

#endif
