#include "TransferStatistics.h"

#include "Errors.h"

#include "Map/SearchFigures.h"

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace veltrane
{

std::string statisticsText(const TransferStatistics& statistics)
{
    const OutsideCounts nodes = statistics.nodes.value_or(OutsideCounts{0, 0});
    const OutsideCounts gaussPoints = statistics.gaussPoints.value_or(OutsideCounts{0, 0});
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* stream = open_memstream(&text, &size);
    if (stream == nullptr)
    {
        throw Error("there is no memory for a text");
    }
    printFigures(stream, {.nbBuckets = statistics.bucketCount,
                          .nbUsedBuckets = statistics.usedBucketCount,
                          .nbUnusedBuckets = statistics.unusedBucketCount,
                          .meanItemsPerUsedBucket = statistics.meanElementsPerUsedBucket,
                          .nbInterpolatedPoints = statistics.interpolatedPointCount,
                          .meanIterations = statistics.meanIterations,
                          .hasOutsideCounts = statistics.nodes.has_value(),
                          .nbNodesOutside = nodes.all(),
                          .nbNodesFar = nodes.far,
                          .nbGaussPointsOutside = gaussPoints.all(),
                          .nbGaussPointsFar = gaussPoints.far});
    std::fclose(stream);
    const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
    return std::string(text, size);
}

} // namespace veltrane
