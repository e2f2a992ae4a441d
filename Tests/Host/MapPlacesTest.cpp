// What a map tells of its target locations and of its search.
#include "HostMeshes.h"
#include "Map.h"

#include "Elements/ElementKinds.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
using namespace host_meshes;
using veltrane::Finding;
using veltrane::Location;
using veltrane::Map;
using veltrane::OutsideMode;
using veltrane::Places;

/// The place in an element that reference coordinates stand for.
std::array<double, 3> placeOf(const veltrane::Mesh& mesh, int element, const std::array<float, 3>& referenceCoords)
{
    std::array<double, 3> place{};
    const auto nodes = mesh.nodesOf(element);
    visitElementKind(static_cast<int>(mesh.kindOf(element).kind),
                     [&]<class Kind>(Kind)
                     {
                         NodeValues<Kind::nbNodes> shape{};
                         Kind::shapeFunctions(referenceCoords, shape);
                         for (std::size_t i = 0; i < Kind::nbNodes; ++i)
                         {
                             for (std::size_t axis = 0; axis < 3; ++axis)
                             {
                                 place[axis] += static_cast<double>(shape[i]) *
                                                static_cast<double>(mesh.nodePosition(nodes[i])[axis]);
                             }
                         }
                     });
    return place;
}

TEST(MapPlaces, HaveReferenceCoordinatesThatStandForTheirPositions)
{
    const veltrane::Mesh source = cubesOfAllKinds();
    const veltrane::Mesh target = block({9, 2, 3}, {0.05F, 0.04F, 0.03F}, {4.96F, 0.97F, 0.98F});
    const Map map(source, target, {.toGaussPoints = true});
    for (const Location location : {Location::nodes, Location::gaussPoints})
    {
        const Places places = map.places(location);
        const auto positions = location == Location::nodes ? nodePositions(target) : gaussPointPositions(target);
        ASSERT_EQ(places.elements.size(), positions.size());
        ASSERT_EQ(places.findings.size(), positions.size());
        ASSERT_EQ(places.distances.size(), positions.size());
        for (std::size_t i = 0; i < positions.size(); ++i)
        {
            ASSERT_EQ(places.findings[i], Finding::inside) << i;
            ASSERT_EQ(places.distances[i], 0.0) << i;
            const auto place = placeOf(source, places.elements[i], places.referenceCoordinates[i]);
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                ASSERT_NEAR(place[axis], static_cast<double>(positions[i][axis]), 1e-5) << i;
            }
        }
    }
}

TEST(MapPlaces, TellTheElementThatHoldsAPoint)
{
    // Elements run along z first.
    const veltrane::Mesh source = block({2, 2, 2}, {0, 0, 0}, {2, 2, 2});
    const Map map(source, cloud({0.5F, 0.5F, 0.5F, 0.5F, 0.5F, 1.5F, 0.5F, 1.5F, 0.5F, 1.5F, 0.5F, 0.5F}));
    EXPECT_EQ(map.places().elements, (std::vector<int>{0, 1, 2, 4}));
}

/// Nodes above a cube take the values of the place straight below them: weights outside [0, 1] are cut off there.
TEST(MapPlaces, TellTheDistanceOfNearNodesFromThePlaceWhoseValuesTheyTake)
{
    const veltrane::Mesh source = block({1, 1, 1}, {0, 0, 0}, {1, 1, 1});
    const veltrane::Mesh target = block({1, 1, 1}, {0, 0, 0.25F}, {1, 1, 1.125F});
    const Map map(source, target);
    const Places places = map.places();
    for (std::size_t node = 0; node < 8; ++node)
    {
        const bool isAbove = node % 2 == 1;
        EXPECT_EQ(places.findings[node], isAbove ? Finding::near : Finding::inside) << node;
        EXPECT_NEAR(places.distances[node], isAbove ? 0.125 : 0.0, 1e-6) << node;
    }
    ASSERT_TRUE(map.statistics().nodes);
    EXPECT_EQ(map.statistics().nodes->near, 4);
    EXPECT_EQ(map.statistics().nodes->far, 0);
    EXPECT_EQ(map.statistics().interpolatedPointCount, 8);

    // A limit below the distance makes them far, one above does not.
    const Map strict(source, target, {.mode = OutsideMode::defaultValue, .rules = {.nearLimit = 0.12F}});
    EXPECT_EQ(strict.places().findings[1], Finding::far);
    EXPECT_TRUE(std::isinf(strict.places().distances[1]));
    EXPECT_EQ(strict.places().elements[1], -1);
    EXPECT_EQ(strict.statistics().nodes->far, 4);
    const Map generous(source, target, {.rules = {.nearLimit = 0.13F}});
    EXPECT_EQ(generous.places().findings[1], Finding::near);
}

TEST(MapPlaces, TellWhatIsFarReachedOrNotMapped)
{
    const veltrane::Mesh source = block({1, 1, 2}, {-0.1F, -0.1F, 0}, {1.1F, 1.1F, 2.05F});
    // Two bars along z side by side, the second of a material that is not to receive values; and a node in no element.
    const veltrane::Mesh bar = block({1, 1, 6}, {0, 0, 0}, {1, 1, 6});
    veltrane::MeshData data{.coordinates = bar.coordinates(),
                            .kinds = bar.kinds(),
                            .offsets = {},
                            .connectivity = {},
                            .materialPerElement = {0, 0, 0, 0, 1, 1},
                            .materials = {{"mapped", 1}, {"not mapped", 1}}};
    for (int element = 0; element <= 6; ++element)
    {
        data.offsets.push_back(8 * static_cast<std::size_t>(element));
        if (element < 6)
        {
            const auto nodes = bar.nodesOf(element);
            data.connectivity.insert(data.connectivity.end(), nodes.begin(), nodes.end());
        }
    }
    data.coordinates.insert(data.coordinates.end(), {0.5F, 0.5F, 0.5F});
    const veltrane::Mesh target(std::move(data));
    const veltrane::Rules rules{.nearLimit = 0.1F};
    const Map spread(source, target, {.mode = OutsideMode::propagate, .targetMapping = {true, false}, .rules = rules});
    using enum Finding;
    const auto findings = spread.places().findings;
    EXPECT_EQ(std::vector(findings.begin(), findings.begin() + 7),
              (std::vector{inside, inside, inside, reached, reached, notMapped, notMapped}));
    EXPECT_EQ(findings.back(), notMapped);
    const Map plain(source, target,
                    {.mode = OutsideMode::defaultValue, .targetMapping = {true, false}, .rules = rules});
    EXPECT_EQ(plain.places().findings[3], far);
    EXPECT_EQ(plain.statistics().nodes->far, 8);
    EXPECT_EQ(plain.statistics().interpolatedPointCount, 12);
    EXPECT_EQ(plain.statistics().singularElementCount, 0);
}

TEST(MapStatistics, CountIterationsAndBuckets)
{
    // The first step from the centre of a cube is exact, the second sees that it was.
    const veltrane::Mesh mesh = block({2, 2, 2}, {0, 0, 0}, {2, 2, 2});
    const Map map(mesh, cloud({0.5F, 0.5F, 0.75F}));
    const veltrane::TransferStatistics& statistics = map.statistics();
    EXPECT_EQ(statistics.interpolatedPointCount, 1);
    EXPECT_GE(statistics.meanIterations, 1.0F);
    EXPECT_LE(statistics.meanIterations, 2.0F);
    EXPECT_EQ(statistics.bucketCount, statistics.usedBucketCount + statistics.unusedBucketCount);
    EXPECT_EQ(statistics.usedBucketCount, 1);
    EXPECT_GE(statistics.meanElementsPerUsedBucket, 1.0F);
    EXPECT_LE(statistics.meanElementsPerUsedBucket, 8.0F);
    EXPECT_FALSE(statistics.gaussPoints && statistics.gaussPoints->all() != 0);
}
} // namespace
