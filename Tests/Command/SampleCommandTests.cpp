// veltrane sample on points in files of all formats.
#include "CommandRunner.h"
#include "FileFormat.h"
#include "TestGrids.h"

#include <vtkCellData.h>
#include <vtkCellType.h>
#include <vtkDoubleArray.h>
#include <vtkIntArray.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkXMLPolyDataReader.h>
#include <vtkXMLPolyDataWriter.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace
{

using testing::HasSubstr;

class SampleCommand : public testing::Test
{
protected:
    SampleCommand()
    {
        const auto source = makeGrid(VTK_HEXAHEDRON, 2);
        addDoubles(*source, "T", linear);
        addFloats(*source, "u",
                  {[](const Point& p) { return p[0]; }, [](const Point& p) { return p[1]; },
                   [](const Point& p) { return p[2]; }});
        writeGrid(*source, runner.file("source.vtu"));
    }

    void writeText(const std::string& name, const std::string& content) const
    {
        std::ofstream(runner.file(name)) << content;
    }

    std::string textOf(const std::string& name) const { return contentsOf(runner.file(name)); }

    CommandResult sample(const std::string& points, const std::string& output,
                         std::vector<std::string> options = {}) const
    {
        options.insert(options.begin(), {"sample", "source.vtu", points, "-o", output});
        return runner.run(options);
    }

    void expectRefused(int status, const std::string& sentence, const std::string& points,
                       std::vector<std::string> options = {}) const
    {
        options.insert(options.begin(), {"sample", "source.vtu", points, "-o", "out.csv", "--quiet"});
        expectFailure(runner, status, sentence, options);
    }

    CommandRunner runner;
};

/// Weights and values are powers of two, so that the sums are exact.
TEST_F(SampleCommand, AddsColumnsToATable)
{
    writeText("points.csv", "name,x,y,z,id\n\"A, left\",0.25,0.5,0.125,7\nB,1,1,1,-3\n");
    const CommandResult result = sample("points.csv", "out.csv", {"--quiet"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(textOf("out.csv"), "x,y,z,name,id,T,u:0,u:1,u:2,vtkValidPointMask\n"
                                 "0.25,0.5,0.125,\"A, left\",7,0.625,0.25,0.5,0.125,1\n"
                                 "1,1,1,B,-3,5,1,1,1,1\n");
}

TEST_F(SampleCommand, KeepsAllDigitsInTables)
{
    writeText("points.csv", "X,Y,Z,value\n0.1,0.30000000000000004,1e-9,0.1\n");
    ASSERT_EQ(sample("points.csv", "out.csv", {"--field", "T"}).status, 0);
    EXPECT_THAT(textOf("out.csv"), HasSubstr("\n0.1,0.30000000000000004,1e-09,0.1,"));
    ASSERT_EQ(sample("out.csv", "again.csv", {"--field", "T", "--replace"}).status, 0);
    EXPECT_EQ(textOf("again.csv"), textOf("out.csv"));
}

TEST_F(SampleCommand, ReadsAndWritesPolyData)
{
    vtkNew<vtkPoints> points;
    points->InsertNextPoint(0.25, 0.5, 0.125);
    points->InsertNextPoint(7, 7, 7);
    vtkNew<vtkPolyData> polyData;
    polyData->SetPoints(points);
    vtkNew<vtkXMLPolyDataWriter> writer;
    writer->SetInputData(polyData);
    writer->SetFileName(runner.file("points.vtp").c_str());
    ASSERT_EQ(writer->Write(), 1);
    const CommandResult result = sample("points.vtp", "out.vtp", {"--outside", "default", "--default", "T=-1"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, testing::ContainsRegex("target points +2\n  inside +1\n  outside +1   in no cell"));

    vtkNew<vtkXMLPolyDataReader> reader;
    reader->SetFileName(runner.file("out.vtp").c_str());
    reader->Update();
    vtkPointData& data = *reader->GetOutput()->GetPointData();
    ASSERT_NE(vtkArrayDownCast<vtkDoubleArray>(data.GetArray("T")), nullptr);
    EXPECT_EQ(data.GetArray("T")->GetComponent(0, 0), 0.625);
    EXPECT_EQ(data.GetArray("T")->GetComponent(1, 0), -1);
    EXPECT_EQ(data.GetArray("u")->GetComponent(1, 2), 0);
    EXPECT_EQ(data.GetArray("vtkValidPointMask")->GetComponent(0, 0), 1);
    EXPECT_EQ(data.GetArray("vtkValidPointMask")->GetComponent(1, 0), -1);
    EXPECT_EQ(reader->GetOutput()->GetNumberOfVerts(), 2); // so that the points are seen
}

TEST_F(SampleCommand, TellsWhatItHasDone)
{
    writeText("points.csv", "x,y,z\n0.25,0.5,0.125\n0.5,0.5,1.03125\n");
    const CommandResult result = sample("points.csv", "out.csv", {"--outside", "default", "--default", "-99"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output,
                testing::StartsWith("verdict           doubtful: 1 of 2 points (50 %) are far from the source\n"
                                    "source            source.vtu\n"
                                    "                  27 nodes, 8 hexahedra\n"
                                    "target            points.csv\n"
                                    "                  2 points\n"
                                    "target points             2\n"
                                    "  inside                  1\n"
                                    "  outside                 1   in no cell of the source: default"));
    EXPECT_THAT(result.output, testing::ContainsRegex("\nsearch buckets +[0-9]+\n  in use +[0-9]+   holding "));
    EXPECT_THAT(result.output, testing::ContainsRegex("\nmean iterations +[1-9][.][0-9][0-9]  "));
    for (const char* stage : {"time in all", "  reading source", "  reading points", "  preparing search", "  sampling",
                              "  writing output"})
    {
        EXPECT_THAT(result.output, testing::ContainsRegex(std::string("\n") + stage + " +[0-9]+[.][0-9][0-9] s\n"));
    }
    EXPECT_THAT(result.output, testing::ContainsRegex("\nvalues at points +minimum +mean +maximum\n"
                                                      "T +source +-2 +3 +8\n"
                                                      " +target +0[.]625 +0[.]625 +0[.]625\n"));
    // Neither a default value nor a point away from the peaks says anything of the source's range.
    EXPECT_THAT(result.output, testing::Not(HasSubstr("beyond source")));
    EXPECT_THAT(result.output, testing::Not(HasSubstr("peaks lost")));
}

TEST_F(SampleCommand, SaysNothingOfIterationsWithoutAny)
{
    writeText("points.csv", "x,y,z\n0.5,0.5,1.03125\n");
    const CommandResult result = sample("points.csv", "out.csv", {"--outside", "default"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, testing::ContainsRegex("\n  inside +0\n  outside +1 "));
    EXPECT_THAT(result.output, testing::Not(HasSubstr("iterations")));
}

/// On the edge of a ten-node tetrahedron from 0 to 1 with 1 in its middle, the parabola reaches 9/8 at 3/4; the other
/// nodes hold 0, so that the source's range is 1.
TEST_F(SampleCommand, TellsOfValuesBeyondTheSource)
{
    const auto source = makeGrid(VTK_QUADRATIC_TETRA, 1);
    addDoubles(*source, "peak", [](const Point& p) { return p[1] == 0 && p[2] == 0 && p[0] >= 0.5 ? 1.0 : 0.0; });
    writeGrid(*source, runner.file("source.vtu"));
    writeText("points.csv", "x,y,z\n0.75,0,0\n");
    const CommandResult result = sample("points.csv", "out.csv");
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output,
                testing::ContainsRegex("\nbeyond source +peak maximum by 1[23] % of the source's range\n"));
}

TEST_F(SampleCommand, TakesThePointsOfMeshesAndKeepsTheirCells)
{
    writeGrid(*makeGrid(VTK_TETRA, 2), runner.file("target.vtu"));
    ASSERT_EQ(sample("target.vtu", "out.vtu").status, 0);
    const auto grid = readGrid(runner.file("out.vtu"));
    EXPECT_EQ(grid->GetNumberOfCells(), 48);
    const std::vector<double> values = valuesOf(*grid, "T");
    for (std::size_t i = 0; i < values.size(); ++i)
    {
        EXPECT_NEAR(values[i], linear(pointOf(*grid, static_cast<vtkIdType>(i))), 1e-5);
    }
    writeText("points.csv", "x,y,z\n0.25,0.5,0.125\n");
    ASSERT_EQ(sample("points.csv", "points.vtu").status, 0);
    EXPECT_EQ(readGrid(runner.file("points.vtu"))->GetCellType(0), VTK_VERTEX);
}

TEST_F(SampleCommand, PointsHaveMaterialsIfTheirDataSaysSo)
{
    const auto source = makeGrid(VTK_HEXAHEDRON, 2);
    addDoubles(*source, "T", linear);
    addCellNumbers(*source, "material", [](vtkIdType cell) { return cell < 4 ? 1 : 2; }); // the lower and upper half
    writeGrid(*source, runner.file("source.vtu"));
    writeText("points.csv", "x,y,z,material\n0.5,0.5,0.25,1\n0.5,0.5,0.75,2\n0.5,0.5,0.25,2\n");
    expectRefused(2,
                  "1 of 3 points is outside the source; the farthest, at (0.5, 0.5, 0.25), is 0.25 from the nearest "
                  "node of the source; --outside default gives such points the default value, --near those just "
                  "outside the values of a near cell",
                  "points.csv");
    const CommandResult result =
        sample("points.csv", "out.csv", {"--outside", "default", "--default", "-9", "--only", "2", "--quiet"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(textOf("out.csv"), "x,y,z,material,T,vtkValidPointMask\n"
                                 "0.5,0.5,0.25,1,-9,0\n0.5,0.5,0.75,2,4.25,1\n0.5,0.5,0.25,2,-9,-1\n");
    ASSERT_EQ(sample("points.csv", "out.csv", {"--ignore-materials"}).status, 0);
    EXPECT_THAT(textOf("out.csv"), HasSubstr("\n0.5,0.5,0.25,2,1.75,1\n"));
}

TEST_F(SampleCommand, TablesMustHavePlacesForAllPoints)
{
    writeText("points.csv", "a,b\n1,2\n");
    expectRefused(65, "'points.csv' has no columns x, y and z; its first line must name the columns", "points.csv");
    writeText("points.csv", "x,y,x,z\n1,2,3,4\n");
    expectRefused(65, "'points.csv' has two columns of the name 'x'", "points.csv");
    writeText("points.csv", "x,y,z\n1,2,3\n4,five,6\n");
    expectRefused(65, "'points.csv': y of point 1 is 'five', which is not a number", "points.csv");
    writeText("points.csv", "x,y,z\n1,2,3\n4,5\n");
    expectRefused(65, "'points.csv': the line of point 1 has not as many columns as the first line", "points.csv");
    writeText("points.csv", "x,y,z\n1,,3\n4,5,6\n");
    expectRefused(65, "'points.csv': point 0 has the coordinate nan, which is not a finite single-precision number",
                  "points.csv");
    writeText("points.csv", "x,y,z\n");
    expectRefused(65, "'points.csv': there is no point", "points.csv");
    writeText("points.txt", "x,y,z\n1,2,3\n");
    expectRefused(65, "'points.txt' is not named as a point file is: " + veltrane::endingsOf(veltrane::isPointInput),
                  "points.txt");
    writeText("points.vtp", "x,y,z\n1,2,3\n");
    expectRefused(65,
                  "cannot read 'points.vtp': Error parsing XML in stream at line 1, column 0, byte index 0: "
                  "syntax error",
                  "points.vtp");
}

TEST_F(SampleCommand, OptionsMustFit)
{
    writeText("points.csv", "x,y,z,T\n0.25,0.5,0.125,1\n");
    expectRefused(65, "'points.csv' has a point-data array 'T' of its own; --replace lets the new one take its place",
                  "points.csv");
    expectRefused(64, "--outside: propagate not in {error,default,0,1} (see --help)", "points.csv",
                  {"--outside", "propagate"});
    expectRefused(64, "--default has an effect only together with --outside default", "points.csv", {"--default", "1"});
    expectFailure(runner, 64, "the output 'out.txt' is not named " + veltrane::endingsOf(veltrane::isPointOutput),
                  {"sample", "source.vtu", "points.csv", "-o", "out.txt"});
    expectFailure(runner, 66, "there is no file 'nowhere.csv'",
                  {"sample", "source.vtu", "nowhere.csv", "-o", "out.csv", "--quiet"});
}

TEST_F(SampleCommand, FailureToWriteATableIsReported)
{
    std::string points = "x,y,z\n";
    for (int i = 0; i < 200; ++i)
    {
        points += "0.25,0.5,0.125\n";
    }
    writeText("points.csv", points);
    constexpr rlim_t tooFewBytes = 1000;
    const CommandResult result =
        runner.run({"sample", "source.vtu", "points.csv", "-o", "out.csv", "--quiet"}, tooFewBytes);
    EXPECT_EQ(result.status, 73);
    EXPECT_EQ(result.errors, "veltrane: cannot write 'out.csv': File too large\n");
    EXPECT_THAT(runner.directory().names(), testing::UnorderedElementsAre("source.vtu", "points.csv"));
}

TEST_F(SampleCommand, HelpsWithAnExample)
{
    EXPECT_THAT(runner.run({"sample", "--help"}).output, HasSubstr("Example:\n  veltrane sample "));
}

TEST(InfoCommand, NamesCellsAndCountsWhatIsNotANumber)
{
    const CommandRunner runner;
    const auto grid = makeGrid(VTK_TETRA, 1);
    addDoubles(*grid, "T", linear);
    grid->GetPointData()->GetArray("T")->SetComponent(2, 0, std::nan(""));
    grid->GetPointData()->GetArray("T")->SetComponent(3, 0, std::nan(""));
    std::array<vtkIdType, 20> points{};
    grid->InsertNextCell(VTK_QUADRATIC_HEXAHEDRON, 20, points.data());
    grid->InsertNextCell(VTK_POLYGON, 5, points.data());
    grid->InsertNextCell(VTK_POLYGON, 5, points.data());
    addCellNumbers(*grid, "part", [](vtkIdType) { return 1; });
    writeGrid(*grid, runner.file("grid.vtu"));
    const CommandResult result = runner.run({"info", "grid.vtu"});
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, HasSubstr("2 polygons, 6 tetrahedra, 1 quadratic hexahedron\n"));
    EXPECT_THAT(result.output, HasSubstr("array      of    type  components  min  max  NaN\n"));
    EXPECT_THAT(result.output, HasSubstr("\nT      points  double           1   -2    8    2\n"));
    EXPECT_THAT(result.output, HasSubstr("\npart    cells     int           1    1    1    0\n"));
}

TEST(InfoCommand, RefusesBrokenFilesAsTransferDoes)
{
    const CommandRunner runner;
    const auto expect = [&](vtkUnstructuredGrid& grid, const std::string& sentence)
    {
        writeGrid(grid, runner.file("grid.vtu"));
        expectFailure(runner, 65, sentence, {"info", "grid.vtu"});
        expectFailure(runner, 65, sentence, {"transfer", "grid.vtu", "grid.vtu", "-o", "out.vtu", "--quiet"});
    };
    const auto withCell = [](int cellType, std::vector<vtkIdType> points)
    {
        auto grid = makeGrid(VTK_TETRA, 1);
        addDoubles(*grid, "T", linear);
        grid->InsertNextCell(cellType, static_cast<vtkIdType>(points.size()), points.data());
        return grid;
    };
    expect(*withCell(VTK_TETRA, {0, 1, 2, 8}),
           "'grid.vtu': cell 6 refers to point 8, but there are 8 points, counted from 0");
    expect(*withCell(VTK_TETRA, {0, 1, 2}), "'grid.vtu': cell 6 is a tetrahedron of 3 points instead of 4");
    const auto grid = makeGrid(VTK_TETRA, 1);
    addDoubles(*grid, "T", linear);
    grid->GetPoints()->SetPoint(3, 0, std::nan(""), 0);
    expect(*grid, "'grid.vtu': point 3 has the coordinate nan, which is not a finite single-precision number");
}

TEST(Command, NamesTheCommandThatMayBeMeant)
{
    const CommandRunner runner;
    const auto expect = [&](const std::string& word, const std::string& meant) {
        expectFailure(runner, 64, "there is no command '" + word + "'; did you mean " + meant + "?", {word, "a.vtu"});
    };
    expect("trasnfer", "'transfer'");
    expect("inf", "'info'");
    expect("trans", "'transfer'");
    expect("frob", "one of transfer, sample, match, info, compare");
}

TEST(InfoCommand, TellsWhatIsInFiles)
{
    const CommandRunner runner;
    const auto grid = makeGrid(VTK_VOXEL, 2);
    addDoubles(*grid, "T", linear);
    addCellNumbers(*grid, "PartId", [](vtkIdType cell) { return static_cast<int>(cell); });
    grid->InsertNextCell(VTK_QUADRATIC_EDGE, 3, std::array<vtkIdType, 3>{0, 1, 2}.data());
    vtkIntArray::SafeDownCast(grid->GetCellData()->GetArray("PartId"))->InsertNextValue(9);
    writeGrid(*grid, runner.file("grid.vtu"));
    std::ofstream(runner.file("points.csv")) << "x,y,z\n1,2,3\n";
    const CommandResult result = runner.run({"info", "grid.vtu", "points.csv"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, "file              grid.vtu\n"
                             "format            VTK unstructured grid\n"
                             "points            27\n"
                             "cells             8 hexahedra, 1 quadratic line\n"
                             "box               x = 0 to 1\n"
                             "                  y = 0 to 1\n"
                             "                  z = 0 to 1\n"
                             "materials         numbered by 'PartId'\n"
                             "array       of    type  components  min  max\n"
                             "T       points  double           1   -2    8\n"
                             "PartId   cells     int           1    0    9\n"
                             "\n"
                             "file              points.csv\n"
                             "format            table of points\n"
                             "points            1\n"
                             "cells             none\n"
                             "box               x = 1 to 1\n"
                             "                  y = 2 to 2\n"
                             "                  z = 3 to 3\n"
                             "arrays            none\n");
    expectFailure(runner, 66, "there is no file 'nowhere.vtu'", {"info", "nowhere.vtu"});
    EXPECT_THAT(runner.run({"info", "--help"}).output, HasSubstr("Example:\n  veltrane info "));
}

TEST(InfoCommand, FailureToWriteIsReported)
{
    const CommandRunner runner;
    writeGrid(*makeGrid(VTK_TETRA, 1), runner.file("mesh.vtu"));
    constexpr rlim_t tooFewBytes = 80; // enough for the sentence
    const CommandResult result = runner.run({"info", "mesh.vtu"}, tooFewBytes);
    EXPECT_EQ(result.status, 73);
    EXPECT_EQ(result.errors, "veltrane: cannot write to standard output: File too large\n");
}

TEST(InfoCommand, DescribesBundledFiles)
{
    const std::string file = std::string(VELTRANE_EXAMPLE_MESHES) + "/flange_quadratic_tetrahedra_coarse.vtu";
    const CommandResult result = CommandRunner().run({"info", file});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, HasSubstr("cells             5084 quadratic tetrahedra\n"));
    EXPECT_THAT(result.output, testing::ContainsRegex("\ndisplacement +points +double +3 "));
    EXPECT_THAT(result.output, testing::ContainsRegex("\nstress +points +float +6 "));
}

} // namespace
