#include "NearestElement.h"

#include <algorithm>

void computeCentre(const ModelClass& model, int elt, float* centre)
{
    std::fill_n(centre, 3, 0.0F);
    const int nbNodes = model.nbNodesOfElt(elt);
    for (int i = 0; i < nbNodes; ++i)
    {
        const float(&coords)[3] = model.itsNodeCoords[model.itsConnectivity[elt][i]];
        for (int axis = 0; axis < 3; ++axis)
        {
            centre[axis] += coords[axis];
        }
    }
    for (int axis = 0; axis < 3; ++axis)
    {
        centre[axis] /= static_cast<float>(nbNodes);
    }
}

float NearestElement::squaredDistanceToCentre(const Vector3& point, int elt) const
{
    if (itsCentres != nullptr)
    {
        return squaredDistance(point, itsCentres + 3 * static_cast<std::int64_t>(elt));
    }
    Vector3 centre;
    computeCentre(itsMesh, elt, centre.data());
    return squaredDistance(point, centre);
}

/// The first element of the bucket that comes after the last one tried.
NearestElement::Candidate NearestElement::nextCandidate(const Vector3& point, int matlState,
                                                        const Candidate& last) const
{
    Candidate nearest;
    for (const int elt : itsSpace.items(itsSpace.bucketOfPoint(point)))
    {
        if (itsMesh.matlStateOfItem(elt) != matlState)
        {
            continue;
        }
        const Candidate candidate{elt, squaredDistanceToCentre(point, elt)};
        if ((nearest.elt == -1 || nearest.distance >= candidate.distance) && candidate.comesAfter(last))
        {
            nearest = candidate;
        }
    }
    return nearest;
}

LocatedPoint NearestElement::find(const Vector3& point, int matlState) const
{
    Candidate nearest;
    while ((nearest = nextCandidate(point, matlState, nearest)).elt != -1)
    {
        const int elt = nearest.elt;
        const Inversion inversion = itsMesh.inversionIn(elt, boxValues(itsBoxes, elt), point, itsPrecisionFactor);
        if (inversion.result == Inversion::singular)
        {
            if (itsRule == SingularElements::endComputation)
            {
                return {.elt = elt, .isSingular = true};
            }
            markElement(itsSingularElts, elt);
            continue;
        }
        if (inversion.result == Inversion::notConverged)
        {
            return {.isUnconverged = true};
        }
        return {.elt = elt,
                .referenceCoords = inversion.referenceCoords,
                .nbIterations = inversion.nbIterations,
                .isNearMiss = true};
    }
    return {};
}
