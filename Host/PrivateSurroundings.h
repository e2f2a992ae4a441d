/// A directory and a standard output of its own for a call of the library.
#ifndef VELTRANE_HOST_PRIVATE_SURROUNDINGS_H
#define VELTRANE_HOST_PRIVATE_SURROUNDINGS_H

#include "FileDescriptor.h"

#include <filesystem>
#include <string>

namespace veltrane
{

/// Creates an empty directory in the place for temporary files and removes it with all its contents at the end.
class TemporaryDirectory
{
public:
    TemporaryDirectory();
    ~TemporaryDirectory() { remove(); }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::filesystem::path& path() const { return path_; }
    void remove() noexcept;

private:
    std::filesystem::path path_;
};

/// The private surroundings of a call: while entered, a temporary directory is the current directory, and what goes to
/// standard output goes into a file there.
class PrivateSurroundings
{
public:
    PrivateSurroundings();
    ~PrivateSurroundings() { leave(); }
    PrivateSurroundings(const PrivateSurroundings&) = delete;
    PrivateSurroundings& operator=(const PrivateSurroundings&) = delete;

    void enter();
    void leave() noexcept;

    std::filesystem::path file(const char* name) const { return directory_.path() / name; }

    /// What went to standard output while entered.
    std::string capturedOutput() const;

    /// For when destructors will not run.
    void removeDirectory() noexcept { directory_.remove(); }

private:
    TemporaryDirectory directory_;
    FileDescriptor usersDirectory_;
    FileDescriptor privateDirectory_;
    FileDescriptor usersOutput_; ///< invalid if standard output is closed
    FileDescriptor capture_;
    bool entered_ = false;
};

} // namespace veltrane

#endif
