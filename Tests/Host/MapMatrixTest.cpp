// A map as a matrix, and the way back: sums that are kept, propagation that is resolved.
#include "Errors.h"
#include "HostMeshes.h"
#include "Map.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>

namespace
{
using namespace host_meshes;
using veltrane::Field;
using veltrane::Location;
using veltrane::Map;
using veltrane::OutsideMode;
using veltrane::SparseMatrix;

double waves(const Point& p)
{
    return std::sin(3.0 * static_cast<double>(p[0])) + std::cos(2.0 * static_cast<double>(p[1])) +
           static_cast<double>(p[2] * p[0]);
}

/// A row times values, and the sum of the magnitudes that it is made of.
struct Product
{
    double value = 0;
    double magnitude = 0;
};

Product productOf(const SparseMatrix& matrix, std::size_t row, std::span<const double> values)
{
    Product product;
    for (auto i = matrix.rowStarts[row]; i < matrix.rowStarts[row + 1]; ++i)
    {
        const auto at = static_cast<std::size_t>(i);
        const double part = matrix.values[at] * values[static_cast<std::size_t>(matrix.columns[at])];
        product.value += part;
        product.magnitude += std::abs(part);
    }
    return product;
}

void expectWellFormed(const SparseMatrix& matrix)
{
    ASSERT_EQ(matrix.rowStarts.size(), static_cast<std::size_t>(matrix.rowCount) + 1);
    ASSERT_EQ(matrix.rowStarts.front(), 0);
    ASSERT_EQ(static_cast<std::size_t>(matrix.rowStarts.back()), matrix.columns.size());
    ASSERT_EQ(matrix.values.size(), matrix.columns.size());
    for (std::size_t row = 0; row < static_cast<std::size_t>(matrix.rowCount); ++row)
    {
        for (auto i = matrix.rowStarts[row]; i < matrix.rowStarts[row + 1]; ++i)
        {
            const auto at = static_cast<std::size_t>(i);
            ASSERT_TRUE(matrix.columns[at] >= 0 && matrix.columns[at] < matrix.columnCount);
            ASSERT_TRUE(i == matrix.rowStarts[row] || matrix.columns[at - 1] < matrix.columns[at]) << "row " << row;
        }
    }
}

TEST(MapMatrix, TimesValuesIsTheApplicationForAllPlacesAndElementKinds)
{
    const veltrane::Mesh source = cubesOfAllKinds();
    const veltrane::Mesh target = block({9, 2, 3}, {0.05F, 0.04F, 0.03F}, {4.96F, 0.97F, 0.98F});
    const Map map(source, target, {.toGaussPoints = true, .fromGaussPoints = true});
    for (const Location from : {Location::nodes, Location::gaussPoints})
    {
        const Field field =
            fieldOf(from == Location::nodes ? nodePositions(source) : gaussPointPositions(source), from, 1, waves);
        for (const Location to : {Location::nodes, Location::gaussPoints})
        {
            const SparseMatrix matrix = map.matrix({.target = to, .source = from});
            expectWellFormed(matrix);
            ASSERT_EQ(static_cast<std::size_t>(matrix.rowCount), map.locationCount(to));
            ASSERT_EQ(static_cast<std::size_t>(matrix.columnCount), field.locationCount());
            const auto applied = map.apply(std::span(&field, 1), {.targetLocations = {to}});
            for (std::size_t row = 0; row < map.locationCount(to); ++row)
            {
                const Product product = productOf(matrix, row, doublesOf(field));
                ASSERT_GT(product.magnitude, 0.0);
                ASSERT_NEAR(product.value, doublesOf(applied[0])[row], 1e-6 * product.magnitude) << "row " << row;
            }
        }
    }
}

TEST(MapMatrix, OfASinglePointHasTheShapeFunctionsOfItsElement)
{
    // Trilinear weights at the reference coordinates -1/2, 0, 1/2.
    const veltrane::Mesh source = block({1, 1, 1}, {0, 0, 0}, {4, 4, 4});
    const Map map(source, cloud({1, 2, 3}));
    const SparseMatrix matrix = map.matrix();
    expectWellFormed(matrix);
    // Nodes run along z first.
    const std::vector<double> expected{0.75 * 0.5 * 0.25, 0.75 * 0.5 * 0.75, 0.75 * 0.5 * 0.25, 0.75 * 0.5 * 0.75,
                                       0.25 * 0.5 * 0.25, 0.25 * 0.5 * 0.75, 0.25 * 0.5 * 0.25, 0.25 * 0.5 * 0.75};
    ASSERT_EQ(matrix.values.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
    {
        EXPECT_EQ(matrix.columns[i], static_cast<int>(i));
        EXPECT_NEAR(matrix.values[i], expected[i], 1e-6);
    }
}

TEST(MapMatrix, HasEmptyRowsForLocationsWithoutWeights)
{
    const Map map(block({1, 1, 1}, {0, 0, 0}, {1, 1, 1}), cloud({0.5F, 0.5F, 0.5F, 9, 9, 9, 0.25F, 0.25F, 0.25F}),
                  {.mode = OutsideMode::defaultValue});
    EXPECT_EQ(map.matrix().rowStarts, (std::vector<std::int64_t>{0, 8, 8, 16}));
}

TEST(MapMatrix, IsRefusedWhereTheMapHasNoSuchPlaces)
{
    const veltrane::Mesh mesh = block({1, 1, 1}, {0, 0, 0}, {1, 1, 1});
    const Map map(mesh, mesh);
    EXPECT_THROW(map.matrix({.target = Location::gaussPoints}), veltrane::InvalidOption);
    EXPECT_THROW(map.matrix({.source = Location::gaussPoints}), veltrane::InvalidOption);
    const Map toGaussPoints(mesh, mesh, {.toNodes = false, .toGaussPoints = true});
    EXPECT_THROW(toGaussPoints.matrix({.target = Location::gaussPoints, .resolvesPropagation = true}),
                 veltrane::InvalidOption);
}

/// A bar of cubes along z, the source covering its first two: values spread along the rest.
class ResolvedPropagation : public testing::Test
{
protected:
    const veltrane::Mesh source = block({1, 1, 2}, {-0.1F, -0.1F, 0}, {1.1F, 1.1F, 2.05F});
    const veltrane::Mesh target = block({1, 1, 6}, {0, 0, 0}, {1, 1, 6});
    const Map map{
        source, target, {.mode = OutsideMode::propagate, .fromGaussPoints = true, .rules = {.nearLimit = 0.1F}}};
};

TEST_F(ResolvedPropagation, GivesTheNextLayerTheMeanOfTheLastOneInside)
{
    const Field field = fieldOf(nodePositions(source), Location::nodes, 1, linear);
    const auto result = map.apply(std::span(&field, 1));
    // The mean over the layer z = 2 is the value at its centre, and so it is on all layers further out.
    for (std::size_t node = 0; node < result[0].locationCount(); ++node)
    {
        const auto position = target.nodePosition(static_cast<int>(node));
        const Point place = position[2] > 2.5F ? Point{0.5F, 0.5F, 2} : Point{position[0], position[1], position[2]};
        EXPECT_NEAR(doublesOf(result[0])[node], linear(place), 1e-4) << "node " << node;
    }
    EXPECT_EQ(map.places().findings[3], veltrane::Finding::reached);
    EXPECT_FALSE(map.hasUnreachedNodes());
}

TEST_F(ResolvedPropagation, IsAMatrixOfTheSizeThatIsTold)
{
    for (const Location from : {Location::nodes, Location::gaussPoints})
    {
        const SparseMatrix matrix = map.matrix({.source = from, .resolvesPropagation = true});
        expectWellFormed(matrix);
        EXPECT_EQ(map.resolvedMatrixSize(from), matrix.rowStarts.back());
        const Field field =
            fieldOf(from == Location::nodes ? nodePositions(source) : gaussPointPositions(source), from, 1, waves);
        const auto applied = map.apply(std::span(&field, 1), {.targetLocations = {Location::nodes}});
        for (std::size_t row = 0; row < map.locationCount(Location::nodes); ++row)
        {
            const Product product = productOf(matrix, row, doublesOf(field));
            ASSERT_GT(product.magnitude, 0.0);
            ASSERT_NEAR(product.value, doublesOf(applied[0])[row], 1e-6 * product.magnitude) << "row " << row;
        }
    }
}

TEST_F(ResolvedPropagation, IsRefusedAboveTheLimit)
{
    const std::int64_t size = map.resolvedMatrixSize();
    EXPECT_EQ(map.matrix({.resolvesPropagation = true, .mostEntries = size}).rowStarts.back(), size);
    try
    {
        map.matrix({.resolvesPropagation = true, .mostEntries = size - 1});
        FAIL() << "not refused";
    }
    catch (const veltrane::InvalidOption& refusal)
    {
        EXPECT_EQ(std::string(refusal.what()), "the matrix would have " + std::to_string(size) +
                                                   " entries, more than the " + std::to_string(size - 1) +
                                                   " that are allowed");
    }
}

TEST(MapTransposed, KeepsSumsOnALargeRandomCase)
{
    const veltrane::Mesh source = cubesOfAllKinds();
    constexpr int count = 100'000;
    // Some of the points are outside, on all sides.
    const veltrane::PointCloud points = cloud(scattered(count, {-0.2F, -0.1F, -0.1F}, {5.2F, 1.1F, 1.1F}));
    const Map map(source, points, {.mode = OutsideMode::defaultValue});
    const std::vector<float> loads = scattered(count, {-1, 0, 1e-3F}, {1, 1e4F, 1e3F}, 2);
    const veltrane::TransposedField result = map.applyTransposed(Field("load", Location::nodes, 3, loads));
    ASSERT_EQ(result.atSource.locationCount(), map.sourceNodeCount());
    ASSERT_EQ(result.left.size(), 3U);
    const auto findings = map.places().findings;
    for (std::size_t component = 0; component < 3; ++component)
    {
        double sum = 0;
        double magnitude = 0;
        double left = 0;
        for (std::size_t i = 0; i < count; ++i)
        {
            const auto load = static_cast<double>(loads[3 * i + component]);
            const bool hasWeights = findings[i] == veltrane::Finding::inside;
            sum += hasWeights ? load : 0;
            magnitude += hasWeights ? std::abs(load) : 0;
            left += hasWeights ? 0 : load;
        }
        double distributed = 0;
        for (std::size_t node = 0; node < map.sourceNodeCount(); ++node)
        {
            distributed += doublesOf(result.atSource)[3 * node + component];
        }
        EXPECT_NEAR(distributed, sum, 1e-6 * magnitude);
        EXPECT_NEAR(result.left[component], left, 1e-12 * magnitude);
        EXPECT_NE(left, 0.0);
    }
}

TEST(MapTransposed, IsTheTransposedMatrixForNodesAndGaussPoints)
{
    const veltrane::Mesh source = cubesOfAllKinds();
    const veltrane::Mesh target = block({9, 2, 3}, {0.05F, 0.04F, 0.03F}, {4.96F, 0.97F, 0.98F});
    const Map map(source, target, {.toGaussPoints = true});
    for (const Location location : {Location::nodes, Location::gaussPoints})
    {
        const SparseMatrix matrix = map.matrix({.target = location});
        const Field field = fieldOf(location == Location::nodes ? nodePositions(target) : gaussPointPositions(target),
                                    location, 1, waves);
        std::vector<double> expected(map.sourceNodeCount(), 0.0);
        for (std::size_t row = 0; row < map.locationCount(location); ++row)
        {
            for (auto i = matrix.rowStarts[row]; i < matrix.rowStarts[row + 1]; ++i)
            {
                const auto at = static_cast<std::size_t>(i);
                expected[static_cast<std::size_t>(matrix.columns[at])] += matrix.values[at] * doublesOf(field)[row];
            }
        }
        const auto result = map.applyTransposed(field);
        for (std::size_t node = 0; node < expected.size(); ++node)
        {
            EXPECT_NEAR(doublesOf(result.atSource)[node], expected[node], 1e-12 * (1 + std::abs(expected[node])));
        }
    }
}

TEST(MapTransposed, RefusesFieldsThatDoNotFit)
{
    const veltrane::Mesh mesh = block({1, 1, 1}, {0, 0, 0}, {1, 1, 1});
    const Map map(mesh, mesh);
    const auto apply = [&](Location location, std::size_t count)
    { map.applyTransposed(Field("load", location, 1, std::vector<double>(count, 1.0))); };
    EXPECT_NO_THROW(apply(Location::nodes, 8));
    EXPECT_THROW(apply(Location::nodes, 7), veltrane::InvalidData);
    EXPECT_THROW(apply(Location::gaussPoints, 8), veltrane::InvalidData);
}
} // namespace
