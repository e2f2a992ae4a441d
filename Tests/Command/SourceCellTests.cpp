// Cells of a source in which the search has trouble: without volume, folded, inside each other. None ends a run, and
// each is told by its number in the file.
#include "CommandRunner.h"
#include "TestGrids.h"

#include <vtkCellType.h>

#include <nlohmann/json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

namespace
{

using testing::HasSubstr;
using testing::Not;

class SourceCells : public testing::Test
{
protected:
    void writeSource(vtkUnstructuredGrid& grid) const
    {
        addDoubles(grid, "T", linear);
        writeGrid(grid, runner.file("source.vtu"));
    }

    void writePoints(const std::vector<Point>& points) const
    {
        std::ofstream file(runner.file("points.csv"));
        file << "x,y,z\n";
        for (const Point& p : points)
        {
            file << p[0] << ',' << p[1] << ',' << p[2] << '\n';
        }
    }

    CommandResult sample(const std::vector<std::string>& options = {}) const
    {
        std::vector<std::string> arguments{"sample",    "source.vtu", "points.csv", "-o",          "out.csv",
                                           "--outside", "default",    "--report",   "report.json", "--replace"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return runner.run(arguments);
    }

    nlohmann::json report() const { return nlohmann::json::parse(contentsOf(runner.file("report.json"))); }

    CommandRunner runner;
};

TEST_F(SourceCells, WithoutVolumeAreLeftOutAndNamed)
{
    GridBuilder builder;
    builder.addCell(VTK_LINE, {{0, 0, 0}, {1, 0, 0}});
    for (int i = 0; i < 4; ++i)
    {
        builder.addCell(VTK_TETRA, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1.0 + i, 0}});
    }
    builder.addCube(VTK_HEXAHEDRON, {0, 0, 0}, 1);
    writeSource(*builder.grid());
    writePoints({{0.25, 0.25, 0.25}, {0.5, 0.5, 0}, {0.75, 0.5, 0.125}});
    const CommandResult result = sample();
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.errors,
                HasSubstr("'source.vtu' has 4 cells without volume in single precision, in which nothing "
                          "is found: cells 1, 2, 3 and 1 more\n"));
    EXPECT_THAT(contentsOf(runner.file("out.csv")), HasSubstr("0.75,0.5,0.125,1.625,1"));
    EXPECT_THAT(contentsOf(runner.file("out.csv")), HasSubstr("0.5,0.5,0,0.5,1"));
}

TEST_F(SourceCells, InsideEachOtherAreToldOnASampleOfThePoints)
{
    GridBuilder builder;
    builder.addGrid(VTK_HEXAHEDRON, 4, 0, 1);
    builder.startBlock();
    builder.addCube(VTK_HEXAHEDRON, {0.3, 0.3, 0.3}, 0.15);
    writeSource(*builder.grid());
    std::vector<Point> points;
    for (double x = 0.02; x < 1; x += 0.06)
    {
        points.push_back({x, 0.4, 0.35});
    }
    writePoints(points);
    const CommandResult result = sample();
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.errors,
                HasSubstr("the source overlaps itself: of 16 points tried 3 lie in two cells of the same "
                          "material, the first in cells 21 and 64; each takes the values of one of "
                          "them\n"));
    EXPECT_EQ(report()["search"]["overlap"], (nlohmann::json{{"tried", 16}, {"found", 3}}));
}

TEST_F(SourceCells, OfTwoMaterialsMayBeInsideEachOther)
{
    GridBuilder builder;
    builder.addCube(VTK_HEXAHEDRON, {0, 0, 0}, 1);
    builder.startBlock();
    builder.addCube(VTK_HEXAHEDRON, {0, 0, 0}, 1);
    addCellNumbers(*builder.grid(), "material", [](vtkIdType cell) { return static_cast<int>(cell) + 1; });
    writeSource(*builder.grid());
    const auto target = makeGrid(VTK_HEXAHEDRON, 3);
    addCellNumbers(*target, "material", [](vtkIdType) { return 2; });
    writeGrid(*target, runner.file("target.vtu"));
    const CommandResult result = runner.run({"transfer", "source.vtu", "target.vtu", "-o", "out.vtu"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
}

TEST_F(SourceCells, ThatTouchAreNotInsideEachOther)
{
    auto grid = makeGrid(VTK_QUADRATIC_TETRA, 3);
    distort(*grid, 0.03);
    writeSource(*grid);
    writeGrid(*makeGrid(VTK_HEXAHEDRON, 9), runner.file("target.vtu"));
    const CommandResult result = runner.run({"transfer", "source.vtu", "target.vtu", "-o", "out.vtu", "--report",
                                             "report.json", "--outside", "default", "--quiet"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.errors, Not(HasSubstr("overlaps")));
    EXPECT_GT(report()["search"]["overlap"]["tried"], 500);
    EXPECT_EQ(report()["search"]["overlap"]["found"], 0);
}

/// A hexahedron so distorted that the search for reference coordinates does not end at some points in it.
class FoldedCell : public SourceCells
{
protected:
    FoldedCell()
    {
        GridBuilder builder;
        builder.addCell(VTK_HEXAHEDRON, corners);
        writeSource(*builder.grid());
        std::vector<Point> points;
        for (int i = 0; i < 216; ++i)
        {
            points.push_back(pointAt({-0.9 + 0.36 * (i / 36), -0.9 + 0.36 * (i / 6 % 6), -0.9 + 0.36 * (i % 6)}));
        }
        writePoints(points);
    }

    Point pointAt(const Point& reference) const
    {
        constexpr int signs[8][3] = {{-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1},
                                     {-1, -1, 1},  {1, -1, 1},  {1, 1, 1},  {-1, 1, 1}};
        Point point{};
        for (std::size_t corner = 0; corner < 8; ++corner)
        {
            double weight = 0.125;
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                weight *= 1 + signs[corner][axis] * reference[axis];
            }
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                point[axis] += weight * corners[corner][axis];
            }
        }
        return point;
    }

    const std::vector<Point> corners{{-0.4, 0.5, -0.1}, {0.5, -0.6, -0.1}, {1.2, 0.7, 0.3}, {0.1, 0.4, -0.2},
                                     {0.6, -0.4, 1.2},  {0.4, -0.3, 1.1},  {1.6, 1.3, 1.3}, {-0.5, 1.1, 1.5}};
};

TEST_F(FoldedCell, PointsWhereTheSearchDoesNotEndAreCountedWithTheRemedy)
{
    const CommandResult result = sample();
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output,
                testing::ContainsRegex("not converged +[1-9].* near or far though they may lie in a cell: "
                                       "a larger --tolerance may find them"));
    EXPECT_GT(report()["search"]["unconvergedPoints"], 0);

    const CommandResult remedied = sample({"--tolerance", "0.05"});
    EXPECT_EQ(remedied.status, 0);
    EXPECT_THAT(remedied.output, Not(HasSubstr("not converged")));
    EXPECT_EQ(report()["search"]["unconvergedPoints"], 0);
}

} // namespace
