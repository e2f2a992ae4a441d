#include "OutputFile.h"

#include "FileDescriptor.h"
#include "Interruption.h"
#include "MeshFile.h"
#include "Text.h"
#include "UniqueWord.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <mutex>
#include <set>
#include <system_error>
#include <utility>

namespace veltrane
{
namespace
{

/// The files that have no names yet.
class PendingFiles
{
public:
    void add(const std::filesystem::path& path)
    {
        const std::scoped_lock lock(mutex_);
        paths_.insert(path);
    }

    void forget(const std::filesystem::path& path)
    {
        const std::scoped_lock lock(mutex_);
        paths_.erase(path);
    }

    void removeAll()
    {
        const std::scoped_lock lock(mutex_);
        for (const std::filesystem::path& path : paths_)
        {
            std::error_code ignored; // there is nobody to tell
            std::filesystem::remove(path, ignored);
        }
    }

private:
    std::mutex mutex_;
    std::set<std::filesystem::path> paths_;
};

PendingFiles& pendingFiles()
{
    static PendingFiles files;
    return files;
}

/// Creates an empty file that was not there.
void createFile(const std::filesystem::path& path)
{
    const FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!file.isValid())
    {
        throw CannotWrite(text("cannot create a file in '", path.parent_path().string(), "': ", std::strerror(errno)));
    }
}

std::filesystem::file_type typeOf(const std::filesystem::path& path)
{
    std::error_code ignored; // the type says enough
    return std::filesystem::status(path, ignored).type();
}

/// Null if it is none of them.
const std::filesystem::path* findInput(const std::filesystem::path& path, std::span<const std::filesystem::path> inputs)
{
    for (const std::filesystem::path& input : inputs)
    {
        std::error_code ignored; // an input that is not there is reported when it is read
        if (std::filesystem::equivalent(path, input, ignored))
        {
            return &input;
        }
    }
    return nullptr;
}

/// Checks what stands where the output is to be.
void checkExisting(const std::filesystem::path& path, std::span<const std::filesystem::path> inputs)
{
    switch (typeOf(path))
    {
    case std::filesystem::file_type::not_found:
        if (std::filesystem::is_symlink(path))
        {
            throw CannotWrite(text("the output '", path.string(), "' is a link that leads nowhere"));
        }
        return;
    case std::filesystem::file_type::directory:
        throw CannotWrite(text("the output '", path.string(), "' is a directory"));
    case std::filesystem::file_type::regular: break;
    default: throw CannotWrite(text("the output '", path.string(), "' exists and is not a regular file"));
    }
    if (const std::filesystem::path* input = findInput(path, inputs))
    {
        throw CannotWrite(text("the output '", path.string(), "' is the input '", input->string(), "' itself"));
    }
    if (::access(path.c_str(), W_OK) != 0)
    {
        throw CannotWrite(text("cannot replace the output '", path.string(), "': ", std::strerror(errno)));
    }
}

void copyToStandardOutput(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    if (file.peek() != std::ifstream::traits_type::eof())
    {
        std::cout << file.rdbuf();
    }
    if (!std::cout.flush() || file.bad())
    {
        throw CannotWrite(text("cannot write to standard output: ", std::strerror(errno)));
    }
}

} // namespace

PendingOutput::PendingOutput(std::filesystem::path temporaryPath, std::filesystem::path path)
    : temporaryPath_(std::move(temporaryPath)), path_(std::move(path))
{
    createFile(temporaryPath_);
    pendingFiles().add(temporaryPath_);
}

PendingOutput::~PendingOutput()
{
    if (!temporaryPath_.empty())
    {
        std::error_code ignored; // there is nobody to tell
        std::filesystem::remove(temporaryPath_, ignored);
        pendingFiles().forget(temporaryPath_);
    }
}

PendingOutput::PendingOutput(PendingOutput&& other) noexcept
    : temporaryPath_(std::exchange(other.temporaryPath_, {})), path_(std::move(other.path_))
{
}

void PendingOutput::publish()
{
    if (path_.empty())
    {
        copyToStandardOutput(temporaryPath_);
        return;
    }
    std::error_code failure;
    std::filesystem::rename(temporaryPath_, path_, failure);
    if (failure)
    {
        throw CannotWrite(text("cannot create '", path_.string(), "': ", failure.message()));
    }
    pendingFiles().forget(temporaryPath_);
    temporaryPath_.clear();
}

void removePendingOutputs()
{
    pendingFiles().removeAll();
}

void publishAll(std::vector<PendingOutput>& outputs)
{
    for (PendingOutput& output : outputs)
    {
        output.publish();
    }
}

OutputFile::OutputFile(const std::filesystem::path& path, std::span<const std::filesystem::path> inputs)
    : givenPath_(path), inputs_(inputs.begin(), inputs.end())
{
    const std::filesystem::path directory = path.has_parent_path() ? path.parent_path() : ".";
    if (typeOf(directory) != std::filesystem::file_type::directory)
    {
        throw CannotWrite(text("there is no directory '", directory.string(), "' for the output"));
    }
    checkExisting(path, inputs);
    try
    {
        path_ = std::filesystem::weakly_canonical(std::filesystem::absolute(path));
    }
    catch (const std::filesystem::filesystem_error& error)
    {
        throw CannotWrite(text("cannot create '", path.string(), "': ", error.code().message()));
    }
    pattern_ = path_;
    const PendingOutput trial(temporaryPath(), path_);
}

OutputFile OutputFile::standardOutput(const std::string& ending)
{
    OutputFile output;
    output.givenPath_ = "standard output";
    output.pattern_ = std::filesystem::temp_directory_path() / ("veltrane" + ending);
    return output;
}

/// Of the same ending, which tells writers the format.
std::filesystem::path OutputFile::temporaryPath() const
{
    return pattern_.parent_path() /
           text(".", pattern_.stem().string(), ".", uniqueWord(), ".part", pattern_.extension().string());
}

bool OutputFile::isInput(const std::filesystem::path& path) const
{
    return findInput(path, inputs_) != nullptr;
}

PendingOutput OutputFile::prepare(const std::function<void(const std::filesystem::path&)>& writer) const
{
    throwIfInterrupted();
    const std::filesystem::path temporary = temporaryPath();
    PendingOutput output(temporary, path_);
    std::error_code ignored; // a new output has no permissions to take over
    const std::filesystem::file_status replaced = std::filesystem::status(path_, ignored);
    try
    {
        writer(temporary);
    }
    catch (const CannotWrite& reason)
    {
        throw CannotWrite(text("cannot write '", givenPath_.string(), "': ", reason.what()));
    }
    throwIfInterrupted();
    if (std::filesystem::exists(replaced))
    {
        std::filesystem::permissions(temporary, replaced.permissions(), ignored);
    }
    return output;
}

void OutputFile::write(const std::function<void(const std::filesystem::path&)>& writer) const
{
    prepare(writer).publish();
}

} // namespace veltrane
