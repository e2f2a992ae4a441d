// Every fast path of the search gives what its plain definition gives, bit for bit.
#include "GridBuild.h"
#include "ProcessEnd.h"
#include "Search/BoxTest.h"
#include "Search/BucketRange.h"
#include "Search/PointLocator.h"
#include "TestModels.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace
{
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

using Generator = std::mt19937_64;

float uniform(Generator& generator, float low, float high)
{
    return low + (high - low) * static_cast<float>(generator() >> 40) * 0x1p-24F;
}

Vector3 uniformPoint(Generator& generator, float low, float high)
{
    return {uniform(generator, low, high), uniform(generator, low, high), uniform(generator, low, high)};
}

/// A mesh of `n`^3 cells whose inner nodes are moved, each cell cut into elements of another kind, with materials of
/// three state codes.
TestMesh mixedMesh(int n, float distortion, Generator& generator)
{
    constexpr std::array fillings = {meshes::Filling::hexahedron, meshes::Filling::wedges, meshes::Filling::pyramids,
                                     meshes::Filling::tetrahedra};
    meshes::CellGrid grid;
    grid.cells = {n, n, n};
    grid.corner = [&](int i, int j, int k)
    {
        const Vector3 move = uniformPoint(generator, -distortion, distortion);
        return meshes::Position{static_cast<double>(static_cast<float>(i) + move[0]),
                                static_cast<double>(static_cast<float>(j) + move[1]),
                                static_cast<double>(static_cast<float>(k) + move[2])};
    };
    grid.filling = [&](int, int, int) { return fillings[generator() % fillings.size()]; };
    grid.matl = [&](int, int, int) { return static_cast<int>(generator() % 3); };
    TestMesh mesh(meshes::cut(grid));
    mesh.matlStates = {1, 2, 1};
    return mesh;
}

bool haveSameBits(const Vector3& a, const Vector3& b)
{
    using Bits = std::array<std::uint32_t, 3>;
    return std::bit_cast<Bits>(a) == std::bit_cast<Bits>(b);
}

/// A mesh with a grid over it, ready for a locator.
struct LocatedMesh
{
    TestMesh mesh;
    TestMesh corners;
    ModelClass model;
    ModelClass cornersModel;
    BoxTable boxes;
    BoxTable noBoxes;
    BucketSpaceClass space;

    LocatedMesh(TestMesh source, float bucketSize) : mesh(std::move(source))
    {
        mesh.loadInto(model);
        fillBoxTable(boxes, mesh.boxes(0.02F));
        for (const auto& node : mesh.nodes)
        {
            corners.addPoint({node[0], node[1], node[2]});
        }
        corners.loadCloudInto(cornersModel);
        const int selected = 1;
        // A reach of many buckets around every node makes all of them needed.
        char* text = space.build(BucketSpaceClass::elementBuckets, cornersModel, model, boxes, noBoxes, &selected,
                                 bucketSize, 4.0F, 0.0F);
        EXPECT_EQ(takeText(text), "(null)");
    }

    /// Compares locate() with search() on points, in this order; how many were found.
    int compare(const std::vector<TargetPoint>& points, float precisionFactor) const
    {
        const PointLocator locator(model, boxes, space, precisionFactor);
        std::vector<LocatedPoint> located(points.size());
        std::vector<BatchEntry> order(2 * points.size());
        locator.locate(points, located, order);
        int nbFound = 0;
        for (std::size_t i = 0; i < points.size(); ++i)
        {
            const LocatedPoint expected = locator.search(points[i].position, points[i].matlState);
            EXPECT_EQ(located[i].elt, expected.elt) << "point " << i;
            EXPECT_EQ(located[i].nbIterations, expected.nbIterations) << "point " << i;
            EXPECT_TRUE(haveSameBits(located[i].referenceCoords, expected.referenceCoords)) << "point " << i;
            nbFound += expected.elt != -1 ? 1 : 0;
        }
        return nbFound;
    }
};

TargetPoint pointAt(const Vector3& position, int matlState = 1)
{
    return {.index = 0, .position = position, .matlStateClass = 1, .matlState = matlState};
}

/// Points at and around the tolerated margin outside the faces of every tetrahedron.
std::vector<TargetPoint> pointsAtMargins(const TestMesh& mesh, float precisionFactor, Generator& generator)
{
    std::vector<TargetPoint> points;
    for (std::size_t elt = 0; elt < mesh.types.size() && points.size() < 8192; ++elt)
    {
        if (mesh.types[elt] != LinearTetrahedron::typeCode)
        {
            continue;
        }
        for (std::size_t face = 0; face < 4; ++face)
        {
            std::array<double, 4> b{};
            const double outside = precisionFactor * (1.0 + 0.5 * static_cast<double>(generator() % 5));
            double rest = 1.0 + outside;
            for (std::size_t i = 0; i < 3; ++i)
            {
                const double part = i == 2 ? rest : rest * uniform(generator, 0.0F, 0.9F);
                b[(face + 1 + i) % 4] = part;
                rest -= part;
            }
            b[face] = -outside;
            Vector3 position{};
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                double sum = 0.0;
                for (std::size_t i = 0; i < 4; ++i)
                {
                    sum += b[i] * mesh.nodes[static_cast<std::size_t>(mesh.connectivity[elt][i])][axis];
                }
                position[axis] = static_cast<float>(sum);
            }
            points.push_back(pointAt(position, mesh.matlStates[static_cast<std::size_t>(mesh.matlIds[elt])]));
        }
    }
    return points;
}
} // namespace

TEST(FastPath, locatesRandomPointsOfAMixedMeshAsTheSearchDoes)
{
    Generator generator(1);
    const LocatedMesh located(mixedMesh(6, 0.2F, generator), 0.3F);
    ASSERT_GT(located.space.nbBuckets(), 4096) << "random points are to jump between buckets";
    std::vector<TargetPoint> points;
    for (int i = 0; i < 8192; ++i)
    {
        points.push_back(pointAt(uniformPoint(generator, -0.5F, 6.5F), 1 + static_cast<int>(generator() % 3)));
    }
    EXPECT_GT(located.compare(points, 0.001F), 1000);
    EXPECT_GT(located.compare(points, 0.05F), 1000);
}

TEST(FastPath, locatesPointsThatFollowEachOtherAsTheSearchDoes)
{
    Generator generator(2);
    const LocatedMesh located(mixedMesh(5, 0.25F, generator), 1.0F);
    std::vector<TargetPoint> points;
    for (int i = 0; i < 4000; ++i)
    {
        const float along = static_cast<float>(i) / 800.0F;
        points.push_back(pointAt({along, uniform(generator, 2.0F, 2.2F), 2.5F}, 1 + i % 2));
    }
    EXPECT_GT(located.compare(points, 0.001F), 500);
}

TEST(FastPath, locatesPointsAtTheToleratedMarginAsTheSearchDoes)
{
    Generator generator(3);
    for (const float factor : {0.00001F, 0.001F, 0.03F})
    {
        const LocatedMesh located(mixedMesh(6, 0.3F, generator), 0.9F);
        const auto points = pointsAtMargins(located.mesh, factor, generator);
        ASSERT_GT(points.size(), 1000U);
        EXPECT_GT(located.compare(points, factor), 100);
    }
}

TEST(FastPath, locatesInMoreCandidatesThanFitAtATime)
{
    // A hundred equal tetrahedra of a state that the point does not have, and the ones that it has behind them: the
    // first of these must be found.
    TestMesh mesh;
    mesh.matlStates = {1, 2};
    for (int i = 0; i < 100; ++i)
    {
        mesh.addElement(2, std::vector<Vector3>{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, -0.01F}}, 0);
    }
    mesh.addElement(2, std::vector<Vector3>{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, 0);
    mesh.addElement(2, std::vector<Vector3>{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, 0);
    const LocatedMesh located(mesh, 10.0F);
    const PointLocator locator(located.model, located.boxes, located.space, 0.001F);
    const std::vector<TargetPoint> points{pointAt({0.2F, 0.2F, 0.015F}), pointAt({0.2F, 0.2F, 0.5F}),
                                          pointAt({0.2F, 0.2F, 0.5F}, 2)};
    std::vector<LocatedPoint> found(points.size());
    std::vector<BatchEntry> order(2 * points.size());
    locator.locate(points, found, order);
    EXPECT_EQ(found[0].elt, 100);
    EXPECT_EQ(found[1].elt, 100);
    EXPECT_EQ(found[2].elt, -1);
    located.compare(points, 0.001F);
}

TEST(FastPath, notesASingularElementOnlyForPointsThatReachIt)
{
    TestMesh mesh;
    mesh.addElement(2, std::vector<Vector3>{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
    // Four points in a plane that is askew, so that the box is not flat and the inversion is tried.
    mesh.addElement(2, std::vector<Vector3>{{2, 0, 0}, {3, 0, 1}, {2, 1, 0}, {3, 1, 1}});
    const LocatedMesh located(mesh, 10.0F);
    const PointLocator locator(located.model, located.boxes, located.space, 0.001F);
    const std::vector<TargetPoint> points{pointAt({0.2F, 0.2F, 0.2F}), pointAt({2.5F, 0.3F, 0.4F})};
    std::vector<LocatedPoint> found(points.size());
    std::vector<BatchEntry> order(2 * points.size());
    locator.locate(points, found, order);
    EXPECT_EQ(found[0].elt, 0);
    EXPECT_FALSE(found[0].isSingular);
    EXPECT_EQ(found[1].elt, -1);
    EXPECT_TRUE(found[1].isSingular);
}

TEST(BoxTest, isTheComparisonOfAllSixSidesBordersIncluded)
{
    const float box[6] = {1, 2, 3, 4, 5, 6};
    const std::vector<float> xs{notANumber, -infinity, 0.9999999F, 1, 2.5F, 4, 4.0000005F, infinity};
    const std::vector<float> ys{notANumber, 1.9999999F, 2, 5, 5.0000005F};
    const std::vector<float> zs{notANumber, 2.9999998F, 3, 6, 6.0000005F};
    int nbInside = 0;
    for (const float x : xs)
    {
        for (const float y : ys)
        {
            for (const float z : zs)
            {
                const Vector3 point{x, y, z};
                EXPECT_EQ(BoxTest(point)(box), boxContains(box, point)) << x << ' ' << y << ' ' << z;
                nbInside += boxContains(box, point) ? 1 : 0;
            }
        }
    }
    EXPECT_EQ(nbInside, 3 * 2 * 2);
}

TEST(BucketRanges, areTheSameWithVectorInstructions)
{
    Generator generator(5);
    const std::vector<float> special{notANumber, infinity, -infinity, 0.0F, -0.0F, 1e30F, -1e30F, -1.0F, 10.0F};
    int nbEmpty = 0;
    for (int i = 0; i < 100000; ++i)
    {
        const int counts[3] = {1 + static_cast<int>(generator() % 5), 1 + static_cast<int>(generator() % 50), 7};
        const BucketRanges ranges(uniformPoint(generator, -1.0F, 1.0F), uniform(generator, 0.1F, 8.0F), counts);
        float box[6];
        for (float& value : box)
        {
            value = generator() % 16 == 0 ? special[generator() % special.size()] : uniform(generator, -3.0F, 9.0F);
        }
        const BucketRange fast = ranges(box);
        const BucketRange plain = ranges.range(box);
        nbEmpty += plain.isEmpty() ? 1 : 0;
        for (int axis = 0; axis < 3; ++axis)
        {
            ASSERT_EQ(fast.low[axis], plain.low[axis]) << "case " << i;
            ASSERT_EQ(fast.high[axis], plain.high[axis]) << "case " << i;
        }
    }
    EXPECT_GT(nbEmpty, 1000);
    EXPECT_LT(nbEmpty, 99000);
}

TEST(BucketRanges, ofMoreBucketsThanSinglePrecisionCountsStayWithinTheGrid)
{
    const int counts[3] = {2147483647, 1, 1};
    const BucketRanges ranges({0, 0, 0}, 1.0F, counts);
    const float box[6] = {1, 0, 0, 1e20F, 0.5F, 0.5F};
    EXPECT_EQ(ranges(box).low[0], 1);
    EXPECT_EQ(ranges(box).high[0], 2147483646);
}
