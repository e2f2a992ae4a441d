/// Whether a source overlaps itself, seen at a sample of the points that have been located in it.
#ifndef VELTRANE_OVERLAP_H
#define VELTRANE_OVERLAP_H

#include "../BucketSpaceClass.h"
#include "../ModelClass.h"
#include "../Search/BoundingBox.h"
#include "MapTable.h"
#include "TargetPoints.h"

#include <cstdint>

/// At a point in two elements of one material state either could give the values.
struct OverlapFigures
{
    std::int64_t nbTried = 0; ///< points that lie well inside the element that they were located in
    std::int64_t nbFound = 0; ///< those that lie as well inside another one
    int elt = -1;             ///< of the first of these, the element that it was located in
    int otherElt = -1;        ///< and the other one
};

class OverlapSearch
{
public:
    /// The objects are borrowed.
    OverlapSearch(const ModelClass& source, const BoxTable& boxes, const BucketSpaceClass& space, float precisionFactor)
        : itsSource(source), itsBoxes(boxes), itsSpace(space), itsPrecisionFactor(precisionFactor)
    {
    }

    /// Tries a point that lies in element `elt` at the given reference coordinates.
    void look(const TargetPoint& point, int elt, const Vector3& referenceCoords);

    const OverlapFigures& figures() const { return itsFigures; }

private:
    bool isWellInside(int elt, const Vector3& referenceCoords) const;

    const ModelClass& itsSource;
    const BoxTable& itsBoxes;
    const BucketSpaceClass& itsSpace;
    float itsPrecisionFactor;
    OverlapFigures itsFigures;
};

#endif
