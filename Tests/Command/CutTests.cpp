// The pieces that pictures are made of: cuts, their choice, pixels and colours.
#include "TemporaryDirectory.h"
#include "TestGrids.h"

#include "ColourScale.h"
#include "CutChoice.h"
#include "MeshFile.h"
#include "Raster.h"
#include "Regions.h"

#include <vtkCellType.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <utility>

namespace
{

using testing::ElementsAre;
using veltrane::ColourScale;
using veltrane::Cut;
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
    Cut cut(const CutPlane& plane) const { return veltrane::cutThrough(mesh(), values, plane); }

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

double outlineOf(const Cut& cut)
{
    double length = 0;
    for (const veltrane::Loop& loop : veltrane::CutRegions(cut).covered())
    {
        for (std::size_t i = 0; i < loop.size(); ++i)
        {
            const auto& next = loop[(i + 1) % loop.size()];
            length += std::hypot(next[0] - loop[i][0], next[1] - loop[i][1]);
        }
    }
    return length;
}

/// Through the unit cube in two by two by two cubes: a square of area 1 with a cross in it.
TEST(Cut, HasAreaOutlineAndEdgesOfTheElementsItGoesThrough)
{
    const SampledMesh cubes(*makeGrid(VTK_HEXAHEDRON, 2), linear);
    const Cut cut = cubes.cut({2, 0.3});
    EXPECT_NEAR(areaOf(cut), 1, 1e-6);
    EXPECT_NEAR(outlineOf(cut), 4, 1e-6);
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
        const Cut cut = block.cut({axis, 0.5});
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
    const Cut cut = grid.cut({0, 0.3});
    EXPECT_NEAR(areaOf(cut), 1, 1e-6);
    EXPECT_NEAR(outlineOf(cut), 4, 1e-6);
}

INSTANTIATE_TEST_SUITE_P(AllKinds, CutOfKind,
                         testing::Values(VTK_TETRA, VTK_HEXAHEDRON, VTK_WEDGE, VTK_PYRAMID, VTK_QUADRATIC_TETRA));

TEST(Cut, OfSurfacesIsALine)
{
    const SampledMesh plate(*makeGrid(VTK_QUAD, 1), linear);
    const Cut cut = plate.cut({1, 0.25});
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

/// Two triangles that share the side from (0, 0) to (1, 1) of a square, given in opposite directions of rotation.
Cut squareOfTwoTriangles(std::vector<double> values)
{
    Cut cut;
    cut.points = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    cut.values = std::move(values);
    cut.triangles = {{0, 1, 2}, {0, 3, 2}};
    return cut;
}

double areaOf(const veltrane::Loops& loops)
{
    double area = 0;
    for (const veltrane::Loop& loop : loops)
    {
        for (std::size_t i = 0; i < loop.size(); ++i)
        {
            const auto& a = loop[i];
            const auto& b = loop[(i + 1) % loop.size()];
            area += (a[0] * b[1] - b[0] * a[1]) / 2;
        }
    }
    return area;
}

TEST(CutRegions, AreOneAreaWithoutTheSidesWithin)
{
    const Cut cut = squareOfTwoTriangles({0, 1, 1, 0});
    const veltrane::CutRegions regions(cut);
    ASSERT_EQ(regions.covered().size(), 1U);
    EXPECT_EQ(regions.covered()[0].size(), 4U);
    EXPECT_NEAR(areaOf(regions.covered()), 1, 1e-12);
}

/// The value is x.
TEST(CutRegions, LieAboveALevel)
{
    const Cut cut = squareOfTwoTriangles({0, 1, 1, 0});
    const veltrane::CutRegions regions(cut);
    EXPECT_NEAR(areaOf(regions.above(0.75)), 0.25, 1e-12);
    EXPECT_NEAR(areaOf(regions.above(0)), 1, 1e-12);
    EXPECT_TRUE(regions.above(1.5).empty());
    const veltrane::Loops above = regions.above(0.75);
    ASSERT_EQ(above.size(), 1U);
    for (const auto& [x, y] : above[0])
    {
        EXPECT_GE(x, 0.75 - 1e-12);
    }
}

TEST(CutRegions, LeaveOutTrianglesWithoutValues)
{
    const Cut cut = squareOfTwoTriangles({0, 1, 1, std::numeric_limits<double>::quiet_NaN()});
    const veltrane::CutRegions regions(cut);
    EXPECT_NEAR(areaOf(regions.covered()), 1, 1e-12);
    EXPECT_NEAR(areaOf(regions.withValues()), 0.5, 1e-12);
    EXPECT_NEAR(areaOf(regions.above(0.5)), 0.5 - 0.125, 1e-12);
}

/// A ring of cubes: its hole has a border of its own, that runs the other way.
TEST(CutRegions, HaveHoles)
{
    GridBuilder builder;
    for (int i = 0; i < 9; ++i)
    {
        if (i != 4)
        {
            builder.addCube(VTK_HEXAHEDRON, {0.25 * (i % 3), 0.25 * (i / 3), 0}, 0.25);
        }
    }
    const SampledMesh ring(*builder.grid(), linear);
    const Cut cut = ring.cut({2, 0.1});
    const veltrane::Loops covered = veltrane::CutRegions(cut).covered();
    EXPECT_EQ(covered.size(), 2U);
    EXPECT_NEAR(areaOf(covered), 8 * 0.0625, 1e-6);
}

TEST(CutRegions, LosePointsThatCannotBeSeen)
{
    const veltrane::Loops loops{{{0, 0}, {1, 0.001}, {2, 0}, {2, 2}, {0, 2}}, {{0, 0}, {0.001, 0}, {0, 0.001}}};
    const veltrane::Loops left = veltrane::simplified(loops, 0.01);
    ASSERT_EQ(left.size(), 1U);
    EXPECT_EQ(left[0].size(), 4U);
}

/// A plate of 1 by 1 by 0.25 with a peak at x = 0.75, y = 0.5, z = 0.25; one of its values is not a number.
TEST(PlaneThroughPeak, GoesAcrossTheShortestAxis)
{
    GridBuilder builder;
    for (int i = 0; i < 16; ++i)
    {
        builder.addCube(VTK_HEXAHEDRON, {0.25 * (i % 4), 0.25 * (i / 4), 0}, 0.25);
    }
    const SampledMesh plate(*builder.grid(),
                            [](const Point& p) {
                                return p == Point{0, 0, 0}           ? std::numeric_limits<double>::quiet_NaN()
                                       : p == Point{0.75, 0.5, 0.25} ? -7.0
                                                                     : 1.0;
                            });
    const std::vector<CutPlane> planes = veltrane::planesThroughPeak(plate.mesh(), plate.values);
    ASSERT_EQ(planes.size(), 3U);
    const std::array<double, 3> peak{0.75, 0.5, 0.25};
    EXPECT_EQ(planes[0].axis, 2U);
    for (const CutPlane& plane : planes)
    {
        EXPECT_NEAR(plane.position, peak[plane.axis], 1e-4);
        EXPECT_FALSE(plate.cut(plane).triangles.empty());
    }
}

/// A step: a lower plate, and a block on it, with the peak on top of the plate beside the block. Most of the elements
/// around the peak are below it.
TEST(PlaneThroughPeak, LiesOnTheSideOfTheElementsAroundThePeak)
{
    GridBuilder builder;
    for (int i = 0; i < 16; ++i)
    {
        builder.addCube(VTK_HEXAHEDRON, {0.25 * (i % 4), 0.25 * (i / 4), 0}, 0.25);
    }
    builder.addCube(VTK_HEXAHEDRON, {0, 0, 0.25}, 0.25);
    builder.addCube(VTK_HEXAHEDRON, {0, 0, 0.5}, 0.25);
    const SampledMesh step(*builder.grid(), [](const Point& p) { return p == Point{0.25, 0.25, 0.25} ? 1.0 : 0.0; });
    const CutPlane plane = veltrane::planeThroughPeak(step.mesh(), step.values);
    EXPECT_EQ(plane.axis, 2U);
    EXPECT_LT(plane.position, 0.25);
    EXPECT_NEAR(areaOf(step.cut(plane)), 1, 1e-6);
}

TEST(PlaneThroughPeak, GoesThroughPointsInOnePlane)
{
    const SampledMesh cubes(*makeGrid(VTK_HEXAHEDRON, 4), linear);
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
        const veltrane::PointCloud points(coordinates, std::vector<int>(36, 0), {{}});
        const CutPlane plane = veltrane::planeThroughPeak(cubes.mesh(), points, std::vector<double>(36, 1));
        EXPECT_EQ(plane.axis, axis);
        EXPECT_NEAR(plane.position, 0.375, 1e-3);
    }
}

TEST(PlaneThroughPeak, GoesThroughTheSourceEvenIfThePointIsBesideIt)
{
    const SampledMesh cubes(*makeGrid(VTK_HEXAHEDRON, 4), linear);
    const veltrane::PointCloud points({1.04F, -0.03F, 1.02F}, {0}, {{}});
    const std::vector<double> value{1};
    const CutPlane plane = veltrane::planeThroughPeak(cubes.mesh(), points, value);
    EXPECT_FALSE(cubes.cut(plane).triangles.empty());
}

/// Two cubes at opposite corners of a larger one, with nothing between them, and a point there.
TEST(PlaneThroughPeak, GoesThroughSomethingEvenIfThereIsNothingThere)
{
    GridBuilder builder;
    builder.addCube(VTK_HEXAHEDRON, {0, 0, 0}, 0.125);
    builder.addCube(VTK_HEXAHEDRON, {0.875, 0.875, 0.875}, 0.125);
    const SampledMesh cubes(*builder.grid(), linear);
    const veltrane::PointCloud points({0.5, 0.5, 0.5}, {0}, {{}});
    const std::vector<double> noValue{std::numeric_limits<double>::quiet_NaN()};
    EXPECT_FALSE(cubes.cut(veltrane::planeThroughPeak(cubes.mesh(), points, noValue)).triangles.empty());
}

} // namespace
