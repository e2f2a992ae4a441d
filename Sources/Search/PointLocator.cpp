#include "PointLocator.h"

#include "BucketBoxes.h"
#include "Prefetch.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <utility>

namespace
{
/// Points that travel through the stages of locate() together: enough to hide the way to memory and to fill packs, few
/// enough that what was fetched for them is still there when it is needed.
constexpr std::size_t groupSize = 128;
} // namespace

struct PointLocator::InFlight
{
    LocatedPoint* located = nullptr;
    Vector3 point{};
    int matlState = 0;
    std::int64_t bucket = -1;
    std::span<const int> items;  ///< elements of the bucket that have not been tested yet
    const int* tested = nullptr; ///< the elements that were tested last
    ItemSet candidates = 0;      ///< those of them whose box holds the point and that were not tried yet
    int candidate = -1;          ///< the element that is to be tried
    InFlight* below = nullptr;   ///< the point that waits under this one

    /// The next stretch of the list, which is to be tested now.
    std::span<const int> takeItems()
    {
        const auto taken = items.first(std::min(items.size(), maxItemSetSize));
        tested = taken.data();
        items = items.subspan(taken.size());
        return taken;
    }
};

/// The points that wait to be tried in an element, on one stack per element kind.
class PointLocator::Waiting
{
public:
    void add(InFlight& flight, int typeCode)
    {
        Stack& stack = itsStacks[volumeIndexOf(typeCode)];
        stack.typeCode = typeCode;
        flight.below = std::exchange(stack.top, &flight);
        ++stack.size;
    }

    /// Takes a full pack of any kind if there is one, or else all of a kind that has some: the number of flights, and
    /// the kind's type code.
    std::size_t take(std::size_t packSize, std::array<InFlight*, maxPackSize>& flights, int& typeCode)
    {
        std::size_t kind = itsLastKind;
        for (std::size_t i = 0; i < itsStacks.size() && itsStacks[kind].size < packSize; ++i)
        {
            kind = itsStacks[i].size > itsStacks[kind].size ? i : kind;
        }
        itsLastKind = kind;
        Stack& stack = itsStacks[kind];
        typeCode = stack.typeCode;
        const std::size_t nbTaken = std::min(stack.size, packSize);
        for (std::size_t i = 0; i < nbTaken; ++i)
        {
            flights[i] = std::exchange(stack.top, stack.top->below);
        }
        stack.size -= nbTaken;
        return nbTaken;
    }

private:
    struct Stack
    {
        int typeCode = 0;
        std::size_t size = 0;
        InFlight* top = nullptr;
    };
    std::size_t itsLastKind = 0;
    std::array<Stack, VolumeElementKinds::size> itsStacks;
};

struct PointLocator::CurrentBucket
{
    std::int64_t bucket = -1;
    BucketBoxes boxes;
};

PointLocator::PointLocator(const ModelClass& sourceModel, const BoxTable& boxes, const BucketSpaceClass& space,
                           float precisionFactor, SingularElements rule, unsigned char* singularElts)
    : itsMesh(sourceModel), itsBoxes(boxes), itsSpace(space), itsPrecisionFactor(precisionFactor), itsRule(rule),
      itsSingularElts(singularElts),
      itsHasOneMatlState(std::all_of(sourceModel.itsMatlStates, sourceModel.itsMatlStates + sourceModel.itsNbMatls,
                                     [&](int state) { return state == sourceModel.itsMatlStates[0]; }))
{
}

LocatedPoint PointLocator::search(const Vector3& point, int matlState) const
{
    LocatedPoint nowhere;
    for (const int elt : itsSpace.itemsForSearch(itsSpace.bucketOfPoint(point)))
    {
        const float* box = boxValues(itsBoxes, elt);
        if (itsMesh.matlStateOfItem(elt) != matlState || !boxContains(box, point))
        {
            continue;
        }
        const Inversion inversion = itsMesh.inversionIn(elt, box, point, itsPrecisionFactor);
        switch (inversion.result)
        {
        case Inversion::inside:
            return {.elt = elt, .referenceCoords = inversion.referenceCoords, .nbIterations = inversion.nbIterations};
        case Inversion::singular:
            if (itsRule == SingularElements::endComputation)
            {
                leaveOnSingularJacobian(elt);
            }
            markElement(itsSingularElts, elt);
            break;
        case Inversion::notConverged: nowhere.isUnconverged = true; break;
        case Inversion::outside: break;
        }
    }
    return nowhere;
}

bool PointLocator::locate(std::span<const TargetPoint> points, std::span<LocatedPoint> located,
                          std::span<BatchEntry> order) const
{
    const auto entries = order.first(points.size());
    for (std::size_t i = 0; i < points.size(); ++i)
    {
        entries[i] = entryOf(itsSpace.bucketOfPoint(points[i].position), i);
        located[i] = {};
    }
    const bool isJumping = isOrderJumping(entries);
    sortByBucket(entries, order.subspan(points.size()));
    CurrentBucket bucket;
    for (std::size_t first = 0; first < points.size(); first += groupSize)
    {
        const auto group = entries.subspan(first, std::min(groupSize, points.size() - first));
        if (isJumping)
        {
            locateGroup<true>(points, located, group, bucket);
        }
        else
        {
            locateGroup<false>(points, located, group, bucket);
        }
    }
    return isJumping;
}

/// Whether points in a row often lie far from each other, so that the memory of one is of no use to the next.
bool PointLocator::isOrderJumping(std::span<const BatchEntry> order) const
{
    constexpr std::int64_t cachedBuckets = 4096;
    const std::int64_t farApart = itsSpace.nbBuckets() / 16;
    std::size_t nbJumps = 0;
    for (std::size_t i = 1; i < order.size(); ++i)
    {
        nbJumps += std::abs(bucketOf(order[i]) - bucketOf(order[i - 1])) > farApart ? 1 : 0;
    }
    return itsSpace.nbBuckets() > cachedBuckets && nbJumps > order.size() / 4;
}

template <bool prefetching>
void PointLocator::locateGroup(std::span<const TargetPoint> points, std::span<LocatedPoint> located,
                               std::span<const BatchEntry> order, CurrentBucket& bucket) const
{
    std::array<InFlight, groupSize> flights;
    const std::span group(flights.data(), order.size());
    if constexpr (prefetching)
    {
        for (const BatchEntry entry : order)
        {
            itsSpace.prefetchBucket(bucketOf(entry));
        }
    }
    for (std::size_t i = 0; i < order.size(); ++i)
    {
        InFlight& flight = group[i];
        const std::size_t position = positionOf(order[i]);
        flight.located = &located[position];
        flight.point = points[position].position;
        flight.matlState = points[position].matlState;
        flight.bucket = bucketOf(order[i]);
        if (!itsHasOneMatlState || flight.matlState == itsMesh.itsMatlStates[0])
        {
            flight.items = itsSpace.itemsForSearch(flight.bucket);
        }
    }
    if constexpr (prefetching)
    {
        prefetchLists(group);
        prefetchBoxes(group);
    }
    testBoxes(group, bucket);
    if constexpr (prefetching)
    {
        prefetchNodes(group);
    }
    Waiting waiting;
    for (InFlight& flight : group)
    {
        wait(flight, waiting);
    }
    std::array<InFlight*, maxPackSize> taken{};
    int typeCode = 0;
    while (const std::size_t nbTaken = waiting.take(itsPackedSearch.packSize, taken, typeCode))
    {
        const std::span<InFlight* const> tried(taken.data(), nbTaken);
        tryCandidates(typeCode, tried, waiting);
    }
}

void PointLocator::prefetchLists(std::span<InFlight> group) const
{
    for (const InFlight& flight : group)
    {
        prefetchRange(flight.items.data(), flight.items.data() + flight.items.size());
    }
}

void PointLocator::prefetchBoxes(std::span<InFlight> group) const
{
    const int* last = nullptr;
    for (const InFlight& flight : group)
    {
        if (flight.items.data() == last)
        {
            continue;
        }
        last = flight.items.data();
        for (const int elt : flight.items)
        {
            prefetch(boxValues(itsBoxes, elt));
            prefetch(boxValues(itsBoxes, elt) + 5);
            if (!itsHasOneMatlState)
            {
                prefetch(itsMesh.itsMatlIdPerItem + elt);
            }
        }
    }
}

/// In two steps, since a node's number must be there before its coordinates can be fetched.
void PointLocator::prefetchNodes(std::span<InFlight> group) const
{
    const auto forEachCandidate = [&](auto visit)
    {
        for (const InFlight& flight : group)
        {
            for (ItemSet candidates = flight.candidates; candidates != 0;)
            {
                visit(flight.tested[takeFirst(candidates)]);
            }
        }
    };
    forEachCandidate(
        [this](int elt)
        {
            prefetch(itsMesh.itsConnectivity + elt);
            prefetch(itsMesh.itsEltTypes + elt);
        });
    forEachCandidate(
        [this](int elt)
        {
            const int* nodeNumbers = itsMesh.itsConnectivity[elt];
            prefetchRange(nodeNumbers, nodeNumbers + itsMesh.nbNodesOfElt(elt));
        });
    forEachCandidate(
        [this](int elt)
        {
            const int* nodeNumbers = itsMesh.itsConnectivity[elt];
            for (int i = 0; i < itsMesh.nbNodesOfElt(elt); ++i)
            {
                prefetch(itsMesh.itsNodeCoords + nodeNumbers[i]);
            }
        });
}

/// Tests the beginning of each point's list. The points come bucket by bucket.
void PointLocator::testBoxes(std::span<InFlight> group, CurrentBucket& bucket) const
{
    for (std::size_t i = 0; i < group.size(); ++i)
    {
        InFlight& flight = group[i];
        if (flight.items.empty())
        {
            continue;
        }
        const std::span<const int> items = flight.takeItems();
        const bool isCurrent = flight.bucket == bucket.bucket;
        if (!isCurrent && i + 1 < group.size() && group[i + 1].bucket == flight.bucket)
        {
            bucket.bucket = flight.bucket;
            bucket.boxes.gather(items, itsBoxes.values());
        }
        flight.candidates = flight.bucket == bucket.bucket
                                ? bucket.boxes.around(flight.point, itsPackedSearch.boxesAround)
                                : itemsAround(flight.point, items, itsBoxes.values());
    }
}

/// Whether there is another element that the point is to be tried in; then it is the flight's candidate.
bool PointLocator::hasNextCandidate(InFlight& flight) const
{
    while (true)
    {
        while (flight.candidates != 0)
        {
            flight.candidate = flight.tested[takeFirst(flight.candidates)];
            if (itsHasOneMatlState || itsMesh.matlStateOfItem(flight.candidate) == flight.matlState)
            {
                return true;
            }
        }
        if (flight.items.empty())
        {
            return false;
        }
        const std::span<const int> items = flight.takeItems();
        flight.candidates = itemsAround(flight.point, items, itsBoxes.values());
    }
}

void PointLocator::wait(InFlight& flight, Waiting& waiting) const
{
    if (!hasNextCandidate(flight))
    {
        return;
    }
    if (itsMesh.hasShapeFunctionsOfElt(flight.candidate))
    {
        waiting.add(flight, itsMesh.itsEltTypes[flight.candidate]);
    }
    else
    {
        flight.located->isSingular = true;
    }
}

/// Tries at most a pack of points in their candidates, all of one kind.
void PointLocator::tryCandidates(int typeCode, std::span<InFlight* const> flights, Waiting& waiting) const
{
    PackedProblem problem;
    problem.nodeCoords = itsMesh.itsNodeCoords;
    problem.precisionFactor = itsPrecisionFactor;
    for (std::size_t lane = 0; lane < itsPackedSearch.packSize; ++lane)
    {
        // Lanes without a point of their own repeat the first.
        const InFlight& flight = *flights[lane < flights.size() ? lane : 0];
        problem.nodeNumbers[lane] = itsMesh.itsConnectivity[flight.candidate];
        problem.points[lane] = flight.point.data();
        problem.tolerances[lane] = squaredInversionTolerance(boxValues(itsBoxes, flight.candidate), itsPrecisionFactor);
    }
    PackedSolution solution;
    itsPackedSearch.invert(typeCode, problem, solution);
    settle(flights, solution, waiting);
}

/// Ends the search of those that were accepted, or met a singular Jacobian where that is the end; the others wait for
/// their next candidate.
void PointLocator::settle(std::span<InFlight* const> flights, const PackedSolution& solution, Waiting& waiting) const
{
    const std::uint32_t rare = solution.singular | solution.unconverged;
    for (std::size_t lane = 0; lane < flights.size(); ++lane)
    {
        InFlight& flight = *flights[lane];
        if ((solution.inside >> lane & 1) != 0)
        {
            *flight.located = {.elt = flight.candidate,
                               .referenceCoords = {solution.referenceCoords[0][lane], solution.referenceCoords[1][lane],
                                                   solution.referenceCoords[2][lane]},
                               .nbIterations = static_cast<int>(solution.nbIterations[lane])};
        }
        else if ((rare >> lane & 1) == 0 || !isEndedBy(flight, (solution.singular >> lane & 1) != 0))
        {
            wait(flight, waiting);
        }
    }
}

/// Notes a singular Jacobian, or else an iteration that did not converge; true if the search of the point ends with it.
bool PointLocator::isEndedBy(InFlight& flight, bool isSingular) const
{
    if (!isSingular)
    {
        flight.located->isUnconverged = true;
        return false;
    }
    if (itsRule == SingularElements::endComputation)
    {
        flight.located->isSingular = true;
        return true;
    }
    markElement(itsSingularElts, flight.candidate);
    return false;
}
