// veltrane match where it fails: a sentence, where it can be told the points without partners, a status, and nothing
// left behind.
#include "CommandRunner.h"
#include "FileFormat.h"
#include "TestGrids.h"

#include <vtkCellType.h>
#include <vtkPoints.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

const std::string noSourceNode = "At least one node of the target mesh does not correspond to one of the nodes of the "
                                 "source mesh. Please try with the Mapping option (veltrane transfer)";
const std::string noSourceGaussPoint = "At least one gauss point of the target mesh does not correspond to one gauss "
                                       "point of the source mesh";

class MatchError : public testing::Test
{
protected:
    MatchError()
    {
        writeSource(*makeGrid(VTK_HEXAHEDRON, 2));
        writeTarget(*makeGrid(VTK_HEXAHEDRON, 2));
    }

    void writeSource(vtkUnstructuredGrid& grid) const { writeGrid(grid, runner.file("source.vtu")); }
    void writeTarget(vtkUnstructuredGrid& grid) const { writeGrid(grid, runner.file("target.vtu")); }

    void expect(const std::string& sort, int status, const std::string& sentence,
                const std::vector<std::string>& options = {}) const
    {
        std::vector<std::string> arguments{"match", sort, "source.vtu", "target.vtu", "-o", "out.vtu"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        expectFailure(runner, status, sentence, arguments);
    }

    void expectOfBoth(int status, const std::string& sentence, const std::vector<std::string>& options = {}) const
    {
        expect("nodes", status, sentence, options);
        expect("gauss", status, sentence, options);
    }

    CommandRunner runner;
};

TEST_F(MatchError, UsageMustBeRight)
{
    expectFailure(runner, 64, "A subcommand is required (see --help)", {"match"});
    expectFailure(runner, 64, "TARGET is required (see --help)", {"match", "nodes", "source.vtu", "-o", "out.csv"});
    expectFailure(runner, 64, "the output 'out.txt' is not named .csv, " + veltrane::endingsOf(veltrane::isMeshOutput),
                  {"match", "gauss", "source.vtu", "target.vtu", "-o", "out.txt"});
    expectFailure(runner, 64,
                  "--replace has an effect only on an output named " + veltrane::endingsOf(veltrane::isMeshOutput),
                  {"match", "nodes", "source.vtu", "target.vtu", "-o", "out.csv", "--replace"});
    expect("gauss", 64, "the tolerance 2 is not between 0 and 1", {"--tolerance", "2"});
    // How far apart partners may be is not to be set, and nodes are not searched for in elements.
    const CommandResult result =
        runner.run({"match", "nodes", "source.vtu", "target.vtu", "-o", "out.csv", "--tolerance", "0.1"});
    EXPECT_EQ(result.status, 64);
    EXPECT_THAT(result.errors, testing::HasSubstr("--tolerance"));
}

TEST_F(MatchError, FilesMustBeThereAndPossible)
{
    expectFailure(runner, 66, "there is no file 'nowhere.vtu'",
                  {"match", "nodes", "source.vtu", "nowhere.vtu", "-o", "out.csv"});
    expectFailure(runner, 73, "the output 'target.vtu' is the input 'target.vtu' itself",
                  {"match", "gauss", "source.vtu", "target.vtu", "-o", "target.vtu"});
}

TEST_F(MatchError, FailureToWriteIsReported)
{
    for (const std::string output : {"out.csv", "out.vtu"})
    {
        constexpr rlim_t tooFewBytes = 100;
        const CommandResult result =
            runner.run({"match", "nodes", "source.vtu", "target.vtu", "-o", output, "--quiet"}, tooFewBytes);
        EXPECT_EQ(result.status, 73);
        EXPECT_THAT(result.errors, testing::MatchesRegex("veltrane: cannot write '" + output + "': [^\n]+\n"));
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(runner.directory().names(), testing::UnorderedElementsAre("source.vtu", "target.vtu"));
    }
}

TEST_F(MatchError, MaterialsAskedForMustExist)
{
    expectOfBoth(65, "'target.vtu' has no materials to choose from by --only", {"--only", "1"});
    const auto target = makeGrid(VTK_HEXAHEDRON, 2);
    addCellNumbers(*target, "material", [](vtkIdType cell) { return cell < 4 ? 3 : 5; });
    writeTarget(*target);
    expectOfBoth(65, "'target.vtu' has no material 4, only 3, 5", {"--only", "3,4"});
    expectOfBoth(65, "'target.vtu' has no material , only 3, 5", {"--only", ""});
}

TEST_F(MatchError, TargetMaterialsMustBeInTheSource)
{
    const auto grid = makeGrid(VTK_HEXAHEDRON, 2);
    addCellNumbers(*grid, "material", [](vtkIdType) { return 3; });
    writeSource(*grid);
    addCellNumbers(*grid, "material", [](vtkIdType cell) { return cell < 2 ? 3 : cell < 4 ? 5 : 6; });
    writeTarget(*grid);
    expectOfBoth(65, "the source has no materials 5, 6, which the target has; the source has 3");
    expectOfBoth(65, "the source has no material 5, which the target has; the source has 3", {"--only", "3,5"});
}

TEST_F(MatchError, TargetArraysAreNotReplacedUnasked)
{
    const auto target = makeGrid(VTK_HEXAHEDRON, 2);
    addDoubles(*target, "source_node", linear);
    addCellNumbers(*target, "source_gauss_point", [](vtkIdType) { return 1; });
    writeTarget(*target);
    expect("nodes", 65,
           "the target 'target.vtu' has a point-data array 'source_node' of its own; --replace lets the new one take "
           "its place");
    expect("gauss", 65,
           "the target 'target.vtu' has a cell-data array 'source_gauss_point' of its own; --replace lets the new one "
           "take its place");
}

TEST_F(MatchError, MeshesMustOverlap)
{
    writeTarget(*makeGrid(VTK_HEXAHEDRON, 2, 2, 3));
    expectOfBoth(65, "the source 'source.vtu' and the target 'target.vtu' do not overlap: the source reaches from x = "
                     "0 to 1, the target from x = 2 to 3");
}

TEST_F(MatchError, GaussPointsNeedCellsWithAVolume)
{
    writeTarget(*makeGrid(VTK_QUAD, 2));
    expect("gauss", 65, "'target.vtu' has no volume cells, which have the Gauss points to be matched");
    writeTarget(*makeGrid(VTK_HEXAHEDRON, 2));
    GridBuilder flat;
    flat.addCell(VTK_TETRA, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}});
    writeSource(*flat.grid());
    expect("gauss", 65, "source element 0, a tetrahedron, has no volume in single precision: its Jacobian is singular");
}

/// The corner at the origin is the first node, and a node of the first of eight elements. Its elements' boxes are 0.51
/// wide on average.
TEST_F(MatchError, NamesTheNodeAndTheElementWithoutPartners)
{
    const auto target = makeGrid(VTK_HEXAHEDRON, 2);
    target->GetPoints()->SetPoint(0, 0.125, 0, 0);
    writeTarget(*target);
    expect("nodes", 1,
           "the nodes cannot be matched: " + noSourceNode +
               "\n  1 of 27 target nodes without a source node within 0.00051:"
               "\n    node 1 at (0.125, 0, 0)");
    expect("gauss", 1,
           "the Gauss points cannot be matched: " + noSourceGaussPoint +
               "\n  1 of 8 target elements without a source element of the same kind within 0.00051:"
               "\n    element 1 around (0.265625, 0.25, 0.25)");
}

TEST_F(MatchError, NamesNoMoreThanTenNodes)
{
    const auto target = makeGrid(VTK_HEXAHEDRON, 2);
    for (vtkIdType i = 0; i < 12; ++i)
    {
        const Point point = pointOf(*target, 2 * i);
        target->GetPoints()->SetPoint(2 * i, point[0] + 0.01, point[1], point[2]);
    }
    writeTarget(*target);
    const CommandResult result = runner.run({"match", "nodes", "source.vtu", "target.vtu", "-o", "out.csv"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, testing::HasSubstr("12 of 27 target nodes without a source node within 0.00051, the "
                                                  "first:\n    node 1 at (0.01, 0, 0)\n    node 3 at "));
    EXPECT_THAT(result.errors, testing::ContainsRegex("\n    node 19 at [^\n]*\n$")); // the tenth
}

/// Two separate cubes of two materials, which have changed places.
TEST_F(MatchError, NamesPartnersInOtherMaterials)
{
    const auto write = [&](const std::string& name, int lower, int upper)
    {
        GridBuilder builder;
        builder.addCube(VTK_HEXAHEDRON, {0, 0, 0}, 1);
        builder.addCube(VTK_HEXAHEDRON, {2, 0, 0}, 1);
        builder.addCube(VTK_HEXAHEDRON, {4, 0, 0}, 1);
        addCellNumbers(*builder.grid(), "material",
                       [&](vtkIdType cell) { return cell == 0   ? lower
                                                    : cell == 1 ? upper
                                                                : 3; });
        writeGrid(*builder.grid(), runner.file(name));
        return builder.grid();
    };
    write("source.vtu", 1, 2);
    const auto target = write("target.vtu", 2, 1);
    std::string lines;
    for (vtkIdType i = 0; i < 8; ++i)
    {
        const Point point = pointOf(*target, i);
        lines += "\n    node " + std::to_string(i + 1) + " at (" + std::to_string(static_cast<int>(point[0])) + ", " +
                 std::to_string(static_cast<int>(point[1])) + ", " + std::to_string(static_cast<int>(point[2])) + ")";
    }
    expect("nodes", 1,
           "the nodes cannot be matched: Extract operation is failed due to following reasons. Please try with the "
           "Mapping option (veltrane transfer): At least one node located in a COINC interface was not correctly "
           "detached. Volume type of at least one of the corresponding nodes of source and target is not matching"
           "\n  8 of 16 target nodes without a source node of the same material within 0.00102, but with one of "
           "another material:" +
               lines,
           {"--only", "2,3"});
    expect("gauss", 1,
           "the Gauss points cannot be matched: " + noSourceGaussPoint +
               "\n  2 of 3 target elements without a source element of the same kind and material within 0.00102, but "
               "with one of another material:"
               "\n    element 1 around (0.5, 0.5, 0.5)"
               "\n    element 2 around (2.5, 0.5, 0.5)");
}

/// The source's pyramids are the second to the seventh of its volume cells, the target's the first to the sixth.
TEST_F(MatchError, PyramidsMayStandAnywhere)
{
    GridBuilder source;
    source.addCell(VTK_TRIANGLE, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}});
    source.addCube(VTK_HEXAHEDRON, {1, 0, 0}, 1);
    source.addCube(VTK_PYRAMID, {0, 0, 0}, 1);
    writeSource(*source.grid());
    GridBuilder target;
    target.addCube(VTK_PYRAMID, {0, 0, 0}, 1);
    target.addCube(VTK_HEXAHEDRON, {1, 0, 0}, 1);
    writeTarget(*target.grid());
    const auto match = [&](const std::string& sort) {
        return runner.run({"match", sort, "source.vtu", "target.vtu", "-o", "-", "--quiet"});
    };
    const CommandResult nodes = match("nodes");
    EXPECT_EQ(nodes.status, 0) << nodes.errors;
    const CommandResult gaussPoints = match("gauss");
    EXPECT_EQ(gaussPoints.status, 0) << gaussPoints.errors;
    // The first pyramid of the target is the third cell of the source, its hexahedron, the seventh cell, the second.
    EXPECT_THAT(gaussPoints.output, testing::HasSubstr("\n1,1,3,1\n"));
    EXPECT_THAT(gaussPoints.output, testing::HasSubstr("\n7,1,2,1\n"));
    writeTarget(*makeGrid(VTK_PYRAMID, 1));
    EXPECT_EQ(match("nodes").status, 0);
    EXPECT_EQ(match("gauss").status, 0);
}

/// All six tetrahedra of the cube have it as their box. The centre of the second one, (0.75, 0.25, 0.5), has the
/// reference coordinates (0.5, -0.25, 0.5) in the first one: with a tolerance above 0.125 it counts as inside there.
TEST_F(MatchError, SaysIfOtherElementsHoldTheCentres)
{
    writeSource(*makeGrid(VTK_TETRA, 1));
    writeTarget(*makeGrid(VTK_TETRA, 1));
    expect("gauss", 1,
           "the Gauss points cannot be matched: " + noSourceGaussPoint +
               "; each target element has a source element of the same kind in its place, but the one that holds its "
               "centre was another one, as it happens where source elements overlap",
           {"--tolerance", "0.2"});
    EXPECT_EQ(runner.run({"match", "gauss", "source.vtu", "target.vtu", "-o", "out.csv"}).status, 0);
}

TEST_F(MatchError, FailureLeavesAnEarlierOutputAsItWas)
{
    const std::vector<std::string> arguments{"match", "nodes", "source.vtu", "target.vtu", "-o", "out.csv"};
    ASSERT_EQ(runner.run(arguments).status, 0);
    const auto before = std::filesystem::last_write_time(runner.file("out.csv"));
    writeTarget(*makeGrid(VTK_HEXAHEDRON, 3));
    EXPECT_EQ(runner.run(arguments).status, 1);
    EXPECT_EQ(std::filesystem::last_write_time(runner.file("out.csv")), before);
    EXPECT_THAT(runner.directory().names(), testing::UnorderedElementsAre("out.csv", "source.vtu", "target.vtu"));
}

} // namespace
