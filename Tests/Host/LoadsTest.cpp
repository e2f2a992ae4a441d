// Loads that are distributed: their sums and moments are known beforehand.
#include "Loads.h"
#include "Errors.h"
#include "HostMeshes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace
{
using namespace host_meshes;
using veltrane::DistributedLoads;
using veltrane::Field;
using veltrane::LoadSums;
using veltrane::Location;
using veltrane::Mesh;
using veltrane::OutsideMode;

constexpr double asked = 1e-6;

/// Forces that differ from node to node.
Field forcesOn(const Mesh& mesh)
{
    const auto places = nodePositions(mesh);
    std::vector<double> values;
    for (std::size_t i = 0; i < places.size(); ++i)
    {
        const auto number = static_cast<double>(i);
        values.insert(values.end(),
                      {1 + std::sin(number), 2 * static_cast<double>(places[i][0]), std::cos(3 * number)});
    }
    return {"force", Location::nodes, 3, values};
}

double lengthOf(const std::vector<double>& vector)
{
    return std::hypot(vector[0], vector[1], vector[2]);
}

double differenceOf(const std::vector<double>& first, const std::vector<double>& second)
{
    return std::hypot(first[0] - second[0], first[1] - second[1], first[2] - second[2]);
}

TEST(Loads, KeepSumsAndMomentsOnAMillionNodes)
{
    const Mesh source = block({99, 99, 99}, {0.1F, 0.1F, 0.1F}, {4.9F, 0.9F, 0.9F});
    const DistributedLoads loads = distributeLoads(source, forcesOn(source), cubesOfAllKinds(), {.threads = 0});
    EXPECT_EQ(loads.loadedNodes, 1000000U);
    EXPECT_EQ(loads.outsideNodes, 0U);
    EXPECT_LT(differenceOf(loads.source.sum, loads.target.sum), asked * lengthOf(loads.source.sum));
    EXPECT_LT(differenceOf(loads.source.moment, loads.target.moment), asked * lengthOf(loads.source.moment));
    EXPECT_GT(lengthOf(loads.source.moment), 1);
}

/// A force of 6 in z in the middle of a unit cube: a part of it at each corner, and about the middle no moment.
TEST(Loads, GoToTheNodesOfTheElementAroundThem)
{
    const Mesh source = block({2, 2, 2}, {0, 0, 0}, {1, 1, 1});
    const Mesh target = block({1, 1, 1}, {0, 0, 0}, {1, 1, 1});
    std::vector<double> values(81);
    values[13 * 3 + 2] = 6;
    const DistributedLoads loads = distributeLoads(source, Field("F", Location::nodes, 3, values), target);
    EXPECT_EQ(loads.loadedNodes, 1U);
    const auto atTarget = doublesOf(loads.atTarget);
    ASSERT_EQ(atTarget.size(), 24U);
    for (std::size_t node = 0; node < 8; ++node)
    {
        EXPECT_NEAR(atTarget[3 * node + 2], 0.75, 1e-6);
        EXPECT_EQ(atTarget[3 * node], 0);
    }
    EXPECT_NEAR(lengthOf(loads.target.moment), 0, 1e-6);
}

/// A force of 1 in y at x = 2 about the middle, x = 1; and a heat flow of 4 there.
TEST(Loads, HaveMomentsAboutTheMiddleOfTheSource)
{
    const Mesh source = block({2, 1, 1}, {0, 0, 0}, {2, 1, 1});
    std::vector<double> forces(36);
    std::vector<double> flows(12);
    for (std::size_t node = 8; node < 12; ++node)
    {
        forces[3 * node + 1] = 0.25;
        flows[node] = 1;
    }
    const auto about = middleOf(source);
    EXPECT_EQ(about, (std::array{1.0, 0.5, 0.5}));
    const LoadSums ofForces = loadSumsOf(Field("F", Location::nodes, 3, forces), source, about);
    EXPECT_EQ(ofForces.sum, (std::vector<double>{0, 1, 0}));
    EXPECT_EQ(ofForces.moment, (std::vector<double>{0, 0, 1}));
    const LoadSums ofFlows = loadSumsOf(Field("q", Location::nodes, 1, flows), source, about);
    EXPECT_EQ(ofFlows.sum, (std::vector<double>{4}));
    EXPECT_EQ(ofFlows.moment, (std::vector<double>{4, 0, 0}));
}

/// Four nodes in three rows, of which one lies in the target, one near it, and one far from it.
class LoadsOutside : public testing::Test
{
protected:
    DistributedLoads distribute(OutsideMode mode) const
    {
        return distributeLoads(source, flows, target, {.mode = mode, .rules = {.nearLimit = 0.5F}});
    }

    const Mesh source = block({2, 1, 1}, {0, 0, 0}, {2.5F, 1, 1});
    const Mesh target = block({1, 1, 1}, {0, 0, 0}, {1, 1, 1});
    const Field flows{"q", Location::nodes, 1, std::vector<double>{1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3}};
};

TEST_F(LoadsOutside, AreAnErrorThatTellsTheirSum)
{
    try
    {
        distribute(OutsideMode::error);
        FAIL();
    }
    catch (const veltrane::TargetOutside& error)
    {
        EXPECT_STREQ(error.what(), "4 of 12 nodes with loads 'q' are outside the target, with 12 in sum");
    }
}

TEST_F(LoadsOutside, AreLeftOutAndSummedUp)
{
    const DistributedLoads loads = distribute(OutsideMode::defaultValue);
    EXPECT_EQ(loads.outsideNodes, 4U);
    EXPECT_EQ(loads.nearNodes, 4U);
    EXPECT_NEAR(loads.largestNearDistance, 0.25, 1e-6);
    EXPECT_EQ(loads.outside.sum, (std::vector<double>{12}));
    EXPECT_NEAR(loads.source.sum[0], 24, 24 * asked);
    EXPECT_NEAR(loads.target.sum[0], 12, 12 * asked);
}

TEST_F(LoadsOutside, AreNotPropagated)
{
    EXPECT_THROW(distribute(OutsideMode::propagate), veltrane::InvalidOption);
}

/// Nodes of the second material have loads, and the target has none of it.
TEST(Loads, GoToTheirOwnMaterial)
{
    Mesh source = block({2, 1, 1}, {0, 0, 0}, {2, 1, 1});
    source.setMaterials({{"first", 1}, {"second", 2}}, {0, 1});
    const Mesh target = block({2, 1, 1}, {0, 0, 0}, {2, 1, 1}, 1);
    const Field flows("q", Location::nodes, 1, std::vector<double>{1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3});
    const DistributedLoads loads =
        distributeLoads(source, flows, target, {.mode = OutsideMode::defaultValue, .rules = {.nearLimit = 0.1F}});
    EXPECT_EQ(loads.outside.sum, (std::vector<double>{12}));
    EXPECT_NEAR(loads.target.sum[0], 12, 1e-5);
}

TEST(Loads, DifferByAPartOfTheirMagnitudes)
{
    const LoadSums reference{.sum = {3}, .moment = {0, 0, 4}, .magnitude = 6, .momentMagnitude = 40};
    EXPECT_EQ(relativeDifference(reference, reference), 0);
    EXPECT_EQ(relativeDifference({.sum = {0}, .moment = {0, 0, 4}}, reference), 0.5);
    EXPECT_EQ(relativeDifference({.sum = {3}, .moment = {0, 0, 0}}, reference), 0.1);
    EXPECT_TRUE(std::isinf(relativeDifference(reference, {.sum = {0}, .moment = {0, 0, 0}})));
}

TEST(Loads, WithoutAnyStayNothing)
{
    const Mesh cube = block({1, 1, 1}, {0, 0, 0}, {1, 1, 1});
    const DistributedLoads loads = distributeLoads(cube, Field("q", Location::nodes, 1, std::vector<double>(8)), cube);
    EXPECT_EQ(loads.loadedNodes, 0U);
    EXPECT_EQ(loads.target.sum, (std::vector<double>{0}));
    EXPECT_TRUE(std::ranges::all_of(doublesOf(loads.atTarget), [](double value) { return value == 0; }));
}

TEST(Loads, MustBeFiniteAndAtTheNodes)
{
    const Mesh cube = block({1, 1, 1}, {0, 0, 0}, {1, 1, 1});
    const auto refuse = [&](const Field& loads)
    { EXPECT_THROW(distributeLoads(cube, loads, cube), veltrane::InvalidData) << loads.name(); };
    refuse(Field("short", Location::nodes, 1, std::vector<double>(7)));
    refuse(Field("inner", Location::gaussPoints, 1, std::vector<double>(8)));
    std::vector<double> values(8);
    values[3] = std::nan("");
    refuse(Field("broken", Location::nodes, 1, values));
}

} // namespace
