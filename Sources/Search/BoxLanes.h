/// Boxes in vector registers: a corner is a pack of x, y, z and a fourth lane that does not count.
#ifndef VELTRANE_BOX_LANES_H
#define VELTRANE_BOX_LANES_H

#include "Pack.h"

#include <algorithm>

using CornerLanes = FloatPack<4>;

/// The smaller, or larger, of each two lanes; `b` where they are equal or one is not a number, as std::min(b, a) and
/// std::max(b, a) have it.
inline CornerLanes min(const CornerLanes& a, const CornerLanes& b)
{
#if defined(__SSE2__)
    return CornerLanes(_mm_min_ps(a.lanes(), b.lanes()));
#else
    return select(b > a, a, b);
#endif
}

inline CornerLanes max(const CornerLanes& a, const CornerLanes& b)
{
#if defined(__SSE2__)
    return CornerLanes(_mm_max_ps(a.lanes(), b.lanes()));
#else
    return select(a > b, a, b);
#endif
}

/// A corner from its three coordinates; nothing is read beyond them.
inline CornerLanes cornerLanes(const float* coordinates)
{
    return CornerLanes(pack::triple<4>(coordinates));
}

struct BoxLanes
{
    CornerLanes low;
    CornerLanes high;
};

/// A box moved outward on all sides by the same margin, a fraction of its largest extent.
inline BoxLanes inflated(const BoxLanes& box, float ratio)
{
    const CornerLanes extents = box.high - box.low;
    const float margin = ratio * std::max({extents[0], extents[1], extents[2]});
    return {box.low - CornerLanes(margin), box.high + CornerLanes(margin)};
}

/// The box of `nbNodes` nodes; where the number is known at compile time, NbNodes is it.
template <int NbNodes = 0>
BoxLanes boxLanesOfNodes(const float (*nodeCoords)[3], const int* nodeNumbers, int nbNodes = NbNodes)
{
    BoxLanes box{cornerLanes(nodeCoords[nodeNumbers[0]]), cornerLanes(nodeCoords[nodeNumbers[0]])};
    for (int i = 1; i < (NbNodes > 0 ? NbNodes : nbNodes); ++i)
    {
        const CornerLanes node = cornerLanes(nodeCoords[nodeNumbers[i]]);
        box = {min(node, box.low), max(node, box.high)};
    }
    return box;
}

#endif
