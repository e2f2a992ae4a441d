/// Points that are located together, and where they lie. The caller takes them one after another, so that errors,
/// progress and cancellation come in the order of the points.
#ifndef VELTRANE_POINT_BATCH_H
#define VELTRANE_POINT_BATCH_H

#include "../Allocation.h"
#include "PointLocator.h"

#include <algorithm>

class PointBatch
{
public:
    /// Takes room for at most `nbPoints` points, and never more than batchCapacity; false if there is none.
    bool allocate(std::int64_t nbPoints)
    {
        itsCapacity = static_cast<std::size_t>(std::min(nbPoints, batchCapacity));
        const auto capacity = static_cast<std::int64_t>(itsCapacity);
        return itsPoints.allocate(capacity) && itsLocated.allocate(capacity) && itsOrder.allocate(2 * capacity);
    }

    bool hasRoom() const { return static_cast<bool>(itsOrder); }

    /// Takes the next points of a cursor in the place of those it held; false if there is none any more.
    template <class Cursor> bool fill(Cursor& cursor)
    {
        itsSize = 0;
        while (itsSize < itsCapacity && cursor.next(itsPoints.get()[itsSize]))
        {
            ++itsSize;
        }
        return itsSize > 0;
    }

    void locate(const PointLocator& locator)
    {
        itsIsJumping =
            locator.locate({itsPoints.get(), itsSize}, {itsLocated.get(), itsSize}, {itsOrder.get(), 2 * itsSize});
    }

    std::size_t size() const { return itsSize; }
    const TargetPoint& point(std::size_t i) const { return itsPoints.get()[i]; }
    LocatedPoint& located(std::size_t i) const { return itsLocated.get()[i]; }
    std::span<const LocatedPoint> locatedFrom(std::size_t i) const { return {itsLocated.get() + i, itsSize - i}; }

    /// Whether points in a row often lie far from each other.
    bool isJumping() const { return itsIsJumping; }

private:
    std::size_t itsCapacity = 0;
    std::size_t itsSize = 0;
    bool itsIsJumping = false;
    OwnedArray<TargetPoint> itsPoints;
    OwnedArray<LocatedPoint> itsLocated;
    OwnedArray<BatchEntry> itsOrder;
};

#endif
