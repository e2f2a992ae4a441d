/// A step of a result.
#ifndef VELTRANE_HOST_STEP_H
#define VELTRANE_HOST_STEP_H

#include <filesystem>
#include <optional>

namespace veltrane
{

/// Where the results of a step are.
struct Step
{
    std::filesystem::path file;
    std::optional<int> number; ///< of a file with several steps, from 0
    double time;
};

} // namespace veltrane

#endif
