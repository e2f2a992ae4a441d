// veltrane transfer: fields, materials, outside points and the search as the options want them.
#include "CommandRunner.h"
#include "TestGrids.h"

#include <vtkCellData.h>
#include <vtkCellType.h>
#include <vtkDoubleArray.h>
#include <vtkFloatArray.h>
#include <vtkNew.h>
#include <vtkPointData.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace
{

using testing::Each;
using testing::HasSubstr;

class TransferChoices : public testing::Test
{
protected:
    void write(const std::string& name, vtkUnstructuredGrid& grid) const { writeGrid(grid, runner.file(name)); }

    CommandResult transfer(std::vector<std::string> options) const
    {
        options.insert(options.begin(), {"transfer", "source.vtu", "target.vtu", "-o", "out.vtu"});
        return runner.run(options);
    }

    /// Expects success without a word on standard error.
    vtkSmartPointer<vtkUnstructuredGrid> transferred(const std::vector<std::string>& options) const
    {
        const CommandResult result = transfer(options);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors, "");
        return readGrid(runner.file("out.vtu"));
    }

    void expectRefused(int status, const std::string& sentence, std::vector<std::string> options) const
    {
        options.insert(options.begin(), {"transfer", "source.vtu", "target.vtu", "-o", "out.vtu"});
        expectFailure(runner, status, sentence, options);
    }

    CommandRunner runner;
};

class FieldChoice : public TransferChoices
{
protected:
    FieldChoice()
    {
        const auto source = makeGrid(VTK_HEXAHEDRON, 2);
        addDoubles(*source, "T", linear);
        addDoubles(*source, "a=b", linear);
        vtkNew<vtkFloatArray> perCell;
        perCell->SetName("heat");
        for (vtkIdType cell = 0; cell < 8; ++cell)
        {
            perCell->InsertNextValue(static_cast<float>(cell));
        }
        source->GetCellData()->AddArray(perCell);
        write("source.vtu", *source);
        write("target.vtu", *makeGrid(VTK_HEXAHEDRON, 2));
    }
};

TEST_F(FieldChoice, FieldsMayGetNewNames)
{
    const auto grid = transferred({"--field", "T=temperature", "--field", "a=b", "--field", "a=b=c"});
    EXPECT_EQ(grid->GetPointData()->GetArray("T"), nullptr);
    for (const char* name : {"temperature", "a=b", "c"})
    {
        const std::vector<double> values = valuesOf(*grid, name);
        ASSERT_EQ(values.size(), 27U);
        EXPECT_NEAR(values[26], linear(pointOf(*grid, 26)), 1e-5) << name;
    }
}

TEST_F(FieldChoice, NewNamesMustDiffer)
{
    expectRefused(64, "--field gives two fields the name 'a=b'", {"--field", "T=a=b", "--field", "a=b"});
    expectRefused(64, "--field T= gives the field no new name", {"--field", "T="});
}

TEST_F(FieldChoice, CellDataIsNamedAndLeftOut)
{
    const CommandResult result = transfer({});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "veltrane: warning: cell data is not transferred: 'heat' of 'source.vtu'; "
                             "--cells-as-nodes averages it at the nodes first\n");
    EXPECT_EQ(readGrid(runner.file("out.vtu"))->GetPointData()->GetArray("heat"), nullptr);
    expectRefused(65,
                  "'source.vtu' has no floating-point point-data array 'heat', only 'T', 'a=b'; --cells-as-nodes "
                  "makes one of the cell data of this name",
                  {"--field", "heat"});
}

/// The cells are numbered along x first. A corner of the cube belongs to one cell, the middle of its first edge to the
/// first two and the centre to all eight.
TEST_F(FieldChoice, CellDataIsAveragedAtTheNodesOnRequest)
{
    const auto grid = transferred({"--cells-as-nodes", "--field", "heat"});
    ASSERT_NE(vtkArrayDownCast<vtkFloatArray>(grid->GetPointData()->GetArray("heat")), nullptr);
    const std::vector<double> values = valuesOf(*grid, "heat");
    for (vtkIdType i = 0; i < grid->GetNumberOfPoints(); ++i)
    {
        // Cell i + 2 j + 4 k; a node in the middle of an axis takes the mean of both sides.
        const Point point = pointOf(*grid, i);
        EXPECT_NEAR(values[static_cast<std::size_t>(i)], point[0] + 2 * point[1] + 4 * point[2], 1e-5);
    }
}

class OutsideChoice : public TransferChoices
{
protected:
    OutsideChoice()
    {
        const auto source = angle();
        addFloats(*source, "other", {[](const Point&) { return 5; }});
        write("source.vtu", *source);
    }

    /// What values and mask are at nodes near the angle's corner and at those far from it.
    void expectFar(vtkUnstructuredGrid& grid, const std::string& name, double near, double far) const
    {
        const std::vector<double> values = valuesOf(grid, name);
        for (vtkIdType i = 0; i < grid.GetNumberOfPoints(); ++i)
        {
            const double x = pointOf(grid, i)[0];
            if (x < 1 || x > 8)
            {
                EXPECT_NEAR(values[static_cast<std::size_t>(i)], x < 1 ? near : far, 1e-5) << name << " " << i;
            }
        }
    }
};

TEST_F(OutsideChoice, EachFieldMayHaveADefaultOfItsOwn)
{
    write("target.vtu", *diagonal(false));
    const auto grid = transferred({"--outside", "default", "--default", "-1", "--default", "other=-2.5"});
    expectFar(*grid, "constant", 4, -1);
    expectFar(*grid, "other", 5, -2.5);
    expectFar(*grid, "vtkValidPointMask", 1, -1);
}

TEST_F(OutsideChoice, DefaultsMustBeNumbersOfTransferredFields)
{
    write("target.vtu", *diagonal(false));
    expectRefused(64, "--default much is neither a number nor FIELD=NUMBER",
                  {"--outside", "default", "--default", "much"});
    expectRefused(64, "--default other=x is neither a number nor FIELD=NUMBER",
                  {"--outside", "default", "--default", "other=x"});
    expectRefused(64, "--default is given twice for all fields",
                  {"--outside", "default", "--default", "1", "--default", "2"});
    expectRefused(65, "--default: there is no field 'T' among those to be transferred, 'constant', 'other'",
                  {"--outside", "default", "--default", "T=1"});
}

TEST_F(OutsideChoice, MaskTellsPropagatedValues)
{
    write("target.vtu", *diagonal(true));
    const auto grid = transferred({"--outside", "propagate"});
    expectFar(*grid, "constant", 4, 4);
    expectFar(*grid, "vtkValidPointMask", 1, 2);
}

TEST_F(OutsideChoice, MaskIsZeroOutOfReachOfPropagationAndInNoCell)
{
    const auto target = diagonal(false);
    target->GetPoints()->InsertNextPoint(0.5, 0.5, 0.5); // in no cell
    write("target.vtu", *target);
    const CommandResult result = transfer({"--outside", "propagate"});
    EXPECT_EQ(result.status, 3);
    const auto grid = readGrid(runner.file("out.vtu"));
    const std::vector<double> mask = valuesOf(*grid, "vtkValidPointMask");
    EXPECT_EQ(mask.back(), 0);
    for (std::size_t i = 0; i + 1 < mask.size(); ++i)
    {
        EXPECT_EQ(mask[i], pointOf(*grid, static_cast<vtkIdType>(i))[0] < 1 ? 1 : 0);
    }
}

/// Two cubes apart along x with material numbers in "material" and, the other way round, in "zone". The field "side" is
/// 100 in the first and 200 in the second one.
vtkSmartPointer<vtkUnstructuredGrid> twoCubes(int first, int second)
{
    GridBuilder builder;
    builder.addCube(VTK_HEXAHEDRON, {0, 0, 0}, 1);
    builder.addCube(VTK_HEXAHEDRON, {2, 0, 0}, 1);
    addDoubles(*builder.grid(), "side", [](const Point& p) { return p[0] < 1.5 ? 100 : 200; });
    addCellNumbers(*builder.grid(), "material", [=](vtkIdType cell) { return cell == 0 ? first : second; });
    addCellNumbers(*builder.grid(), "zone", [=](vtkIdType cell) { return cell == 0 ? second : first; });
    return builder.grid();
}

class MaterialChoice : public TransferChoices
{
protected:
    MaterialChoice()
    {
        write("source.vtu", *twoCubes(1, 2));
        target("material", 1, 2);
    }

    /// The same two cubes with their materials in an array of this name.
    void target(const std::string& array, int first, int second) const
    {
        const auto grid = twoCubes(first, second);
        grid->GetPointData()->RemoveArray("side");
        grid->GetCellData()->RemoveArray("zone");
        grid->GetCellData()->GetArray("material")->SetName(array.c_str());
        write("target.vtu", *grid);
    }

    static std::vector<double> sides(vtkUnstructuredGrid& grid)
    {
        const std::vector<double> values = valuesOf(grid, "side");
        return {values.at(0), values.at(8)};
    }
};

TEST_F(MaterialChoice, AnyArrayCanNumberThem)
{
    target("zone", 2, 1);
    EXPECT_THAT(sides(*transferred({"--material-array", "zone"})), testing::ElementsAre(100, 200));
    expectRefused(65, "'source.vtu' has no array 'region' of one number each to tell the materials",
                  {"--material-array", "region"});
}

TEST_F(MaterialChoice, AreNumberedByAnArrayThatBothFilesHave)
{
    const auto source = twoCubes(1, 2);
    addCellNumbers(*source, "PartId", [](vtkIdType cell) { return cell == 0 ? 7 : 8; });
    write("source.vtu", *source);
    target("PartId", 7, 8);
    EXPECT_THAT(sides(*transferred({})), testing::ElementsAre(100, 200));
}

TEST_F(MaterialChoice, CanBeIgnored)
{
    target("material", 5, 6);
    expectRefused(65, "the source has no materials 5, 6, which the target has; the source has 1, 2", {});
    const CommandResult result = transfer({"--ignore-materials"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, HasSubstr("materials         not regarded\n"));
    EXPECT_THAT(sides(*readGrid(runner.file("out.vtu"))), testing::ElementsAre(100, 200));
}

TEST_F(MaterialChoice, OfTheSameStateCodeCorrespond)
{
    target("material", 1, 9);
    expectRefused(65, "the source has no material 9, which the target has; the source has 1, 2", {});
    EXPECT_THAT(sides(*transferred({"--state", "9=5", "--state", "2=5"})), testing::ElementsAre(100, 200));
}

TEST_F(MaterialChoice, StateCodesMustBeNumbersOfMaterials)
{
    const std::string rest = " is not ID=CODE with a whole number, at most 1000000 and not -1, as CODE";
    for (const char* state : {"1", "1=", "1=x", "1=2.5", "1=-1", "1=1000001"})
    {
        expectRefused(64, std::string("--state ") + state + rest, {"--state", state});
    }
    expectRefused(64, "--state is given twice for material 1", {"--state", "1=2", "--state", "1=3"});
    expectRefused(64, "--state and --ignore-materials contradict each other", {"--state", "1=2", "--ignore-materials"});
    expectRefused(65, "--state: there is no material 3; the source has 1, 2, the target 1, 2", {"--state", "3=2"});
}

TEST_F(MaterialChoice, OnlySelectedOnesReceiveValues)
{
    const auto grid = transferred({"--only", "2", "--outside", "default", "--default", "-1"});
    EXPECT_THAT(sides(*grid), testing::ElementsAre(-1, 200));
    const std::vector<double> mask = valuesOf(*grid, "vtkValidPointMask");
    EXPECT_THAT(std::vector(mask.begin(), mask.begin() + 8), Each(0));
    EXPECT_THAT(std::vector(mask.begin() + 8, mask.end()), Each(1));
    expectRefused(65, "'target.vtu' has no material 4, only 1, 2", {"--only", "2,4"});
}

TEST_F(MaterialChoice, FieldsOfClassOneLeaveOthersAlone)
{
    EXPECT_THAT(sides(*transferred({"--class1-only", "side", "--state", "1=1", "--state", "2=4"})),
                testing::ElementsAre(100, 0));
    expectRefused(64, "--class1-only needs --state, which tells the materials of class 1 from others",
                  {"--class1-only", "side"});
    expectRefused(65, "--class1-only: there is no field 'T' among those to be transferred, 'side'",
                  {"--class1-only", "T", "--state", "1=1"});
}

class SearchChoice : public MaterialChoice
{
};

TEST_F(SearchChoice, BucketsCanBeLimited)
{
    EXPECT_THAT(transfer({"--max-buckets", "1"}).output, HasSubstr("search buckets            1\n"));
    expectRefused(64, "the number of buckets cannot be limited to 0", {"--max-buckets", "0"});
    expectRefused(64, "the bucket factor -1 is not between 0 and 1000", {"--bucket-factor", "-1"});
    EXPECT_EQ(transfer({"--bucket-factor", "0.5"}).status, 0);
}

TEST_F(SearchChoice, LogIsKeptOnRequest)
{
    ASSERT_EQ(transfer({"--quiet", "--log", "search.log"}).status, 0);
    const std::string log = contentsOf(runner.file("search.log"));
    EXPECT_EQ(std::ranges::count(log, '='), 12); // its figures
    EXPECT_THAT(runner.directory().names(),
                testing::UnorderedElementsAre("source.vtu", "target.vtu", "out.vtu", "search.log"));
    expectRefused(73, "the output 'source.vtu' is the input 'source.vtu' itself", {"--log", "source.vtu"});
    expectRefused(64, "the output and the file of --log are both 'out.vtu'", {"--log", "out.vtu"});
    expectRefused(64, "the output and the file of --log are both './out.vtu'", {"--log", "./out.vtu"});
}

TEST_F(SearchChoice, FilesBesideTheOutputAreDistinct)
{
    std::filesystem::create_directory_symlink(".", runner.file("here"));
    for (const std::string& log :
         {std::string("a.json"), std::string("./a.json"), std::string("here/a.json"), runner.file("a.json").string()})
    {
        expectRefused(64, "the files of --report and --log are both '" + log + "'",
                      {"--report", "a.json", "--log", log});
    }
    std::ofstream(runner.file("b.png")) << "of an earlier run\n";
    std::filesystem::create_symlink("b.png", runner.file("link"));
    expectRefused(64, "the files of --picture and --log are both 'link'", {"--picture", "b.png", "--log", "link"});
    EXPECT_EQ(transfer({"--report", "a.json", "--picture", "b.png", "--log", "c", "--quiet"}).status, 0);
}

TEST_F(TransferChoices, WorkOnABundledResult)
{
    const std::string meshes = VELTRANE_EXAMPLE_MESHES;
    const CommandResult result = runner.run({"transfer",
                                             meshes + "/flange_tetrahedra_coarse.vtu",
                                             meshes + "/flange_mixed_coarse.vtu",
                                             "-o",
                                             "out.vtk",
                                             "--field",
                                             "von_mises=vm",
                                             "--only",
                                             "2,3",
                                             "--outside",
                                             "default",
                                             "--default",
                                             "vm=-1",
                                             "--state",
                                             "2=1",
                                             "--state",
                                             "3=3",
                                             "--class1-only",
                                             "von_mises",
                                             "--max-buckets",
                                             "500",
                                             "--bucket-factor",
                                             "0.2",
                                             "--tolerance",
                                             "1e-4",
                                             "--log",
                                             "log.txt"});
    ASSERT_EQ(result.status, 0) << result.errors;
    // The weld and the pipe without the interface to the flange, whose nodes belong to the flange.
    EXPECT_THAT(result.output, testing::ContainsRegex("target nodes +5600\n  not mapped +[0-9]+   of other materials"));
    EXPECT_THAT(result.output, testing::ContainsRegex("search buckets +[1-4]?[0-9]?[0-9]\n"));
}

} // namespace
