// veltrane compare: its figures on fields whose differences are known, and where it fails.
#include "CommandRunner.h"
#include "TestGrids.h"

#include <vtkCellType.h>
#include <vtkIntArray.h>
#include <vtkNew.h>
#include <vtkPointData.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <limits>

namespace
{

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();

/// A value everywhere.
PointFunction constant(double value)
{
    return [=](const Point&) { return value; };
}

/// A value at one point, another one elsewhere.
PointFunction except(const Point& place, double valueThere, double value)
{
    return [=](const Point& point) { return point == place ? valueThere : value; };
}

vtkSmartPointer<vtkUnstructuredGrid> cube()
{
    return makeGrid(VTK_HEXAHEDRON, 1);
}

void addWholeNumbers(vtkUnstructuredGrid& grid, const std::string& name)
{
    vtkNew<vtkIntArray> numbers;
    numbers->SetName(name.c_str());
    numbers->SetNumberOfTuples(grid.GetNumberOfPoints());
    numbers->Fill(1);
    grid.GetPointData()->AddArray(numbers);
}

/// The files a.vtu and b.vtu, each one cube with a node at each corner and what a test adds.
class CompareCommand : public testing::Test
{
protected:
    CommandResult compare(std::vector<std::string> options = {}) const
    {
        write();
        options.insert(options.begin(), {"compare", "a.vtu", "b.vtu"});
        return runner.run(options);
    }

    void expectCompareFailure(int status, const std::string& sentence, std::vector<std::string> options = {}) const
    {
        write();
        options.insert(options.begin(), {"compare", "a.vtu", "b.vtu"});
        expectFailure(runner, status, sentence, options);
    }

    void write() const
    {
        writeGrid(*a, runner.file("a.vtu"));
        writeGrid(*b, runner.file("b.vtu"));
    }

    CommandRunner runner;
    vtkSmartPointer<vtkUnstructuredGrid> a = cube();
    vtkSmartPointer<vtkUnstructuredGrid> b = cube();
};

/// T differs by 2 at two of eight nodes: a mean square of 1, and 8 in all against 32. U has the length 5 and differs by
/// (3, 4, 12), of length 13, at one node: a mean square of 169 / 8, and 169 in all against 200.
TEST_F(CompareCommand, PrintsTheFiguresOfEachField)
{
    addDoubles(*a, "T", [](const Point& p) { return p[0] == 1 && p[1] == 1 ? 4 : 2; });
    addDoubles(*b, "T", constant(2));
    const Point place{1, 0, 1};
    addFloats(*a, "U", {except(place, 6, 3), except(place, 4, 0), except(place, 16, 4)});
    addFloats(*b, "U", {constant(3), constant(0), constant(4)});
    const CommandResult result = compare();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, "A                 a.vtu\n"
                             "B                 b.vtu\n"
                             "mesh of both      8 nodes, 1 hexahedron\n"
                             "\n"
                             "                       largest         RMS  relative L2     largest    at\n"
                             "array (components)  value in B  difference   difference  difference  node  x  y  z\n"
                             "T (1)                        2           1          0.5           2     3  1  1  0\n"
                             "U (3)                        5       4.596       0.9192          13     6  1  0  1\n");
    EXPECT_THAT(runner.directory().names(), testing::UnorderedElementsAre("a.vtu", "b.vtu"));
}

TEST_F(CompareCommand, FindsNoDifferenceBetweenAFileAndItself)
{
    addDoubles(*a, "T", linear);
    write();
    const CommandResult result = runner.run({"compare", "a.vtu", "a.vtu", "--tolerance", "0"});
    EXPECT_EQ(result.status, 0);
    // 1 + 2 x - 3 y + 5 z is largest at (1, 0, 1).
    EXPECT_THAT(result.output, HasSubstr("\nT (1)                        8           0            0           0     -  "
                                         "-  -  -\n\ntolerance         0, kept by all\n"));
}

TEST_F(CompareCommand, ComparesSingleWithDoublePrecision)
{
    addFloats(*a, "T", {constant(0.5)});
    addDoubles(*b, "T", constant(0.25));
    EXPECT_THAT(compare().output, HasSubstr("\nT (1)                     0.25        0.25            1        0.25"));
}

TEST_F(CompareCommand, KeepsTheFiguresOfHugeAndTinyValuesInRange)
{
    addDoubles(*a, "huge", constant(3e200));
    addDoubles(*b, "huge", constant(2e200));
    addDoubles(*a, "tiny", constant(3e-200));
    addDoubles(*b, "tiny", constant(2e-200));
    const std::string output = compare().output;
    EXPECT_THAT(output, HasSubstr("\nhuge (1)                2e+200      1e+200          0.5      1e+200     1"));
    EXPECT_THAT(output, HasSubstr("\ntiny (1)                2e-200      1e-200          0.5      1e-200     1"));
}

TEST_F(CompareCommand, DifferenceFromZeroIsInfinite)
{
    addDoubles(*a, "T", except({0, 0, 1}, 4, 0));
    addDoubles(*b, "T", constant(0));
    addDoubles(*a, "none", constant(0));
    addDoubles(*b, "none", constant(0));
    const CommandResult result = compare({"--tolerance", "1e30"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output,
                HasSubstr("\nT (1)                        0       1.414          inf           4     5"));
    EXPECT_THAT(result.output,
                HasSubstr("\nnone (1)                     0           0            0           0     -"));
    EXPECT_THAT(result.output, EndsWith("\ntolerance         1e+30, not kept by 'T'\n"));
}

TEST_F(CompareCommand, ComparesOnlyTheFieldsAskedFor)
{
    for (const char* name : {"T", "U", "V"})
    {
        addDoubles(*a, name, constant(2));
        addDoubles(*b, name, constant(1));
    }
    addDoubles(*a, "W", constant(1));
    const CommandResult result = compare({"--field", "V", "--field", "T"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, testing::ContainsRegex("\nV \\(1\\) [^\n]+\nT \\(1\\) [^\n]+\n$"));
    EXPECT_THAT(result.output, Not(HasSubstr("U (1)")));
    EXPECT_THAT(result.output, Not(HasSubstr("only in")));
}

TEST_F(CompareCommand, NamesArraysOfOneFileOnly)
{
    addDoubles(*a, "T", constant(1));
    addDoubles(*b, "T", constant(1));
    addDoubles(*a, "here", constant(1));
    addDoubles(*a, "kind", constant(1));
    addWholeNumbers(*b, "kind");
    addWholeNumbers(*b, "number");
    addDoubles(*b, "there", constant(1));
    const CommandResult result = compare({"--tolerance", "0"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, HasSubstr("\nonly in A         'here', 'kind'\nonly in B         'there'\n"));
}

/// B is 2 at the remaining six nodes, too, and differs by 1 at each of them: 6 in all against 24.
TEST_F(CompareCommand, CountsAndLeavesOutNodesWithoutUsableValues)
{
    addDoubles(*a, "T", except({1, 0, 0}, notANumber, 3));
    addDoubles(*b, "T", [](const Point& p) { return p == Point{1, 0, 0} ? 7 : p == Point{0, 1, 0} ? infinite : 2; });
    const float undefined = -99990001156096.0F;
    addFloats(*a, "U", {except({0, 0, 0}, undefined, 3), except({0, 0, 1}, -infinite, 0)});
    addFloats(*b, "U", {constant(2), constant(0)});
    addFloats(*a, "none", {constant(1)});
    addFloats(*b, "none", {constant(notANumber)});
    const CommandResult result = compare();
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output,
                HasSubstr("\nleft out          'T' is NaN, infinite or undefined at 1 node of A and 1 node of B\n"
                          "left out          'U' is NaN, infinite or undefined at 2 nodes of A\n"
                          "left out          'none' is NaN, infinite or undefined at 8 nodes of B\n\n"));
    EXPECT_THAT(result.output,
                HasSubstr("\nT (1)                        7           1          0.5           1     1"));
    EXPECT_THAT(result.output,
                HasSubstr("\nU (2)                        2           1          0.5           1     2"));
    EXPECT_THAT(result.output,
                HasSubstr("\nnone (1)                     -           -            -           -     -"));
}

TEST_F(CompareCommand, EndsWithStatus1BeyondTheTolerance)
{
    addDoubles(*a, "T", constant(3)); // relative to 2: 0.5
    addDoubles(*b, "T", constant(2));
    addDoubles(*a, "U", constant(5)); // relative to 4: 0.25
    addDoubles(*b, "U", constant(4));
    EXPECT_EQ(compare().status, 0);
    EXPECT_THAT(compare().output, Not(HasSubstr("tolerance")));

    const CommandResult kept = compare({"--tolerance", "0.5"});
    EXPECT_EQ(kept.status, 0);
    EXPECT_THAT(kept.output, EndsWith("\ntolerance         0.5, kept by all\n"));
    const CommandResult exceeded = compare({"--tolerance", "0.49"});
    EXPECT_EQ(exceeded.status, 1);
    EXPECT_EQ(exceeded.errors, "");
    EXPECT_THAT(exceeded.output, EndsWith("\ntolerance         0.49, not kept by 'T'\n"));
    EXPECT_THAT(compare({"--tolerance", "0.2"}).output, EndsWith("\ntolerance         0.2, not kept by 'T', 'U'\n"));
    EXPECT_EQ(compare({"--tolerance", "0.49", "--field", "U"}).status, 0);
}

TEST_F(CompareCommand, NodesWithoutUsableValuesAreBeyondAnyTolerance)
{
    addDoubles(*a, "T", except({1, 1, 1}, notANumber, 2));
    addDoubles(*b, "T", constant(2));
    addDoubles(*a, "U", constant(2));
    addDoubles(*b, "U", except({1, 1, 1}, notANumber, 2));
    addDoubles(*a, "V", constant(2));
    addDoubles(*b, "V", constant(2));
    const CommandResult result = compare({"--tolerance", "1000"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, EndsWith("\ntolerance         1000, not kept by 'T', 'U'\n"));
}

TEST_F(CompareCommand, TakesMeshesWithSurfaceCellsOnly)
{
    a = makeGrid(VTK_TRIANGLE, 1);
    b = makeGrid(VTK_TRIANGLE, 1);
    addDoubles(*a, "T", constant(3));
    addDoubles(*b, "T", constant(2));
    EXPECT_THAT(compare().output, HasSubstr("mesh of both      4 nodes, 2 triangles\n"));
}

TEST_F(CompareCommand, CoordinatesMayDifferByRoundingToSinglePrecision)
{
    addDoubles(*a, "T", constant(1));
    addDoubles(*b, "T", constant(1));
    // Single-precision numbers around 1 are 1.2e-7 apart; against the edge of 1, that is the place of the last digit.
    b->GetPoints()->SetPoint(1, 1 + 1.2e-7, 0, 1.1e-7);
    EXPECT_EQ(compare().status, 0);
    b->GetPoints()->SetPoint(1, 1, 0.001, 0);
    expectCompareFailure(65, "the meshes of 'a.vtu' and 'b.vtu' are not the same: node 2, counted from 1, is at (1, 0, "
                             "0) in the first and at (1, 0.001, 0) in the second");
    b->GetPoints()->SetPoint(1, 1 + 2.4e-7, 0, 0);
    EXPECT_EQ(compare().status, 65);
}

TEST_F(CompareCommand, MeshesMustBeTheSame)
{
    const std::string different = "the meshes of 'a.vtu' and 'b.vtu' are not the same: ";
    b = makeGrid(VTK_HEXAHEDRON, 2);
    expectCompareFailure(65, different + "the first has 8 nodes, the second 27");
    b = makeGrid(VTK_WEDGE, 1);
    expectCompareFailure(65, different + "the first has 1 cells, the second 2");

    a = makeGrid(VTK_WEDGE, 1);
    b->GetCells()->ReplaceCellAtId(1, 6, std::array<vtkIdType, 6>{3, 2, 1, 7, 6, 5}.data());
    a->GetCells()->ReplaceCellAtId(1, 6, std::array<vtkIdType, 6>{2, 1, 3, 6, 5, 7}.data());
    expectCompareFailure(65, different + "cell 2, counted from 1, has other nodes in the first than in the second");

    GridBuilder pyramid;
    pyramid.addCell(VTK_PYRAMID, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}});
    GridBuilder quadrilateral;
    quadrilateral.addCell(VTK_QUAD, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}});
    quadrilateral.grid()->GetPoints()->InsertNextPoint(0, 0, 1);
    a = pyramid.grid();
    b = quadrilateral.grid();
    expectCompareFailure(65, different + "cell 1, counted from 1, is a pyramid in the first and a quadrilateral in the "
                                         "second");
}

/// At the corners of the cube x y + 2 is 2, but 3 where x = y = 1: a sum of squares of 6 * 4 + 2 * 9 = 42. T is 2
/// everywhere, so it differs by 1 at two corners: 2 in all.
TEST_F(CompareCommand, ComparesWithFormulas)
{
    addDoubles(*a, "T", constant(2));
    addFloats(*a, "U", {[](const Point& p) { return p[0]; }, constant(3), [](const Point& p) { return 1 - p[2]; }});
    write();
    const CommandResult result =
        runner.run({"compare", "a.vtu", "--exact", "T = x*y + 2", "--exact", "U=x, sqrt(9), cos(pi/2*z)^2"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, testing::StartsWith("A                 a.vtu\n"
                                                   "B                 T = x*y + 2\n"
                                                   "B                 U = x, sqrt(9), cos(pi/2*z)^2\n"
                                                   "mesh              8 nodes, 1 hexahedron\n"));
    EXPECT_THAT(result.output, HasSubstr("\nT (1)                        3         0.5       0.2182           1     3  "
                                         "1  1  0\n"));
    EXPECT_EQ(runner.run({"compare", "a.vtu", "--exact", "U=x, 3, 1 - z", "--tolerance", "0"}).status, 0);
    EXPECT_EQ(runner.run({"compare", "a.vtu", "--exact", "T=2.1", "--tolerance", "0.01"}).status, 1);
}

TEST_F(CompareCommand, FormulasAreUndefinedWhereTheyAreNoNumber)
{
    addDoubles(*a, "T", constant(1));
    write();
    EXPECT_THAT(runner.run({"compare", "a.vtu", "--exact", "T=1/x"}).output,
                HasSubstr("left out          'T' is NaN, infinite or undefined at 4 nodes of B\n"));
}

TEST_F(CompareCommand, FormulasMustBeRight)
{
    addDoubles(*a, "T", constant(1));
    write();
    const auto expect = [&](int status, const std::string& sentence, std::vector<std::string> options)
    {
        options.insert(options.begin(), {"compare", "a.vtu"});
        expectFailure(runner, status, sentence, options);
    };
    expect(64, "--exact 'x' is not a name, an equal sign and a formula", {"--exact", "x"});
    expect(64, "the formula 'x + w' of T is wrong at character 5: Unexpected token \"w\" found.",
           {"--exact", "T=x + w"});
    expect(64, "the formula 'x +' of T is wrong at character 4: Unexpected end of expression", {"--exact", "T = x +"});
    expect(65, "field 'T' has 1 components, but the one to compare it with has 2", {"--exact", "T=x, y"});
    expect(65, "'a.vtu' has no floating-point point-data array 'U', only 'T'", {"--exact", "U=x"});
    expect(64, "--exact T is given twice", {"--exact", "T=x", "--exact", "T=y"});
    expect(64, "--exact names the fields, so --field has no place beside it", {"--exact", "T=x", "--field", "T"});
    expect(64, "the file B and --exact exclude each other", {"b.vtu", "--exact", "T=x"});
    expect(64, "there is nothing to compare with: neither a file B nor --exact is given", {});
}

TEST_F(CompareCommand, UsageMustBeRight)
{
    addDoubles(*a, "T", constant(1));
    addDoubles(*b, "T", constant(1));
    write();
    expectFailure(runner, 64, "A is required (see --help)", {"compare"});
    expectCompareFailure(64, "--field T is given twice", {"--field", "T", "--field", "T"});
    expectCompareFailure(64, "the tolerance -0.5 is not 0 or more", {"--tolerance", "-0.5"});
    expectCompareFailure(64, "the tolerance nan is not 0 or more", {"--tolerance", "nan"});
    expectCompareFailure(64, "Could not convert: --tolerance = small (see --help)", {"--tolerance", "small"});
}

TEST_F(CompareCommand, InputsMustBeReadableMeshFiles)
{
    addDoubles(*a, "T", constant(1));
    write();
    expectFailure(runner, 66, "there is no file 'nowhere.vtu'", {"compare", "nowhere.vtu", "a.vtu"});
    expectFailure(runner, 66, "there is no file 'nowhere.vtu'", {"compare", "a.vtu", "nowhere.vtu"});
    std::ofstream(runner.file("b.vtu"), std::ios::trunc);
    expectFailure(runner, 65, "'b.vtu' is empty", {"compare", "a.vtu", "b.vtu"});
}

TEST_F(CompareCommand, FieldsMustBeThereInBothFiles)
{
    addDoubles(*a, "T", constant(1));
    expectCompareFailure(65, "'b.vtu' has no floating-point point data to be compared");
    addDoubles(*b, "U", constant(1));
    addWholeNumbers(*b, "T");
    expectCompareFailure(65, "'a.vtu' and 'b.vtu' have no floating-point point data of the same name");
    expectCompareFailure(65, "'b.vtu' has no floating-point point-data array 'T', only 'U'", {"--field", "T"});
    expectCompareFailure(65, "'a.vtu' has no floating-point point-data array 'U', only 'T'", {"--field", "U"});
}

TEST_F(CompareCommand, FieldsMustHaveTheSameComponents)
{
    addFloats(*a, "U", {linear, linear, linear});
    addFloats(*b, "U", {linear, linear});
    expectCompareFailure(65, "field 'U' has 3 components, but the one to compare it with has 2");
}

TEST_F(CompareCommand, LeavesOutFieldsOfTooManyComponents)
{
    addDoubles(*a, "T", constant(1));
    addDoubles(*b, "T", constant(1));
    addFloats(*a, "large", std::vector<PointFunction>(12, linear));
    const CommandResult result = compare();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "veltrane: warning: left out point-data array 'large' of 'a.vtu': it has 12 components, "
                             "more than the 9 that can be compared\n");
    EXPECT_THAT(result.output, Not(HasSubstr("large (")));
}

} // namespace
