#include "BucketSpaceClass.h"

#include "MappingStringUtilities.h"
#include "ModelClass.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace
{
constexpr const char* unitName = "BucketSpaceClass";

/// A box enlarged by `factor` times its own extents on each side.
Box enlarged(Box box, float factor)
{
    const Vector3 extents = box.extents();
    box.inflate({factor * extents[0], factor * extents[1], factor * extents[2]});
    return box;
}

Box boxAroundPoint(const float (&point)[3], float reach)
{
    Box box = boxOfPoint(point);
    box.inflate({reach, reach, reach});
    return box;
}

/// The six values of a box, as a table of boxes holds them.
struct BoxValues
{
    explicit BoxValues(const Box& box)
        : values{box.low[0], box.low[1], box.low[2], box.high[0], box.high[1], box.high[2]}
    {
    }
    float values[6];
};

const float* valuesOf(const float* values)
{
    return values;
}

const float* valuesOf(const BoxValues& box)
{
    return box.values;
}

const BoxLanes& valuesOf(const BoxLanes& box)
{
    return box;
}

char* newErrorText(MessageBuffer& buffer, const char* text)
{
    formatMessage(buffer.text(), "%s", text);
    return buffer.release();
}
} // namespace

BucketSpaceClass::~BucketSpaceClass()
{
    // The first bucket holds the start of the shared entry storage, whether it is used or not.
    if (itsBuckets && itsBuckets.nbValues() > 0)
    {
        releaseBytes(itsBuckets.values()[0].itsItems);
    }
}

char* BucketSpaceClass::build(int mode, const ModelClass& targetModel, const ModelClass& sourceModel,
                              const BoxTable& refBoxes, const BoxTable& targetBoxes, const int* targetMatlMappingFlags,
                              float initialBucketSize, float boxMarginRatio, float bucketFactor,
                              const SurveyedBoxes* surveyed)
{
    MessageBuffer buffer("BucketSpaceClass::build()");
    const bool isSurveyed = surveyed != nullptr && surveyed->areExact && targetModel.itsKind == ModelKind::mesh;
    const RunningBox selectedTarget =
        isSurveyed ? surveyed->selectedTarget : selectedBox(targetModel, targetMatlMappingFlags);
    if (selectedTarget.isEmpty())
    {
        return newErrorText(buffer, "Error: please select at least one domain in the target model.\n");
    }
    layOver(selectedTarget.box(), boxMarginRatio);
    if (targetModel.itsKind == ModelKind::mesh &&
        !isIncludedIn(isSurveyed ? surveyed->source : boxOfElements(sourceModel)))
    {
        return newErrorText(buffer, "Error: the target mesh is not included in the source mesh.\n");
    }
    chooseBucketSize(initialBucketSize);
    allocateStates();
    markTarget(targetModel, targetBoxes, boxMarginRatio, surveyed != nullptr);
    allocateBuckets();
    switch (mode)
    {
    case elementBuckets: fillWithElements(sourceModel.itsNbElts, refBoxes, bucketFactor); break;
    case nodeBuckets: fillWithNodes(sourceModel, single(0.001 * initialBucketSize)); break;
    default: endProcess("Error in %s file at line %d: mode number %d is unknown.\n", unitName, 982, mode);
    }
    return nullptr;
}

void BucketSpaceClass::fillWithElements(int nbElts, const BoxTable& boxes, float bucketFactor)
{
    const auto directBox = [&](int elt) { return boxValues(boxes, elt); };
    const auto enlargedBox = [&](int elt) { return BoxValues(enlarged(boxOfElement(boxes, elt), bucketFactor)); };
    countPass(nbElts, directBox, neededEmpty, filledDirectly);
    // Most often every needed bucket is reached by now, and there is nothing to enlarge boxes for.
    const bool isEnlarging = itsNbNeededEmpty > 0;
    if (isEnlarging)
    {
        countPass(nbElts, enlargedBox, neededEmpty, filledByEnlarged);
    }
    allocateEntries();
    allocateItemFlags(nbElts, 1026);
    fillPass(nbElts, directBox, filledDirectly);
    if (isEnlarging)
    {
        fillPass(nbElts, enlargedBox, filledByEnlarged);
    }
}

/// Lists a node in every bucket that a point within `reach` of it can lie in.
void BucketSpaceClass::fillWithNodes(const ModelClass& sourceModel, float reach)
{
    const auto nodeBox = [&](int node) { return BoxValues(boxAroundPoint(sourceModel.itsNodeCoords[node], reach)); };
    countPass(sourceModel.itsNbNodes, nodeBox, neededEmpty, filledDirectly);
    allocateEntries();
    allocateItemFlags(sourceModel.itsNbNodes, 1103);
    fillPass(sourceModel.itsNbNodes, nodeBox, filledDirectly);
}

void BucketSpaceClass::allocateItemFlags(int nbItems, int line)
{
    if (!itsItemInGrid.allocate(nbItems))
    {
        endProcess("Error in %s file at line %d: impossible to allocate int \n", unitName, line);
    }
    std::fill_n(itsItemInGrid.get(), nbItems, 0);
}

/// The box of the selected target elements' nodes, or of the selected points.
RunningBox BucketSpaceClass::selectedBox(const ModelClass& targetModel, const int* targetMatlMappingFlags)
{
    const auto isSelected = [&](int item) { return targetMatlMappingFlags[targetModel.itsMatlIdPerItem[item]] == 1; };
    RunningBox running;
    if (targetModel.itsKind == ModelKind::mesh)
    {
        for (int elt = 0; elt < targetModel.itsNbElts; ++elt)
        {
            if (isSelected(elt))
            {
                running.addNodes(targetModel, elt);
            }
        }
    }
    else if (targetModel.itsKind == ModelKind::pointCloud)
    {
        for (int point = 0; point < targetModel.itsNbNodes; ++point)
        {
            if (isSelected(point))
            {
                running.add(boxOfPoint(targetModel.itsNodeCoords[point]));
            }
        }
    }
    return running;
}

RunningBox BucketSpaceClass::boxOfElements(const ModelClass& sourceModel)
{
    RunningBox running;
    for (int elt = 0; elt < sourceModel.itsNbElts; ++elt)
    {
        running.addNodes(sourceModel, elt);
    }
    return running;
}

void BucketSpaceClass::layOver(const Box& selectedTarget, float boxMarginRatio)
{
    const Box box = enlarged(selectedTarget, boxMarginRatio);
    itsMin = box.low;
    itsMax = box.high;
}

/// Whether the grid lies strictly inside the box of the source mesh, enlarged by 5 % on each side.
bool BucketSpaceClass::isIncludedIn(const RunningBox& source) const
{
    if (source.isEmpty())
    {
        return false;
    }
    const Box& box = source.box();
    const Vector3 extents = box.extents();
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        const float low = single(box.low[axis] - 0.05 * extents[axis]);
        const float high = single(box.high[axis] + 0.05 * extents[axis]);
        if (!(low < itsMin[axis] && itsMax[axis] < high))
        {
            return false;
        }
    }
    return true;
}

void BucketSpaceClass::chooseBucketSize(float initialBucketSize)
{
    itsBucketSize = initialBucketSize;
    countBucketsPerAxis();
    const auto hasOneBucket = [this] { return itsNbBuckets[0] == 1 && itsNbBuckets[1] == 1 && itsNbBuckets[2] == 1; };
    while (hasTooManyBuckets() && !hasOneBucket())
    {
        itsBucketSize = single(2.0 * itsBucketSize);
        countBucketsPerAxis();
    }
}

void BucketSpaceClass::countBucketsPerAxis()
{
    itsInvBucketSize = single(1.0 / itsBucketSize);
    if (!(itsBucketSize > 0.0F && std::isfinite(itsBucketSize)))
    {
        // A size of no use, which doubling does not mend either.
        std::fill_n(itsNbBuckets, 3, 1);
        return;
    }
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        const float count = (itsMax[axis] - itsMin[axis]) * itsInvBucketSize;
        constexpr auto most = static_cast<double>(std::numeric_limits<int>::max() - 1);
        itsNbBuckets[axis] = std::isnan(count) ? 1 : 1 + static_cast<int>(std::clamp<double>(count, 0.0, most));
    }
}

/// Compares without forming the product of three counts, which may exceed 64 bits.
bool BucketSpaceClass::hasTooManyBuckets() const
{
    const std::int64_t perLayer = static_cast<std::int64_t>(itsNbBuckets[0]) * itsNbBuckets[1];
    return itsMaxNbBuckets < 1 || perLayer > itsMaxNbBuckets / itsNbBuckets[2];
}

void BucketSpaceClass::allocateStates()
{
    switch (itsBucketState.allocate(itsNbBuckets[0], itsNbBuckets[1], itsNbBuckets[2]))
    {
    case TableBlock::outerPointers:
        endProcess("Error in %s file at line %d: impossible to allocate an int** \n", unitName, 307);
    case TableBlock::innerPointers:
        endProcess("Error in %s file at line %d: impossible to allocate an int* \n", unitName, 315);
    case TableBlock::values: endProcess("Error in %s file at line %d: impossible to allocate an int \n", unitName, 328);
    case TableBlock::none: break;
    }
    std::fill_n(itsBucketState.values(), itsBucketState.nbValues(), static_cast<int>(notNeeded));
}

void BucketSpaceClass::allocateBuckets()
{
    switch (itsBuckets.allocate(itsNbBuckets[0], itsNbBuckets[1], itsNbBuckets[2]))
    {
    case TableBlock::outerPointers:
        endProcess("Error in %s file at line %d: impossible to allocate an BucketClass** \n", unitName, 482);
    case TableBlock::innerPointers:
        endProcess("Error in %s file at line %d: impossible to allocate an BucketClass* \n", unitName, 490);
    case TableBlock::values:
        endProcess("Error in %s file at line %d: impossible to allocate a BucketClass \n", unitName, 502);
    case TableBlock::none: break;
    }
}

/// Every target entity needs the buckets that it touches, whether its material is selected or not. `boxOf(item)` gives
/// its box, as six values or as lanes.
template <class BoxOf> void BucketSpaceClass::markNeededBuckets(int nbItems, BoxOf boxOf)
{
    int* states = itsBucketState.values();
    const BucketRanges rangeOf = ranges();
    // Neighbours often touch the same buckets: a range inside the one marked last has nothing left to mark.
    BucketRange last;
    for (int item = 0; item < nbItems; ++item)
    {
        const BucketRange range = rangeOf(valuesOf(boxOf(item)));
        if (range.isWithin(last))
        {
            continue;
        }
        forEachBucket(range,
                      [&](std::int64_t bucket)
                      {
                          itsNbNeededEmpty += states[bucket] == notNeeded ? 1 : 0;
                          states[bucket] = neededEmpty;
                      });
        last = range;
    }
}

void BucketSpaceClass::markTarget(const ModelClass& targetModel, const BoxTable& targetBoxes, float boxMarginRatio,
                                  bool isSurveyed)
{
    if (targetModel.itsKind == ModelKind::pointCloud)
    {
        const float reach = boxMarginRatio * itsBucketSize;
        markNeededBuckets(targetModel.itsNbNodes, [&](int point)
                          { return BoxValues(boxAroundPoint(targetModel.itsNodeCoords[point], reach)); });
    }
    else if (isSurveyed)
    {
        markNeededBuckets(targetModel.itsNbElts,
                          [&](int elt) { return inflated(boxLanesOfNodes(targetModel, elt), boxMarginRatio); });
    }
    else
    {
        markNeededBuckets(targetModel.itsNbElts, [&](int elt) { return boxValues(targetBoxes, elt); });
    }
}

template <class BoxOf> void BucketSpaceClass::countPass(int nbItems, BoxOf boxOf, BucketState from, BucketState to)
{
    int* states = itsBucketState.values();
    BucketClass* buckets = itsBuckets.values();
    const BucketRanges rangeOf = ranges();
    for (int item = 0; item < nbItems; ++item)
    {
        forEachBucket(rangeOf(valuesOf(boxOf(item))),
                      [&](std::int64_t bucket)
                      {
                          if (states[bucket] == from || states[bucket] == to)
                          {
                              itsNbNeededEmpty -= states[bucket] == neededEmpty ? 1 : 0;
                              states[bucket] = to;
                              ++buckets[bucket].itsNbItems;
                              ++itsNbEntries;
                          }
                      });
    }
}

/// Gives every used bucket its run of the shared storage, and sets its number of items back to 0 for the filling, which
/// writes every entry.
void BucketSpaceClass::allocateEntries()
{
    int* entries = allocateArray<int>(itsNbEntries);
    if (entries == nullptr)
    {
        endProcess("Error in %s file at line %d: impossible to allocate int \n", unitName, 992);
    }
    BucketClass* buckets = itsBuckets.values();
    buckets[0].itsItems = entries;
    for (std::int64_t bucket = 0; bucket < itsBuckets.nbValues(); ++bucket)
    {
        if (state(bucket) == filledDirectly || state(bucket) == filledByEnlarged)
        {
            buckets[bucket].itsItems = entries;
            entries += buckets[bucket].itsNbItems;
            buckets[bucket].itsNbItems = 0;
        }
    }
}

template <class BoxOf> void BucketSpaceClass::fillPass(int nbItems, BoxOf boxOf, BucketState state)
{
    const int* states = itsBucketState.values();
    BucketClass* buckets = itsBuckets.values();
    const BucketRanges rangeOf = ranges();
    for (int item = 0; item < nbItems; ++item)
    {
        forEachBucket(rangeOf(valuesOf(boxOf(item))),
                      [&](std::int64_t position)
                      {
                          if (states[position] == state)
                          {
                              BucketClass& bucket = buckets[position];
                              bucket.itsItems[bucket.itsNbItems++] = item;
                              itsItemInGrid[item] = 1;
                          }
                      });
    }
}

template <class Visitor> void BucketSpaceClass::forEachBucket(const BucketRange& range, Visitor visit) const
{
    if (range.isEmpty())
    {
        return;
    }
    for (std::int64_t i = range.low[0]; i <= range.high[0]; ++i)
    {
        for (std::int64_t j = range.low[1]; j <= range.high[1]; ++j)
        {
            const std::int64_t row = (i * itsNbBuckets[1] + j) * itsNbBuckets[2];
            for (int k = range.low[2]; k <= range.high[2]; ++k)
            {
                visit(row + k);
            }
        }
    }
}

std::int64_t BucketSpaceClass::bucketOfPoint(const Vector3& point) const
{
    int index[3];
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        // Truncation, not floor: a point up to one bucket below the grid falls into the first one.
        const float position = (point[axis] - itsMin[axis]) * itsInvBucketSize;
        if (!(position > -1.0F && position < 2147483648.0F))
        {
            return -1;
        }
        index[axis] = static_cast<int>(position);
        if (index[axis] >= itsNbBuckets[axis])
        {
            return -1;
        }
    }
    return (static_cast<std::int64_t>(index[0]) * itsNbBuckets[1] + index[1]) * itsNbBuckets[2] + index[2];
}
