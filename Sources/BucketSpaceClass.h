/// The spatial index of a computation: a regular grid of cubic buckets over the selected part of the target, which
/// lists for every bucket that the target touches the source elements or nodes near it. It knows boxes and points, not
/// what they belong to.
#ifndef VELTRANE_BUCKET_SPACE_CLASS_H
#define VELTRANE_BUCKET_SPACE_CLASS_H

#include "ChainedTable.h"
#include "Map/EngineRules.h"
#include "Map/Workers.h"
#include "Search/BoundingBox.h"
#include "Search/BucketRange.h"
#include "Search/Prefetch.h"

#include <cstdint>
#include <span>

class ModelClass;

class BucketClass
{
public:
    BucketClass() = default;
    virtual ~BucketClass() = default;

    int itsNbItems = 0;
    int* itsItems = nullptr; ///< this bucket's run in the grid's shared entry storage, in increasing order
};

/// What a bucket is to the target and what fills it.
enum BucketState
{
    notNeeded = -1,      ///< no target entity touches the bucket
    neededEmpty = 0,     ///< needed, without source items
    filledDirectly = 1,  ///< needed, source items as they are
    filledByEnlarged = 2 ///< needed, out of reach of the source elements but not of their enlarged boxes
};

/// What a caller that has just visited all elements already knows: boxes of nodes, not inflated.
struct SurveyedBoxes
{
    RunningBox source;         ///< all source elements
    RunningBox selectedTarget; ///< the target elements whose material is selected
    /// Whether the boxes of elements say the same as their nodes: not if an element has no nodes, or if a coordinate of
    /// its first node is not a number, which hides the other nodes of the element.
    bool areExact = true;
    /// Whether the models are parts of larger ones, whose boxes these are: the grid is laid over the whole.
    bool areOfWhole = false;

    void add(RunningBox& running, const Box& element)
    {
        running.add(element);
        areExact =
            areExact && element.low[0] < unreachable && element.low[1] < unreachable && element.low[2] < unreachable;
    }

    void addNode(RunningBox& running, const float (&node)[3]) { add(running, boxOfPoint(node)); }
};

class BucketSpaceClass
{
public:
    enum Mode
    {
        elementBuckets = 0,
        nodeBuckets = 1
    };

    BucketSpaceClass() = default;
    BucketSpaceClass(const BucketSpaceClass&) = delete;
    BucketSpaceClass& operator=(const BucketSpaceClass&) = delete;
    virtual ~BucketSpaceClass();

    /// Builds the grid, once.
    ///
    /// \param mode                what the buckets list: source elements or source nodes
    /// \param refBoxes            inflated boxes of the source elements
    /// \param targetBoxes         inflated boxes of the target elements; read only for a mesh without a survey
    /// \param targetMatlMappingFlags per target material, 1: it takes part in the grid's box
    /// \param initialBucketSize   doubled until there are at most itsMaxNbBuckets buckets
    /// \param boxMarginRatio      by which the grid's box is enlarged; times the bucket size, a cloud point's reach
    /// \param bucketFactor        by which source boxes are enlarged for buckets that they do not reach as they are
    /// \param surveyed            null: the grid visits the elements itself. Otherwise it makes the target's boxes too,
    ///                            inflated by boxMarginRatio
    ///
    /// \return null, or a text that the caller releases: no target material is selected, or the target mesh is not
    ///         inside the source mesh. A failed allocation and an unknown mode end the process.
    char* build(int mode, const ModelClass& targetModel, const ModelClass& sourceModel, const BoxTable& refBoxes,
                const BoxTable& targetBoxes, const int* targetMatlMappingFlags, float initialBucketSize,
                float boxMarginRatio, float bucketFactor, const SurveyedBoxes* surveyed = nullptr);

    /// What build() begins with: the place of the grid and of its buckets, without memory for them. The box is that of
    /// the selected part of the target. Until it is built the grid has no window.
    void layOut(const Box& selectedTarget, float initialBucketSize, float boxMarginRatio);

    /// Finds the buckets that boxes touch, once the grid is laid out.
    BucketRanges ranges() const { return {itsMin, itsInvBucketSize, itsNbBuckets}; }

    /// The box by which a point of a cloud, or a source node, needs buckets.
    static Box boxAroundPoint(const float (&point)[3], float reach);

    /// Position of a point's bucket in the blocks of values, or -1 outside the grid or its window.
    std::int64_t bucketOfPoint(const Vector3& point) const;

    /// The items of a bucket given by its position; none for -1.
    std::span<const int> items(std::int64_t bucket) const
    {
        if (bucket < 0)
        {
            return {};
        }
        const BucketClass& found = itsBuckets.values()[bucket];
        return {found.itsItems, static_cast<std::size_t>(found.itsNbItems)};
    }
    BucketState state(std::int64_t bucket) const { return static_cast<BucketState>(itsBucketState.values()[bucket]); }

    /// The items among which a point of the bucket is searched: those of the direct pass alone.
    std::span<const int> itemsForSearch(std::int64_t bucket) const
    {
        return bucket >= 0 && state(bucket) == filledDirectly ? items(bucket) : std::span<const int>{};
    }

    /// Asks for a bucket's memory ahead of its use.
    void prefetchBucket(std::int64_t bucket) const
    {
        if (bucket >= 0)
        {
            prefetch(itsBucketState.values() + bucket);
            prefetch(itsBuckets.values() + bucket);
        }
    }

    std::int64_t nbBuckets() const
    {
        return static_cast<std::int64_t>(itsNbBuckets[0]) * itsNbBuckets[1] * itsNbBuckets[2];
    }

    /// Those that it has memory for.
    std::int64_t nbHeldBuckets() const { return itsBuckets.nbValues(); }

    Vector3 itsMin{};
    Vector3 itsMax{};
    float itsBucketSize = 0.0F;
    float itsInvBucketSize = 0.0F;
    int itsNbBuckets[3]{};
    BucketRange itsWindow; ///< the buckets that are held; of a grid without a window all
    int itsNbHeld[3]{};    ///< along the window
    std::int64_t itsMaxNbBuckets = SearchTuning{}.maxNbBuckets;
    ChainedTable<int> itsBucketState;     ///< [nx][ny][nz] of BucketState, of the window
    ChainedTable<BucketClass> itsBuckets; ///< [nx][ny][nz], of the window
    std::int64_t itsNbEntries = 0;
    OwnedArray<int> itsItemInGrid; ///< per source item, 1 if a bucket lists it

    /// Lets the grid hold no more than these buckets, which are all that the target touches; before it is built.
    void setWindow(const BucketRange& window)
    {
        itsWindow = window;
        itsHasWindow = true;
    }

    /// Further buckets that the target touches, as ranges, though what it touches them with is not at hand.
    std::span<const BucketRange> itsFurtherNeeded;
    bool itsRefusesOverhang = true; ///< whether a target mesh must be included in the source mesh
    Workers* itsWorkers = nullptr; ///< by whom the grid is built; null: on the caller's thread. The lists are the same.

private:
    static RunningBox selectedBox(const ModelClass& targetModel, const int* targetMatlMappingFlags);
    static RunningBox boxOfElements(const ModelClass& sourceModel);
    void layOver(const Box& selectedTarget, float boxMarginRatio);
    bool isIncludedIn(const RunningBox& source) const;
    void chooseBucketSize(float initialBucketSize);
    void countBucketsPerAxis();
    bool hasTooManyBuckets() const;
    void holdAll();
    void allocateStates();
    void allocateBuckets();
    template <class Visit> void forEachPiece(int nbItems, Visit visit);
    template <class BoxOf> void markNeededBuckets(int nbItems, BoxOf boxOf);
    void markTarget(const ModelClass& targetModel, const BoxTable& targetBoxes, float boxMarginRatio, bool isSurveyed);
    void fillWithElements(int nbElts, const BoxTable& boxes, float bucketFactor);
    void fillWithNodes(const ModelClass& sourceModel, float reach);
    void allocateCursors();
    void allocateEntries();
    void allocateItemFlags(int nbItems, int line);

    /// One pass over the source items: countPass counts what each bucket that is needed and still empty takes,
    /// settleCounts gives those that take something their state, fillPass writes the items into them. `boxOf(item)`
    /// gives the six values of an item's box.
    template <class BoxOf> void countPass(int nbItems, BoxOf boxOf);
    void settleCounts(BucketState filled);
    template <class BoxOf> void fillPass(int nbItems, BoxOf boxOf, BucketState state);
    void settleFilling();

    std::int64_t nbPieces() const { return itsWorkers == nullptr ? 1 : itsWorkers->nbWorkers(); }
    int& cursor(std::int64_t piece, std::int64_t bucket) const;

    bool itsHasWindow = false;
    std::int64_t itsNbNeededEmpty = 0; ///< buckets in the state neededEmpty, once items were counted
    /// Each piece of the source items counts, and then fills, with numbers of its own per bucket, so that the lists
    /// come out in order. Those of the first piece are the buckets' numbers of items; these are the others', piece by
    /// piece.
    OwnedArray<int> itsFurtherCursors;

    template <class Visitor> void forEachBucket(const BucketRange& range, Visitor visit) const;
};

#endif
