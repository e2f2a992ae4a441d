// veltrane transfer where it fails: one sentence, a status, and nothing left behind.
#include "CommandRunner.h"
#include "FileFormat.h"
#include "TestGrids.h"

#include <vtkCellData.h>
#include <vtkCellType.h>
#include <vtkDoubleArray.h>
#include <vtkIntArray.h>
#include <vtkNew.h>
#include <vtkPointData.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <fstream>
#include <iterator>

namespace
{

using testing::IsEmpty;

class TransferError : public testing::Test
{
protected:
    TransferError()
    {
        const auto source = sourceGrid();
        writeGrid(*source, runner.file("source.vtu"));
        writeGrid(*makeGrid(VTK_TETRA, 2), runner.file("target.vtu"));
    }

    static vtkSmartPointer<vtkUnstructuredGrid> sourceGrid()
    {
        auto grid = makeGrid(VTK_HEXAHEDRON, 2);
        addDoubles(*grid, "T", linear);
        addFloats(*grid, "U", {linear, linear, linear});
        return grid;
    }

    void writeSource(vtkUnstructuredGrid& grid) const { writeGrid(grid, runner.file("source.vtu")); }
    void writeTarget(vtkUnstructuredGrid& grid) const { writeGrid(grid, runner.file("target.vtu")); }

    /// Writes one tetrahedron with a field as text and replaces some of the text.
    void writeSourceWith(const std::string& original, const std::string& replacement) const
    {
        GridBuilder builder;
        builder.addCell(VTK_TETRA, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
        vtkNew<vtkDoubleArray> values;
        values->SetName("T");
        values->SetNumberOfTuples(4);
        values->Fill(7);
        builder.grid()->GetPointData()->AddArray(values);
        writeGrid(*builder.grid(), runner.file("source.vtu"), true);

        std::string content = contentsOf(runner.file("source.vtu"));
        const std::size_t place = content.find(original);
        ASSERT_NE(place, std::string::npos) << content;
        content.replace(place, original.size(), replacement);
        std::ofstream(runner.file("source.vtu")) << content;
    }

    void expect(int status, const std::string& sentence, const std::vector<std::string>& arguments) const
    {
        expectFailure(runner, status, sentence, arguments);
    }

    void expectTransfer(int status, const std::string& sentence, std::vector<std::string> options = {}) const
    {
        options.insert(options.begin(), {"transfer", "source.vtu", "target.vtu", "-o", "out.vtu"});
        expect(status, sentence, options);
    }

    CommandRunner runner;
};

TEST_F(TransferError, UsageMustBeRight)
{
    expect(64, "A subcommand is required (see --help)", {});
    expect(64, "--output is required (see --help)", {"transfer", "source.vtu", "target.vtu"});
    expect(64, "TARGET is required (see --help)", {"transfer", "source.vtu", "-o", "out.vtu"});
    expectTransfer(64, "--outside: 3 not in {error,default,propagate,0,1,2} (see --help)", {"--mode", "3"});
    expectTransfer(64, "--field T is given twice", {"--field", "T", "--field", "U", "--field", "T"});
    expectTransfer(64, "--default has an effect only together with --outside default", {"--default", "5"});
    expectTransfer(64, "the tolerance 0 is not between 0 and 1", {"--tolerance", "0"});
    expectTransfer(64, "Could not convert: --tolerance = fine (see --help)", {"--tolerance", "fine"});
    expect(64, "the output 'out.vtp' is not named " + veltrane::endingsOf(veltrane::isMeshOutput),
           {"transfer", "source.vtu", "target.vtu", "-o", "out.vtp"});
}

TEST_F(TransferError, InputsMustBeReadableFiles)
{
    expect(66, "there is no file 'nowhere.vtu'", {"transfer", "nowhere.vtu", "target.vtu", "-o", "out.vtu"});
    expect(66, "there is no file 'nowhere.vtu'", {"transfer", "source.vtu", "nowhere.vtu", "-o", "out.vtu"});
    std::filesystem::create_directory(runner.file("folder.vtu"));
    expect(66, "'folder.vtu' is a directory, not a mesh file",
           {"transfer", "folder.vtu", "target.vtu", "-o", "out.vtu"});
    expect(66, "'/dev/null' is not a regular file", {"transfer", "source.vtu", "/dev/null", "-o", "out.vtu"});
    if (::geteuid() != 0)
    {
        std::filesystem::permissions(runner.file("source.vtu"), std::filesystem::perms::none);
        expectTransfer(66, "cannot open 'source.vtu': Permission denied");
    }
}

TEST_F(TransferError, InputsMustNotBeEmptyOrOfAnotherFormat)
{
    std::ofstream(runner.file("source.vtu"), std::ios::trunc);
    expectTransfer(65, "'source.vtu' is empty");
    std::ofstream(runner.file("source.vtu")) << "solid\n";
    expectTransfer(65, "cannot read 'source.vtu': Error parsing XML in stream at line 1, column 0, byte index 0: "
                       "syntax error");
    std::ofstream(runner.file("source.vtu")) << "<VTKFile type=\"PolyData\"><PolyData></PolyData></VTKFile>\n";
    expectTransfer(65, "cannot read 'source.vtu': Cannot find UnstructuredGrid element in file");
}

TEST_F(TransferError, InputsMustBeWhole)
{
    const auto size = std::filesystem::file_size(runner.file("source.vtu"));
    for (const auto part : {size / 8, size / 2, size - 400})
    {
        std::filesystem::resize_file(runner.file("target.vtu"), part);
        const CommandResult result = runner.run({"transfer", "source.vtu", "target.vtu", "-o", "out.vtu"});
        EXPECT_EQ(result.status, 65) << part;
        EXPECT_THAT(result.errors, testing::MatchesRegex("veltrane: cannot read 'target.vtu': [^\n]+\n"));
        EXPECT_FALSE(std::filesystem::exists(runner.file("out.vtu")));
        writeGrid(*makeGrid(VTK_TETRA, 2), runner.file("target.vtu"));
    }
    writeSourceWith("</Cells>", "</Cell>");
    const CommandResult result = runner.run({"transfer", "source.vtu", "target.vtu", "-o", "out.vtu"});
    EXPECT_EQ(result.status, 65);
    EXPECT_THAT(result.errors, testing::MatchesRegex("veltrane: cannot read 'source.vtu': [^\n]+mismatched tag\n"));
}

TEST_F(TransferError, CellsMustBeThereAndHaveVolumes)
{
    vtkNew<vtkUnstructuredGrid> empty;
    vtkNew<vtkPoints> points;
    points->InsertNextPoint(0, 0, 0);
    empty->SetPoints(points);
    writeSource(*empty);
    expectTransfer(65, "'source.vtu' has no cells");

    const auto surface = makeGrid(VTK_QUAD, 2);
    addDoubles(*surface, "T", linear);
    writeSource(*surface);
    expectTransfer(65, "'source.vtu' has no volume cells, which a source needs");
}

TEST_F(TransferError, CellsMustHoldTogether)
{
    writeSourceWith("0 1 2 3\n", "0 1 2 9\n");
    expectTransfer(65, "'source.vtu': cell 0 refers to point 9, but there are 4 points, counted from 0");
    writeSourceWith("0 1 2 3\n", "0 1 2 -3\n");
    expectTransfer(65, "'source.vtu': cell 0 refers to point -3, but there are 4 points, counted from 0");
    writeSourceWith("          10\n", "          12\n");
    expectTransfer(65, "'source.vtu': cell 0 is a hexahedron of 4 points instead of 8");
    writeSourceWith("NumberOfCells=\"1\"", "NumberOfCells=\"-1\"");
    expectTransfer(65, "cannot read 'source.vtu': it has a Piece with NumberOfCells \"-1\"");
    writeSourceWith("NumberOfCells=\"1\"", "NumberOfCells=\"9223372036854775807\"");
    expectTransfer(65, "cannot read 'source.vtu': it has a Piece with NumberOfCells \"9223372036854775807\", more than "
                       "the 2147483647 that can be counted");
    writeSourceWith("          4\n", "          40\n");
    expectTransfer(65, "cannot read 'source.vtu': Cannot read cell connectivity from Cells in piece 0 because the "
                       "\"connectivity\" array is not long enough");
}

TEST_F(TransferError, CoordinatesMustBeFinite)
{
    writeSourceWith("0 0 0 1 0 0\n", "0 0 0 nan 0 0\n");
    expectTransfer(65, "'source.vtu': point 1 has the coordinate nan, which is not a finite single-precision number");
    writeSourceWith("0 0 0 1 0 0\n", "0 0 0 1e60 0 0\n");
    expectTransfer(65, "'source.vtu': point 1 has the coordinate 1e+60, which is not a finite single-precision number");
}

TEST_F(TransferError, ValuesThatWouldSpreadAreToldOf)
{
    const auto expectWarning = [&](const std::string& values, const std::string& warning)
    {
        writeSourceWith("7 7 7 7\n", values + "\n");
        const CommandResult result = runner.run(
            {"transfer", "source.vtu", "source.vtu", "-o", "out.vtu", "--replace", "--field", "T=new", "--quiet"});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors,
                  warning.empty() ? "" : "veltrane: warning: 'source.vtu': field 'T' has " + warning + "\n");
    };
    expectWarning("7 -3e38 3e38 7", "");
    expectWarning("7 1e300 nan 7", "2 values beyond finite single-precision numbers; the first is 1e+300 at point 1, "
                                   "counted from 0");
    expectWarning("7 7 7 inf",
                  "1 value beyond finite single-precision numbers; the first is inf at point 3, counted from 0");
}

TEST_F(TransferError, ArraysMustHaveAValueForEachPointAndCell)
{
    writeSourceWith("7 7 7 7\n", "7 7 7\n");
    expectTransfer(65, "cannot read 'source.vtu': Cannot read point data array \"T\" from PointData in piece 0.  The "
                       "data array in the element may be too short");
}

TEST_F(TransferError, ArraysMustHaveNamesOfTheirOwn)
{
    const std::string array = "<DataArray type=\"Float64\" Name=\"T\" format=\"ascii\">7 7 7 7</DataArray>";
    writeSourceWith("</PointData>", array + "</PointData>");
    expectTransfer(65, "'source.vtu' has two point-data arrays of the name 'T'");
    writeSourceWith("</CellData>", array + array + "</CellData>");
    expectTransfer(65, "'source.vtu' has two cell-data arrays of the name 'T'");
    writeSourceWith("Name=\"T\"", "");
    expectTransfer(65, "'source.vtu' has a point-data array without a name");
}

/// A point-data array of whole numbers.
void addNumbers(vtkUnstructuredGrid& grid)
{
    vtkNew<vtkIntArray> numbers;
    numbers->SetName("number");
    numbers->SetNumberOfTuples(grid.GetNumberOfPoints());
    numbers->Fill(1);
    grid.GetPointData()->AddArray(numbers);
}

TEST_F(TransferError, FieldsAskedForMustExist)
{
    const auto source = sourceGrid();
    addNumbers(*source);
    writeSource(*source);
    expectTransfer(65, "'source.vtu' has no floating-point point-data array 'V', only 'T', 'U'", {"--field", "V"});
    expectTransfer(65, "'source.vtu' has no floating-point point-data array 'number', only 'T', 'U'",
                   {"--field", "number"});

    const auto bare = makeGrid(VTK_HEXAHEDRON, 2);
    addNumbers(*bare);
    writeSource(*bare);
    expectTransfer(65, "'source.vtu' has no floating-point point data to be transferred");
}

TEST_F(TransferError, FieldsAskedForMustNotHaveTooManyComponents)
{
    const auto source = sourceGrid();
    addFloats(*source, "large", std::vector<PointFunction>(10, linear));
    writeSource(*source);
    expectTransfer(65, "'source.vtu': field 'large' has 10 components; 1 to 9 can be transferred",
                   {"--field", "large"});
}

TEST_F(TransferError, TargetArraysAreNotReplacedUnasked)
{
    const auto target = makeGrid(VTK_TETRA, 2);
    addDoubles(*target, "U", linear);
    writeTarget(*target);
    expectTransfer(65, "the target 'target.vtu' has a point-data array 'U' of its own; --replace lets the new one take "
                       "its place");
}

TEST_F(TransferError, TargetMaterialsMustBeInTheSource)
{
    const auto source = sourceGrid();
    addCellNumbers(*source, "material", [](vtkIdType cell) { return cell < 4 ? 1 : 2; });
    writeSource(*source);
    const auto target = makeGrid(VTK_TETRA, 2);
    addCellNumbers(*target, "PartId", [](vtkIdType cell) { return cell < 6 ? 8 : cell < 12 ? 9 : 2; });
    writeTarget(*target);
    expectTransfer(65, "the source has no materials 8, 9, which the target has; the source has 1, 2");
}

TEST_F(TransferError, MaterialsMustBeNumberedByWholeNumbers)
{
    const auto target = makeGrid(VTK_TETRA, 1);
    vtkNew<vtkDoubleArray> materials;
    materials->SetName("material");
    materials->SetNumberOfTuples(target->GetNumberOfCells());
    materials->Fill(1);
    materials->SetValue(3, 1.5);
    target->GetCellData()->AddArray(materials);
    writeTarget(*target);
    expectTransfer(65, "'target.vtu': cell array 'material' numbers the material of cell 3 with 1.5, which is not a "
                       "whole number");
}

TEST_F(TransferError, SourceCellsInsideOutAreNamed)
{
    GridBuilder builder;
    builder.addCube(VTK_HEXAHEDRON, {0, 0, 0}, 1);
    builder.addCell(VTK_TETRA, {{2, 0, 0}, {2, 1, 0}, {3, 0, 0}, {2, 0, 1}});
    addDoubles(*builder.grid(), "T", linear);
    writeSource(*builder.grid());
    const CommandResult result = runner.run({"transfer", "source.vtu", "target.vtu", "-o", "out.vtu", "--quiet"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "veltrane: warning: 'source.vtu' has 1 cell that is inside out; the first is cell 1, a "
                             "tetrahedron\n");
}

TEST_F(TransferError, SourceCellsInsideOutAtASingleCornerAreNamed)
{
    // The corner at (1, 1, 1) is pushed through the middle of its three neighbours' triangle; the centre stays regular.
    GridBuilder builder;
    builder.addCube(VTK_HEXAHEDRON, {2, 0, 0}, 1);
    builder.addCell(VTK_HEXAHEDRON,
                    {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {0.6, 0.6, 0.6}, {0, 1, 1}});
    builder.addCube(VTK_HEXAHEDRON, {0, 0, 2}, 1);
    addDoubles(*builder.grid(), "T", linear);
    writeSource(*builder.grid());
    const CommandResult result =
        runner.run({"transfer", "source.vtu", "target.vtu", "-o", "out.vtu", "--mode", "1", "--quiet"});
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.errors.find("'source.vtu' has 1 cell that is inside out; the first is cell 1, a hexahedron\n"),
              std::string::npos)
        << result.errors;
}

TEST_F(TransferError, CellsOfNoKindAreInsideOutInTheirOwnOrder)
{
    for (const int cellType : {VTK_TETRA, VTK_HEXAHEDRON, VTK_VOXEL, VTK_WEDGE, VTK_PYRAMID, VTK_QUADRATIC_TETRA})
    {
        const auto grid = makeGrid(cellType, 2);
        addDoubles(*grid, "T", linear);
        writeSource(*grid);
        const CommandResult result = runner.run({"transfer", "source.vtu", "target.vtu", "-o", "out.vtu", "--quiet"});
        EXPECT_EQ(result.status, 0) << cellType;
        EXPECT_EQ(result.errors, "") << cellType;
    }
}

TEST_F(TransferError, SizesThatDifferByAThousandDeserveAHint)
{
    writeTarget(*makeGrid(VTK_TETRA, 2, 0, 1000));
    expectTransfer(2, "26 of 27 nodes are outside the source; the farthest, at (1000, 1000, 1000), is 1730.32 from the "
                      "nearest node of the source; --outside default gives such nodes the default value, --outside "
                      "propagate the values of neighbouring nodes; the target is 1000 times as large as the source: "
                      "are both in the same unit of length?");
    writeTarget(*makeGrid(VTK_TETRA, 2, 0, 0.001));
    const CommandResult result = runner.run({"transfer", "source.vtu", "target.vtu", "-o", "out.vtu", "--quiet"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "veltrane: warning: the target is 1000 times as small as the source: are both in the same "
                             "unit of length?\n");
}

TEST_F(TransferError, CountsMustBeThoseOfTheLibrary)
{
    writeSourceWith("NumberOfPoints=\"4\"", "NumberOfPoints=\"3000000000\"");
    expectTransfer(65, "cannot read 'source.vtu': it has a Piece with NumberOfPoints \"3000000000\", more than the "
                       "2147483647 that can be counted");
}

TEST_F(TransferError, OutputMustBeAPossibleFile)
{
    const auto expectOutput = [&](const std::string& sentence, const std::string& output) {
        expect(73, sentence, {"transfer", "source.vtu", "target.vtu", "-o", output});
    };
    expectOutput("there is no directory 'nowhere' for the output", "nowhere/out.vtu");
    expectOutput("there is no directory 'source.vtu' for the output", "source.vtu/out.vtu");
    expectOutput("cannot create a file in '/proc': No such file or directory", "/proc/out.vtu");
    expectOutput("the output 'source.vtu' is the input 'source.vtu' itself", "source.vtu");
    std::filesystem::create_hard_link(runner.file("target.vtu"), runner.file("hard.vtu"));
    expectOutput("the output 'hard.vtu' is the input 'target.vtu' itself", "hard.vtu");
    std::filesystem::create_symlink("source.vtu", runner.file("link.vtu"));
    expectOutput("the output './link.vtu' is the input 'source.vtu' itself", "./link.vtu");
    std::filesystem::create_symlink("nothing.vtu", runner.file("broken.vtu"));
    expectOutput("the output 'broken.vtu' is a link that leads nowhere", "broken.vtu");
    std::filesystem::create_directory(runner.file("folder.vtu"));
    expectOutput("the output 'folder.vtu' is a directory", "folder.vtu");
    std::filesystem::create_symlink("/dev/null", runner.file("device.vtu"));
    expectOutput("the output 'device.vtu' exists and is not a regular file", "device.vtu");
    if (::geteuid() != 0)
    {
        std::filesystem::create_directory(runner.file("closed"));
        std::filesystem::permissions(runner.file("closed"),
                                     std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
        expectOutput("cannot create a file in '" + runner.file("closed").string() + "': Permission denied",
                     "closed/out.vtu");
    }
}

TEST_F(TransferError, FailureToWriteIsReported)
{
    constexpr rlim_t tooFewBytes = 1000;
    const CommandResult result =
        runner.run({"transfer", "source.vtu", "target.vtu", "-o", "out.vtu", "--quiet"}, tooFewBytes);
    EXPECT_EQ(result.status, 73);
    EXPECT_EQ(result.errors, "veltrane: cannot write 'out.vtu': there is not enough disk space\n");
    EXPECT_THAT(runner.directory().names(), testing::UnorderedElementsAre("source.vtu", "target.vtu"));
    EXPECT_THAT(runner.temporaryNames(), IsEmpty());
}

TEST_F(TransferError, FailureLeavesAnEarlierOutputAsItWas)
{
    ASSERT_EQ(runner.run({"transfer", "source.vtu", "target.vtu", "-o", "out.vtu"}).status, 0);
    const auto before = std::filesystem::last_write_time(runner.file("out.vtu"));
    writeTarget(*makeGrid(VTK_TETRA, 2, 0, 10));
    expectTransfer(2, "26 of 27 nodes are outside the source; the farthest, at (10, 10, 10), is 15.5885 from the "
                      "nearest node of the source; --outside default gives such nodes the default value, --outside "
                      "propagate the values of neighbouring nodes");
    EXPECT_EQ(std::filesystem::last_write_time(runner.file("out.vtu")), before);
}

/// A cube whose upper side is drawn together to one point, and a target node for which the search in it meets a
/// singular Jacobian.
TEST_F(TransferError, ASingularElementIsLeftOut)
{
    GridBuilder builder;
    builder.addCell(VTK_HEXAHEDRON,
                    {{-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1}, {0, 0, 1}, {1, 0, 1}, {2, 0, 1}, {3, 0, 1}});
    for (vtkIdType point = 5; point < 8; ++point)
    {
        builder.grid()->GetPoints()->SetPoint(point, 0, 0, 1); // four nodes at one place, which are not one
    }
    addDoubles(*builder.grid(), "T", linear);
    writeSource(*builder.grid());
    GridBuilder target;
    target.addCell(VTK_TETRA, {{0.01, 0, 1}, {0.1, 0, 0}, {-0.1, 0.1, 0}, {0, -0.1, -0.5}});
    writeTarget(*target.grid());
    const CommandResult result =
        runner.run({"transfer", "source.vtu", "target.vtu", "-o", "out.vtu", "--quiet", "--outside", "default"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.errors,
                testing::HasSubstr("veltrane: warning: 1 cell of the source was left out for some nodes, "
                                   "on the way to which the Jacobian becomes singular: cell 0\n"));
}

} // namespace
