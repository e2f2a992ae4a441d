/// Libraries that write their errors to standard error, whatever they are told.
#ifndef VELTRANE_HOST_SILENT_STANDARD_ERROR_H
#define VELTRANE_HOST_SILENT_STANDARD_ERROR_H

#include "FileDescriptor.h"

#include <fcntl.h>
#include <unistd.h>

namespace veltrane
{

/// While it lives, nothing appears on standard error.
class SilentStandardError
{
public:
    SilentStandardError() : usersErrors_(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1))
    {
        const FileDescriptor nowhere(::open("/dev/null", O_WRONLY | O_CLOEXEC));
        if (usersErrors_.isValid() && nowhere.isValid())
        {
            ::dup2(nowhere.get(), STDERR_FILENO);
        }
    }
    ~SilentStandardError()
    {
        if (usersErrors_.isValid())
        {
            ::dup2(usersErrors_.get(), STDERR_FILENO);
        }
    }
    SilentStandardError(const SilentStandardError&) = delete;
    SilentStandardError& operator=(const SilentStandardError&) = delete;

private:
    FileDescriptor usersErrors_;
};

} // namespace veltrane

#endif
