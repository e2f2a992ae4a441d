// The quick refusal of points by linear tetrahedra.
#include "TetrahedronRefusal.h"
#include "BoxTest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace
{
using Nodes = ElementNodes<LinearTetrahedron>;

constexpr float usualFactor = 0.001F;
constexpr float unitBox[6] = {-0.01F, -0.01F, -0.01F, 1.01F, 1.01F, 1.01F};
const Nodes unitNodes{{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};

bool isRefused(const Nodes& nodes, const Vector3& point, float factor = usualFactor)
{
    return TetrahedronRefusal(factor, 1.0F).refuses(nodes, unitBox, point);
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

TEST(TetrahedronRefusal, RefusesNothingWithoutAUsefulFactor)
{
    const Vector3 farPoint{1, 1, 1};
    EXPECT_FALSE(isRefused(unitNodes, farPoint, 0.0F));
    EXPECT_FALSE(isRefused(unitNodes, farPoint, -0.001F));
    EXPECT_FALSE(isRefused(unitNodes, farPoint, INFINITY));
    EXPECT_FALSE(isRefused(unitNodes, farPoint, NAN));
    EXPECT_FALSE(TetrahedronRefusal().refuses(unitNodes, unitBox, farPoint));
    // In a flat box the inversion accepts its first guess.
    const float flatBox[6] = {0, 0, 1, 1, 1, 1};
    EXPECT_FALSE(TetrahedronRefusal(usualFactor, 1.0F).refuses(unitNodes, flatBox, farPoint));
}

TEST(TetrahedronRefusal, NeverRefusesWhatTheInversionAccepts)
{
    std::mt19937 random(1);
    const auto number = [&random](double low, double high)
    { return low + (high - low) * static_cast<double>(random()) / 4294967296.0; };
    int nbAccepted = 0;
    int nbRefused = 0;
    for (int i = 0; i < 40000; ++i)
    {
        // From fat to very flat elements, at the origin and far from it; points near a face and not so near.
        const double distance = i % 3 == 0 ? 0.0 : number(0.0, 1000.0);
        const double flatness = std::pow(10.0, number(-5.0, 0.0));
        Nodes nodes;
        for (Vector3& node : nodes)
        {
            node = {single(distance + number(0.0, 1.0)), single(distance + number(0.0, 1.0)),
                    single(distance + flatness * number(0.0, 1.0))};
        }
        const double reach = i % 4 == 0 ? 0.01 : 0.5;
        const double onFace = number(-reach, reach);
        const double first = number(0.0, 1.0);
        const double second = number(0.0, 1.0 - first);
        const double weights[4] = {onFace, first, second, 1.0 - first - second - onFace};
        Vector3 point{};
        float largest = 0.0F;
        float box[6];
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            double position = 0.0;
            box[axis] = nodes[0][axis];
            box[axis + 3] = nodes[0][axis];
            for (std::size_t node = 0; node < 4; ++node)
            {
                position += weights[node] * static_cast<double>(nodes[node][axis]);
                box[axis] = std::min(box[axis], nodes[node][axis]);
                box[axis + 3] = std::max(box[axis + 3], nodes[node][axis]);
                largest = std::max(largest, nodes[node][axis]);
            }
            point[axis] = single(position);
        }
        const float margin = 0.01F * std::max({box[3] - box[0], box[4] - box[1], box[5] - box[2]});
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            box[axis] -= margin;
            box[axis + 3] += margin;
        }
        if (!boxContains(box, point))
        {
            continue;
        }
        const float factor = i % 2 == 0 ? usualFactor : 1e-5F;
        const auto inversion = invertPoint<LinearTetrahedron>(nodes, box, point, factor);
        const bool refused = TetrahedronRefusal(factor, largest).refuses(nodes, box, point);
        ASSERT_FALSE(refused && inversion.result == Inversion::inside) << i;
        ASSERT_FALSE(refused && inversion.result == Inversion::singular) << i;
        nbAccepted += inversion.result == Inversion::inside ? 1 : 0;
        nbRefused += refused ? 1 : 0;
    }
    // Both happen often enough for the comparison to mean something.
    EXPECT_GT(nbAccepted, 2000);
    EXPECT_GT(nbRefused, 2000);
}
