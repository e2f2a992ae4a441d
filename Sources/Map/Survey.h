/// The first visit to all elements: their inflated boxes, and the boxes of both models that the grid wants to know.
#ifndef VELTRANE_SURVEY_H
#define VELTRANE_SURVEY_H

#include "../BucketSpaceClass.h"
#include "TargetPoints.h"
#include "Workers.h"

#include <cstdint>

/// Writes the boxes of the source elements, inflated by a fraction of their largest extent, into `boxes`, which has
/// room for them, and adds them as they are to `surveyed`. `sizeSum` becomes the sum of the extents of the inflated
/// boxes: one running sum in single precision over the elements, then the axes x, y, z. False if the workers were
/// stopped; then there are boxes that were not made.
bool surveySource(const ModelClass& source, float marginRatio, const BoxTable& boxes, SurveyedBoxes& surveyed,
                  float& sizeSum, Workers& workers);

/// Adds the extents of an inflated box along x, y, z to such a sum.
void addExtents(float& sum, const Box& box);

inline float meanElementSize(float sizeSum, std::int64_t nbElts)
{
    return sizeSum / static_cast<float>(3 * nbElts);
}

/// Adds the selected elements of a target mesh to `surveyed`. Where the nodes' mapping flags are at hand and all
/// materials are selected, the nodes of elements are those that are mapped.
/// False if the workers were stopped.
bool surveyTarget(const Target& target, SurveyedBoxes& surveyed, Workers& workers);

#endif
