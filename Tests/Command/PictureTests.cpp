// --picture of veltrane transfer and veltrane sample, and the pieces that it is made of.
#include "CommandRunner.h"
#include "TestGrids.h"

#include "ColourScale.h"
#include "CutChoice.h"
#include "MeshFile.h"
#include "Raster.h"

#include <vtkCellType.h>
#include <vtkImageData.h>
#include <vtkNew.h>
#include <vtkPNGReader.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <functional>
#include <limits>
#include <memory>
#include <sstream>

namespace
{

using testing::ElementsAre;
using testing::HasSubstr;
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
        const TestDirectory directory;
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

using PixelTest = std::function<bool(const std::array<double, 3>& colour)>;

/// How many pixels of a picture are of a colour, red, green and blue from 0 to 255.
long long countPixels(const std::filesystem::path& path, std::array<int, 2>& size, const PixelTest& isCounted)
{
    vtkNew<vtkPNGReader> reader;
    reader->SetFileName(path.c_str());
    reader->Update();
    vtkImageData& image = *reader->GetOutput();
    size = {image.GetDimensions()[0], image.GetDimensions()[1]};
    long long count = 0;
    for (int row = 0; row < size[1]; ++row)
    {
        for (int column = 0; column < size[0]; ++column)
        {
            const auto part = [&](int i) { return image.GetScalarComponentAsDouble(column, row, 0, i); };
            count += isCounted({part(0), part(1), part(2)}) ? 1 : 0;
        }
    }
    return count;
}

/// Those of the colour that marks what is outside.
long long countMarked(const std::filesystem::path& path, std::array<int, 2>& size)
{
    return countPixels(path, size,
                       [](const auto& colour) { return colour[0] > 200 && colour[1] < 50 && colour[2] < 50; });
}

/// Those that are not grey.
long long countColoured(const std::filesystem::path& path)
{
    std::array<int, 2> size{};
    return countPixels(path, size,
                       [](const auto& colour) { return std::ranges::max(colour) - std::ranges::min(colour) > 20; });
}

class Picture : public testing::Test
{
protected:
    Picture()
    {
        const auto source = makeGrid(VTK_HEXAHEDRON, 4);
        addDoubles(*source, "T", linear);
        writeGrid(*source, runner.file("source.vtu"));
    }

    CommandResult transfer(vtkUnstructuredGrid& target, std::vector<std::string> options = {}) const
    {
        writeGrid(target, runner.file("target.vtu"));
        options.insert(options.begin(),
                       {"transfer", "source.vtu", "target.vtu", "-o", "out.vtu", "--picture", "picture.png"});
        return runner.run(options);
    }

    CommandResult sample(const std::string& points, std::vector<std::string> options = {}) const
    {
        std::ofstream(runner.file("points.csv")) << "x,y,z\n" << points;
        options.insert(options.begin(),
                       {"sample", "source.vtu", "points.csv", "-o", "out.csv", "--picture", "picture.png"});
        return runner.run(options);
    }

    CommandRunner runner;
};

TEST_F(Picture, ShowsSourceAndTargetSideBySide)
{
    const CommandResult result = transfer(*makeGrid(VTK_TETRA, 3, 0.1, 0.9));
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.progress, HasSubstr("drawing picture ...\n"));
    std::array<int, 2> size{};
    EXPECT_EQ(countMarked(runner.file("picture.png"), size), 0);
    EXPECT_EQ(size[0], 1600);
    EXPECT_GT(size[1], 700); // square cuts
}

/// The target's upper 0.04 of 0.94 are outside the source: of some 460 by 460 pixels 4 %, and half of these are marked.
TEST_F(Picture, MarksWhereTheTargetIsOutside)
{
    const CommandResult result = transfer(*makeGrid(VTK_TETRA, 3, 0.1, 1.04), {"--mode", "1"});
    ASSERT_EQ(result.status, 0) << result.errors;
    std::array<int, 2> size{};
    const long long marked = countMarked(runner.file("picture.png"), size);
    EXPECT_GT(marked, 5000);
    EXPECT_LT(marked, 30000);
}

/// Two squares of 668 by 668 pixels, and a bar.
TEST_F(Picture, IsGreyWithoutAScaleIfThereAreNoValues)
{
    const auto target = makeGrid(VTK_TETRA, 3);
    ASSERT_EQ(transfer(*target).status, 0);
    EXPECT_GT(countColoured(runner.file("picture.png")), 2 * 668 * 668 * 9 / 10);

    const auto source = makeGrid(VTK_HEXAHEDRON, 4);
    addDoubles(*source, "nothing", [](const Point&) { return std::numeric_limits<double>::quiet_NaN(); });
    writeGrid(*source, runner.file("source.vtu"));
    const CommandResult result = transfer(*target);
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(countColoured(runner.file("picture.png")), 0);
}

TEST_F(Picture, IsDrawnOfTargetsOfSurfaces)
{
    const CommandResult result = transfer(*makeGrid(VTK_QUAD, 3, 0.1, 0.9));
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_TRUE(std::filesystem::exists(runner.file("picture.png")));
}

/// The colours fill one square, the one of the source, and the bar; a dot is of some 200 pixels.
TEST_F(Picture, ShowsPointsBesideTheSource)
{
    const CommandResult result = sample("0.25,0.5,0.5\n");
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.progress, HasSubstr("drawing picture ...\n"));
    std::array<int, 2> size{};
    EXPECT_EQ(countMarked(runner.file("picture.png"), size), 0);
    EXPECT_EQ(size[0], 1600);
    EXPECT_GT(size[1], 700);
    const long long withOne = countColoured(runner.file("picture.png"));
    EXPECT_GT(withOne, 640 * 640 * 9 / 10);
    ASSERT_EQ(sample("0.25,0.5,0.5\n0.25,0.75,0.75\n0.25,0.25,0.75\n").status, 0);
    const long long withThree = countColoured(runner.file("picture.png"));
    EXPECT_GT(withThree, withOne + 2 * 100);
    EXPECT_LT(withThree, withOne + 2 * 300);
}

/// The ring of a point, and the one that explains it, are of some 130 pixels each.
TEST_F(Picture, MarksPointsWithoutAValueFromTheSource)
{
    const CommandResult result = sample("0.25,0.5,0.5\n0.25,0.5,1.03125\n", {"--outside", "default"});
    ASSERT_EQ(result.status, 0) << result.errors;
    std::array<int, 2> size{};
    const long long marked = countMarked(runner.file("picture.png"), size);
    EXPECT_GT(marked, 2 * 60);
    EXPECT_LT(marked, 2 * 180);
}

TEST_F(Picture, IsGreyIfThePointsHaveNoValues)
{
    const auto source = makeGrid(VTK_HEXAHEDRON, 4);
    addDoubles(*source, "nothing", [](const Point&) { return std::numeric_limits<double>::quiet_NaN(); });
    writeGrid(*source, runner.file("source.vtu"));
    const CommandResult result = sample("0.25,0.5,0.5\n0.5,0.5,0.25\n");
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(countColoured(runner.file("picture.png")), 0);
}

TEST_F(Picture, IsDrawnOfManyPointsAndOfVectors)
{
    const auto source = makeGrid(VTK_HEXAHEDRON, 4);
    addFloats(*source, "u",
              {[](const Point& p) { return p[0]; }, [](const Point& p) { return p[1]; },
               [](const Point& p) { return p[2]; }});
    writeGrid(*source, runner.file("source.vtu"));
    std::ostringstream points;
    constexpr int perSide = 46; // 97336 in all
    for (int i = 0; i < perSide * perSide * perSide; ++i)
    {
        points << (i % perSide + 0.5) / perSide << ',' << (i / perSide % perSide + 0.5) / perSide << ','
               << (i / perSide / perSide + 0.5) / perSide << '\n';
    }
    const CommandResult result = sample(points.str());
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_GT(countColoured(runner.file("picture.png")), 640 * 640 * 5 / 4); // of the points, too
}

TEST_F(Picture, MustHaveAPlaceOfItsOwn)
{
    writeGrid(*makeGrid(VTK_TETRA, 2), runner.file("target.vtu"));
    expectFailure(runner, 64, "the file 'picture.jpg' of --picture is not named .png",
                  {"transfer", "source.vtu", "target.vtu", "-o", "out.vtu", "--picture", "picture.jpg"});
    expectFailure(runner, 73, "there is no directory 'nowhere' for the output",
                  {"transfer", "source.vtu", "target.vtu", "-o", "out.vtu", "--picture", "nowhere/p.png"});
}

} // namespace
