/// What every computation can be given along: settings of its search, threads, and somebody to tell the progress.
#ifndef VELTRANE_HOST_CALL_SETTINGS_H
#define VELTRANE_HOST_CALL_SETTINGS_H

#include <functional>
#include <limits>
#include <optional>
#include <string_view>

namespace veltrane
{

/// Settings of the search that have defaults.
struct Tuning
{
    /// Of reference coordinates, 0.001; a point outside an element by twice as much counts as inside.
    std::optional<float> tolerance{};
    /// By which part of their size the boxes of elements are enlarged for buckets that they do not reach as they are,
    /// 0.1.
    std::optional<float> bucketFactor{};
    /// 10 000 000
    std::optional<long long> maxBuckets{};
};

/// What the engine may do otherwise than the exported functions of the library.
struct Rules
{
    /// A target mesh that reaches beyond the source's box by more than 5 % of its extents is refused.
    bool refusesOverhang = false;
    /// Element kinds that the exported functions do not admit are refused; a pyramid is matched only if the target has
    /// one at the same place in its list of elements.
    bool admitsExportedKindsOnly = false;
    /// An element whose Jacobian becomes singular on the way to a point does not hold this point, and is counted.
    /// Otherwise it ends the computation (SingularElement).
    bool leavesOutSingularElements = true;
    /// Points in no element take the values of a near one, as nodes do.
    bool pointsMayBeNear = false;
    /// Where propagation does not reach all far nodes, nothing is computed at Gauss points.
    bool stopsAtUnreachedNodes = false;
    /// Points that are farther than this from the place in a near element whose values they would take are far.
    float nearLimit = std::numeric_limits<float>::infinity();
    /// Coordinates are counted from the middle of the source where single precision would not tell its nodes apart
    /// well enough: see TransferStatistics::origin.
    bool movesOrigin = true;
    /// A point that was found gets reference coordinates and weights in double precision, and values are summed up in
    /// it. Otherwise all of it is computed in single precision.
    bool inDoublePrecision = true;
};

/// The rules of the exported functions: results are the same bits.
constexpr Rules asExported()
{
    return {.refusesOverhang = true,
            .admitsExportedKindsOnly = true,
            .leavesOutSingularElements = false,
            .stopsAtUnreachedNodes = true,
            .movesOrigin = false,
            .inDoublePrecision = false};
}

struct Progress
{
    int percent;
    std::string_view title; ///< of the computation
    std::string_view stage;
};

/// Is told the progress, about once per percent; returns false to cancel. Runs on the caller's thread. What it throws
/// cancels the computation and comes out of it. It may start other computations.
using ProgressCallback = std::function<bool(const Progress&)>;

/// How many threads 0 stands for: the cores that the process may use, as its affinity and the limits of its container
/// have it.
int usableThreadCount();

} // namespace veltrane

#endif
