/// What becomes of files that a reader does not survive.
#ifndef VELTRANE_HOST_READING_GUARD_H
#define VELTRANE_HOST_READING_GUARD_H

#include "FileDescriptor.h"

#include <vtkSmartPointer.h>

#include <pthread.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <string>
#include <utility>

namespace veltrane
{

/// While it lives, a signal of a fault ends the process with a sentence about the file, which names the signal, and the
/// status of unsuitable data: VTK's readers believe what files say about themselves, and nothing is left behind while a
/// file is read. It is for calls of VTK's readers alone: faults of other threads and of other code are no fault of the
/// file and end the process as they always do. The latest guard counts. Not under sanitizers, which say more.
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
    pthread_t thread_;
    FileDescriptor errors_;                            ///< standard error, even while it leads elsewhere
    std::array<std::string, signals.size()> messages_; ///< per signal
    stack_t previousStack_{};
    std::array<struct sigaction, signals.size()> previousActions_{};
};

/// Calls a reader of VTK that may not survive the file.
template <typename Function> auto guarded(const std::filesystem::path& path, const Function& read)
{
    const ReadingGuard guard(path);
    return read();
}

/// An object of VTK with what a file says, which may be too much for it when it is let go of, too.
template <typename Object> class GuardedObject
{
public:
    GuardedObject(vtkSmartPointer<Object> object, std::filesystem::path path)
        : object_(std::move(object)), path_(std::move(path))
    {
    }
    ~GuardedObject()
    {
        guarded(path_, [&] { object_ = nullptr; });
    }
    GuardedObject(const GuardedObject&) = delete;
    GuardedObject& operator=(const GuardedObject&) = delete;

    Object* operator->() const { return object_; }
    Object* get() const { return object_; }

private:
    vtkSmartPointer<Object> object_;
    std::filesystem::path path_;
};

} // namespace veltrane

#endif
