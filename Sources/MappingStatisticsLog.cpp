// The statistics report of a transfer, interpoLog.txt.
#include "Map/BucketUse.h"
#include "Map/SearchFigures.h"
#include "MappingClass.h"

#include "QorbUtil.h"

namespace
{
constexpr const char* unitName = "MappingClass";
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
    printFigures(file, {.nbBuckets = itsBucketSpace.nbBuckets(),
                        .nbUsedBuckets = use.nbUsed,
                        .nbUnusedBuckets = use.nbUnused,
                        .meanItemsPerUsedBucket = use.meanItems(),
                        .nbInterpolatedPoints = itsNbInterpolatedPoints,
                        .meanIterations = itsMeanIterations,
                        .hasOutsideCounts = itsTransferType == meshToMesh,
                        .nbNodesOutside = itsNbTargetNodesOutside,
                        .nbNodesFar = itsNbTargetNodesFarOutside,
                        .nbGaussPointsOutside = itsNbTargetGPsOutside,
                        .nbGaussPointsFar = itsNbTargetGPsFarOutside});
    QorbFClose(file, unitName, __LINE__);
}
