#include "Overlap.h"

#include "../Search/BoxTest.h"

void OverlapSearch::look(const TargetPoint& point, int elt, const Vector3& referenceCoords)
{
    if (!isWellInside(elt, referenceCoords))
    {
        return;
    }
    ++itsFigures.nbTried;
    for (const int other : itsSpace.items(itsSpace.bucketOfPoint(point.position)))
    {
        const float* box = boxValues(itsBoxes, other);
        if (other == elt || itsSource.matlStateOfItem(other) != point.matlState || !boxContains(box, point.position))
        {
            continue;
        }
        const Inversion inversion = itsSource.inversionIn(other, box, point.position, itsPrecisionFactor);
        if (inversion.result != Inversion::inside || !isWellInside(other, inversion.referenceCoords))
        {
            continue;
        }
        if (++itsFigures.nbFound == 1)
        {
            itsFigures.elt = elt;
            itsFigures.otherElt = other;
        }
        return;
    }
}

/// Farther from the element's faces than a located point can be wrong.
bool OverlapSearch::isWellInside(int elt, const Vector3& referenceCoords) const
{
    const double margin = 10.0 * static_cast<double>(itsPrecisionFactor);
    bool isInside = false;
    visitElementKind(itsSource.itsEltTypes[elt],
                     [&]<class Kind>(Kind) { isInside = Kind::contains(referenceCoords, -margin); });
    return isInside;
}
