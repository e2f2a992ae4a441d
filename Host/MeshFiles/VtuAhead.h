/// Files that are read while something else goes on.
#ifndef VELTRANE_HOST_VTU_AHEAD_H
#define VELTRANE_HOST_VTU_AHEAD_H

#include "FormatList.h"
#include "VtuFile.h"

#include <filesystem>
#include <future>
#include <memory>
#include <optional>

namespace veltrane
{

/// A file that is being read as readVtu() does, on a thread of its own. The end of its life waits for that.
class VtuAhead
{
public:
    /// Null if the file is not named as one that readVtu() reads.
    static std::shared_ptr<VtuAhead> begin(const std::filesystem::path& path, int threads)
    {
        return formatOf(path) == &formats::unstructuredGrid ? std::make_shared<VtuAhead>(path, threads) : nullptr;
    }

    VtuAhead(const std::filesystem::path& path, int threads)
        : contents_(std::async([path, threads] { return readVtu(path, threads); }))
    {
    }

    /// Once only. Throws what readVtu() throws.
    std::optional<VtuContents> take() { return contents_.get(); }

private:
    std::future<std::optional<VtuContents>> contents_;
};

} // namespace veltrane

#endif
