// The statistics report of a transfer, interpoLog.txt.
#include "MappingClass.h"

#include "QorbUtil.h"

namespace
{
constexpr const char* unitName = "MappingClass";

/// How the buckets of a grid are used.
struct BucketUse
{
    std::int64_t nbUsed = 0;
    std::int64_t nbUnused = 0;
    float nbItems = 0.0F; ///< in used buckets, summed in single precision

    explicit BucketUse(const BucketSpaceClass& space)
    {
        for (std::int64_t bucket = 0; bucket < space.nbBuckets(); ++bucket)
        {
            switch (space.state(bucket))
            {
            case filledDirectly:
            case filledByEnlarged:
                ++nbUsed;
                nbItems += static_cast<float>(space.items(bucket).size());
                break;
            case notNeeded:
            case neededEmpty: ++nbUnused; break;
            }
        }
    }
};
} // namespace

void MappingClass::writeInterpoLog()
{
    std::FILE* file = QorbFOpen("interpoLog.txt", "wt", unitName, __LINE__);
    if (file == nullptr)
    {
        printMessage("Error: impossible to open interpoLog.txt");
        return;
    }
    const BucketUse use(itsBucketSpace);
    printToFile(file, "Total number of buckets = %lld\n\n", static_cast<long long>(itsBucketSpace.nbBuckets()));
    printToFile(file, "number of target points where interpolation was done = %d\n\n", itsNbInterpolatedPoints);
    printToFile(file,
                "Average number of iterations for calculating reference coordinates at each target point = %f\n\n\n",
                static_cast<double>(itsMeanIterations));
    printToFile(file,
                "Total number of used buckets (buckets containing at least one target point and one source element) = "
                "%lld\n\n",
                static_cast<long long>(use.nbUsed));
    printToFile(file,
                "Total number of unused buckets (buckets containing no target point or no source element) = %lld\n\n",
                static_cast<long long>(use.nbUnused));
    printToFile(file, "Average number of elements per used bucket = %f\n\n\n",
                static_cast<double>(use.nbItems / static_cast<float>(use.nbUsed)));
    if (itsTransferType == meshToMesh)
    {
        printToFile(file, "Total number of target nodes outside the source mesh = %d\n\n", itsNbTargetNodesOutside);
        printToFile(file, "Number of target nodes outside the source mesh but close enough for interpolation = %d\n\n",
                    itsNbTargetNodesOutside - itsNbTargetNodesFarOutside);
        printToFile(file,
                    "Number of target nodes far from the source mesh for which fields are set to the default value or "
                    "are propagated = %d\n\n\n",
                    itsNbTargetNodesFarOutside);
        printToFile(file, "Total number of target gauss points outside the source mesh = %d\n\n",
                    itsNbTargetGPsOutside);
        printToFile(file,
                    "Number of target gauss points outside the source mesh but close enough for interpolation = "
                    "%d\n\n",
                    itsNbTargetGPsOutside - itsNbTargetGPsFarOutside);
        printToFile(file, "Number of target gauss points far from the source mesh (set to zero) = %d\n\n\n",
                    itsNbTargetGPsFarOutside);
    }
    QorbFClose(file, unitName, __LINE__);
}
