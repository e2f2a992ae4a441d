// Meshes far from the origin of their coordinates.
#include "CommonOrigin.h"
#include "HostMeshes.h"
#include "Map.h"
#include "Match.h"
#include "Transfer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

namespace
{
using namespace host_meshes;
using veltrane::Finding;
using veltrane::Location;
using veltrane::Map;

/// The mesh with all positions multiplied and then moved, in double precision.
veltrane::Mesh moved(const veltrane::Mesh& mesh, double factor, std::array<double, 3> by)
{
    veltrane::MeshData data{.kinds = mesh.kinds(),
                            .offsets = {0},
                            .materialPerElement = mesh.materialPerElement(),
                            .materials = mesh.materials()};
    for (std::size_t i = 0; i < mesh.coordinates().size(); ++i)
    {
        data.exactCoordinates.push_back(factor * double{mesh.coordinates()[i]} + by[i % 3]);
    }
    for (int element = 0; element < mesh.elementCount(); ++element)
    {
        const auto nodes = mesh.nodesOf(element);
        data.connectivity.insert(data.connectivity.end(), nodes.begin(), nodes.end());
        data.offsets.push_back(data.connectivity.size());
    }
    return veltrane::Mesh(std::move(data));
}

/// How many nodes were found inside.
std::int64_t insideCount(const Map& map)
{
    const auto findings = map.places(Location::nodes).findings;
    return std::ranges::count(findings, Finding::inside);
}

class MapsFarFromTheOrigin : public testing::TestWithParam<double>
{
protected:
    const double distance = GetParam();
    const std::array<double, 3> by{distance, -distance, 0.7 * distance};
    const veltrane::Mesh nearSource = block({10, 8, 6}, {0, 0, 0}, {10, 8, 6});
    const veltrane::Mesh nearTarget = block({17, 11, 9}, {0.25F, 0.125F, 0.375F}, {9.75F, 7.5F, 5.5F});
    const veltrane::Mesh source = moved(nearSource, 1.0, by);
    const veltrane::Mesh target = moved(nearTarget, 1.0, by);
};

TEST_P(MapsFarFromTheOrigin, FindAsManyNodes)
{
    const Map map(source, target);
    EXPECT_EQ(insideCount(map), target.nodeCount());
    EXPECT_NE(map.statistics().origin, veltrane::noOrigin);
    EXPECT_TRUE(map.isFrom(source));
    EXPECT_TRUE(map.isTo(target));
    EXPECT_EQ(Map::fromBytes(map.bytes()).statistics().origin, map.statistics().origin);
}

TEST_P(MapsFarFromTheOrigin, FindAsManyPoints)
{
    const veltrane::PointCloud points({}, target.exactCoordinates(),
                                      std::vector<int>(target.exactCoordinates().size() / 3), {{"", 1}});
    EXPECT_EQ(insideCount(Map(source, points)), target.nodeCount());
}

TEST_P(MapsFarFromTheOrigin, GiveTheValuesOfThePlace)
{
    const veltrane::Field field = fieldOf(nodePositions(nearSource), Location::nodes, 1, linear);
    const auto values = Map(source, target).apply(std::span(&field, 1));
    const auto positions = nodePositions(nearTarget);
    for (std::size_t node = 0; node < positions.size(); ++node)
    {
        ASSERT_NEAR(doublesOf(values[0])[node], linear(positions[node]), 2e-4) << node;
    }
}

TEST_P(MapsFarFromTheOrigin, MatchTheirNodes)
{
    veltrane::MatchOptions options;
    options.rules = {};
    const auto partners = veltrane::matchNodes(source, moved(nearSource, 1.0, by), options).sourceNodes;
    std::vector<int> expected(partners.size());
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(partners, expected);
}

INSTANTIATE_TEST_SUITE_P(Distances, MapsFarFromTheOrigin, testing::Values(5e3, 1e5, 1e7));

TEST(MapOrigin, StaysWherePositionsAreTellableApart)
{
    const veltrane::Mesh source = block({4, 4, 4}, {0, 0, 0}, {2, 2, 2});
    const Map map(source, source);
    EXPECT_EQ(map.statistics().origin, veltrane::noOrigin);
}

TEST(MapOrigin, StaysForTheExportedResults)
{
    const veltrane::Mesh source = moved(block({4, 4, 4}, {0, 0, 0}, {2, 2, 2}), 1.0, {4096, 4096, 4096});
    EXPECT_EQ(Map(source, source, {.rules = veltrane::asExported()}).statistics().origin, veltrane::noOrigin);
    EXPECT_NE(Map(source, source).statistics().origin, veltrane::noOrigin);
}

TEST(ExactCoordinates, AreKeptOnlyWhereSinglesRoundThem)
{
    const veltrane::Mesh mesh = block({1, 1, 1}, {0, 0, 0}, {1, 1, 1});
    EXPECT_TRUE(moved(mesh, 0.5, {}).exactCoordinates().empty());
    EXPECT_EQ(moved(mesh, 0.1, {}).exactCoordinates().size(), 24U);
    EXPECT_EQ(moved(mesh, 0.1, {}).coordinates().size(), 24U);
}
} // namespace
