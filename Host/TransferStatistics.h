/// The figures of the library's statistics log.
#ifndef VELTRANE_HOST_TRANSFER_STATISTICS_H
#define VELTRANE_HOST_TRANSFER_STATISTICS_H

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

struct TransferStatistics
{
    long long bucketCount;
    long long usedBucketCount;
    long long unusedBucketCount;
    float meanElementsPerUsedBucket;
    int interpolatedPointCount;
    float meanIterations; ///< per interpolated point, to find the reference coordinates; not a number if there is none
    std::optional<OutsideCounts> nodes;       ///< mesh targets only
    std::optional<OutsideCounts> gaussPoints; ///< mesh targets only
    std::string log;                          ///< the text itself
};

/// Reads the log of a transfer; null if a figure is missing. After the propagation warning the log holds the sum of the
/// iterations in the place of their mean.
std::optional<TransferStatistics> parseStatistics(std::string log, bool holdsIterationSum);

} // namespace veltrane

#endif
