// The application of a map: values whose places in source and target are known from geometry.
#include "Errors.h"
#include "HostMeshes.h"
#include "Map.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <string>

namespace
{
using namespace host_meshes;
using veltrane::ApplyOptions;
using veltrane::Field;
using veltrane::FieldOptions;
using veltrane::FieldValues;
using veltrane::FieldView;
using veltrane::Location;
using veltrane::Map;
using veltrane::MapOptions;
using veltrane::OutsideMode;

constexpr double tolerance = linearTolerance;

Field inSinglePrecision(const Field& field)
{
    const auto values = doublesOf(field);
    return {field.name(), field.location(), field.componentCount(), std::vector<float>(values.begin(), values.end())};
}

double valueOf(const Field& field, std::size_t index)
{
    return std::visit([&](const auto& values) { return static_cast<double>(values[index]); }, field.values());
}

/// Source and target in the same row of cubes of all kinds: a target that is finer, inside, and does not match.
struct CubesToBlock
{
    veltrane::Mesh source = cubesOfAllKinds();
    veltrane::Mesh target = block({9, 2, 3}, {0.05F, 0.04F, 0.03F}, {4.96F, 0.97F, 0.98F});
};

TEST(MapApplication, CarriesLinearFieldsInAllKindsToNodesAndGaussPointsInBothPrecisions)
{
    const CubesToBlock meshes;
    const Map map(meshes.source, meshes.target, {.toGaussPoints = true});
    for (const Location location : {Location::nodes, Location::gaussPoints})
    {
        const auto places =
            location == Location::nodes ? nodePositions(meshes.target) : gaussPointPositions(meshes.target);
        for (const int components : {1, 2, 3, 4, 6, 8, 9})
        {
            const Field doubles = fieldOf(nodePositions(meshes.source), Location::nodes, components, linear);
            const std::vector<Field> sources{doubles, inSinglePrecision(doubles)};
            const auto results = map.apply(sources, {.targetLocations = {location, location}});
            ASSERT_EQ(results.size(), 2U);
            EXPECT_FALSE(results[0].isSinglePrecision());
            EXPECT_TRUE(results[1].isSinglePrecision());
            for (const Field& result : results)
            {
                ASSERT_EQ(result.location(), location);
                ASSERT_EQ(result.locationCount(), places.size());
                for (std::size_t i = 0; i < result.valueCount(); ++i)
                {
                    const auto component = static_cast<double>(i % static_cast<std::size_t>(components)) + 1;
                    ASSERT_NEAR(valueOf(result, i) / component,
                                linear(places[i / static_cast<std::size_t>(components)]), tolerance)
                        << "value " << i;
                }
            }
        }
    }
}

TEST(MapApplication, ManyFieldsAtOnceAreWhatTheyAreOneByOne)
{
    const CubesToBlock meshes;
    const Map map(meshes.source, meshes.target, {.toGaussPoints = true, .fromGaussPoints = true});
    std::vector<Field> fields;
    ApplyOptions options;
    for (int i = 0; i < 11; ++i) // more than go together
    {
        const bool isAtNodes = i % 3 != 1;
        const Field field = fieldOf(isAtNodes ? nodePositions(meshes.source) : gaussPointPositions(meshes.source),
                                    isAtNodes ? Location::nodes : Location::gaussPoints, 1 + i % 9,
                                    [i](const Point& p) { return std::sin(i + static_cast<double>(p[0] * p[1])); });
        fields.push_back(i % 2 == 0 ? field : inSinglePrecision(field));
        options.targetLocations.push_back(i % 4 < 2 ? Location::nodes : Location::gaussPoints);
    }
    const auto together = map.apply(fields, options);
    for (std::size_t i = 0; i < fields.size(); ++i)
    {
        const auto alone = map.apply(std::span(&fields[i], 1), {.targetLocations = {options.targetLocations[i]}});
        EXPECT_EQ(alone[0].values(), together[i].values()) << "field " << i;
    }
}

/// Two unit cubes on top of each other: 1 at the Gauss points of the lower one, 3 at those of the upper one. Nodes
/// between them average to 2.
TEST(MapApplication, FieldsAtSourceGaussPointsAreAveragedToNodesFirst)
{
    const veltrane::Mesh source = block({1, 1, 2}, {0, 0, 0}, {1, 1, 2});
    const veltrane::PointCloud points =
        cloud({0.5F, 0.5F, 0.0F, 0.25F, 0.5F, 0.5F, 0.5F, 0.5F, 1.0F, 0.5F, 0.75F, 1.75F});
    const std::vector<double> expected{1.0, 1.5, 2.0, 2.75};
    std::vector<double> values(8, 1.0);
    values.insert(values.end(), 8, 3.0);
    const Field field("stress", Location::gaussPoints, 1, values);
    const Map map(source, points, {.fromGaussPoints = true});
    const auto result = map.apply(std::span(&field, 1), {.targetLocations = {Location::nodes}});
    for (std::size_t i = 0; i < expected.size(); ++i)
    {
        EXPECT_NEAR(doublesOf(result[0])[i], expected[i], 1e-6) << "point " << i;
    }
}

TEST(MapApplication, AnUndefinedSourceValueMakesItsElementsValuesUndefinedAndNoOthers)
{
    const veltrane::Mesh source = block({1, 1, 2}, {0, 0, 0}, {1, 1, 2});
    const veltrane::PointCloud points = cloud({0.5F, 0.5F, 0.5F, 0.5F, 0.5F, 1.5F});
    const Map map(source, points);
    // Node 0 is a corner of the lower cube alone. The second component is defined everywhere.
    std::vector<double> values(24, 5.0);
    values[0] = static_cast<double>(veltrane::undefinedBound);
    const Field field("partly", Location::nodes, 2, values);
    const auto result = map.apply(std::span(&field, 1));
    EXPECT_EQ(doublesOf(result[0])[0], static_cast<double>(veltrane::undefinedValue));
    EXPECT_NEAR(doublesOf(result[0])[1], 5.0, 1e-5);
    EXPECT_NEAR(doublesOf(result[0])[2], 5.0, 1e-5);
    EXPECT_NEAR(doublesOf(result[0])[3], 5.0, 1e-5);
}

TEST(MapApplication, FarNodesAndPointsTakeTheDefaultValueOfTheirFieldAndFarGaussPointsZero)
{
    const veltrane::Mesh source = block({2, 2, 2}, {0, 0, 0}, {1, 1, 1});
    // The second element lies ten lengths away.
    veltrane::Mesh target = block({2, 1, 1}, {0.25F, 0.25F, 0.25F}, {0.75F, 0.75F, 0.75F});
    veltrane::MeshData data{.coordinates = target.coordinates(),
                            .kinds = target.kinds(),
                            .offsets = {0, 8, 16},
                            .connectivity = {},
                            .materialPerElement = {0, 0},
                            .materials = target.materials()};
    const auto near = target.nodesOf(0);
    data.connectivity.assign(near.begin(), near.end());
    for (const int node : near)
    {
        const auto position = target.nodePosition(node);
        data.connectivity.push_back(static_cast<int>(data.coordinates.size() / 3));
        data.coordinates.insert(data.coordinates.end(), {position[0] + 10, position[1], position[2]});
    }
    const veltrane::Mesh apart(std::move(data));
    const Map map(source, apart, {.mode = OutsideMode::defaultValue, .toGaussPoints = true});
    const Field field = fieldOf(nodePositions(source), Location::nodes, 1, linear);
    const std::vector<Field> fields{field, field, field};
    ApplyOptions options;
    options.defaultValue = -7;
    options.fieldOptions = {FieldOptions{}, FieldOptions{.defaultValue = 9.0F}, FieldOptions{}};
    options.targetLocations = {Location::nodes, Location::nodes, Location::gaussPoints};
    const auto results = map.apply(fields, options);
    const std::size_t firstFar = target.coordinates().size() / 3;
    for (std::size_t node = firstFar; node < results[0].locationCount(); ++node)
    {
        EXPECT_EQ(doublesOf(results[0])[node], -7.0);
        EXPECT_EQ(doublesOf(results[1])[node], 9.0);
    }
    EXPECT_NEAR(doublesOf(results[0])[0], linear({0.25F, 0.25F, 0.25F}), tolerance);
    const auto places = gaussPointPositions(apart);
    for (std::size_t i = 0; i < 16; ++i)
    {
        EXPECT_NEAR(doublesOf(results[2])[i], i < 8 ? linear(places[i]) : 0.0, tolerance);
    }
}

TEST(MapApplication, AFieldOnClassOneOnlyLeavesTargetValuesInOtherMaterialsAsTheyAre)
{
    // State code 1 is of class 1, 4 of class 2.
    for (const auto& [code, isWritten] : {std::pair(1, true), std::pair(4, false)})
    {
        const veltrane::Mesh source = block({1, 1, 1}, {0, 0, 0}, {1, 1, 1}, code);
        const veltrane::Mesh target = block({1, 1, 1}, {0.25F, 0.25F, 0.25F}, {0.5F, 0.5F, 0.5F}, code);
        const Map map(source, target, {.toGaussPoints = true});
        const Field field = fieldOf(nodePositions(source), Location::nodes, 1, linear);
        const std::vector<Field> fields{field, field};
        ApplyOptions options;
        options.defaultValue = -3;
        options.fieldOptions = std::vector<FieldOptions>(2, FieldOptions{.isClassOneOnly = true});
        options.targetLocations = {Location::nodes, Location::gaussPoints};
        const auto results = map.apply(fields, options);
        EXPECT_NEAR(doublesOf(results[0])[0], isWritten ? linear({0.25F, 0.25F, 0.25F}) : -3.0, tolerance) << code;
        EXPECT_NEAR(doublesOf(results[1])[0], isWritten ? linear(gaussPointPositions(target)[0]) : -3.0, tolerance)
            << code;
    }
}

/// What a set of arrays can be.
struct Arrays
{
    bool hasSingleSource;
    bool hasSingleTarget;
    Location source;
    Location target;
    int components;
};

/// Applies a constant field, which stays what it is on any way.
void expectConstantCarried(const Map& map, const Arrays& arrays, int threads)
{
    const auto count = static_cast<std::size_t>(arrays.components);
    const std::size_t sourceCount =
        count * (arrays.source == Location::nodes ? map.sourceNodeCount() : map.sourceGaussPointCount());
    const std::size_t targetCount = count * map.locationCount(arrays.target);
    const std::vector<float> floats(sourceCount, 2.5F);
    const std::vector<double> doubles(sourceCount, 2.5);
    std::vector<float> floatResult(targetCount, -1);
    std::vector<double> doubleResult(targetCount, -1);
    FieldView view{
        .componentCount = arrays.components, .sourceLocation = arrays.source, .targetLocation = arrays.target};
    arrays.hasSingleSource ? view.source = std::span(floats) : view.source = std::span(doubles);
    arrays.hasSingleTarget ? view.target = std::span(floatResult) : view.target = std::span(doubleResult);
    std::vector<std::byte> workspace(map.workspaceSize(std::span(&view, 1)));
    map.apply(std::span(&view, 1), workspace, threads);
    for (std::size_t i = 0; i < targetCount; ++i)
    {
        ASSERT_NEAR(arrays.hasSingleTarget ? static_cast<double>(floatResult[i]) : doubleResult[i], 2.5, 1e-5) << i;
    }
}

TEST(MapApplication, TakesArraysOfAnyPrecisionAndPlaceWithAnyNumberOfComponents)
{
    const CubesToBlock meshes;
    const Map map(meshes.source, meshes.target, {.toGaussPoints = true, .fromGaussPoints = true});
    for (int choice = 0; choice < 16; ++choice)
    {
        for (const int components : {1, 3, 9})
        {
            const Arrays arrays{(choice & 1) != 0, (choice & 2) != 0,
                                (choice & 4) != 0 ? Location::gaussPoints : Location::nodes,
                                (choice & 8) != 0 ? Location::gaussPoints : Location::nodes, components};
            SCOPED_TRACE("choice " + std::to_string(choice) + ", components " + std::to_string(components));
            expectConstantCarried(map, arrays, 1 + choice % 3);
        }
    }
}

class ArraysOfTheWrongSize : public testing::Test
{
protected:
    const veltrane::Mesh source = block({1, 1, 1}, {0, 0, 0}, {1, 1, 1});
    const veltrane::Mesh target = block({1, 1, 1}, {0.25F, 0.25F, 0.25F}, {0.5F, 0.5F, 0.5F});
    const Map map{source, target};
    std::vector<double> values = std::vector<double>(8, 1.0);
    std::vector<double> results = std::vector<double>(8, -1.0);
    FieldView view{.source = std::span<const double>(values), .target = std::span(results)};

    /// The refusal; the results stay as they are.
    std::string refusal(std::size_t workspaceSize = 72)
    {
        std::vector<std::byte> workspace(workspaceSize);
        try
        {
            map.apply(std::span<const FieldView>(&view, 1), workspace);
        }
        catch (const veltrane::InvalidData& error)
        {
            EXPECT_EQ(results, std::vector<double>(8, -1.0));
            return error.what();
        }
        return "";
    }
};

TEST_F(ArraysOfTheWrongSize, AreRefusedWithTheirSize)
{
    EXPECT_EQ(refusal(), "");
    std::ranges::fill(results, -1.0);
    view.source = std::span<const double>(values).first(7);
    EXPECT_EQ(refusal(), "there are 7 source values, not 1 for each of 8 nodes");
    view.source = std::span<const double>(values);
    view.target = std::span(results).first(5);
    EXPECT_EQ(refusal(), "there are 5 target values, not 1 for each of 8 nodes");
    view.target = std::span(results);
    EXPECT_EQ(refusal(71), "the workspace has 71 bytes, not 72");
}

TEST_F(ArraysOfTheWrongSize, AsMuchAsImpossibleComponentsAndPlaces)
{
    view.componentCount = 0;
    EXPECT_EQ(refusal(), "a field has 0 components, not 1 to 9");
    view.componentCount = 10;
    EXPECT_EQ(refusal(), "a field has 10 components, not 1 to 9");
    view.componentCount = 1;
    view.sourceLocation = Location::gaussPoints;
    EXPECT_EQ(refusal(), "the map is not made for fields at Gauss points of the source");
    view.sourceLocation = Location::nodes;
    view.targetLocation = Location::gaussPoints;
    EXPECT_EQ(refusal(), "there are 8 target values, not 1 for each of 0 Gauss points");
}
} // namespace
