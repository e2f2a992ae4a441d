#include "Search/BoxTest.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace
{
/// What both tests say, which must be the same.
bool holds(const std::vector<float>& box, const Vector3& point)
{
    const bool isIn = boxContains(box.data(), point);
    EXPECT_EQ(BoxTest(point)(box.data()), isIn) << point[0] << ' ' << point[1] << ' ' << point[2];
    return isIn;
}

const std::vector<float> box{-1, 2, -3, 1, 5, 7};
const Vector3 middle{0, 3, 4};
} // namespace

TEST(BoxTest, ABoxHoldsItsBorders)
{
    EXPECT_TRUE(holds(box, middle));
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        for (const std::size_t side : {axis, axis + 3})
        {
            Vector3 point = middle;
            point[axis] = box[side];
            EXPECT_TRUE(holds(box, point)) << side;
            point[axis] = std::nextafter(box[side], side < 3 ? -INFINITY : INFINITY);
            EXPECT_FALSE(holds(box, point)) << side;
        }
    }
}

TEST(BoxTest, ABoxWithoutExtentHoldsItsPoint)
{
    EXPECT_TRUE(holds({1, 2, 3, 1, 2, 3}, {1, 2, 3}));
    EXPECT_FALSE(holds({1, 2, 3, 1, 2, 3}, {1, 2, 4}));
    EXPECT_TRUE(holds({0, 0, 0, 0, 0, 0}, {-0.0F, 0.0F, -0.0F}));
}

TEST(BoxTest, NotANumberIsNeverIn)
{
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        Vector3 point = middle;
        point[axis] = NAN;
        EXPECT_FALSE(holds(box, point)) << axis;
    }
    for (std::size_t side = 0; side < 6; ++side)
    {
        std::vector<float> faulty = box;
        faulty[side] = NAN;
        EXPECT_FALSE(holds(faulty, middle)) << side;
    }
}

TEST(BoxTest, AnEndlessBoxHoldsEverything)
{
    const std::vector<float> endless{-INFINITY, -INFINITY, -INFINITY, INFINITY, INFINITY, INFINITY};
    EXPECT_TRUE(holds(endless, middle));
    EXPECT_TRUE(holds(endless, {std::numeric_limits<float>::max(), INFINITY, -INFINITY}));
}
