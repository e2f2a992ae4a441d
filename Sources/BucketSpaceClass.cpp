#include "BucketSpaceClass.h"

#include "MappingStringUtilities.h"
#include "ModelClass.h"
#include "Search/ElementBoxes.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <limits>
#include <span>
#include <utility>

namespace
{
constexpr const char* unitName = "BucketSpaceClass";
constexpr Stage gridStage{"Pretreatment", 0, 5};

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
    const bool isSurveyed =
        surveyed != nullptr && surveyed->areExact && (targetModel.itsKind == ModelKind::mesh || surveyed->areOfWhole);
    const RunningBox selectedTarget =
        isSurveyed ? surveyed->selectedTarget : selectedBox(targetModel, targetMatlMappingFlags);
    if (selectedTarget.isEmpty())
    {
        return newErrorText(buffer, "Error: please select at least one domain in the target model.\n");
    }
    layOut(selectedTarget.box(), initialBucketSize, boxMarginRatio);
    if (targetModel.itsKind == ModelKind::mesh && itsRefusesOverhang &&
        !isIncludedIn(isSurveyed ? surveyed->source : boxOfElements(sourceModel)))
    {
        return newErrorText(buffer, "Error: the target mesh is not included in the source mesh.\n");
    }
    allocateStates();
    markTarget(targetModel, targetBoxes, boxMarginRatio, surveyed != nullptr);
    for (const BucketRange& range : itsFurtherNeeded)
    {
        forEachBucket(range, [&](std::int64_t bucket) { itsBucketState.values()[bucket] = neededEmpty; });
    }
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
    allocateCursors();
    countPass(nbElts, directBox);
    settleCounts(filledDirectly);
    // Most often every needed bucket is reached by now, and there is nothing to enlarge boxes for.
    const bool isEnlarging = itsNbNeededEmpty > 0;
    if (isEnlarging)
    {
        countPass(nbElts, enlargedBox);
        settleCounts(filledByEnlarged);
    }
    allocateEntries();
    allocateItemFlags(nbElts, 1026);
    fillPass(nbElts, directBox, filledDirectly);
    if (isEnlarging)
    {
        fillPass(nbElts, enlargedBox, filledByEnlarged);
    }
    settleFilling();
}

/// Lists a node in every bucket that a point within `reach` of it can lie in.
void BucketSpaceClass::fillWithNodes(const ModelClass& sourceModel, float reach)
{
    const auto nodeBox = [&](int node) { return BoxValues(boxAroundPoint(sourceModel.itsNodeCoords[node], reach)); };
    allocateCursors();
    countPass(sourceModel.itsNbNodes, nodeBox);
    settleCounts(filledDirectly);
    allocateEntries();
    allocateItemFlags(sourceModel.itsNbNodes, 1103);
    fillPass(sourceModel.itsNbNodes, nodeBox, filledDirectly);
    settleFilling();
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
                addNodesOfElement(running, targetModel, elt);
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
        addNodesOfElement(running, sourceModel, elt);
    }
    return running;
}

void BucketSpaceClass::layOut(const Box& selectedTarget, float initialBucketSize, float boxMarginRatio)
{
    layOver(selectedTarget, boxMarginRatio);
    chooseBucketSize(initialBucketSize);
    holdAll();
}

Box BucketSpaceClass::boxAroundPoint(const float (&point)[3], float reach)
{
    Box box = boxOfPoint(point);
    box.inflate({reach, reach, reach});
    return box;
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

/// Without a window the grid holds all its buckets.
void BucketSpaceClass::holdAll()
{
    for (int axis = 0; axis < 3; ++axis)
    {
        if (!itsHasWindow)
        {
            itsWindow.low[axis] = 0;
            itsWindow.high[axis] = itsNbBuckets[axis] - 1;
        }
        itsNbHeld[axis] = itsWindow.high[axis] - itsWindow.low[axis] + 1;
    }
}

void BucketSpaceClass::allocateStates()
{
    switch (itsBucketState.allocate(itsNbHeld[0], itsNbHeld[1], itsNbHeld[2]))
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
    switch (itsBuckets.allocate(itsNbHeld[0], itsNbHeld[1], itsNbHeld[2]))
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

/// Calls visit(piece, first item, end) for as many pieces of the items as there are workers.
template <class Visit> void BucketSpaceClass::forEachPiece(int nbItems, Visit visit)
{
    if (itsWorkers == nullptr)
    {
        visit(std::int64_t{0}, 0, nbItems);
        return;
    }
    const Pieces pieces = onePiecePerWorker(*itsWorkers, std::max(nbItems, 0));
    const auto visitPiece = [&](std::int64_t piece, int)
    { visit(piece, static_cast<int>(pieces.first(piece)), static_cast<int>(pieces.end(piece))); };
    itsWorkers->run(gridStage, pieces.count(), visitPiece);
}

/// Every target entity needs the buckets that it touches, whether its material is selected or not. `boxOf(item)` gives
/// its box, as six values or as lanes.
template <class BoxOf> void BucketSpaceClass::markNeededBuckets(int nbItems, BoxOf boxOf)
{
    const bool isAlone = nbPieces() == 1;
    int* states = itsBucketState.values();
    const auto mark = [&](std::int64_t bucket)
    {
        if (isAlone)
        {
            states[bucket] = neededEmpty;
            return;
        }
        // Tested first, since threads that store into the same lines wait for each other.
        const std::atomic_ref state(states[bucket]);
        if (state.load(std::memory_order_relaxed) != neededEmpty)
        {
            state.store(neededEmpty, std::memory_order_relaxed);
        }
    };
    const auto markPiece = [&](std::int64_t, int first, int end)
    {
        const BucketRanges rangeOf = ranges();
        // Neighbours often touch the same buckets: a range inside the one marked last has nothing left to mark. Whether
        // it is cannot be foreseen, so that the processor had better be through with the boxes before it asks.
        constexpr int blockSize = 32;
        std::array<BucketRange, blockSize> block;
        BucketRange last;
        for (int begin = first; begin < end; begin += blockSize)
        {
            const int size = std::min(blockSize, end - begin);
            for (int i = 0; i < size; ++i)
            {
                block[static_cast<std::size_t>(i)] = rangeOf(valuesOf(boxOf(begin + i)));
            }
            for (const BucketRange& range : std::span(block).first(static_cast<std::size_t>(size)))
            {
                if (!range.isWithin(last))
                {
                    forEachBucket(range, mark);
                    last = range;
                }
            }
        }
    };
    forEachPiece(nbItems, markPiece);
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
                          [&](int elt) { return inflated(boxLanesOfElt(targetModel, elt), boxMarginRatio); });
    }
    else
    {
        markNeededBuckets(targetModel.itsNbElts, [&](int elt) { return boxValues(targetBoxes, elt); });
    }
}

/// A piece's number for a bucket: how many of its items the bucket takes, and then where its next item goes.
int& BucketSpaceClass::cursor(std::int64_t piece, std::int64_t bucket) const
{
    return piece == 0 ? itsBuckets.values()[bucket].itsNbItems
                      : itsFurtherCursors[(piece - 1) * itsBuckets.nbValues() + bucket];
}

void BucketSpaceClass::allocateCursors()
{
    const std::int64_t nbFurther = (nbPieces() - 1) * itsBuckets.nbValues();
    if (nbFurther == 0)
    {
        return;
    }
    if (!itsFurtherCursors.allocate(nbFurther))
    {
        endProcess("Error in %s file at line %d: impossible to allocate int \n", unitName, 992);
    }
    std::fill_n(itsFurtherCursors.get(), nbFurther, 0);
}

template <class BoxOf> void BucketSpaceClass::countPass(int nbItems, BoxOf boxOf)
{
    const int* states = itsBucketState.values();
    const BucketRanges rangeOf = ranges();
    const auto countPiece = [&](std::int64_t piece, int first, int end)
    {
        for (int item = first; item < end; ++item)
        {
            forEachBucket(rangeOf(valuesOf(boxOf(item))),
                          [&](std::int64_t bucket)
                          {
                              if (states[bucket] == neededEmpty)
                              {
                                  ++cursor(piece, bucket);
                              }
                          });
        }
    };
    forEachPiece(nbItems, countPiece);
}

/// Gives the needed buckets that take items their state, and counts those that stay empty.
void BucketSpaceClass::settleCounts(BucketState filled)
{
    int* states = itsBucketState.values();
    itsNbNeededEmpty = 0;
    for (std::int64_t bucket = 0; bucket < itsBuckets.nbValues(); ++bucket)
    {
        if (states[bucket] != neededEmpty)
        {
            continue;
        }
        int nbItems = 0;
        for (std::int64_t piece = 0; piece < nbPieces(); ++piece)
        {
            nbItems += cursor(piece, bucket);
        }
        itsNbEntries += nbItems;
        itsNbNeededEmpty += nbItems == 0 ? 1 : 0;
        states[bucket] = nbItems == 0 ? neededEmpty : filled;
    }
}

/// Gives every used bucket its run of the shared storage, and turns each piece's number of items into the place of its
/// first one in that run. The filling writes every entry.
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
            int first = 0;
            for (std::int64_t piece = 0; piece < nbPieces(); ++piece)
            {
                first += std::exchange(cursor(piece, bucket), first);
            }
            entries += first;
        }
    }
}

template <class BoxOf> void BucketSpaceClass::fillPass(int nbItems, BoxOf boxOf, BucketState state)
{
    const int* states = itsBucketState.values();
    const BucketClass* buckets = itsBuckets.values();
    const BucketRanges rangeOf = ranges();
    const auto fillPiece = [&](std::int64_t piece, int first, int end)
    {
        for (int item = first; item < end; ++item)
        {
            forEachBucket(rangeOf(valuesOf(boxOf(item))),
                          [&](std::int64_t bucket)
                          {
                              if (states[bucket] == state)
                              {
                                  buckets[bucket].itsItems[cursor(piece, bucket)++] = item;
                                  itsItemInGrid[item] = 1;
                              }
                          });
        }
    };
    forEachPiece(nbItems, fillPiece);
}

/// The last piece has come to the end of each list.
void BucketSpaceClass::settleFilling()
{
    const std::int64_t last = nbPieces() - 1;
    BucketClass* buckets = itsBuckets.values();
    for (std::int64_t bucket = 0; last > 0 && bucket < itsBuckets.nbValues(); ++bucket)
    {
        buckets[bucket].itsNbItems = cursor(last, bucket);
    }
    itsFurtherCursors.release();
}

template <class Visitor> void BucketSpaceClass::forEachBucket(const BucketRange& range, Visitor visit) const
{
    const BucketRange inside = itsHasWindow ? range.cutBy(itsWindow) : range;
    if (inside.isEmpty())
    {
        return;
    }
    for (std::int64_t i = inside.low[0]; i <= inside.high[0]; ++i)
    {
        for (std::int64_t j = inside.low[1]; j <= inside.high[1]; ++j)
        {
            const std::int64_t row =
                ((i - itsWindow.low[0]) * itsNbHeld[1] + (j - itsWindow.low[1])) * itsNbHeld[2] - itsWindow.low[2];
            for (int k = inside.low[2]; k <= inside.high[2]; ++k)
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
        index[axis] -= itsWindow.low[axis];
        if (index[axis] < 0 || index[axis] >= itsNbHeld[axis])
        {
            return -1;
        }
    }
    return (static_cast<std::int64_t>(index[0]) * itsNbHeld[1] + index[1]) * itsNbHeld[2] + index[2];
}
