// Gauss-point correspondence of two meshes whose Gauss points coincide.
#include "Map/Matching.h"
#include "Map/Survey.h"
#include "MappingClass.h"
#include "Search/PointBatch.h"

#include <algorithm>

namespace
{
constexpr ComputationTexts texts{"MappingClass::GPToGPCorrespondence()",
                                 "Gauss point to Gauss point correspondence computation",
                                 "Gauss point to Gauss point correspondence computation cancelled.\n",
                                 "Gauss point to Gauss point correspondence computation terminated successfully."};
} // namespace

void MappingClass::GPToGPCorrespondence()
{
    GPToGPCorrTests();
    if (itsErrorCode != success)
    {
        return;
    }
    ComputationRun run(*this, texts);
    if (!run.start() || !createElementBoxes(run))
    {
        return;
    }
    const Target wholeTarget = target();
    OneWorker worker;
    surveyTarget(wholeTarget, itsSurveyedBoxes, worker);
    const float meanSize = meanRefBoxSize();
    if (!buildBucketSpace(BucketSpaceClass::elementBuckets, meanSize) || !run.enterStage("Computation", 5))
    {
        return;
    }
    const std::int64_t nbGaussPoints = wholeTarget.nbSelectedGaussPoints();
    if (nbGaussPoints == 0)
    {
        run.fail("There is no target gauss point.\n");
        return;
    }
    const float tolerance = meanSize * single(0.001);
    ProgressCounter progress(nbGaussPoints, ProgressCounter::Arithmetic::wrapping32Bit);
    CentreCursor centres(wholeTarget);
    PointBatch batch;
    if (!allocateBatch(batch, itsTargetMesh.itsNbElts, run))
    {
        return;
    }
    while (batch.fill(centres))
    {
        batch.locate(pointLocator());
        for (std::size_t i = 0; i < batch.size(); ++i)
        {
            const LocatedPoint located = takeLocated(batch, i);
            if (located.elt == -1)
            {
                failGaussPointMatching(run);
                return;
            }
            countInversion(located);
            if (!matchGaussPointsOfElt(run, progress, static_cast<int>(batch.point(i).index), located.elt, tolerance))
            {
                return;
            }
        }
    }
    run.terminate();
}

/// Matches the Gauss points of one target element with those of the source element that holds its centre; false if the
/// run has ended.
bool MappingClass::matchGaussPointsOfElt(ComputationRun& run, ProgressCounter& progress, int elt, int refElt,
                                         float tolerance)
{
    const int nbGaussPoints = itsTargetMesh.nbGaussPointsOfElt(elt);
    for (int i = 0; i < nbGaussPoints; ++i)
    {
        const int refGaussPoint =
            matchingGaussPoint(itsRefMesh, refElt, itsTargetMesh.gaussPointPosition(elt, i), tolerance);
        if (refGaussPoint == 0)
        {
            failGaussPointMatching(run);
            return false;
        }
        itsGPCorrespondenceA[elt][i] = refElt + 1;
        itsGPCorrespondenceB[elt][i] = refGaussPoint;
        if (!run.advance(progress))
        {
            return false;
        }
    }
    return true;
}

/// Takes all matches of selected elements back.
void MappingClass::failGaussPointMatching(ComputationRun& run)
{
    for (int elt = 0; elt < itsTargetMesh.itsNbElts; ++elt)
    {
        if (itsTargetMatlMappingFlags[itsTargetMesh.itsMatlIdPerItem[elt]] == 1)
        {
            const int nbGaussPoints = itsTargetMesh.nbGaussPointsOfElt(elt);
            std::fill_n(itsGPCorrespondenceA[elt], nbGaussPoints, 0);
            std::fill_n(itsGPCorrespondenceB[elt], nbGaussPoints, 0);
        }
    }
    run.fail("%s", unmatchedGaussPointText);
}
