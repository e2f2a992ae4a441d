// Meshes of the kinds that only the engine and the C++ interface know: hexahedra of 20 and 27 nodes, wedges of 15 and
// 18, pyramids of 13.
#include "Errors.h"
#include "GaussPoints.h"
#include "HostMeshes.h"
#include "Map.h"
#include "Match.h"
#include "Meshes.h"
#include "Transfer.h"
#include "Validation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace
{
using namespace host_meshes;
using meshes::Position;
using veltrane::ElementKind;
using veltrane::Field;
using veltrane::Finding;
using veltrane::GaussPointRule;
using veltrane::Location;
using veltrane::Map;
using veltrane::MapOptions;
using veltrane::OutsideMode;

using Placing = std::function<Position(const Position&)>;

/// Takes the places of nodes from a function, in double precision.
class PlacedMesh : public meshes::MeshSink
{
public:
    explicit PlacedMesh(const Placing& place) : itsPlace(place) {}

    void addNode(const Position& position) override
    {
        const Position place = itsPlace(position);
        data.exactCoordinates.insert(data.exactCoordinates.end(), place.begin(), place.end());
    }
    void addElement(int type, std::span<const int> nodes, int) override
    {
        data.kinds.push_back(static_cast<ElementKind>(type));
        data.connectivity.insert(data.connectivity.end(), nodes.begin(), nodes.end());
        data.offsets.push_back(data.connectivity.size());
        data.materialPerElement.push_back(0);
    }

    veltrane::MeshData data{.offsets = {0}, .materials = {{"all", 1}}};

private:
    const Placing& itsPlace;
};

/// The unit cube in n x n x n cells with elements of a kind, each node of which is then moved to its place.
veltrane::Mesh cubeOf(int kind, int n, const Placing& place)
{
    meshes::CellGrid grid;
    grid.cells = {n, n, n};
    grid.corner = [n](int i, int j, int k) {
        return Position{static_cast<double>(i) / n, static_cast<double>(j) / n, static_cast<double>(k) / n};
    };
    grid.filling = [kind](int, int, int) { return meshes::fillingWith(kind); };
    PlacedMesh mesh(place);
    cut(grid, mesh);
    return veltrane::Mesh(std::move(mesh.data));
}

/// An affine image of the cube.
Position skewed(const Position& p)
{
    return {2.0 * p[0] + 0.3 * p[1] - 0.1, 1.5 * p[1] - 0.2 * p[2], 0.2 * p[0] + 1.1 * p[2] + 0.05};
}

/// A curved image of it.
Position bent(const Position& p)
{
    constexpr double amount = 0.03;
    return {p[0] + amount * std::sin(5.0 * p[1] + p[2]), p[1] + amount * std::sin(4.0 * p[2] - p[0]),
            p[2] + amount * std::sin(3.0 * p[0] + 2.0 * p[1])};
}

double quadratic(const Position& p)
{
    const auto& [x, y, z] = p;
    return 1.0 + 2.0 * x - y + 3.0 * z + x * x - 2.0 * x * y + 3.0 * y * y + z * x - 0.5 * z * y + 0.7 * z * z;
}

double exactLinear(const Position& p)
{
    return 1.0 + 2.0 * p[0] - 3.0 * p[1] + 0.5 * p[2];
}

std::vector<Position> exactNodes(const veltrane::Mesh& mesh)
{
    std::vector<Position> positions;
    for (const Point& node : nodePositions(mesh))
    {
        positions.push_back({double{node[0]}, double{node[1]}, double{node[2]}});
    }
    for (std::size_t i = 0; i < mesh.exactCoordinates().size(); ++i)
    {
        positions[i / 3][i % 3] = mesh.exactCoordinates()[i];
    }
    return positions;
}

std::vector<Position> exactGaussPoints(const veltrane::Mesh& mesh, GaussPointRule rule)
{
    const std::vector<Position> nodes = exactNodes(mesh);
    std::vector<Position> positions;
    for (int element = 0; element < mesh.elementCount(); ++element)
    {
        const auto ofElement = mesh.nodesOf(element);
        for (const auto& shape : veltrane::gaussRuleOf(mesh.kindOf(element).kind, rule).shapeValues)
        {
            Position sum{};
            for (std::size_t i = 0; i < ofElement.size(); ++i)
            {
                for (std::size_t axis = 0; axis < 3; ++axis)
                {
                    sum[axis] += shape[i] * nodes[static_cast<std::size_t>(ofElement[i])][axis];
                }
            }
            positions.push_back(sum);
        }
    }
    return positions;
}

Field fieldAt(const std::vector<Position>& positions, Location location, double (*function)(const Position&))
{
    std::vector<double> values(positions.size());
    std::ranges::transform(positions, values.begin(), function);
    return {"field", location, 1, std::move(values)};
}

/// Places within the cube, not too near to its surface, under the same image.
std::vector<Position> placesWithin(int count, const Placing& place)
{
    const std::vector<float> numbers = scattered(count, {0.03F, 0.03F, 0.03F}, {0.97F, 0.97F, 0.97F});
    std::vector<Position> positions;
    for (std::size_t i = 0; i + 2 < numbers.size(); i += 3)
    {
        positions.push_back(place({double{numbers[i]}, double{numbers[i + 1]}, double{numbers[i + 2]}}));
    }
    return positions;
}

veltrane::PointCloud exactCloud(const std::vector<Position>& positions)
{
    std::vector<double> coordinates;
    for (const Position& position : positions)
    {
        coordinates.insert(coordinates.end(), position.begin(), position.end());
    }
    return {{}, std::move(coordinates), std::vector<int>(positions.size(), 0), {{"all", 1}}};
}

double largestError(const Field& values, const std::vector<Position>& positions, double (*function)(const Position&))
{
    double largest = 0.0;
    for (std::size_t i = 0; i < positions.size(); ++i)
    {
        largest = std::max(largest, std::abs(doublesOf(values)[i] - function(positions[i])));
    }
    return largest;
}

void expectAllInside(const Map& map)
{
    const auto places = map.places();
    EXPECT_EQ(std::ranges::count(places.findings, Finding::inside), std::ssize(places.findings));
}

class CurvedKind : public testing::TestWithParam<int>
{
};

std::string nameOf(const testing::TestParamInfo<int>& info)
{
    std::string name(veltrane::findElementKind(static_cast<ElementKind>(info.param))->name);
    std::ranges::replace(name, ' ', '_');
    return name;
}

TEST_P(CurvedKind, CarriesQuadraticFieldsOnAffineImagesOfItsReferenceElement)
{
    const veltrane::Mesh source = cubeOf(GetParam(), 3, skewed);
    const auto positions = placesWithin(1000, skewed);
    const Field field = fieldAt(exactNodes(source), Location::nodes, quadratic);
    for (const bool isDouble : {true, false})
    {
        MapOptions options;
        options.rules.inDoublePrecision = isDouble;
        const Map map(source, exactCloud(positions), options);
        expectAllInside(map);
        const auto values = map.apply(std::span(&field, 1));
        EXPECT_LT(largestError(values[0], positions, quadratic), isDouble ? 3e-14 : 0.02);
    }
}

TEST_P(CurvedKind, CarriesLinearFieldsExactlyWhereItIsCurved)
{
    const veltrane::Mesh source = cubeOf(GetParam(), 4, bent);
    const auto positions = placesWithin(2000, bent);
    const Field field = fieldAt(exactNodes(source), Location::nodes, exactLinear);
    const Map map(source, exactCloud(positions));
    expectAllInside(map);
    EXPECT_LT(largestError(map.apply(std::span(&field, 1))[0], positions, exactLinear), 1e-13);
}

TEST_P(CurvedKind, GivesTheSameBitsOnAnyNumberOfThreads)
{
    const veltrane::Mesh source = cubeOf(GetParam(), 4, bent);
    const veltrane::Mesh target = cubeOf(GetParam(), 5,
                                         [](const Position& p) {
                                             return bent({p[0] + 0.1, p[1], p[2]});
                                         });
    for (const bool isDouble : {true, false})
    {
        MapOptions options{.mode = OutsideMode::propagate, .toGaussPoints = true, .fromGaussPoints = true};
        options.rules.inDoublePrecision = isDouble;
        const std::vector<std::byte> alone = Map(source, target, options).bytes();
        for (const int threads : {2, 3, 8})
        {
            options.threads = threads;
            EXPECT_EQ(Map(source, target, options).bytes(), alone) << threads;
        }
    }
}

TEST_P(CurvedKind, TakesAndGivesValuesAtGaussPointsByEitherRule)
{
    const veltrane::Mesh source = cubeOf(GetParam(), 3, skewed);
    veltrane::Mesh target = cubeOf(GetParam(), 2,
                                   [](const Position& p) {
                                       return skewed({0.1 + 0.8 * p[0], 0.15 + 0.7 * p[1], 0.1 + 0.8 * p[2]});
                                   });
    for (const GaussPointRule rule : {GaussPointRule::full, GaussPointRule::reduced})
    {
        target.setGaussPointRule(rule);
        const Field field = fieldAt(exactGaussPoints(source, rule), Location::gaussPoints, exactLinear);
        ASSERT_EQ(field.locationCount(), source.gaussPointCount(rule));
        const Map map(source, target, {.toNodes = true, .toGaussPoints = true, .fromGaussPoints = true});
        const std::array fields{field, field};
        const auto values = map.apply(fields, {.targetLocations = {Location::nodes, Location::gaussPoints}});
        const auto gaussPoints = exactGaussPoints(target, rule);
        ASSERT_EQ(values[1].locationCount(), gaussPoints.size());
        EXPECT_LT(largestError(values[0], exactNodes(target), exactLinear), 1e-13);
        EXPECT_LT(largestError(values[1], gaussPoints, exactLinear), 1e-13);
        const auto transferred =
            veltrane::transfer(source, std::span(&field, 1), target, {.targetLocations = {Location::gaussPoints}});
        EXPECT_EQ(transferred.fields[0].values(), values[1].values());
        // The matrix of the map does the same.
        const auto matrix =
            map.matrix({.target = Location::gaussPoints, .source = Location::gaussPoints, .sourceRule = rule});
        ASSERT_EQ(matrix.columnCount, static_cast<std::int64_t>(field.locationCount()));
        for (std::size_t row = 0; row < gaussPoints.size(); ++row)
        {
            double sum = 0.0;
            for (auto i = matrix.rowStarts[row]; i < matrix.rowStarts[row + 1]; ++i)
            {
                const auto entry = static_cast<std::size_t>(i);
                sum += matrix.values[entry] * doublesOf(field)[static_cast<std::size_t>(matrix.columns[entry])];
            }
            EXPECT_NEAR(sum, exactLinear(gaussPoints[row]), 1e-12);
        }
    }
}

TEST_P(CurvedKind, IsValidatedByTheRuleOfItsFields)
{
    const veltrane::Mesh source = cubeOf(GetParam(), 2, skewed);
    const veltrane::Mesh target = cubeOf(meshes::element::hexahedron, 3, skewed);
    const Map map(source, target, {.fromGaussPoints = true});
    for (const GaussPointRule rule : {GaussPointRule::full, GaussPointRule::reduced})
    {
        const Field field = fieldAt(exactGaussPoints(source, rule), Location::gaussPoints, exactLinear);
        const veltrane::Validation validation =
            map.validate(source, target, std::span(&field, 1), {.apply = {.targetLocations = {Location::nodes}}});
        EXPECT_EQ(validation.fields[0].returned.locationCount(), field.locationCount());
        EXPECT_LT(validation.fields[0].comparison.relativeDifference, 1e-12);
        EXPECT_NEAR(validation.fields[0].atSource.all.volume, validation.fields[0].atTarget.all.volume, 1e-6);
    }
}

TEST_P(CurvedKind, TakesPointsNearByToAPlaceInTheElement)
{
    const veltrane::Mesh source = cubeOf(GetParam(), 2, bent);
    // Nodes up to a tenth beyond the cube.
    const veltrane::Mesh target = cubeOf(meshes::element::tetrahedron, 7,
                                         [](const Position& p) {
                                             return Position{1.2 * p[0] - 0.1, 1.2 * p[1] - 0.1, 1.2 * p[2] - 0.1};
                                         });
    const Field field = fieldAt(exactNodes(source), Location::nodes, exactLinear);
    const Map map(source, target, {.mode = OutsideMode::defaultValue});
    const auto places = map.places();
    const auto values = map.apply(std::span(&field, 1));
    const auto nodes = exactNodes(target);
    int nearCount = 0;
    for (std::size_t i = 0; i < nodes.size(); ++i)
    {
        if (places.findings[i] != Finding::near)
        {
            continue;
        }
        ++nearCount;
        // The steepest change of the field is that of its gradient, over the distance.
        const double steepest = std::sqrt(2.0 * 2.0 + 3.0 * 3.0 + 0.5 * 0.5);
        EXPECT_LE(std::abs(doublesOf(values[0])[i] - exactLinear(nodes[i])), steepest * places.distances[i] + 1e-6);
        EXPECT_GT(places.distances[i], 1e-4) << "the place is not in the element";
        EXPECT_LT(places.distances[i], 0.6);
    }
    EXPECT_GT(nearCount, 100);
    const auto matrix = map.matrix();
    for (std::size_t row = 0; row < nodes.size(); ++row)
    {
        const auto first = matrix.values.begin() + matrix.rowStarts[row];
        const auto end = matrix.values.begin() + matrix.rowStarts[row + 1];
        EXPECT_NEAR(std::accumulate(first, end, 0.0), first == end ? 0.0 : 1.0, 1e-12);
    }
}

TEST_P(CurvedKind, ComesBackFromAFileWithItsRules)
{
    const veltrane::Mesh source = cubeOf(GetParam(), 2, bent);
    const Map map(source, source, {.fromGaussPoints = true});
    const Map restored = Map::fromBytes(map.bytes());
    for (const GaussPointRule rule : {GaussPointRule::full, GaussPointRule::reduced})
    {
        const Field field = fieldAt(exactGaussPoints(source, rule), Location::gaussPoints, quadratic);
        const veltrane::ApplyOptions toNodes{.targetLocations = {Location::nodes}};
        EXPECT_EQ(restored.sourceGaussPointCount(rule), source.gaussPointCount(rule));
        EXPECT_EQ(restored.apply(std::span(&field, 1), toNodes)[0].values(),
                  map.apply(std::span(&field, 1), toNodes)[0].values());
    }
    EXPECT_TRUE(restored.isFrom(source));
}

TEST_P(CurvedKind, IsMatchedWithItself)
{
    const veltrane::Mesh mesh = cubeOf(GetParam(), 2, bent);
    const auto nodes = veltrane::matchNodes(mesh, mesh);
    std::vector<int> own(static_cast<std::size_t>(mesh.nodeCount()));
    std::iota(own.begin(), own.end(), 0);
    EXPECT_EQ(nodes.sourceNodes, own);
    const auto gaussPoints = veltrane::matchGaussPoints(mesh, mesh);
    ASSERT_EQ(gaussPoints.sourceElements.size(), mesh.gaussPointCount());
    const auto perElement = static_cast<std::size_t>(mesh.gaussPointCountOf(0));
    for (std::size_t i = 0; i < gaussPoints.sourceElements.size(); ++i)
    {
        EXPECT_EQ(gaussPoints.sourceElements[i], static_cast<int>(i / perElement));
        EXPECT_EQ(gaussPoints.sourceGaussPoints[i], static_cast<int>(i % perElement));
    }
}

/// Two edges drawn together in a point, as where a hexahedron stands for a wedge.
TEST_P(CurvedKind, IsLeftOutOrUsedWithRepeatedNodesButEndsNothing)
{
    const veltrane::Mesh whole = cubeOf(GetParam(), 2, skewed);
    veltrane::MeshData data{.exactCoordinates = whole.exactCoordinates(),
                            .kinds = whole.kinds(),
                            .offsets = {0},
                            .connectivity = whole.connectivity(),
                            .materialPerElement = whole.materialPerElement(),
                            .materials = whole.materials()};
    for (int element = 0; element < whole.elementCount(); ++element)
    {
        data.offsets.push_back(data.offsets.back() + whole.nodesOf(element).size());
    }
    const int count = whole.elementCount();
    const auto nodesOf = [&](int element) {
        return data.connectivity.begin() + static_cast<std::ptrdiff_t>(data.offsets[static_cast<std::size_t>(element)]);
    };
    nodesOf(0)[1] = nodesOf(0)[0];
    nodesOf(0)[4] = nodesOf(0)[0];
    std::fill_n(nodesOf(count - 1), whole.nodesOf(count - 1).size(), nodesOf(count - 1)[0]);
    const veltrane::Mesh source(std::move(data));
    const Field field = fieldAt(exactNodes(source), Location::nodes, exactLinear);
    const auto positions = placesWithin(500, skewed);
    const Map map(source, exactCloud(positions), {.mode = OutsideMode::defaultValue});
    const auto places = map.places();
    const auto values = map.apply(std::span(&field, 1));
    int insideCount = 0;
    for (std::size_t i = 0; i < positions.size(); ++i)
    {
        if (places.findings[i] == Finding::inside)
        {
            ++insideCount;
            EXPECT_NEAR(doublesOf(values[0])[i], exactLinear(positions[i]), 1e-3);
        }
    }
    EXPECT_GT(insideCount, 250);
}

INSTANTIATE_TEST_SUITE_P(All, CurvedKind, testing::ValuesIn(meshes::element::curvedVolumes), nameOf);

TEST(TriquadraticHexahedron, CarriesQuadraticFieldsOnEveryStraightSidedHexahedron)
{
    // Corners are moved, and the nodes between them stay in the middle.
    meshes::CellGrid grid;
    grid.cells = {3, 3, 3};
    grid.corner = [](int i, int j, int k)
    {
        const auto wave = [](int a, int b, int c) { return 0.15 * std::sin(7.0 * a + 3.0 * b + 5.0 * c); };
        return Position{i + wave(i, j, k), j + wave(j, k, i), k + wave(k, i, j)};
    };
    grid.filling = [](int, int, int) { return meshes::Filling::triquadraticHexahedron; };
    const Placing same = [](const Position& p) { return p; };
    PlacedMesh mesh(same);
    cut(grid, mesh);
    const veltrane::Mesh source(std::move(mesh.data));
    const auto positions = placesWithin(2000,
                                        [](const Position& p) {
                                            return Position{0.3 + 2.4 * p[0], 0.3 + 2.4 * p[1], 0.3 + 2.4 * p[2]};
                                        });
    const Field field = fieldAt(exactNodes(source), Location::nodes, quadratic);
    const Map map(source, exactCloud(positions));
    expectAllInside(map);
    EXPECT_LT(largestError(map.apply(std::span(&field, 1))[0], positions, quadratic), 1e-12);
}

TEST(QuadraticHexahedra, HaveEightGaussPointsByTheReducedRule)
{
    veltrane::Mesh mesh = cubeOf(meshes::element::quadraticHexahedron, 2, skewed);
    EXPECT_EQ(mesh.gaussPointCount(), 8U * 27U);
    mesh.setGaussPointRule(GaussPointRule::reduced);
    EXPECT_EQ(mesh.gaussPointCount(), 8U * 8U);
    EXPECT_EQ(veltrane::Mesh(mesh).gaussPointCount(), 8U * 8U) << "a copy";
    const Map map(mesh, mesh, {.fromGaussPoints = true});
    EXPECT_EQ(map.sourceGaussPointCount(), 8U * 27U);
    EXPECT_EQ(map.sourceGaussPointCount(GaussPointRule::reduced), 8U * 8U);
    const Field wrong("field", Location::gaussPoints, 1, std::vector<double>(100));
    try
    {
        map.apply(std::span(&wrong, 1), {.targetLocations = {Location::nodes}});
        ADD_FAILURE() << "took a field of another size";
    }
    catch (const veltrane::InvalidData& error)
    {
        EXPECT_STREQ(error.what(), "field 'field' has values at 100 Gauss points, but the source has 216 or 64");
    }
}
} // namespace
