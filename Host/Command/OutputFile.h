/// Output that appears under its name only when it is complete.
#ifndef VELTRANE_COMMAND_OUTPUT_FILE_H
#define VELTRANE_COMMAND_OUTPUT_FILE_H

#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace veltrane
{

/// An output that is complete and does not have its name yet; gone at the end of its life unless it gets it.
class PendingOutput
{
public:
    /// \param path  empty if the output goes to standard output
    PendingOutput(std::filesystem::path temporaryPath, std::filesystem::path path);
    ~PendingOutput();
    PendingOutput(PendingOutput&& other) noexcept;
    PendingOutput& operator=(PendingOutput&&) = delete;

    /// Throws CannotWrite.
    void publish();

private:
    std::filesystem::path temporaryPath_; ///< empty if there is nothing to be removed any more
    std::filesystem::path path_;
};

/// A file to be written at the end of the work, checked at its beginning.
class OutputFile
{
public:
    /// Throws CannotWrite, before any work is done, if the file could not be created or is one of the inputs.
    OutputFile(const std::filesystem::path& path, std::span<const std::filesystem::path> inputs);

    /// Standard output, of the format that this ending stands for. What goes there is first a temporary file, too.
    static OutputFile standardOutput(const std::string& ending);

    bool isInput(const std::filesystem::path& path) const;

    /// Has a temporary file beside the output written. If the writer throws, it is removed; of a CannotWrite it need
    /// only be the reason, the output is named here. Throws Cancelled, with the same effect, if the command has been
    /// interrupted.
    PendingOutput prepare(const std::function<void(const std::filesystem::path&)>& writer) const;

    /// The same, and gives it the output's name. Until then an output of an earlier run stays as it is.
    void write(const std::function<void(const std::filesystem::path&)>& writer) const;

private:
    OutputFile() = default;

    std::filesystem::path temporaryPath() const;

    std::filesystem::path givenPath_;
    std::filesystem::path path_;    ///< absolute, with links resolved; empty if it is standard output
    std::filesystem::path pattern_; ///< what the names of temporary files are made of
    std::vector<std::filesystem::path> inputs_;
};

/// Takes away those of this process that have no names yet, before it ends at once. Any thread.
void removePendingOutputs();

/// Gives all of them their names. Throws CannotWrite.
void publishAll(std::vector<PendingOutput>& outputs);

} // namespace veltrane

#endif
