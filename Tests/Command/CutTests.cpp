// The pieces that pictures are made of: cuts, their choice, pixels and colours.
#include "TemporaryDirectory.h"
#include "TestGrids.h"

#include "ColourScale.h"
#include "CutChoice.h"
#include "MeshFile.h"
#include "Raster.h"

#include <vtkCellType.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>

namespace
{

using testing::ElementsAre;
using veltrane::ColourScale;
using veltrane::Cut;
using veltrane::CutMesh;
using veltrane::CutPlane;
using veltrane::Mesh;
using veltrane::PlaneEdge;
using veltrane::Raster;

/// A mesh as the command reads it, with the values of a function at its nodes.
struct SampledMesh
{
    SampledMesh(vtkUnstructuredGrid& grid, const PointFunction& function)
    {
        const TemporaryDirectory directory;
        writeGrid(grid, directory / "mesh.vtu");
        file = std::make_unique<veltrane::MeshFile>(directory / "mesh.vtu", veltrane::MeshRole::target);
        for (vtkIdType i = 0; i < grid.GetNumberOfPoints(); ++i)
        {
            values.push_back(function(pointOf(grid, i)));
        }
    }

    const Mesh& mesh() const { return file->mesh(); }
    CutMesh cutMesh() const { return {mesh(), values}; }

    std::unique_ptr<veltrane::MeshFile> file;
    std::vector<double> values;
};

double areaOf(const Cut& cut)
{
    double area = 0;
    for (const auto& [a, b, c] : cut.triangles)
    {
        const auto& p = cut.points;
        area += std::abs((p[b][0] - p[a][0]) * (p[c][1] - p[a][1]) - (p[c][0] - p[a][0]) * (p[b][1] - p[a][1])) / 2;
    }
    return area;
}

double lengthOf(const Cut& cut, const std::vector<PlaneEdge>& edges)
{
    double length = 0;
    for (const auto& [a, b] : edges)
    {
        length += std::hypot(cut.points[a][0] - cut.points[b][0], cut.points[a][1] - cut.points[b][1]);
    }
    return length;
}

/// Through the unit cube in two by two by two cubes: a square of area 1 with a cross in it.
TEST(Cut, HasAreaOutlineAndEdgesOfTheElementsItGoesThrough)
{
    const SampledMesh cubes(*makeGrid(VTK_HEXAHEDRON, 2), linear);
    const Cut cut = cubes.cutMesh().cut({2, 0.3});
    EXPECT_NEAR(areaOf(cut), 1, 1e-6);
    EXPECT_NEAR(lengthOf(cut, cut.outline), 4, 1e-6);
    EXPECT_NEAR(lengthOf(cut, cut.elementEdges), 6, 1e-6);
    EXPECT_EQ(cut.elementEdges.size(), 12U);
    ASSERT_EQ(cut.values.size(), cut.points.size());
    for (std::size_t i = 0; i < cut.points.size(); ++i)
    {
        EXPECT_NEAR(cut.values[i], linear({cut.points[i][0], cut.points[i][1], 0.3}), 1e-5);
    }
}

TEST(Cut, ShowsTheAxesAcrossItToTheRightAndUpwards)
{
    GridBuilder builder;
    builder.addCell(VTK_HEXAHEDRON,
                    {{0, 0, 0}, {1, 0, 0}, {1, 2, 0}, {0, 2, 0}, {0, 0, 3}, {1, 0, 3}, {1, 2, 3}, {0, 2, 3}});
    const SampledMesh block(*builder.grid(), linear);
    const auto sizeAcross = [&](std::size_t axis)
    {
        const Cut cut = block.cutMesh().cut({axis, 0.5});
        const veltrane::PlaneBox box = veltrane::boxAround(cut.points, cut.points);
        return std::array{std::lround(box.width()), std::lround(box.height())};
    };
    EXPECT_THAT(sizeAcross(0), ElementsAre(2, 3)); // y and z
    EXPECT_THAT(sizeAcross(1), ElementsAre(1, 3));
    EXPECT_THAT(sizeAcross(2), ElementsAre(1, 2));
}

class CutOfKind : public testing::TestWithParam<int>
{
};

TEST_P(CutOfKind, FillsTheCube)
{
    const SampledMesh grid(*makeGrid(GetParam(), 2), linear);
    const Cut cut = grid.cutMesh().cut({0, 0.3});
    EXPECT_NEAR(areaOf(cut), 1, 1e-6);
    EXPECT_NEAR(lengthOf(cut, cut.outline), 4, 1e-6);
}

INSTANTIATE_TEST_SUITE_P(AllKinds, CutOfKind,
                         testing::Values(VTK_TETRA, VTK_HEXAHEDRON, VTK_WEDGE, VTK_PYRAMID, VTK_QUADRATIC_TETRA));

TEST(Cut, OfSurfacesIsALine)
{
    const SampledMesh plate(*makeGrid(VTK_QUAD, 1), linear);
    const Cut cut = plate.cutMesh().cut({1, 0.25});
    EXPECT_TRUE(cut.triangles.empty());
    EXPECT_NEAR(lengthOf(cut, cut.lines), 1, 1e-6);
}

/// A right angle at the lower left corner of four by four pixels: six of their centres are within, and four on its
/// edge.
TEST(Raster, HasTheValuesAtThePixelsCentres)
{
    Cut cut;
    cut.points = {{0, 0}, {4, 0}, {0, 4}};
    cut.values = {0, 4, 8}; // x + 2 y
    cut.triangles = {{0, 1, 2}};
    const Raster raster = veltrane::rasterize(cut, {{0, 0}, {4, 4}}, 4, 4);
    EXPECT_EQ(std::ranges::count(raster.isCovered, true), 10);
    EXPECT_NEAR(raster.values[raster.index(0, 3)], 0.5 + 2 * 0.5, 1e-12);
    EXPECT_NEAR(raster.values[raster.index(2, 3)], 2.5 + 2 * 0.5, 1e-12);
    EXPECT_NEAR(raster.values[raster.index(1, 1)], 1.5 + 2 * 2.5, 1e-12);
    EXPECT_TRUE(std::isnan(raster.values[raster.index(3, 0)]));
}

TEST(ColourScale, RunsFromDarkBlueToYellow)
{
    const ColourScale scale(10, 20);
    EXPECT_GT(scale.of(10)[2], scale.of(10)[1]);
    EXPECT_GT(scale.of(20)[0], 0.9);
    EXPECT_LT(scale.of(20)[2], 0.2);
    EXPECT_EQ(scale.of(5), scale.of(10));
    EXPECT_EQ(scale.of(1e9), scale.of(20));
}

/// Of 1000 values the 5 smallest and the 5 largest ones are few.
TEST(ColourScale, LeavesOutFewValuesThatAreFarFromTheOthers)
{
    std::vector<double> values(1000);
    std::ranges::generate(values, [i = 0.0]() mutable { return i++; });
    values.front() = -9000;
    const auto scale = veltrane::scaleOf(values);
    ASSERT_TRUE(scale);
    EXPECT_EQ(scale->min(), 5);
    EXPECT_EQ(scale->max(), 999);
    EXPECT_EQ(scale->seenMin(), -9000);
    EXPECT_EQ(scale->seenMax(), 999);
}

TEST(ColourScale, IsThereIfThereIsAValue)
{
    constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(veltrane::scaleOf({}));
    EXPECT_FALSE(veltrane::scaleOf({notANumber, notANumber}));
    const auto scale = veltrane::scaleOf({notANumber, 3, 7});
    ASSERT_TRUE(scale);
    EXPECT_EQ(scale->min(), 3);
    EXPECT_EQ(scale->max(), 7);
    EXPECT_EQ(veltrane::united(scale, std::nullopt)->max(), 7);
    EXPECT_EQ(veltrane::united(std::nullopt, scale)->max(), 7);
    EXPECT_FALSE(veltrane::united(std::nullopt, std::nullopt));
    const auto both = veltrane::united(scale, veltrane::scaleOf({5, 9}));
    EXPECT_EQ(both->min(), 3);
    EXPECT_EQ(both->max(), 9);
}

TEST(ColourScale, HasRoundTicksInFewDigits)
{
    const auto texts = [](double min, double max) { return veltrane::tickTexts(ColourScale(min, max).ticks(5)); };
    EXPECT_THAT(texts(0.045, 94.2), ElementsAre("20", "40", "60", "80"));
    EXPECT_THAT(texts(-0.0016, 0.0508), ElementsAre("0", "0.02", "0.04"));
    EXPECT_THAT(texts(1000, 1002), ElementsAre("1000", "1000.5", "1001", "1001.5", "1002"));
    EXPECT_THAT(texts(0, 2e9), ElementsAre("0", "5e+08", "1e+09", "1.5e+09", "2e+09"));
    EXPECT_THAT(texts(7, 7), ElementsAre("7"));
}

TEST(MostTellingCut, ShowsHowTheFieldVaries)
{
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        const SampledMesh cubes(*makeGrid(VTK_HEXAHEDRON, 4), [=](const Point& p) { return p[axis] * p[axis]; });
        const CutMesh cutMesh = cubes.cutMesh();
        const CutPlane plane = veltrane::mostTellingCut(cutMesh, cutMesh, cubes.mesh(), cubes.values).plane;
        EXPECT_NE(plane.axis, axis);
    }
}

/// The target leaves the source at one side in z; a cut across another axis shows it, and those across z do not.
TEST(MostTellingCut, ShowsWhereTheTargetIsOutside)
{
    const SampledMesh source(*makeGrid(VTK_HEXAHEDRON, 4), linear);
    GridBuilder builder;
    builder.addGrid(VTK_HEXAHEDRON, 2, 0.25, 0.75);
    builder.addCube(VTK_HEXAHEDRON, {0.25, 0.25, 1}, 0.25);
    const SampledMesh target(*builder.grid(), [](const Point& p) { return p[0] + p[1]; });
    const CutPlane plane =
        veltrane::mostTellingCut(source.cutMesh(), target.cutMesh(), target.mesh(), target.values).plane;
    EXPECT_NE(plane.axis, 2U);
    EXPECT_GT(plane.position, 0.25);
    EXPECT_LT(plane.position, 0.5);
}

class PointCut : public testing::Test
{
protected:
    CutPlane planeThrough(const std::vector<float>& coordinates) const
    {
        const std::vector<int> materials(coordinates.size() / 3, 0);
        const veltrane::PointCloud points(coordinates, materials, {{}});
        const std::vector<double> values(materials.size(), 1);
        return veltrane::mostTellingCut(cubes.cutMesh(), cubes.mesh(), cubes.values, points, values).plane;
    }

    const SampledMesh cubes{*makeGrid(VTK_HEXAHEDRON, 4), [](const Point& p) { return p[0] + p[1] + p[2]; }};
};

TEST_F(PointCut, GoesThroughPointsInOnePlane)
{
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        std::vector<float> coordinates;
        for (int i = 0; i < 36; ++i)
        {
            std::array<float, 3> place{};
            place[axis] = 0.375F;
            place[(axis + 1) % 3] = 0.125F * static_cast<float>(1 + i % 6);
            place[(axis + 2) % 3] = 0.125F * static_cast<float>(1 + i / 6);
            coordinates.insert(coordinates.end(), place.begin(), place.end());
        }
        const CutPlane plane = planeThrough(coordinates);
        EXPECT_EQ(plane.axis, axis);
        EXPECT_NEAR(plane.position, 0.375, 1e-3);
    }
}

TEST_F(PointCut, GoesAlongARowOfPoints)
{
    EXPECT_NE(planeThrough({0.3F, 0.1F, 0.6F, 0.3F, 0.5F, 0.6F, 0.3F, 0.9F, 0.6F}).axis, 1U);
    EXPECT_NE(planeThrough({0.3F, 0.6F, 0.1F, 0.3F, 0.6F, 0.5F, 0.3F, 0.6F, 0.9F}).axis, 2U);
}

TEST_F(PointCut, GoesThroughTheSourceEvenIfThePointIsBesideIt)
{
    const CutPlane plane = planeThrough({1.04F, -0.03F, 1.02F});
    EXPECT_GT(plane.position, 0);
    EXPECT_LT(plane.position, 1);
}

/// Two cubes at opposite corners of a larger one, with nothing between them.
TEST(MostTellingCut, GoesThroughSomethingEvenIfTheMiddleIsEmpty)
{
    GridBuilder builder;
    builder.addCube(VTK_HEXAHEDRON, {0, 0, 0}, 0.125);
    builder.addCube(VTK_HEXAHEDRON, {0.875, 0.875, 0.875}, 0.125);
    const SampledMesh cubes(*builder.grid(),
                            [](const Point& p) {
                                return p == Point{0.125, 0.125, 0.125} ? 1.0 : 0.0;
                            });
    const CutMesh cutMesh = cubes.cutMesh();
    EXPECT_FALSE(veltrane::mostTellingCut(cutMesh, cutMesh, cubes.mesh(), cubes.values).target.triangles.empty());
    const veltrane::PointCloud points({0.5, 0.5, 0.5}, {0}, {{}});
    const std::vector<double> noValue{std::numeric_limits<double>::quiet_NaN()};
    EXPECT_FALSE(veltrane::mostTellingCut(cutMesh, cubes.mesh(), cubes.values, points, noValue).cut.triangles.empty());
}

} // namespace
