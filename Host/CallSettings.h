/// What every computation of the library can be given along: settings of its search, and somebody to tell the progress.
#ifndef VELTRANE_HOST_CALL_SETTINGS_H
#define VELTRANE_HOST_CALL_SETTINGS_H

#include <functional>
#include <optional>
#include <string_view>

namespace veltrane
{

/// Settings of the search for which the library has defaults.
struct Tuning
{
    /// Of reference coordinates, 0.001; a point outside an element by twice as much counts as inside.
    std::optional<float> tolerance{};
    /// How far around their boxes elements are entered into buckets without any, as part of their boxes, 0.1.
    std::optional<float> bucketFactor{};
    /// 10 000 000
    std::optional<long long> maxBuckets{};
};

struct Progress
{
    int percent;
    std::string_view title; ///< of the computation
    std::string_view stage;
};

/// Is told the progress, about once per percent; returns false to cancel. Runs on the caller's thread. What it throws
/// cancels the computation and comes out of it.
using ProgressCallback = std::function<bool(const Progress&)>;

} // namespace veltrane

#endif
