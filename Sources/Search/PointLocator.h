/// Finds the source elements that hold target points. Knows elements, boxes and the grid; no fields.
///
/// search() is the definition: of the elements of the point's bucket, in the order of its list, the first that has the
/// point's material state, whose box holds the point and whose inversion accepts it. locate() gives the same for many
/// points at once, and faster: it visits them bucket by bucket, so that a bucket's boxes are brought together once for
/// all of its points, it keeps many points in flight so that memory is on its way before it is needed, and it inverts
/// several points at a time, each in the next of its own candidates.
#ifndef VELTRANE_POINT_LOCATOR_H
#define VELTRANE_POINT_LOCATOR_H

#include "../BucketSpaceClass.h"
#include "../Map/EngineRules.h"
#include "../ModelClass.h"
#include "BatchEntry.h"
#include "PackedSearch.h"

#include <atomic>
#include <cstdint>
#include <span>

/// A target point that is to receive values.
struct TargetPoint
{
    std::int64_t index; ///< its location in the target fields
    Vector3 position;
    int matlStateClass; ///< of the target material at the point
    int matlState;
};

/// Where a target point lies in the source mesh; element -1 is nowhere.
struct LocatedPoint
{
    int elt = -1;
    Vector3 referenceCoords{};
    int nbIterations = 0;
    bool isNearMiss = false; ///< in no element, taken to the element with the nearest centre
    bool isSingular =
        false; ///< the search leaves the computation: a singular Jacobian, or no shape functions to invert
    /// Not found, and in an element whose box holds the point the iteration did not converge.
    bool isUnconverged = false;
};

/// Notes an element in a table with an entry per element; several threads may do so at once.
inline void markElement(unsigned char* marks, int elt)
{
    std::atomic_ref(marks[elt]).store(1, std::memory_order_relaxed);
}

class PointLocator
{
public:
    /// The objects are borrowed for the locator's lifetime; `boxes` are the inflated boxes of the source elements.
    /// An element that is left out because of a singular Jacobian is marked by a 1 in `singularElts`, one entry per
    /// element; null where the rule is another.
    PointLocator(const ModelClass& sourceModel, const BoxTable& boxes, const BucketSpaceClass& space,
                 float precisionFactor, SingularElements rule = SingularElements::endComputation,
                 unsigned char* singularElts = nullptr);

    /// A singular Jacobian leaves the computation, if the rule says so.
    LocatedPoint search(const Vector3& point, int matlState) const;

    /// Locates points[i] into located[i], at most batchCapacity; `order` is room for twice as many entries. Returns
    /// whether the points jump about. Where the search would end the process that is noted: it is to do so when that
    /// point's turn has come.
    bool locate(std::span<const TargetPoint> points, std::span<LocatedPoint> located,
                std::span<BatchEntry> order) const;

private:
    /// A point on its way through the stages of locate().
    struct InFlight;
    /// Points on their way, by the kind of the element that they are to be tried in next.
    class Waiting;
    /// The bucket whose boxes were brought together last.
    struct CurrentBucket;

    bool isOrderJumping(std::span<const BatchEntry> order) const;
    template <bool prefetching>
    void locateGroup(std::span<const TargetPoint> points, std::span<LocatedPoint> located,
                     std::span<const BatchEntry> order, CurrentBucket& bucket) const;
    void prefetchLists(std::span<InFlight> group) const;
    void prefetchBoxes(std::span<InFlight> group) const;
    void prefetchNodes(std::span<InFlight> group) const;
    void testBoxes(std::span<InFlight> group, CurrentBucket& bucket) const;
    bool hasNextCandidate(InFlight& flight) const;
    void tryCandidates(int typeCode, std::span<InFlight* const> flights, Waiting& waiting) const;
    void settle(std::span<InFlight* const> flights, const PackedSolution& solution, Waiting& waiting) const;
    bool isEndedBy(InFlight& flight, bool isSingular) const;
    void wait(InFlight& flight, Waiting& waiting) const;

    const ModelClass& itsMesh;
    const BoxTable& itsBoxes;
    const BucketSpaceClass& itsSpace;
    float itsPrecisionFactor;
    SingularElements itsRule;
    unsigned char* itsSingularElts;
    PackedSearch itsPackedSearch = widestPackedSearch();
    bool itsHasOneMatlState;
};

#endif
