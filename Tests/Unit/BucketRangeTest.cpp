// The buckets that a box touches, by the definition and by its fast form.
#include "Search/BucketRange.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

namespace
{
using Indices = std::array<int, 6>;

constexpr Indices nothing{0, 0, 0, -1, -1, -1};

Indices indicesOf(const BucketRange& range)
{
    if (range.isEmpty())
    {
        return nothing;
    }
    return {range.low[0], range.low[1], range.low[2], range.high[0], range.high[1], range.high[2]};
}

/// The range of a box in a grid, which both forms must agree on.
Indices rangeIn(const BucketRanges& ranges, const std::vector<float>& box)
{
    const Indices indices = indicesOf(ranges.range(box.data()));
    EXPECT_EQ(indicesOf(ranges(box.data())), indices)
        << box[0] << " to " << box[3] << ", " << box[1] << " to " << box[4] << ", " << box[2] << " to " << box[5];
    return indices;
}

/// A box whose extent on one axis is given, and which lies in bucket 0 on the others.
std::vector<float> boxAlong(std::size_t axis, float low, float high)
{
    std::vector<float> box{0.25F, 0.25F, 0.25F, 0.5F, 0.5F, 0.5F};
    box[axis] = low;
    box[axis + 3] = high;
    return box;
}

Indices indicesAlong(std::size_t axis, int low, int high)
{
    Indices indices{};
    indices[axis] = low;
    indices[axis + 3] = high;
    return indices;
}
} // namespace

TEST(BucketRanges, AreFlooredAndClippedOnEachAxis)
{
    const int nbBuckets[3] = {4, 4, 4};
    const BucketRanges ranges({0, 0, 0}, 1.0F, nbBuckets);
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        EXPECT_EQ(rangeIn(ranges, boxAlong(axis, 1, 2.75F)), indicesAlong(axis, 1, 2));
        EXPECT_EQ(rangeIn(ranges, boxAlong(axis, 1.5F, 3)), indicesAlong(axis, 1, 3));
        EXPECT_EQ(rangeIn(ranges, boxAlong(axis, -1, 0)), indicesAlong(axis, 0, 0));
        EXPECT_EQ(rangeIn(ranges, boxAlong(axis, -7.5F, 99)), indicesAlong(axis, 0, 3));
        EXPECT_EQ(rangeIn(ranges, boxAlong(axis, std::nextafter(4.0F, 0.0F), 4)), indicesAlong(axis, 3, 3));
        EXPECT_EQ(rangeIn(ranges, boxAlong(axis, -INFINITY, INFINITY)), indicesAlong(axis, 0, 3));
    }
}

TEST(BucketRanges, AreEmptyOutsideTheGrid)
{
    const int nbBuckets[3] = {4, 4, 4};
    const BucketRanges ranges({0, 0, 0}, 1.0F, nbBuckets);
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        EXPECT_EQ(rangeIn(ranges, boxAlong(axis, -3, -0.25F)), nothing);
        EXPECT_EQ(rangeIn(ranges, boxAlong(axis, -3, -1)), nothing);
        EXPECT_EQ(rangeIn(ranges, boxAlong(axis, -3, -1e-30F)), nothing);
        EXPECT_EQ(rangeIn(ranges, boxAlong(axis, 4, 5)), nothing);
        EXPECT_EQ(rangeIn(ranges, boxAlong(axis, INFINITY, INFINITY)), nothing);
        EXPECT_EQ(rangeIn(ranges, boxAlong(axis, NAN, 1)), nothing);
        EXPECT_EQ(rangeIn(ranges, boxAlong(axis, 1, NAN)), nothing);
    }
}

TEST(BucketRanges, BeginAtTheCornerOfTheGrid)
{
    const int nbBuckets[3] = {3, 5, 7};
    const BucketRanges ranges({10, 20, -30}, 0.5F, nbBuckets);
    EXPECT_EQ(rangeIn(ranges, {11, 23, -30, 13, 25, -17}), (Indices{0, 1, 0, 1, 2, 6}));
    EXPECT_EQ(rangeIn(ranges, {11, 23, -16, 13, 25, -15}), nothing);
}
