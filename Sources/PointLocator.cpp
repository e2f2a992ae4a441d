#include "PointLocator.h"

#include "BoxTest.h"
#include "Prefetch.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace
{
/// Points that travel through the stages of locate() together: enough to hide the way to memory, few enough that what
/// was fetched for them is still there when it is needed.
constexpr std::size_t groupSize = 16;

/// Candidates that a point's box tests keep at a time; more are tested when these have been refused.
constexpr int maxNbCandidates = 24;

// An entry of the order in which a batch is visited: a point's bucket, and its position in the batch. Sorted, the
// entries go through the grid; a point outside, in bucket -1, comes first.
constexpr int positionBits = 16;
static_assert(PointLocator::batchCapacity == 1 << positionBits);

PointLocator::BatchOrder entryOf(std::int64_t bucket, std::size_t position)
{
    return static_cast<PointLocator::BatchOrder>(bucket + 1) << positionBits | position;
}

std::int64_t bucketOf(PointLocator::BatchOrder entry)
{
    return static_cast<std::int64_t>(entry >> positionBits) - 1;
}

std::size_t positionOf(PointLocator::BatchOrder entry)
{
    return entry & (PointLocator::batchCapacity - 1);
}

float largestMagnitude(const ModelClass& mesh)
{
    float largest = 0.0F;
    for (int node = 0; node < mesh.itsNbNodes; ++node)
    {
        for (const float coordinate : mesh.itsNodeCoords[node])
        {
            largest = std::max(largest, std::fabs(coordinate));
        }
    }
    return largest;
}
} // namespace

struct PointLocator::InFlight
{
    std::size_t position = 0; ///< of the point in the batch
    Vector3 point{};
    int matlState = 0;
    std::span<const int> items; ///< elements of the bucket that have not been tested yet
    int nbCandidates = 0;
    std::array<int, maxNbCandidates> candidates;
};

PointLocator::PointLocator(const ModelClass& sourceModel, const BoxTable& boxes, const BucketSpaceClass& space,
                           float precisionFactor)
    : itsMesh(sourceModel), itsBoxes(boxes), itsSpace(space), itsPrecisionFactor(precisionFactor),
      itsHasOneMatlState(std::all_of(sourceModel.itsMatlStates, sourceModel.itsMatlStates + sourceModel.itsNbMatls,
                                     [&](int state) { return state == sourceModel.itsMatlStates[0]; })),
      itsTetrahedronRefusal(precisionFactor, largestMagnitude(sourceModel))
{
}

LocatedPoint PointLocator::search(const Vector3& point, int matlState) const
{
    for (const int elt : itsSpace.itemsForSearch(itsSpace.bucketOfPoint(point)))
    {
        const float* box = boxValues(itsBoxes, elt);
        if (itsMesh.matlStateOfItem(elt) != matlState || !boxContains(box, point))
        {
            continue;
        }
        const Inversion inversion = itsMesh.referenceCoordinates(elt, box, point, itsPrecisionFactor);
        if (inversion.result == Inversion::inside)
        {
            return {.elt = elt, .referenceCoords = inversion.referenceCoords, .nbIterations = inversion.nbIterations};
        }
    }
    return {};
}

bool PointLocator::locate(std::span<const TargetPoint> points, std::span<LocatedPoint> located,
                          std::span<BatchOrder> order) const
{
    for (std::size_t i = 0; i < points.size(); ++i)
    {
        order[i] = entryOf(itsSpace.bucketOfPoint(points[i].position), i);
    }
    const bool isJumping = isOrderJumping(order);
    if (isJumping)
    {
        std::sort(order.begin(), order.end());
    }
    for (std::size_t first = 0; first < points.size(); first += groupSize)
    {
        const auto group = order.subspan(first, std::min(groupSize, points.size() - first));
        if (isJumping)
        {
            locateGroup<true>(points, located, group);
        }
        else
        {
            locateGroup<false>(points, located, group);
        }
    }
    return isJumping;
}

/// Whether points in a row often lie far from each other, so that the memory of one is of no use to the next.
bool PointLocator::isOrderJumping(std::span<const BatchOrder> order) const
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
                               std::span<const BatchOrder> order) const
{
    std::array<InFlight, groupSize> flights;
    const std::span group(flights.data(), order.size());
    if constexpr (prefetching)
    {
        for (const BatchOrder entry : order)
        {
            itsSpace.prefetchBucket(bucketOf(entry));
        }
    }
    for (std::size_t i = 0; i < order.size(); ++i)
    {
        InFlight& flight = group[i];
        flight.position = positionOf(order[i]);
        flight.point = points[flight.position].position;
        flight.matlState = points[flight.position].matlState;
        flight.items = itsSpace.itemsForSearch(bucketOf(order[i]));
    }
    if constexpr (prefetching)
    {
        prefetchLists(group);
        prefetchBoxes(group);
    }
    for (InFlight& flight : group)
    {
        collectCandidates<prefetching>(flight);
    }
    if constexpr (prefetching)
    {
        prefetchNodes(group);
    }
    for (InFlight& flight : group)
    {
        located[flight.position] = firstAccepting(flight);
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
    for (const InFlight& flight : group)
    {
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

/// Takes elements from the point's list as long as there is room for candidates.
template <bool prefetching> void PointLocator::collectCandidates(InFlight& flight) const
{
    flight.nbCandidates = 0;
    while (!flight.items.empty() && flight.nbCandidates < maxNbCandidates)
    {
        // No more are tested at a time than there is room for.
        const std::size_t room = maxNbCandidates - static_cast<std::size_t>(flight.nbCandidates);
        const std::size_t nbTested = std::min(flight.items.size(), room);
        if (itsHasOneMatlState)
        {
            collectFrom(flight, nbTested, [](int) { return true; });
        }
        else
        {
            collectFrom(flight, nbTested, [&](int elt) { return itsMesh.matlStateOfItem(elt) == flight.matlState; });
        }
    }
    if constexpr (prefetching)
    {
        for (int i = 0; i < flight.nbCandidates; ++i)
        {
            prefetch(itsMesh.itsConnectivity + flight.candidates[static_cast<std::size_t>(i)]);
            prefetch(itsMesh.itsEltTypes + flight.candidates[static_cast<std::size_t>(i)]);
        }
    }
}

/// Tests the next `nbTested` elements of the point's list. Each is written as a candidate and counted only if it is
/// one: there is no branch to guess wrong.
template <class HasState>
void PointLocator::collectFrom(InFlight& flight, std::size_t nbTested, HasState hasState) const
{
    const BoxTest isInBox(flight.point);
    const float* boxes = itsBoxes.values();
    const int* items = flight.items.data();
    int* next = flight.candidates.data() + flight.nbCandidates;
    for (std::size_t i = 0; i < nbTested; ++i)
    {
        const int elt = items[i];
        *next = elt;
        next += hasState(elt) && isInBox(boxes + 6 * static_cast<std::int64_t>(elt)) ? 1 : 0;
    }
    flight.nbCandidates = static_cast<int>(next - flight.candidates.data());
    flight.items = flight.items.subspan(nbTested);
}

/// In two steps, since a node's number must be there before its coordinates can be fetched.
void PointLocator::prefetchNodes(std::span<InFlight> group) const
{
    const auto forEachCandidate = [&](auto visit)
    {
        for (const InFlight& flight : group)
        {
            for (int i = 0; i < flight.nbCandidates; ++i)
            {
                const int elt = flight.candidates[static_cast<std::size_t>(i)];
                visit(itsMesh.itsConnectivity[elt], itsMesh.nbNodesOfElt(elt));
            }
        }
    };
    forEachCandidate([](const int* nodeNumbers, int nbNodes) { prefetchRange(nodeNumbers, nodeNumbers + nbNodes); });
    forEachCandidate(
        [this](const int* nodeNumbers, int nbNodes)
        {
            for (int i = 0; i < nbNodes; ++i)
            {
                prefetch(itsMesh.itsNodeCoords + nodeNumbers[i]);
            }
        });
}

LocatedPoint PointLocator::firstAccepting(InFlight& flight) const
{
    if (itsHasOneMatlState && flight.matlState != itsMesh.itsMatlStates[0])
    {
        return {};
    }
    while (flight.nbCandidates > 0)
    {
        for (int i = 0; i < flight.nbCandidates; ++i)
        {
            const int elt = flight.candidates[static_cast<std::size_t>(i)];
            const Inversion inversion = invert(elt, flight.point);
            if (inversion.result == Inversion::inside)
            {
                return {
                    .elt = elt, .referenceCoords = inversion.referenceCoords, .nbIterations = inversion.nbIterations};
            }
            if (inversion.result == Inversion::singular)
            {
                return {.isSingular = true};
            }
        }
        collectCandidates<false>(flight);
    }
    return {};
}

Inversion PointLocator::invert(int elt, const Vector3& point) const
{
    Inversion inversion;
    visitElementKind(itsMesh.itsEltTypes[elt],
                     [&]<class Kind>(Kind)
                     {
                         const float* box = boxValues(itsBoxes, elt);
                         const auto nodes = gatherNodes<Kind>(itsMesh.itsConnectivity[elt], itsMesh.itsNodeCoords);
                         if constexpr (std::is_same_v<Kind, LinearTetrahedron>)
                         {
                             if (itsTetrahedronRefusal.refuses(nodes, box, point))
                             {
                                 inversion.result = Inversion::outside;
                                 return;
                             }
                         }
                         inversion = invertPoint<Kind>(nodes, box, point, itsPrecisionFactor);
                     });
    return inversion;
}
