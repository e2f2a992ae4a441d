// veltrane transfer on files, where it succeeds.
#include "CommandRunner.h"
#include "TestGrids.h"

#include <vtkCellData.h>
#include <vtkCellType.h>
#include <vtkDoubleArray.h>
#include <vtkFieldData.h>
#include <vtkFloatArray.h>
#include <vtkNew.h>
#include <vtkPointData.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <ostream>
#include <regex>

namespace
{

using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

void expectValues(vtkUnstructuredGrid& grid, const std::string& name, const PointFunction& expected, double tolerance)
{
    const std::vector<double> values = valuesOf(grid, name);
    ASSERT_EQ(values.size(), static_cast<std::size_t>(grid.GetNumberOfPoints()));
    for (std::size_t i = 0; i < values.size(); ++i)
    {
        const Point point = pointOf(grid, static_cast<vtkIdType>(i));
        EXPECT_NEAR(values[i], expected(point), tolerance)
            << "at (" << point[0] << ", " << point[1] << ", " << point[2] << ")";
    }
}

// Values up to 8 in single precision, summed from four or more products.
constexpr double singlePrecision = 1e-5;

class TransferCommand : public testing::Test
{
protected:
    void write(const std::string& name, vtkUnstructuredGrid& grid) const { writeGrid(grid, runner.file(name)); }

    CommandResult transfer(std::vector<std::string> options = {}) const
    {
        options.insert(options.begin(), {"transfer", "source.vtu", "target.vtu", "-o", "out.vtu"});
        return runner.run(options);
    }

    vtkSmartPointer<vtkUnstructuredGrid> output() const { return readGrid(runner.file("out.vtu")); }

    CommandRunner runner;
};

TEST_F(TransferCommand, ReproducesALinearFieldOnDistortedTetrahedra)
{
    const auto source = makeGrid(VTK_TETRA, 5);
    distort(*source, 0.03);
    addDoubles(*source, "linear", linear);
    addFloats(*source, "position",
              {[](const Point& p) { return p[0]; }, [](const Point& p) { return p[1]; },
               [](const Point& p) { return p[2]; }});
    write("source.vtu", *source);
    const auto target = makeGrid(VTK_TETRA, 4);
    distort(*target, 0.04);
    write("target.vtu", *target);

    const CommandResult result = transfer();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    const auto grid = output();
    ASSERT_EQ(grid->GetNumberOfPoints(), target->GetNumberOfPoints());
    expectValues(*grid, "linear", linear, singlePrecision);
    const std::vector<double> positions = valuesOf(*grid, "position");
    ASSERT_EQ(positions.size(), static_cast<std::size_t>(3 * grid->GetNumberOfPoints()));
    for (std::size_t i = 0; i < positions.size(); ++i)
    {
        EXPECT_NEAR(positions[i], pointOf(*grid, static_cast<vtkIdType>(i / 3))[i % 3], singlePrecision);
    }
    EXPECT_THAT(runner.directory().names(), UnorderedElementsAre("source.vtu", "target.vtu", "out.vtu"));
    EXPECT_THAT(runner.temporaryNames(), IsEmpty());
}

TEST_F(TransferCommand, KeepsThePrecisionOfFieldsAndEverythingTheTargetHas)
{
    const auto source = makeGrid(VTK_HEXAHEDRON, 2);
    addDoubles(*source, "double", linear);
    addFloats(*source, "float", {linear});
    write("source.vtu", *source);
    const auto target = makeGrid(VTK_HEXAHEDRON, 3);
    addFloats(*target, "own", {[](const Point& p) { return 10 * p[2]; }});
    addCellNumbers(*target, "number", [](vtkIdType cell) { return static_cast<int>(cell); });
    vtkNew<vtkDoubleArray> time;
    time->SetName("TimeValue");
    time->InsertNextValue(2.5);
    target->GetFieldData()->AddArray(time);
    write("target.vtu", *target);

    ASSERT_EQ(transfer().status, 0);
    const auto grid = output();
    EXPECT_NE(vtkArrayDownCast<vtkDoubleArray>(grid->GetPointData()->GetArray("double")), nullptr);
    EXPECT_NE(vtkArrayDownCast<vtkFloatArray>(grid->GetPointData()->GetArray("float")), nullptr);
    expectValues(
        *grid, "own", [](const Point& p) { return 10 * p[2]; }, 1e-6);
    ASSERT_NE(grid->GetCellData()->GetArray("number"), nullptr);
    EXPECT_EQ(grid->GetCellData()->GetArray("number")->GetComponent(26, 0), 26);
    ASSERT_NE(grid->GetFieldData()->GetArray("TimeValue"), nullptr);
    EXPECT_EQ(grid->GetFieldData()->GetArray("TimeValue")->GetComponent(0, 0), 2.5);
    EXPECT_EQ(grid->GetNumberOfCells(), 27);
}

/// A source cell type and a field that its shape functions reproduce; one that depends on the order of all nodes.
struct KindCase
{
    int cellType;
    PointFunction field;
};

void PrintTo(const KindCase& kindCase, std::ostream* stream)
{
    *stream << "cell type " << kindCase.cellType;
}

class TransferFromKind : public TransferCommand, public testing::WithParamInterface<KindCase>
{
};

TEST_P(TransferFromKind, ReproducesTheFieldOfItsShapeFunctions)
{
    const auto source = makeGrid(GetParam().cellType, 2);
    addDoubles(*source, "field", GetParam().field);
    write("source.vtu", *source);
    const auto target = makeGrid(VTK_TETRA, 5);
    distort(*target, 0.03);
    write("target.vtu", *target);
    const CommandResult result = transfer();
    ASSERT_EQ(result.status, 0) << result.errors;
    expectValues(*output(), "field", GetParam().field, singlePrecision);
}

double quadratic(const Point& p)
{
    return linear(p) + p[0] * p[0] - 2 * p[1] * p[1] + 3 * p[2] * p[2] + p[0] * p[1] - 2 * p[1] * p[2] +
           3 * p[2] * p[0];
}

INSTANTIATE_TEST_SUITE_P(
    AllKinds, TransferFromKind,
    testing::Values(KindCase{VTK_TETRA, linear}, KindCase{VTK_PYRAMID, linear},
                    KindCase{VTK_HEXAHEDRON, [](const Point& p) { return linear(p) + p[0] * p[1] * p[2]; }},
                    KindCase{VTK_VOXEL, [](const Point& p) { return linear(p) + p[0] * p[1] * p[2]; }},
                    KindCase{VTK_WEDGE, [](const Point& p) { return linear(p) + (p[0] - 2 * p[1]) * p[2]; }},
                    KindCase{VTK_QUADRATIC_TETRA, quadratic}, KindCase{VTK_QUADRATIC_HEXAHEDRON, quadratic},
                    KindCase{VTK_TRIQUADRATIC_HEXAHEDRON, quadratic}, KindCase{VTK_QUADRATIC_WEDGE, quadratic},
                    KindCase{VTK_BIQUADRATIC_QUADRATIC_WEDGE, quadratic}, KindCase{VTK_QUADRATIC_PYRAMID, quadratic}));

class TransferToKind : public TransferCommand, public testing::WithParamInterface<int>
{
};

TEST_P(TransferToKind, GivesAllNodesTheirValues)
{
    const auto source = makeGrid(VTK_HEXAHEDRON, 2);
    addDoubles(*source, "linear", linear);
    write("source.vtu", *source);
    const auto target = makeGrid(GetParam(), 3, 0.1, 0.8);
    write("target.vtu", *target);
    const CommandResult result = transfer();
    ASSERT_EQ(result.status, 0) << result.errors;
    expectValues(*output(), "linear", linear, singlePrecision);
}

INSTANTIATE_TEST_SUITE_P(AllKinds, TransferToKind,
                         testing::Values(VTK_TETRA, VTK_HEXAHEDRON, VTK_VOXEL, VTK_WEDGE, VTK_PYRAMID,
                                         VTK_QUADRATIC_TETRA, VTK_QUADRATIC_HEXAHEDRON, VTK_TRIQUADRATIC_HEXAHEDRON,
                                         VTK_QUADRATIC_WEDGE, VTK_BIQUADRATIC_QUADRATIC_WEDGE, VTK_QUADRATIC_PYRAMID,
                                         VTK_TRIANGLE, VTK_QUAD, VTK_PIXEL));

TEST_F(TransferCommand, ReproducesALinearFieldOnAMeshOfAllKinds)
{
    GridBuilder builder;
    int place = 0;
    for (const int cellType : {VTK_TETRA, VTK_HEXAHEDRON, VTK_VOXEL, VTK_WEDGE, VTK_PYRAMID, VTK_QUADRATIC_TETRA})
    {
        builder.addCube(cellType, {0.25 * place++, 0, 0}, 0.25);
    }
    addDoubles(*builder.grid(), "linear", linear);
    write("source.vtu", *builder.grid());
    write("target.vtu", *builder.grid());
    const CommandResult result = transfer({"--replace"});
    ASSERT_EQ(result.status, 0) << result.errors;
    expectValues(*output(), "linear", linear, singlePrecision);
    EXPECT_THAT(result.output, HasSubstr("2 hexahedra, 6 tetrahedra, 2 wedges, 6 quadratic tetrahedra, 6 pyramids"));
}

TEST_F(TransferCommand, LeavesOutTheSurfaceCellsOfASource)
{
    const auto source = makeGrid(VTK_HEXAHEDRON, 2);
    addDoubles(*source, "linear", linear);
    source->InsertNextCell(VTK_TRIANGLE, 3, std::array<vtkIdType, 3>{0, 1, 2}.data());
    write("source.vtu", *source);
    write("target.vtu", *makeGrid(VTK_TETRA, 3));
    const CommandResult result = transfer();
    ASSERT_EQ(result.status, 0) << result.errors;
    expectValues(*output(), "linear", linear, singlePrecision);
    EXPECT_THAT(result.output, HasSubstr("1 other cell left out"));
}

/// The lower half of the unit cube is one block, the upper half another one, each with nodes of its own at z = 0.5.
vtkSmartPointer<vtkUnstructuredGrid> twoBlocks(int n)
{
    const double edge = 1.0 / n;
    GridBuilder builder;
    for (int k = 0; k < n; ++k)
    {
        if (2 * k == n)
        {
            builder.startBlock();
        }
        for (int j = 0; j < n; ++j)
        {
            for (int i = 0; i < n; ++i)
            {
                builder.addCube(VTK_HEXAHEDRON, {edge * i, edge * j, edge * k}, edge);
            }
        }
    }
    return builder.grid();
}

void numberBlocks(vtkUnstructuredGrid& grid, const std::string& name, int lower, int upper)
{
    const vtkIdType half = grid.GetNumberOfCells() / 2;
    addCellNumbers(grid, name, [=](vtkIdType cell) { return cell < half ? lower : upper; });
}

TEST_F(TransferCommand, MatchesMaterialsByTheirNumbers)
{
    const auto source = twoBlocks(2);
    numberBlocks(*source, "MaterialIds", 10, 20);
    vtkNew<vtkFloatArray> values; // 100 in the lower block, 200 in the upper one
    values->SetName("block");
    for (vtkIdType i = 0; i < source->GetNumberOfPoints(); ++i)
    {
        values->InsertNextValue(2 * i < source->GetNumberOfPoints() ? 100 : 200);
    }
    source->GetPointData()->AddArray(values);
    write("source.vtu", *source);
    const auto target = twoBlocks(4);
    numberBlocks(*target, "material", 10, 20);
    write("target.vtu", *target);

    const CommandResult result = transfer();
    ASSERT_EQ(result.status, 0) << result.errors;
    const auto grid = output();
    const std::vector<double> blocks = valuesOf(*grid, "block");
    ASSERT_EQ(blocks.size(), 2U * 5 * 5 * 3);
    for (std::size_t i = 0; i < blocks.size(); ++i)
    {
        EXPECT_FLOAT_EQ(static_cast<float>(blocks[i]), i < blocks.size() / 2 ? 100.0F : 200.0F) << "point " << i;
    }
    EXPECT_THAT(result.output, HasSubstr("10, 20 in the source, 10, 20 in the target"));
}

TEST_F(TransferCommand, MaterialsOfOneSideOnlyAreNotRegarded)
{
    const auto source = twoBlocks(2);
    numberBlocks(*source, "material", 1, 2);
    addDoubles(*source, "linear", linear);
    write("source.vtu", *source);
    write("target.vtu", *makeGrid(VTK_TETRA, 3));
    const CommandResult result = transfer();
    ASSERT_EQ(result.status, 0) << result.errors;
    expectValues(*output(), "linear", linear, singlePrecision);
    EXPECT_THAT(result.output, HasSubstr("not regarded: only the source has them"));
}

TEST_F(TransferCommand, WarnsOfMaterialsThatTheSourceLacksIfAModeTakesCareOfThem)
{
    const auto source = twoBlocks(2);
    numberBlocks(*source, "material", 1, 2);
    addDoubles(*source, "linear", linear);
    write("source.vtu", *source);
    const auto target = twoBlocks(2);
    numberBlocks(*target, "material", 1, 7);
    write("target.vtu", *target);
    const CommandResult result = transfer({"--mode", "1", "--default", "-7"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors,
              "veltrane: warning: the source has no material 7, which the target has; the source has 1, 2\n");
    const auto grid = output();
    const vtkIdType half = grid->GetNumberOfPoints() / 2;
    const std::vector<double> values = valuesOf(*grid, "linear");
    for (vtkIdType i = 0; i < grid->GetNumberOfPoints(); ++i)
    {
        EXPECT_NEAR(values[static_cast<std::size_t>(i)], i < half ? linear(pointOf(*grid, i)) : -7, singlePrecision);
    }
}

class TransferToFarTarget : public TransferCommand
{
protected:
    TransferToFarTarget() { write("source.vtu", *angle()); }
};

TEST_F(TransferToFarTarget, FailsInMode0)
{
    write("target.vtu", *diagonal(true));
    const CommandResult result = transfer({"--mode", "0"});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors,
                testing::MatchesRegex("veltrane: [0-9]+ of [0-9]+ nodes are outside the source; the farthest, at "
                                      "\\([^)]*\\), is [0-9.]+ from the nearest node of the source; --outside default "
                                      "gives such nodes the default value, --outside propagate the values of "
                                      "neighbouring nodes\n"));
    EXPECT_THAT(runner.directory().names(), UnorderedElementsAre("source.vtu", "target.vtu"));
    EXPECT_THAT(runner.temporaryNames(), IsEmpty());
}

TEST_F(TransferToFarTarget, GivesTheDefaultValueInMode1)
{
    write("target.vtu", *diagonal(false));
    const CommandResult result = transfer({"--mode", "1", "--default", "-7.5"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    // In the angle it is 4. The far cubes begin at 8.25, with the angle ending at 1.
    expectValues(
        *output(), "constant", [](const Point& p) { return p[0] > 8 ? -7.5 : 4; }, 1e-6);
    EXPECT_THAT(result.output, testing::ContainsRegex("far +14   too far from the source: default value"));
}

TEST_F(TransferToFarTarget, PropagatesAlongCellsInMode2)
{
    write("target.vtu", *diagonal(true));
    const CommandResult result = transfer({"--mode", "2"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    expectValues(
        *output(), "constant", [](const Point&) { return 4; }, 1e-6);
}

TEST_F(TransferToFarTarget, WarnsOfRegionsOutOfReachInMode2)
{
    write("target.vtu", *diagonal(false));
    const CommandResult result = transfer({"--mode", "2"});
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.errors,
              "veltrane: warning: regions of the target are not connected to any region with values; they hold 0\n");
    expectValues(
        *output(), "constant", [](const Point& p) { return p[0] > 8 ? 0 : 4; }, 1e-6);
}

class TransferBetweenCubes : public TransferCommand
{
protected:
    TransferBetweenCubes()
    {
        const auto source = makeGrid(VTK_HEXAHEDRON, 2);
        addDoubles(*source, "linear", linear);
        addFloats(*source, "vector", {linear, linear, linear});
        addFloats(*source, "tensor", std::vector<PointFunction>(12, linear));
        write("source.vtu", *source);
        write("target.vtu", *makeGrid(VTK_HEXAHEDRON, 3));
    }
};

TEST_F(TransferBetweenCubes, TransfersOnlyTheFieldsAskedFor)
{
    const CommandResult result = transfer({"--field", "vector"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(output()->GetPointData()->GetNumberOfArrays(), 2); // with the mask
    EXPECT_NE(output()->GetPointData()->GetArray("vector"), nullptr);
}

TEST_F(TransferBetweenCubes, LeavesOutFieldsOfTooManyComponents)
{
    const CommandResult result = transfer();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "veltrane: warning: left out point-data array 'tensor' of 'source.vtu': it has 12 "
                             "components, more than the 9 that can be transferred\n");
    EXPECT_EQ(output()->GetPointData()->GetArray("tensor"), nullptr);
    EXPECT_NE(output()->GetPointData()->GetArray("vector"), nullptr);
}

/// The source's boxes are 0.51 wide, which is the size of the buckets: one reaches from 0.092 to 0.602 along each axis
/// and meets the boxes of both source elements there, one lies behind it and meets the second one's alone. So the
/// buckets hold 8, three times 4, three times 2 and one element.
TEST_F(TransferBetweenCubes, SummarisesWhatItHasDone)
{
    write("target.vtu", *makeGrid(VTK_HEXAHEDRON, 3, 0.1, 0.9));
    const CommandResult result = transfer({"--field", "linear", "--field", "vector"});
    // Times differ from run to run.
    const std::string output = std::regex_replace(result.output, std::regex(R"(\d+\.\d\d s\n)"), "0.00 s\n");
    EXPECT_EQ(output, "verdict           good: none of 64 nodes is far from the source\n"
                      "source            source.vtu\n"
                      "                  27 nodes, 8 hexahedra\n"
                      "target            target.vtu\n"
                      "                  64 nodes, 27 hexahedra\n"
                      "target nodes             64\n"
                      "  inside                 64\n"
                      "  near                    0\n"
                      "  far                     0\n"
                      "search buckets            8\n"
                      "  in use                  8   holding 3.38 source elements each, on average\n"
                      "mean iterations        1.00   to find the place of a point within an element\n"
                      "time in all            0.00 s\n"
                      "  reading source       0.00 s\n"
                      "  reading target       0.00 s\n"
                      "  preparing search     0.00 s\n"
                      "  interpolating        0.00 s\n"
                      "  writing output       0.00 s\n"
                      "\n"
                      "values at nodes               minimum          mean       maximum\n"
                      "linear           source            -2             3             8\n"
                      "                 target            -1             3             7\n"
                      "vector x         source            -2             3             8\n"
                      "                 target            -1             3             7\n"
                      "vector y         source            -2             3             8\n"
                      "                 target            -1             3             7\n"
                      "vector z         source            -2             3             8\n"
                      "                 target            -1             3             7\n"
                      "peaks lost        linear minimum by 10 % of the source's range\n"
                      "                  linear maximum by 10 %\n"
                      "                  vector x minimum by 10 %\n"
                      "                  vector x maximum by 10 %\n"
                      "                  vector y minimum by 10 %\n"
                      "                  vector y maximum by 10 %\n"
                      "                  and 2 more\n");
    EXPECT_EQ(result.progress, "reading source ...\n"
                               "reading target ...\n"
                               "preparing search ...\n"
                               "interpolating ...\n"
                               "writing output ...\n");
}

TEST_F(TransferBetweenCubes, IsQuietOnRequest)
{
    const CommandResult result = transfer({"--field", "linear", "--quiet"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.progress, "");
    EXPECT_EQ(result.errors, "");
}

TEST_F(TransferBetweenCubes, ReplacesAnEarlierOutputAndKeepsItsPermissions)
{
    using std::filesystem::perms;
    ASSERT_EQ(transfer({"--field", "linear"}).status, 0);
    std::filesystem::permissions(runner.file("out.vtu"), perms::owner_read | perms::owner_write);
    ASSERT_EQ(transfer({"--field", "vector"}).status, 0);
    EXPECT_NE(output()->GetPointData()->GetArray("vector"), nullptr);
    EXPECT_EQ(std::filesystem::status(runner.file("out.vtu")).permissions(), perms::owner_read | perms::owner_write);
}

TEST_F(TransferBetweenCubes, WritesThroughALink)
{
    ASSERT_EQ(transfer({"--field", "linear"}).status, 0);
    std::filesystem::rename(runner.file("out.vtu"), runner.file("real.vtu"));
    std::filesystem::create_symlink("real.vtu", runner.file("out.vtu"));
    ASSERT_EQ(transfer({"--field", "vector"}).status, 0);
    EXPECT_TRUE(std::filesystem::is_symlink(runner.file("out.vtu")));
    EXPECT_NE(readGrid(runner.file("real.vtu"))->GetPointData()->GetArray("vector"), nullptr);
}

TEST_F(TransferBetweenCubes, ReplacesTheTargetsArraysOnRequest)
{
    const auto target = makeGrid(VTK_HEXAHEDRON, 3);
    addFloats(*target, "linear", {[](const Point&) { return 0; }});
    write("target.vtu", *target);
    ASSERT_EQ(transfer({"--field", "linear", "--replace"}).status, 0);
    expectValues(*output(), "linear", linear, singlePrecision);
}

TEST_F(TransferBetweenCubes, CtrlCCancelsAndLeavesNothingBehind)
{
    const auto source = makeGrid(VTK_TETRA, 12);
    addDoubles(*source, "linear", linear);
    write("source.vtu", *source);
    write("target.vtu", *makeGrid(VTK_TETRA, 30));
    expectCancellation(runner, {"transfer", "source.vtu", "target.vtu", "-o", "out.vtu"});
}

TEST(Command, TellsItsVersionAndTheLibrarys)
{
    const CommandResult result = CommandRunner().run({"--version"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, testing::StartsWith("veltrane 24.0.0\nlibrary: Dynamic linked library, version "
                                                   "24.0.0.79dbf165755\n"));
    EXPECT_EQ(std::ranges::count(result.output, '\n'), 3);
}

TEST(Command, HelpsWithAnExampleAndTheExitStatuses)
{
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--help"}, std::vector<std::string>{"transfer", "--help"}})
    {
        const CommandResult result = CommandRunner().run(arguments);
        EXPECT_EQ(result.status, 0);
        EXPECT_THAT(result.output, testing::ContainsRegex("Examples?:\n  veltrane transfer "));
        EXPECT_THAT(result.output, HasSubstr("  130  cancelled\n"));
    }
}

} // namespace
