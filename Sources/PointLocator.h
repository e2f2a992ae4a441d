/// Finds the source elements that hold target points. Knows elements, boxes and the grid; no fields.
///
/// search() is the definition: of the elements of the point's bucket, in the order of its list, the first that has the
/// point's material state, whose box holds the point and whose inversion accepts it. locate() gives the same for many
/// points at once, and faster: it visits them in the order of their buckets where the target's own order jumps about,
/// keeps several points in flight so that their memory is on its way before it is needed, tests boxes with vector
/// instructions, and skips candidates that the inversion would certainly refuse.
#ifndef VELTRANE_POINT_LOCATOR_H
#define VELTRANE_POINT_LOCATOR_H

#include "BucketSpaceClass.h"
#include "TetrahedronRefusal.h"

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
    bool isSingular = false; ///< the inversion met a singular Jacobian, on which the process is to end
};

class PointLocator
{
public:
    /// How many points locate() takes at most: the more, the nearer neighbours in the order of the buckets are.
    static constexpr int batchCapacity = 65536;
    using BatchOrder = std::uint64_t;

    /// The objects are borrowed for the locator's lifetime; `boxes` are the inflated boxes of the source elements.
    PointLocator(const ModelClass& sourceModel, const BoxTable& boxes, const BucketSpaceClass& space,
                 float precisionFactor);

    /// A singular Jacobian ends the process.
    LocatedPoint search(const Vector3& point, int matlState) const;

    /// Locates points[i] into located[i]; `order` is room for as many entries. Returns whether the points jump about. A
    /// singular Jacobian is noted: the process is to end when that point's turn has come, which a search for it does.
    bool locate(std::span<const TargetPoint> points, std::span<LocatedPoint> located,
                std::span<BatchOrder> order) const;

private:
    /// A point on its way through the stages of locate().
    struct InFlight;

    bool isOrderJumping(std::span<const BatchOrder> order) const;
    template <bool prefetching>
    void locateGroup(std::span<const TargetPoint> points, std::span<LocatedPoint> located,
                     std::span<const BatchOrder> order) const;
    void prefetchLists(std::span<InFlight> group) const;
    void prefetchBoxes(std::span<InFlight> group) const;
    template <bool prefetching> void collectCandidates(InFlight& flight) const;
    template <class HasState> void collectFrom(InFlight& flight, std::size_t nbTested, HasState hasState) const;
    void prefetchNodes(std::span<InFlight> group) const;
    LocatedPoint firstAccepting(InFlight& flight) const;
    Inversion invert(int elt, const Vector3& point) const;

    const ModelClass& itsMesh;
    const BoxTable& itsBoxes;
    const BucketSpaceClass& itsSpace;
    float itsPrecisionFactor;
    bool itsHasOneMatlState = true;
    TetrahedronRefusal itsTetrahedronRefusal;
};

#endif
