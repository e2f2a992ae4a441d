/// Tests of boxes side by side, for packs of any size.
#ifndef VELTRANE_PACKED_BOX_TEST_H
#define VELTRANE_PACKED_BOX_TEST_H

#include "BoxSides.h"
#include "Pack.h"

template <std::size_t Size> ItemSet boxesAround(const BoxSides& sides, const float* point)
{
    using Float = FloatPack<Size>;
    const Float x(point[0]);
    const Float y(point[1]);
    const Float z(point[2]);
    ItemSet found = 0;
    for (std::size_t first = 0; first < sides.nbItems; first += Size)
    {
        const auto side = [&](std::size_t i) { return Float::load(sides.values[i] + first); };
        const auto isInBox =
            (side(0) <= x) & (x <= side(3)) & (side(1) <= y) & (y <= side(4)) & (side(2) <= z) & (z <= side(5));
        found |= static_cast<ItemSet>(isInBox.bits()) << first;
    }
    return found & (~ItemSet{0} >> (maxItemSetSize - sides.nbItems));
}

#endif
