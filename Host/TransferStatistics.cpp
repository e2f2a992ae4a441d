#include "TransferStatistics.h"

#include <cstddef>
#include <cstdlib>
#include <utility>
#include <vector>

namespace veltrane
{
namespace
{

// The order of the lines in the log.
enum Line : std::size_t
{
    buckets,
    interpolatedPoints,
    iterations,
    usedBuckets,
    unusedBuckets,
    elementsPerUsedBucket,
    nodesOutside,
    nodesNear,
    nodesFar,
    gaussPointsOutside,
    gaussPointsNear,
    gaussPointsFar
};
constexpr std::size_t pointCloudLineCount = nodesOutside;
constexpr std::size_t meshLineCount = gaussPointsFar + 1;

/// The texts behind the equal signs, in order.
std::vector<const char*> figures(const std::string& log)
{
    std::vector<const char*> result;
    for (std::size_t equals = log.find(" = "); equals != std::string::npos; equals = log.find(" = ", equals + 1))
    {
        result.push_back(log.c_str() + equals + 3);
    }
    return result;
}

} // namespace

std::optional<TransferStatistics> parseStatistics(std::string log, bool holdsIterationSum)
{
    const std::vector<const char*> texts = figures(log);
    if (texts.size() != pointCloudLineCount && texts.size() != meshLineCount)
    {
        return std::nullopt;
    }
    const auto integer = [&](Line line) { return std::strtoll(texts[line], nullptr, 10); };
    const auto count = [&](Line line) { return static_cast<int>(integer(line)); };
    // In the host's locale, as the library has written it.
    const auto number = [&](Line line) { return std::strtof(texts[line], nullptr); };

    TransferStatistics statistics{};
    statistics.bucketCount = integer(buckets);
    statistics.usedBucketCount = integer(usedBuckets);
    statistics.unusedBucketCount = integer(unusedBuckets);
    statistics.meanElementsPerUsedBucket = number(elementsPerUsedBucket);
    statistics.interpolatedPointCount = count(interpolatedPoints);
    statistics.meanIterations = number(iterations);
    if (holdsIterationSum)
    {
        statistics.meanIterations /= static_cast<float>(statistics.interpolatedPointCount);
    }
    if (texts.size() == meshLineCount)
    {
        statistics.nodes = OutsideCounts{count(nodesNear), count(nodesFar)};
        statistics.gaussPoints = OutsideCounts{count(gaussPointsNear), count(gaussPointsFar)};
    }
    statistics.log = std::move(log);
    return statistics;
}

} // namespace veltrane
