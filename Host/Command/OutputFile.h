/// Output that appears under its name only when it is complete.
#ifndef VELTRANE_COMMAND_OUTPUT_FILE_H
#define VELTRANE_COMMAND_OUTPUT_FILE_H

#include <filesystem>
#include <functional>
#include <span>
#include <vector>

namespace veltrane
{

/// A file to be written at the end of the work, checked at its beginning.
class OutputFile
{
public:
    /// Throws CannotWrite, before any work is done, if the file could not be created or is one of the inputs.
    OutputFile(const std::filesystem::path& path, std::span<const std::filesystem::path> inputs);

    bool isInput(const std::filesystem::path& path) const;

    /// Has a temporary file beside the output written, and gives it the output's name. If the writer throws, the
    /// temporary file is removed and an output of an earlier run stays as it is; of a CannotWrite it need only be the
    /// reason, the output is named here. Throws Cancelled, with the same effect, if the command has been interrupted.
    void write(const std::function<void(const std::filesystem::path&)>& writer) const;

private:
    std::filesystem::path givenPath_;
    std::filesystem::path path_; ///< absolute, with links resolved
    std::filesystem::path temporaryPath_;
    std::vector<std::filesystem::path> inputs_;
};

} // namespace veltrane

#endif
