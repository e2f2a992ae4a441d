// Maps in double precision: as exact as their meshes.
#include "HostMeshes.h"
#include "Map.h"

#include "Elements/ElementKinds.h"
#include "Search/PackedSearch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace
{
using namespace host_meshes;
using veltrane::Field;
using veltrane::Location;
using veltrane::Map;
using veltrane::MapOptions;
using veltrane::OutsideMode;

using ExactPoint = std::array<double, 3>;

double exactLinear(const ExactPoint& p)
{
    return 1.0 + 2.0 * p[0] - 3.0 * p[1] + 0.5 * p[2];
}

/// A mesh whose nodes are moved a little, none to a place that is a single, and then all far away.
veltrane::Mesh distorted(const veltrane::Mesh& mesh, double distance)
{
    veltrane::MeshData data{.kinds = mesh.kinds(),
                            .offsets = {0},
                            .materialPerElement = mesh.materialPerElement(),
                            .materials = mesh.materials()};
    for (const Point& node : nodePositions(mesh))
    {
        const ExactPoint p{double{node[0]}, double{node[1]}, double{node[2]}};
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            const double wave = 0.03 * std::sin(1.7 * p[0] + 2.3 * p[1] + 3.1 * p[2] + static_cast<double>(axis));
            data.exactCoordinates.push_back(p[axis] + wave + distance);
        }
    }
    for (int element = 0; element < mesh.elementCount(); ++element)
    {
        const auto nodes = mesh.nodesOf(element);
        data.connectivity.insert(data.connectivity.end(), nodes.begin(), nodes.end());
        data.offsets.push_back(data.connectivity.size());
    }
    return veltrane::Mesh(std::move(data));
}

std::vector<ExactPoint> exactPositions(const std::vector<double>& coordinates)
{
    std::vector<ExactPoint> positions(coordinates.size() / 3);
    for (std::size_t i = 0; i < coordinates.size(); ++i)
    {
        positions[i / 3][i % 3] = coordinates[i];
    }
    return positions;
}

Field exactField(const std::vector<ExactPoint>& positions, double distance)
{
    std::vector<double> values;
    for (const ExactPoint& p : positions)
    {
        values.push_back(exactLinear({p[0] - distance, p[1] - distance, p[2] - distance}));
    }
    return {"linear", Location::nodes, 1, std::move(values)};
}

std::vector<double> scatteredExactly(int count, double low, double high, double distance)
{
    std::vector<double> coordinates;
    for (const float coordinate : scattered(count, {0, 0, 0}, {1, 1, 1}))
    {
        coordinates.push_back(low + (high - low) * std::cbrt(double{coordinate}) + distance);
    }
    return coordinates;
}

class ExactMaps : public testing::TestWithParam<double>
{
protected:
    const double distance = GetParam();
    const double tolerance = std::max(1e-13, distance * 1e-15);
};

TEST_P(ExactMaps, CarryLinearFieldsToRounding)
{
    const veltrane::Mesh source = distorted(cubesOfAllKinds(), distance);
    std::vector<double> coordinates = scatteredExactly(3000, 0.1, 0.9, distance);
    for (std::size_t point = 0; point < 3000; ++point)
    {
        coordinates[3 * point] += static_cast<double>(point % 5);
    }
    const auto positions = exactPositions(coordinates);
    const veltrane::PointCloud points({}, coordinates, std::vector<int>(positions.size()), {{"", 1}});
    const Field field = exactField(exactPositions(source.exactCoordinates()), distance);
    const Map map(source, points);
    const auto places = map.places(Location::nodes);
    const auto values = map.apply(std::span(&field, 1));
    for (std::size_t i = 0; i < positions.size(); ++i)
    {
        ASSERT_EQ(places.findings[i], veltrane::Finding::inside) << i;
        const ExactPoint p{positions[i][0] - distance, positions[i][1] - distance, positions[i][2] - distance};
        ASSERT_NEAR(doublesOf(values[0])[i], exactLinear(p), 3 * tolerance)
            << i << " in element " << places.elements[i];
    }
}

TEST_P(ExactMaps, ReachGaussPointsOfTheTargetExactly)
{
    const veltrane::Mesh source = distorted(block({6, 5, 4}, {0, 0, 0}, {6, 5, 4}), distance);
    const veltrane::Mesh target = distorted(block({7, 3, 3}, {0.5F, 0.5F, 0.5F}, {5.5F, 4.5F, 3.5F}), distance);
    const Field field = exactField(exactPositions(source.exactCoordinates()), distance);
    const Map map(source, target, {.toNodes = false, .toGaussPoints = true});
    const auto values = map.apply(std::span(&field, 1), {.targetLocations = {Location::gaussPoints}});
    // Linear fields at Gauss points are weighted sums of those at the nodes of the target, up to the shape functions.
    const Field atTarget = exactField(exactPositions(target.exactCoordinates()), distance);
    const Map onItself(target, target, {.toNodes = false, .toGaussPoints = true});
    const auto expected = onItself.apply(std::span(&atTarget, 1), {.targetLocations = {Location::gaussPoints}});
    for (std::size_t i = 0; i < doublesOf(expected[0]).size(); ++i)
    {
        ASSERT_NEAR(doublesOf(values[0])[i], doublesOf(expected[0])[i], 3 * tolerance) << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Distances, ExactMaps, testing::Values(0.0, 1e3, 1e7));

TEST(MapsInDoublePrecision, AreTheSameBitsForAnyNumberOfThreads)
{
    const veltrane::Mesh source = distorted(cubesOfAllKinds(), 0);
    const veltrane::Mesh target = block({21, 7, 7}, {-0.1F, -0.1F, -0.1F}, {5.1F, 1.1F, 1.1F});
    MapOptions options{
        .mode = OutsideMode::propagate, .toGaussPoints = true, .fromGaussPoints = true, .takesChecksums = true};
    const auto bytes = Map(source, target, options).bytes();
    for (const int threads : {2, 3, 8})
    {
        options.threads = threads;
        EXPECT_EQ(Map(source, target, options).bytes(), bytes) << threads;
    }
}

TEST(MapsInDoublePrecision, HoldTheirTransposedSumsToDoublePrecision)
{
    const veltrane::Mesh source = distorted(block({6, 5, 4}, {0, 0, 0}, {6, 5, 4}), 0);
    const veltrane::PointCloud points({}, scatteredExactly(1000, 0.5, 3.5, 0), std::vector<int>(1000), {{"", 1}});
    const Map map(source, points);
    std::vector<double> loads;
    double sum = 0;
    double magnitudes = 0;
    for (int i = 0; i < 1000; ++i)
    {
        loads.push_back(std::sin(i));
        sum += loads.back();
        magnitudes += std::abs(loads.back());
    }
    const auto distributed = map.applyTransposed(Field("loads", Location::nodes, 1, std::move(loads)));
    double received = 0;
    for (const double load : doublesOf(distributed.atSource))
    {
        received += load;
    }
    EXPECT_NEAR(received, sum, 1e-12 * magnitudes);
}

TEST(MapsInDoublePrecision, SumUpSinglesInDoublePrecisionToo)
{
    const veltrane::Mesh source = distorted(block({3, 3, 3}, {0, 0, 0}, {3, 3, 3}), 0);
    const veltrane::PointCloud points({}, scatteredExactly(100, 0.5, 2.5, 0), std::vector<int>(100), {{"", 1}});
    std::vector<float> singles(static_cast<std::size_t>(source.nodeCount()));
    for (std::size_t i = 0; i < singles.size(); ++i)
    {
        singles[i] = 1.0F / static_cast<float>(i + 3);
    }
    const std::vector<double> doubles(singles.begin(), singles.end());
    const std::array fields{Field("singles", Location::nodes, 1, singles),
                            Field("doubles", Location::nodes, 1, doubles)};
    const auto values = Map(source, points).apply(fields);
    for (std::size_t i = 0; i < 100; ++i)
    {
        ASSERT_EQ(std::get<std::vector<float>>(values[0].values())[i], static_cast<float>(doublesOf(values[1])[i]));
    }
}

/// Problems for a pack of 16, each of a point near the guess of a distorted element.
template <class Kind> struct Problems
{
    std::array<std::array<float, 3>, 16 * Kind::nbNodes> coords;
    std::array<std::array<double, 3>, 16 * Kind::nbNodes> exactCoords;
    std::array<std::array<int, Kind::nbNodes>, 16> nodes;
    PolishProblem problem{};

    explicit Problems(bool isExact)
    {
        for (std::size_t lane = 0; lane < 16; ++lane)
        {
            for (std::size_t n = 0; n < Kind::nbNodes; ++n)
            {
                nodes[lane][n] = static_cast<int>(lane * Kind::nbNodes + n);
                for (std::size_t axis = 0; axis < 3; ++axis)
                {
                    const double wave = 0.1 * std::sin(static_cast<double>(7 * lane + 3 * n + axis));
                    exactCoords[lane * Kind::nbNodes + n][axis] = double{Kind::nodes[n][axis]} + wave;
                    coords[lane * Kind::nbNodes + n][axis] = static_cast<float>(double{Kind::nodes[n][axis]} + wave);
                }
            }
            problem.nodeNumbers[lane] = nodes[lane].data();
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                problem.points[axis][lane] = double{Kind::initialGuess[axis]} + 0.01 * static_cast<double>(lane);
                problem.referenceCoords[axis][lane] = Kind::initialGuess[axis];
            }
        }
        // The last element is flat.
        for (std::size_t n = 0; n < Kind::nbNodes; ++n)
        {
            coords[15 * Kind::nbNodes + n][2] = 0;
            exactCoords[15 * Kind::nbNodes + n][2] = 0;
        }
        problem.nodeCoords = reinterpret_cast<const float(*)[3]>(coords.data());
        problem.exactNodeCoords = isExact ? reinterpret_cast<const double(*)[3]>(exactCoords.data()) : nullptr;
    }
};

TEST(PackedPolish, GivesTheSameBitsForPacksOfAnySize)
{
    VolumeElementKinds::visitAll(
        []<class Kind>(Kind)
        {
            for (const bool isExact : {false, true})
            {
                const Problems<Kind> problems(isExact);
                std::array<PolishSolution, 3> solutions{};
                std::size_t nbSizes = 0;
                for (const std::size_t size : {4U, 8U, 16U})
                {
                    const PackedSearch packs = packedSearch(size);
                    for (std::size_t first = 0; packs.polish != nullptr && first < 16; first += size)
                    {
                        PolishProblem part = problems.problem;
                        for (std::size_t lane = 0; lane < size; ++lane)
                        {
                            part.nodeNumbers[lane] = problems.problem.nodeNumbers[first + lane];
                            for (std::size_t axis = 0; axis < 3; ++axis)
                            {
                                part.points[axis][lane] = problems.problem.points[axis][first + lane];
                                part.referenceCoords[axis][lane] = problems.problem.referenceCoords[axis][first + lane];
                            }
                        }
                        PolishSolution solution{};
                        packs.polish(Kind::typeCode, part, solution);
                        for (std::size_t lane = 0; lane < size; ++lane)
                        {
                            for (std::size_t axis = 0; axis < 3; ++axis)
                            {
                                solutions[nbSizes].referenceCoords[axis][first + lane] =
                                    solution.referenceCoords[axis][lane];
                            }
                            for (std::size_t n = 0; n < Kind::nbNodes; ++n)
                            {
                                solutions[nbSizes].weights[n][first + lane] = solution.weights[n][lane];
                            }
                        }
                    }
                    nbSizes += packs.polish != nullptr ? 1 : 0;
                }
                for (std::size_t i = 1; i < nbSizes; ++i)
                {
                    EXPECT_EQ(std::memcmp(&solutions[0], &solutions[i], sizeof solutions[0]), 0) << Kind::name;
                }
                for (std::size_t axis = 0; axis < 3; ++axis)
                {
                    // Nothing is to be found in a flat element: the coordinates stay.
                    EXPECT_EQ(solutions[0].referenceCoords[axis][15], double{Kind::initialGuess[axis]}) << Kind::name;
                    EXPECT_NE(solutions[0].referenceCoords[axis][3], double{Kind::initialGuess[axis]}) << Kind::name;
                }
            }
        });
}
} // namespace
