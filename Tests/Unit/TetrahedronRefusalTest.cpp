// The quick refusal of points by linear tetrahedra.
#include "TetrahedronRefusal.h"

#include <gtest/gtest.h>

namespace
{
using Nodes = ElementNodes<LinearTetrahedron>;

constexpr float usualFactor = 0.001F;
constexpr float unitBox[6] = {-0.01F, -0.01F, -0.01F, 1.01F, 1.01F, 1.01F};
const Nodes unitNodes{{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};

bool isRefused(const Nodes& nodes, const Vector3& point)
{
    return TetrahedronRefusal(usualFactor, 1.0F).refuses(nodes, unitBox, point);
}
} // namespace

TEST(TetrahedronRefusal, RefusesPointsWellBehindAFace)
{
    EXPECT_TRUE(isRefused(unitNodes, {0.5F, 0.5F, 0.5F}));
    EXPECT_TRUE(isRefused(unitNodes, {-0.009F, 0.25F, 0.25F}));
    EXPECT_TRUE(isRefused(unitNodes, {0.25F, -0.009F, 0.25F}));
    EXPECT_TRUE(isRefused(unitNodes, {0.25F, 0.25F, -0.009F}));
    // The other way round, with a negative volume.
    const Nodes turned{unitNodes[0], unitNodes[2], unitNodes[1], unitNodes[3]};
    EXPECT_TRUE(isRefused(turned, {0.5F, 0.5F, 0.5F}));
    EXPECT_FALSE(isRefused(turned, {0.2F, 0.2F, 0.2F}));
}

TEST(TetrahedronRefusal, LeavesPointsInsideAndOnFacesToTheInversion)
{
    for (const Vector3& point :
         {Vector3{0.25F, 0.25F, 0.25F}, Vector3{0, 0, 0}, Vector3{1, 0, 0}, Vector3{0.5F, 0.5F, 0},
          Vector3{-0.001F, 0.25F, 0.25F}, Vector3{0.334F, 0.334F, 0.334F}})
    {
        EXPECT_FALSE(isRefused(unitNodes, point)) << point[0] << ' ' << point[1] << ' ' << point[2];
    }
}

TEST(TetrahedronRefusal, LeavesElementsWithoutVolumeToTheInversion)
{
    const Nodes flat{{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}}};
    EXPECT_FALSE(isRefused(flat, {0.5F, 0.5F, 0.5F}));
}
