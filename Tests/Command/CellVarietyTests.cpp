// Cells of all sorts: those that only a target may have, those that a source has beside its volumes, and hexahedra that
// are something else.
#include "CommandRunner.h"
#include "RepeatedNodes.h"
#include "TestGrids.h"

#include <vtkCellData.h>
#include <vtkCellType.h>
#include <vtkCellTypes.h>
#include <vtkIdList.h>
#include <vtkNew.h>
#include <vtkPoints.h>
#include <vtkUnstructuredGrid.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>

namespace
{

constexpr double singlePrecision = 1e-5;

/// Points of the unit cube, all different and none outside.
Point place(int i)
{
    return {0.03 * i, 0.9 - 0.02 * i, 0.5 + (i % 2 == 0 ? 0.01 : -0.01) * i};
}

class CellVariety : public testing::Test
{
protected:
    CellVariety()
    {
        source = makeGrid(VTK_HEXAHEDRON, 2);
        addDoubles(*source, "T", linear);
    }

    CommandResult transfer(vtkUnstructuredGrid& target, const std::vector<std::string>& options = {}) const
    {
        writeGrid(*source, runner.file("source.vtu"));
        writeGrid(target, runner.file("target.vtu"));
        std::vector<std::string> arguments{"transfer", "source.vtu", "target.vtu", "-o", "out.vtu"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return runner.run(arguments);
    }

    void expectLinear() const
    {
        const auto grid = readGrid(runner.file("out.vtu"));
        const std::vector<double> values = valuesOf(*grid, "T");
        for (vtkIdType i = 0; i < grid->GetNumberOfPoints(); ++i)
        {
            EXPECT_NEAR(values[static_cast<std::size_t>(i)], linear(pointOf(*grid, i)), singlePrecision) << i;
        }
    }

    CommandRunner runner;
    vtkSmartPointer<vtkUnstructuredGrid> source;
};

/// A grid of one cell of this many points.
vtkSmartPointer<vtkUnstructuredGrid> oneCell(int cellType, int pointCount)
{
    GridBuilder builder;
    std::vector<Point> points;
    for (int i = 0; i < pointCount; ++i)
    {
        points.push_back(place(i));
    }
    builder.addCell(cellType, points);
    return builder.grid();
}

TEST_F(CellVariety, NodesOfAnyCellReceiveValues)
{
    for (const auto& [cellType, pointCount, name] :
         std::vector<std::tuple<int, int, std::string>>{{VTK_VERTEX, 1, "1 point cell"},
                                                        {VTK_POLY_VERTEX, 5, "1 group of points"},
                                                        {VTK_LINE, 2, "1 line"},
                                                        {VTK_POLY_LINE, 7, "1 polyline"},
                                                        {VTK_QUADRATIC_EDGE, 3, "1 quadratic line"},
                                                        {VTK_CUBIC_LINE, 4, "1 cubic line"},
                                                        {VTK_TRIANGLE_STRIP, 6, "1 triangle strip"},
                                                        {VTK_POLYGON, 5, "1 polygon"},
                                                        {VTK_QUADRATIC_TRIANGLE, 6, "1 quadratic triangle"},
                                                        {VTK_BIQUADRATIC_QUAD, 9, "1 biquadratic quadrilateral"},
                                                        {VTK_PENTAGONAL_PRISM, 10, "1 pentagonal prism"},
                                                        {VTK_HEXAGONAL_PRISM, 12, "1 hexagonal prism"},
                                                        {VTK_CONVEX_POINT_SET, 8, "1 convex set of points"},
                                                        {VTK_LAGRANGE_CURVE, 5, "1 Lagrange curve"},
                                                        {VTK_LAGRANGE_TETRAHEDRON, 20, "1 Lagrange tetrahedron"},
                                                        {VTK_BEZIER_TRIANGLE, 10, "1 Bezier triangle"}})
    {
        const CommandResult result = transfer(*oneCell(cellType, pointCount));
        ASSERT_EQ(result.status, 0) << name << result.errors;
        EXPECT_EQ(result.errors, "");
        EXPECT_THAT(result.output, testing::HasSubstr(", " + name + "\n"));
        expectLinear();
        EXPECT_EQ(runner.run({"compare", "out.vtu", "--exact", "T=1+2*x-3*y+5*z", "--tolerance", "1e-5"}).status, 0);
        EXPECT_EQ(runner.run({"compare", "out.vtu", "out.vtu"}).status, 0);
    }
}

TEST_F(CellVariety, NodesOfPolyhedraReceiveValues)
{
    const auto target = makeGrid(VTK_HEXAHEDRON, 1, 0.25, 0.75);
    vtkNew<vtkUnstructuredGrid> polyhedron;
    polyhedron->SetPoints(target->GetPoints());
    const std::vector<vtkIdType> faces{4, 0, 1, 2, 3, 4, 4, 5, 6, 7, 4, 0, 1, 5, 4,
                                       4, 1, 2, 6, 5, 4, 2, 3, 7, 6, 4, 3, 0, 4, 7};
    std::vector<vtkIdType> points(8);
    std::iota(points.begin(), points.end(), 0);
    polyhedron->InsertNextCell(VTK_POLYHEDRON, 8, points.data(), 6, faces.data());
    const CommandResult result = transfer(*polyhedron);
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, testing::HasSubstr("8 nodes, 1 polyhedron\n"));
    expectLinear();
    EXPECT_EQ(readGrid(runner.file("out.vtu"))->GetCellType(0), VTK_POLYHEDRON);
}

TEST_F(CellVariety, LoosePointsReceiveValues)
{
    vtkNew<vtkUnstructuredGrid> target;
    vtkNew<vtkPoints> points;
    points->InsertNextPoint(0.25, 0.5, 0.125);
    points->InsertNextPoint(1, 1, 1);
    target->SetPoints(points);
    const CommandResult result = transfer(*target);
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, testing::HasSubstr("                  2 nodes\n"));
    EXPECT_THAT(result.output, testing::ContainsRegex("  inside +2\n"));
    EXPECT_THAT(contentsOf(runner.file("out.vtu")), testing::HasSubstr("vtkValidPointMask"));
}

/// Values go from the near end of a curve to its far one.
TEST_F(CellVariety, ValuesPropagateAlongCurves)
{
    GridBuilder builder;
    builder.addCell(VTK_POLY_LINE, {{0.5, 0.5, 0.5}, {1, 0.5, 0.5}, {9, 0.5, 0.5}, {10, 0.5, 0.5}});
    const CommandResult result = transfer(*builder.grid(), {"--outside", "propagate"});
    ASSERT_EQ(result.status, 0) << result.errors;
    const std::vector<double> values = valuesOf(*readGrid(runner.file("out.vtu")), "T");
    EXPECT_NEAR(values[2], (3 + 4) / 2.0, singlePrecision);
    EXPECT_NEAR(values[3], (3 + 4) / 2.0, singlePrecision);
}

/// Mesh generators write the lines and surfaces of a volume with numbers of their own.
TEST_F(CellVariety, LinesAlongOtherCellsDoNotCount)
{
    addCellNumbers(*source, "material", [](vtkIdType) { return 1; });
    const auto target = makeGrid(VTK_TETRA, 1);
    const vtkIdType volumeCount = target->GetNumberOfCells();
    const std::array<vtkIdType, 6> points{0, 1, 2, 3, 4, 5};
    target->InsertNextCell(VTK_LINE, 2, points.data());
    target->InsertNextCell(VTK_VERTEX, 1, points.data());
    target->InsertNextCell(VTK_QUADRATIC_TRIANGLE, 6, points.data());
    addCellNumbers(*target, "material", [=](vtkIdType cell) { return cell < volumeCount ? 1 : 7; });
    const CommandResult result = transfer(*target);
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, testing::HasSubstr("8 nodes, 6 tetrahedra\n"));
    expectLinear();
}

TEST_F(CellVariety, CellsOfLowerDimensionInASourceAreLeftOut)
{
    std::array<vtkIdType, 10> points{};
    std::iota(points.begin(), points.end(), 0);
    for (const auto& [cellType, pointCount] : std::vector<std::pair<int, int>>{{VTK_VERTEX, 1},
                                                                               {VTK_QUADRATIC_EDGE, 3},
                                                                               {VTK_QUADRATIC_TRIANGLE, 6},
                                                                               {VTK_QUADRATIC_QUAD, 8},
                                                                               {VTK_BIQUADRATIC_QUAD, 9},
                                                                               {VTK_POLYGON, 5},
                                                                               {VTK_TRIANGLE_STRIP, 4},
                                                                               {VTK_LAGRANGE_TRIANGLE, 10}})
    {
        source->InsertNextCell(cellType, pointCount, points.data());
    }
    const CommandResult result = transfer(*makeGrid(VTK_TETRA, 2));
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, testing::HasSubstr("27 nodes, 8 hexahedra\n                  8 other cells left out\n"));
    expectLinear();
}

/// Each as a hexahedron with repeated nodes, in its own shape, and with the field that its shape functions have.
TEST_F(CellVariety, HexahedraWithRepeatedNodesAreWhatTheyLookLike)
{
    const std::vector<Point> tetrahedron{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 1, 0},
                                         {0, 0, 1}, {0, 0, 1}, {0, 0, 1}, {0, 0, 1}};
    const std::vector<Point> pyramid{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0},
                                     {0, 0, 1}, {0, 0, 1}, {0, 0, 1}, {0, 0, 1}};
    const std::vector<Point> wedge{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 1, 0},
                                   {0, 0, 1}, {1, 0, 1}, {0, 1, 1}, {0, 1, 1}};
    const std::vector<Point> wedgeWithARidge{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0},
                                             {0, 0, 1}, {0, 0, 1}, {0, 1, 1}, {0, 1, 1}};
    for (const auto& [points, name] :
         std::vector<std::pair<std::vector<Point>, std::string>>{{tetrahedron, "4 nodes, 1 tetrahedron\n"},
                                                                 {pyramid, "5 nodes, 1 pyramid\n"},
                                                                 {wedge, "6 nodes, 1 wedge\n"},
                                                                 {wedgeWithARidge, "6 nodes, 1 wedge\n"}})
    {
        GridBuilder builder;
        builder.addCell(VTK_HEXAHEDRON, points);
        source = builder.grid();
        addDoubles(*source, "T", linear);
        GridBuilder target; // close to where the corners fall together
        target.addCell(VTK_TETRA, {{0, 0, 1}, {0.01, 0.01, 0.97}, {0.02, 0.01, 0.9}, {0.1, 0.1, 0.1}});
        const CommandResult result = transfer(*target.grid());
        ASSERT_EQ(result.status, 0) << name << result.errors;
        EXPECT_EQ(result.errors, ""); // none of them is inside out
        EXPECT_THAT(result.output, testing::HasSubstr(name));
        expectLinear();
        const CommandResult onto = transfer(*source, {"--replace"});
        EXPECT_EQ(onto.status, 0) << onto.errors;
        EXPECT_EQ(readGrid(runner.file("out.vtu"))->GetCellType(0), VTK_HEXAHEDRON);
    }
}

TEST(RepeatedNodes, OfOtherShapesStay)
{
    EXPECT_FALSE(veltrane::withoutRepeatedNodes(std::array<vtkIdType, 8>{0, 1, 2, 3, 4, 5, 6, 7}));
    EXPECT_FALSE(veltrane::withoutRepeatedNodes(std::array<vtkIdType, 8>{0, 1, 2, 3, 4, 5, 6, 6}));
    EXPECT_FALSE(veltrane::withoutRepeatedNodes(std::array<vtkIdType, 8>{0, 0, 0, 0, 4, 4, 4, 4}));
    EXPECT_FALSE(veltrane::withoutRepeatedNodes(std::array<vtkIdType, 8>{0, 1, 2, 3, 2, 5, 6, 7}));
}

} // namespace
