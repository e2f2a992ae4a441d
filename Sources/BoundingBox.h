/// Axis-aligned boxes: of points, of elements, and the table of a mesh's element boxes.
#ifndef VELTRANE_BOUNDING_BOX_H
#define VELTRANE_BOUNDING_BOX_H

#include "BoxLanes.h"
#include "ChainedTable.h"
#include "ModelClass.h"
#include "VectorHelpers.h"

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

inline Box boxOfPoint(const float (&point)[3])
{
    return {{point[0], point[1], point[2]}, {point[0], point[1], point[2]}};
}

inline constexpr float unreachable = std::numeric_limits<float>::max();

inline Box boxOf(const BoxLanes& box)
{
    return {{box.low[0], box.low[1], box.low[2]}, {box.high[0], box.high[1], box.high[2]}};
}

/// The box of an element's nodes; of a type without nodes a box without extent at a place that no point reaches.
inline BoxLanes boxLanesOfNodes(const ModelClass& model, int elt)
{
    const int* nodeNumbers = model.itsConnectivity[elt];
    const float(*nodeCoords)[3] = model.itsNodeCoords;
    switch (const int nbNodes = model.nbNodesOfElt(elt))
    {
    case 0: return {CornerLanes(unreachable), CornerLanes(unreachable)};
    case 4: return boxLanesOfNodes<4>(nodeCoords, nodeNumbers);
    case 6: return boxLanesOfNodes<6>(nodeCoords, nodeNumbers);
    case 8: return boxLanesOfNodes<8>(nodeCoords, nodeNumbers);
    case 10: return boxLanesOfNodes<10>(nodeCoords, nodeNumbers);
    default: return boxLanesOfNodes(nodeCoords, nodeNumbers, nbNodes);
    }
}

inline Box boxOfNodes(const ModelClass& model, int elt)
{
    return boxOf(boxLanesOfNodes(model, elt));
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

    /// The same node by node.
    void addNodes(const ModelClass& model, int elt)
    {
        const int nbNodes = model.nbNodesOfElt(elt);
        for (int i = 0; i < nbNodes; ++i)
        {
            add(boxOfPoint(model.itsNodeCoords[model.itsConnectivity[elt][i]]));
        }
    }

    bool isEmpty() const { return itsIsEmpty; }
    const Box& box() const { return itsBox; }

private:
    bool itsIsEmpty = true;
    Box itsBox{};
};

#endif
