/// The figures of a search as lines of text.
#ifndef VELTRANE_SEARCH_FIGURES_H
#define VELTRANE_SEARCH_FIGURES_H

#include <cstdint>
#include <cstdio>

struct SearchFigures
{
    std::int64_t nbBuckets;
    std::int64_t nbUsedBuckets;
    std::int64_t nbUnusedBuckets;
    float meanItemsPerUsedBucket;
    int nbInterpolatedPoints;
    float meanIterations;
    bool hasOutsideCounts; ///< those that follow; clouds have none
    int nbNodesOutside;
    int nbNodesFar; ///< of those outside
    int nbGaussPointsOutside;
    int nbGaussPointsFar;
};

void printFigures(std::FILE* file, const SearchFigures& figures);

#endif
