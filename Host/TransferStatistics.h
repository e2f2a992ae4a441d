/// The figures of a search.
#ifndef VELTRANE_HOST_TRANSFER_STATISTICS_H
#define VELTRANE_HOST_TRANSFER_STATISTICS_H

#include <array>
#include <optional>
#include <string>

namespace veltrane
{

/// Target points that are in no source element.
struct OutsideCounts
{
    int near; ///< took the values of a nearby element
    int far;  ///< too far away for that

    int all() const { return near + far; }
};

/// Where the source overlaps itself: of so many target locations well inside an element so many are well inside
/// another one of the same material, too, the first of them in these two.
struct OverlapCounts
{
    int triedCount = 0;
    int foundCount = 0;
    int element = -1;
    int otherElement = -1;
};

struct TransferStatistics
{
    long long bucketCount;
    long long usedBucketCount;
    long long unusedBucketCount;
    float meanElementsPerUsedBucket;
    int interpolatedPointCount;
    float meanIterations; ///< per interpolated point, to find the reference coordinates; not a number if there is none
    std::optional<OutsideCounts> nodes;       ///< mesh targets, and points that may be near
    std::optional<OutsideCounts> gaussPoints; ///< mesh targets only
    /// Points in no element that lie in the box of one in which the iteration did not converge.
    int unconvergedPointCount = 0;
    int singularElementCount = 0;   ///< source elements that were left out for some point
    OverlapCounts overlap{};        ///< nothing tried unless asked for
    std::array<double, 3> origin{}; ///< what was taken off all coordinates before they became single precision
};

/// The figures as lines of text, as the library writes them into its log.
std::string statisticsText(const TransferStatistics& statistics);

} // namespace veltrane

#endif
