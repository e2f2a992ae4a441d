/// What becomes of files that a reader does not survive.
#ifndef VELTRANE_HOST_READING_GUARD_H
#define VELTRANE_HOST_READING_GUARD_H

#include "FileDescriptor.h"

#include <array>
#include <csignal>
#include <filesystem>
#include <string>

namespace veltrane
{

/// While it lives, signals of faults in the program end the process with a sentence about the file and the status of
/// unsuitable data: VTK's readers believe what files say about themselves, and nothing is left behind while a file is
/// read. The latest guard counts. Not under sanitizers, which say more about the fault.
class ReadingGuard
{
public:
    explicit ReadingGuard(const std::filesystem::path& path);
    ~ReadingGuard();
    ReadingGuard(const ReadingGuard&) = delete;
    ReadingGuard& operator=(const ReadingGuard&) = delete;

private:
    static constexpr std::array<int, 5> signals{SIGFPE, SIGSEGV, SIGBUS, SIGILL, SIGABRT};

    static void tellAndEnd(int signal);

    static ReadingGuard* current;
    ReadingGuard* outer_;
    FileDescriptor errors_; ///< standard error, even while it leads elsewhere
    std::string message_;
    stack_t previousStack_{};
    std::array<struct sigaction, signals.size()> previousActions_{};
};

} // namespace veltrane

#endif
