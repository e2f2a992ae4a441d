// Gauss-point correspondence of two meshes whose Gauss points coincide.
#include "MappingClass.h"

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
    ComputationRun run(texts);
    if (!reportStart(run) || !createElementBoxes(run))
    {
        return;
    }
    surveyTarget();
    const float meanSize = meanRefBoxSize();
    if (!buildBucketSpace(BucketSpaceClass::elementBuckets, meanSize) || !reportStage(run, "Computation", 5))
    {
        return;
    }
    const std::int64_t nbGaussPoints = countTargetGaussPoints();
    if (nbGaussPoints == 0)
    {
        fail(run.buffer, "There is no target gauss point.\n");
        return;
    }
    const float tolerance = meanSize * single(0.001);
    ProgressCounter progress(nbGaussPoints, ProgressCounter::Arithmetic::wrapping32Bit);
    const auto forEachCentre = [this](auto visit)
    {
        for (int elt = 0; elt < itsTargetMesh.itsNbElts; ++elt)
        {
            if (isTargetEltSelected(elt) &&
                !visit(TargetPoint{.index = elt,
                                   .position = targetEltCentre(elt),
                                   .matlStateClass = itsTargetMesh.matlStateClassOfItem(elt),
                                   .matlState = itsTargetMesh.matlStateOfItem(elt)}))
            {
                return false;
            }
        }
        return true;
    };
    const auto match = [&](const TargetPoint& centre, const LocatedPoint& located)
    {
        if (located.elt == -1)
        {
            failGaussPointMatching(run);
            return false;
        }
        countInversion(located);
        return matchGaussPointsOfElt(run, progress, static_cast<int>(centre.index), located.elt, tolerance);
    };
    if (!locateInBatches(run, itsTargetMesh.itsNbElts, forEachCentre, match))
    {
        return;
    }
    reportTermination(run);
}

/// Matches the Gauss points of one target element with those of the source element that holds its centre; false if the
/// run has ended.
bool MappingClass::matchGaussPointsOfElt(ComputationRun& run, ProgressCounter& progress, int elt, int refElt,
                                         float tolerance)
{
    const int nbGaussPoints = itsTargetMesh.nbGaussPointsOfElt(elt);
    for (int i = 0; i < nbGaussPoints; ++i)
    {
        const int refGaussPoint = matchingGaussPoint(itsTargetMesh.gaussPointPosition(elt, i), refElt, tolerance);
        if (refGaussPoint == 0)
        {
            failGaussPointMatching(run);
            return false;
        }
        itsGPCorrespondenceA[elt][i] = refElt + 1;
        itsGPCorrespondenceB[elt][i] = refGaussPoint;
        if (!reportProgress(run, progress))
        {
            return false;
        }
    }
    return true;
}

Vector3 MappingClass::targetEltCentre(int elt) const
{
    const int nbNodes = itsTargetMesh.nbNodesOfElt(elt);
    Vector3 centre{};
    for (int i = 0; i < nbNodes; ++i)
    {
        const Vector3 node = itsTargetMesh.nodePosition(itsTargetMesh.itsConnectivity[elt][i]);
        centre = {centre[0] + node[0], centre[1] + node[1], centre[2] + node[2]};
    }
    const float weight = single(1.0 / nbNodes);
    return {centre[0] * weight, centre[1] * weight, centre[2] * weight};
}

/// The number, from 1, of the first Gauss point of a source element within the tolerance of a point, or 0.
int MappingClass::matchingGaussPoint(const Vector3& point, int refElt, float tolerance) const
{
    const int nbGaussPoints = itsRefMesh.nbGaussPointsOfElt(refElt);
    for (int i = 0; i < nbGaussPoints; ++i)
    {
        if (isWithin(point, itsRefMesh.gaussPointPosition(refElt, i), tolerance))
        {
            return i + 1;
        }
    }
    return 0;
}

/// Takes all matches of selected elements back.
void MappingClass::failGaussPointMatching(ComputationRun& run)
{
    for (int elt = 0; elt < itsTargetMesh.itsNbElts; ++elt)
    {
        if (isTargetEltSelected(elt))
        {
            const int nbGaussPoints = itsTargetMesh.nbGaussPointsOfElt(elt);
            std::fill_n(itsGPCorrespondenceA[elt], nbGaussPoints, 0);
            std::fill_n(itsGPCorrespondenceB[elt], nbGaussPoints, 0);
        }
    }
    fail(run.buffer, "At least one gauss point of the target mesh does not correspond to one gauss point of the source "
                     "mesh.\n");
}
