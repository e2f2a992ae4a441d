#include "SearchFigures.h"

#include "../MappingStringUtilities.h"

void printFigures(std::FILE* file, const SearchFigures& figures)
{
    printToFile(file, "Total number of buckets = %lld\n\n", static_cast<long long>(figures.nbBuckets));
    printToFile(file, "number of target points where interpolation was done = %d\n\n", figures.nbInterpolatedPoints);
    printToFile(file,
                "Average number of iterations for calculating reference coordinates at each target point = %f\n\n\n",
                static_cast<double>(figures.meanIterations));
    printToFile(file,
                "Total number of used buckets (buckets containing at least one target point and one source element) = "
                "%lld\n\n",
                static_cast<long long>(figures.nbUsedBuckets));
    printToFile(file,
                "Total number of unused buckets (buckets containing no target point or no source element) = %lld\n\n",
                static_cast<long long>(figures.nbUnusedBuckets));
    printToFile(file, "Average number of elements per used bucket = %f\n\n\n",
                static_cast<double>(figures.meanItemsPerUsedBucket));
    if (figures.hasOutsideCounts)
    {
        printToFile(file, "Total number of target nodes outside the source mesh = %d\n\n", figures.nbNodesOutside);
        printToFile(file, "Number of target nodes outside the source mesh but close enough for interpolation = %d\n\n",
                    figures.nbNodesOutside - figures.nbNodesFar);
        printToFile(file,
                    "Number of target nodes far from the source mesh for which fields are set to the default value or "
                    "are propagated = %d\n\n\n",
                    figures.nbNodesFar);
        printToFile(file, "Total number of target gauss points outside the source mesh = %d\n\n",
                    figures.nbGaussPointsOutside);
        printToFile(file,
                    "Number of target gauss points outside the source mesh but close enough for interpolation = "
                    "%d\n\n",
                    figures.nbGaussPointsOutside - figures.nbGaussPointsFar);
        printToFile(file, "Number of target gauss points far from the source mesh (set to zero) = %d\n\n\n",
                    figures.nbGaussPointsFar);
    }
}
