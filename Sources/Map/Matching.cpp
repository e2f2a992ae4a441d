#include "Matching.h"

int NodeMatcher::find(const Vector3& point, int matlState) const
{
    for (const int node : space.itemsForSearch(space.bucketOfPoint(point)))
    {
        if ((matlState == anyMatlState || matlStatePerNode[node] == matlState) &&
            isWithin(point, source.nodePosition(node), tolerance))
        {
            return node + 1;
        }
    }
    return 0;
}

const char* NodeMatcher::reasonFor(const Vector3& point) const
{
    return find(point, anyMatlState) == 0
               ? "At least one node of the target mesh does not correspond to one of the nodes of the source "
                 "mesh. Please try with the Mapping option\n"
               : "Extract operation is failed due to following reasons. Please try with the Mapping option:\n "
                 "At least one node located in a COINC interface was not correctly detached.\n Volume type of "
                 "at least one of the corresponding nodes of source and target is not matching.";
}

int matchingGaussPoint(const ModelClass& source, int elt, const Vector3& point, float tolerance)
{
    const int nbGaussPoints = source.nbGaussPointsOfElt(elt);
    for (int i = 0; i < nbGaussPoints; ++i)
    {
        if (isWithin(point, source.gaussPointPosition(elt, i), tolerance))
        {
            return i + 1;
        }
    }
    return 0;
}
