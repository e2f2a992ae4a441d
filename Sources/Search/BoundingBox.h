/// Axis-aligned boxes, and the table of a mesh's element boxes. They know no mesh: ElementBoxes.h makes them of one.
#ifndef VELTRANE_BOUNDING_BOX_H
#define VELTRANE_BOUNDING_BOX_H

#include "../ChainedTable.h"
#include "../VectorHelpers.h"
#include "BoxLanes.h"

#include <algorithm>
#include <limits>

/// Minimum and maximum corner per element, [nbElts][2][3].
using BoxTable = ChainedTable<float>;

struct Box
{
    Vector3 low;
    Vector3 high;

    Vector3 extents() const { return {high[0] - low[0], high[1] - low[1], high[2] - low[2]}; }

    void add(const float (&point)[3])
    {
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            low[axis] = std::min(low[axis], point[axis]);
            high[axis] = std::max(high[axis], point[axis]);
        }
    }

    /// Moves every face outward by a margin of its axis.
    void inflate(const Vector3& margins)
    {
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            low[axis] -= margins[axis];
            high[axis] += margins[axis];
        }
    }
};

/// A box enlarged by `factor` times its own extents on each side.
inline Box enlarged(Box box, float factor)
{
    const Vector3 extents = box.extents();
    box.inflate({factor * extents[0], factor * extents[1], factor * extents[2]});
    return box;
}

inline Box boxOfPoint(const float (&point)[3])
{
    return {{point[0], point[1], point[2]}, {point[0], point[1], point[2]}};
}

inline constexpr float unreachable = std::numeric_limits<float>::max();

inline Box boxOf(const BoxLanes& box)
{
    return {{box.low[0], box.low[1], box.low[2]}, {box.high[0], box.high[1], box.high[2]}};
}

/// The six values of an element's box in a table: minimum x, y, z, maximum x, y, z.
inline float* boxValues(const BoxTable& boxes, int elt)
{
    return boxes.values() + 6 * static_cast<std::int64_t>(elt);
}

inline Box boxOfElement(const BoxTable& boxes, int elt)
{
    const float* values = boxValues(boxes, elt);
    return {{values[0], values[1], values[2]}, {values[3], values[4], values[5]}};
}

inline void storeBox(const BoxTable& boxes, int elt, const Box& box)
{
    float* values = boxValues(boxes, elt);
    std::copy(box.low.begin(), box.low.end(), values);
    std::copy(box.high.begin(), box.high.end(), values + 3);
}

/// The box of everything that is added to it; empty at first.
class RunningBox
{
public:
    /// A coordinate that is not a number sticks if it comes first, and is passed over later.
    void add(const Box& other)
    {
        if (itsIsEmpty)
        {
            itsBox = other;
            itsIsEmpty = false;
            return;
        }
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            itsBox.low[axis] = std::min(itsBox.low[axis], other.low[axis]);
            itsBox.high[axis] = std::max(itsBox.high[axis], other.high[axis]);
        }
    }

    bool isEmpty() const { return itsIsEmpty; }
    const Box& box() const { return itsBox; }

private:
    bool itsIsEmpty = true;
    Box itsBox{};
};

#endif
