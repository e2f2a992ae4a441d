// Structured grids, trees of blocks and lists of steps that VTK's own writers write; parts of Exodus files; cases of
// OpenFOAM and LS-DYNA.
#include "CommandRunner.h"
#include "DataSetReader.h"
#include "FormatChecks.h"
#include "GroupNames.h"
#include "TestGrids.h"
#include "Text.h"

#include <vtkCellData.h>
#include <vtkCellType.h>
#include <vtkCompositeDataSet.h>
#include <vtkDoubleArray.h>
#include <vtkExodusIIWriter.h>
#include <vtkIdTypeArray.h>
#include <vtkImageData.h>
#include <vtkInformation.h>
#include <vtkMultiBlockDataSet.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkRectilinearGrid.h>
#include <vtkRectilinearGridWriter.h>
#include <vtkStructuredGrid.h>
#include <vtkStructuredGridWriter.h>
#include <vtkStructuredPointsWriter.h>
#include <vtkXMLImageDataWriter.h>
#include <vtkXMLMultiBlockDataWriter.h>
#include <vtkXMLRectilinearGridWriter.h>
#include <vtkXMLStructuredGridWriter.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

namespace
{

using testing::HasSubstr;

constexpr int nodesPerAxis = 4;
constexpr double spacing = 0.5;

void addLinear(vtkDataSet& dataSet)
{
    vtkNew<vtkDoubleArray> values;
    values->SetName("T");
    for (vtkIdType point = 0; point < dataSet.GetNumberOfPoints(); ++point)
    {
        Point place{};
        dataSet.GetPoint(point, place.data());
        values->InsertNextValue(linear(place));
    }
    dataSet.GetPointData()->AddArray(values);
}

vtkSmartPointer<vtkImageData> image()
{
    vtkNew<vtkImageData> grid;
    grid->SetDimensions(nodesPerAxis, nodesPerAxis, nodesPerAxis);
    grid->SetSpacing(spacing, spacing, spacing);
    addLinear(*grid);
    return grid;
}

vtkSmartPointer<vtkRectilinearGrid> rectilinear()
{
    vtkNew<vtkDoubleArray> coordinates;
    for (int i = 0; i < nodesPerAxis; ++i)
    {
        coordinates->InsertNextValue(spacing * i);
    }
    vtkNew<vtkRectilinearGrid> grid;
    grid->SetDimensions(nodesPerAxis, nodesPerAxis, nodesPerAxis);
    grid->SetXCoordinates(coordinates);
    grid->SetYCoordinates(coordinates);
    grid->SetZCoordinates(coordinates);
    addLinear(*grid);
    return grid;
}

vtkSmartPointer<vtkStructuredGrid> structured()
{
    const auto places = image();
    vtkNew<vtkPoints> points;
    points->SetDataTypeToDouble();
    for (vtkIdType point = 0; point < places->GetNumberOfPoints(); ++point)
    {
        points->InsertNextPoint(places->GetPoint(point));
    }
    vtkNew<vtkStructuredGrid> grid;
    grid->SetDimensions(nodesPerAxis, nodesPerAxis, nodesPerAxis);
    grid->SetPoints(points);
    addLinear(*grid);
    return grid;
}

template <typename Writer> void writeBy(vtkDataObject& data, const std::filesystem::path& path)
{
    vtkNew<Writer> writer;
    writer->SetFileName(path.c_str());
    writer->SetInputData(&data);
    ASSERT_EQ(writer->Write(), 1);
}

class VtkFormats : public testing::Test
{
protected:
    VtkFormats() { writeGrid(*makeGrid(VTK_TETRA, 2, 0.1, 1.4), runner.file("target.vtu")); }

    void expectLinearTransfer(const std::string& source) const
    {
        const CommandResult result = runner.run({"transfer", source, "target.vtu", "-o", "out.vtu", "--quiet"});
        EXPECT_EQ(result.errors, "") << source;
        ASSERT_EQ(result.status, 0) << source;
        const auto grid = readGrid(runner.file("out.vtu"));
        for (vtkIdType point = 0; point < grid->GetNumberOfPoints(); ++point)
        {
            EXPECT_NEAR(grid->GetPointData()->GetArray("T")->GetComponent(point, 0), linear(pointOf(*grid, point)),
                        1e-5);
        }
    }

    CommandRunner runner;
};

TEST_F(VtkFormats, StructuredGridsAreHexahedra)
{
    writeBy<vtkXMLImageDataWriter>(*image(), runner.file("grid.vti"));
    writeBy<vtkXMLRectilinearGridWriter>(*rectilinear(), runner.file("grid.vtr"));
    writeBy<vtkXMLStructuredGridWriter>(*structured(), runner.file("grid.vts"));
    writeBy<vtkStructuredPointsWriter>(*image(), runner.file("points.vtk"));
    writeBy<vtkRectilinearGridWriter>(*rectilinear(), runner.file("rectilinear.vtk"));
    writeBy<vtkStructuredGridWriter>(*structured(), runner.file("structured.vtk"));
    for (const char* name : {"grid.vti", "grid.vtr", "grid.vts", "points.vtk", "rectilinear.vtk", "structured.vtk"})
    {
        EXPECT_THAT(runner.run({"info", name}).output, HasSubstr("27 hexahedra")) << name;
        expectLinearTransfer(name);
    }
}

TEST_F(VtkFormats, BlankedCellsOfStructuredGridsAreLeftOut)
{
    const auto grid = structured();
    grid->BlankCell(0);
    writeBy<vtkXMLStructuredGridWriter>(*grid, runner.file("grid.vts"));
    EXPECT_THAT(runner.run({"info", "grid.vts"}).output, HasSubstr("26 hexahedra"));
}

TEST_F(VtkFormats, StructuredFilesThatAreCutOffAreRefused)
{
    writeBy<vtkXMLStructuredGridWriter>(*structured(), runner.file("grid.vts"));
    writeBy<vtkXMLImageDataWriter>(*image(), runner.file("grid.vti"));
    writeBy<vtkStructuredGridWriter>(*structured(), runner.file("grid.vtk"));
    for (const char* name : {"grid.vts", "grid.vti", "grid.vtk"})
    {
        const auto size = std::filesystem::file_size(runner.file(name));
        for (const std::uintmax_t part : {7U, 4U, 1U})
        {
            std::filesystem::resize_file(runner.file(name), size * part / 8);
            const CommandResult result = runner.run({"info", name});
            EXPECT_EQ(result.status, 65) << name << part;
            EXPECT_THAT(result.errors, testing::MatchesRegex("veltrane: [^\n]+\n")) << name << part;
        }
    }
}

class VtkBlocks : public VtkFormats
{
protected:
    /// Two cubes, beside each other.
    void write(bool withMaterials) const
    {
        vtkNew<vtkMultiBlockDataSet> blocks;
        for (unsigned int i = 0; i < 2; ++i)
        {
            GridBuilder builder;
            builder.addCube(VTK_HEXAHEDRON, {i * 1.0, 0, 0}, 1);
            const auto grid = builder.grid();
            addDoubles(*grid, i == 0 ? "T" : "U", linear);
            if (withMaterials)
            {
                addCellNumbers(*grid, "MatId", [&](vtkIdType) { return i == 0 ? 5 : 3; });
            }
            blocks->SetBlock(i, grid);
            blocks->GetMetaData(i)->Set(vtkCompositeDataSet::NAME(), i == 0 ? "steel" : "rubber part");
        }
        writeBy<vtkXMLMultiBlockDataWriter>(*blocks, runner.file("blocks.vtm"));
    }
};

TEST_F(VtkBlocks, AreMaterialsOfTheirNames)
{
    write(false);
    EXPECT_THAT(runner.run({"info", "blocks.vtm"}).output,
                HasSubstr("materials         numbered by 'material': 1 steel, 2 rubber part\n"));
    const auto grid = readByFormat(runner.file("blocks.vtm"));
    EXPECT_EQ(grid->GetCellData()->GetArray("material")->GetComponent(1, 0), 2);
    EXPECT_EQ(grid->GetPointData()->GetArray("T")->GetComponent(1, 0), linear(pointOf(*grid, 1)));
    EXPECT_TRUE(std::isnan(grid->GetPointData()->GetArray("T")->GetComponent(9, 0))); // only the first block has it
}

TEST_F(VtkBlocks, CorrespondByNameIfBothFilesHaveNames)
{
    write(false);
    const auto target = makeGrid(VTK_HEXAHEDRON, 1, 0.25, 0.75);
    addCellNumbers(*target, "material", [](vtkIdType) { return 9; });
    veltrane::setGroupNames(*target, {{9, "steel"}});
    writeGrid(*target, runner.file("target.vtu"));
    const CommandResult result =
        runner.run({"transfer", "blocks.vtm", "target.vtu", "-o", "out.vtu", "--field", "T", "--only", "steel"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("steel, rubber part in the source, steel in the target, matched by name\n"));
}

TEST_F(VtkBlocks, KeepTheMaterialsThatTheyHave)
{
    write(true);
    EXPECT_THAT(runner.run({"info", "blocks.vtm"}).output, HasSubstr("materials         numbered by 'MatId'\n"));
    const auto grid = readByFormat(runner.file("blocks.vtm"));
    EXPECT_EQ(grid->GetCellData()->HasArray("material"), 0);
}

TEST_F(VtkBlocks, OfFilesThatAreMissingAreRefused)
{
    write(false);
    std::filesystem::remove(runner.file("blocks/blocks_1.vtu"));
    expectFailure(runner, 66, "there is no file 'blocks/blocks_1.vtu'", {"info", "blocks.vtm"});
    std::ofstream(runner.file("other.vtm")) << "<VTKFile/>";
    expectFailure(runner, 65, "cannot read 'other.vtm': it is not a tree of blocks", {"info", "other.vtm"});
}

TEST_F(VtkFormats, StepsOfSeriesFilesBecomeACollection)
{
    for (const char* name : {"a.vtu", "b.vtu"})
    {
        const auto grid = makeGrid(VTK_HEXAHEDRON, 2, 0, 2);
        addDoubles(*grid, "T", linear);
        writeGrid(*grid, runner.file(name));
    }
    std::ofstream(runner.file("s.vtu.series"))
        << R"({"file-series-version": "1.0", "files": [{"name": "a.vtu", "time": 0.25}, {"name": "b.vtu", "time": 1}]})";
    const CommandResult result = runner.run({"transfer", "s.vtu.series", "target.vtu", "-o", "out.pvd", "--quiet"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(runner.run({"info", "out.pvd"}).output, HasSubstr("steps             2, times 0.25 to 1\n"));
    std::ofstream(runner.file("s.vtu.series")) << R"({"files": [{"name": "a.vtu"}]})";
    expectFailure(runner, 65, "cannot read 's.vtu.series': entry 1 has no time", {"info", "s.vtu.series"});
    std::ofstream(runner.file("s.vtu.series")) << R"({"files": [{"name")";
    expectFailure(runner, 65, "cannot read 's.vtu.series': it is not a list of files in JSON",
                  {"info", "s.vtu.series"});
}

/// One half of a cube of 2 * 2 * 2 hexahedra with the numbers that its nodes have in the whole.
void writeExodusPart(int part, bool isNumbered, const std::filesystem::path& path)
{
    const auto whole = makeGrid(VTK_HEXAHEDRON, 2);
    GridBuilder builder;
    for (int i = 0; i < 4; ++i)
    {
        builder.addCube(VTK_HEXAHEDRON, {0.5 * part, 0.5 * (i % 2), 0.5 * (i / 2)}, 0.5);
    }
    const auto grid = builder.grid();
    addDoubles(*grid, "T", linear);
    vtkNew<vtkIdTypeArray> numbers;
    numbers->SetName("GlobalNodeId");
    for (vtkIdType point = 0; point < grid->GetNumberOfPoints(); ++point)
    {
        numbers->InsertNextValue(whole->FindPoint(pointOf(*grid, point).data()) + 1);
    }
    if (isNumbered)
    {
        grid->GetPointData()->SetGlobalIds(numbers);
    }
    vtkNew<vtkExodusIIWriter> writer;
    writer->SetInputData(grid);
    writer->SetFileName(path.c_str());
    ASSERT_EQ(writer->Write(), 1);
}

TEST_F(VtkFormats, PartsOfExodusFilesAreOneMesh)
{
    for (const bool isNumbered : {true, false})
    {
        writeExodusPart(0, isNumbered, runner.file("mesh.e.2.0"));
        writeExodusPart(1, isNumbered, runner.file("mesh.e.2.1"));
        const CommandResult info = runner.run({"info", "mesh.e.2.1"});
        EXPECT_EQ(info.errors, "");
        EXPECT_THAT(info.output, HasSubstr("format            Exodus in parts\n"));
        EXPECT_THAT(info.output, HasSubstr("8 hexahedra"));
        EXPECT_THAT(info.output, HasSubstr(isNumbered ? "points            27\n" : "points            36\n"));
        writeGrid(*makeGrid(VTK_TETRA, 2, 0.1, 0.9), runner.file("target.vtu"));
        expectLinearTransfer("mesh.e.2.0");
    }
    std::filesystem::remove(runner.file("mesh.e.2.1"));
    expectFailure(runner, 66, "there is no file 'mesh.e.2.1'", {"info", "mesh.e.2.0"});
}

TEST_F(VtkFormats, ContinuationsOfExodusFilesAreExodusFiles)
{
    writeExodusPart(0, false, runner.file("mesh.e-s0002"));
    EXPECT_THAT(runner.run({"info", "mesh.e-s0002"}).output, HasSubstr("format            Exodus\n"));
}

TEST_F(VtkFormats, PolyhedraOfOpenFoamAreATargetButNoSource)
{
    const std::filesystem::path foam = std::filesystem::path(VELTRANE_FORMAT_FILES) / "foam/case.foam";
    EXPECT_EQ(veltrane::readStepTimes(foam), (std::vector<double>{1, 2}));
    EXPECT_THAT(runner.run({"info", foam.string()}).output, HasSubstr("1 hexahedron, 1 polyhedron"));
    expectFailure(runner, 65,
                  veltrane::text("'", foam.string(),
                                 "' has cells that cannot be used: 1 polyhedron; --skip-unsupported leaves them out"),
                  {"transfer", foam.string(), "target.vtu", "-o", "out.vtu"});
    const auto source = makeGrid(VTK_HEXAHEDRON, 2, 0, 3);
    addDoubles(*source, "T", linear);
    writeGrid(*source, runner.file("source.vtu"));
    const CommandResult result = runner.run({"transfer", "source.vtu", foam.string(), "-o", "out.vtu", "--quiet"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(runner.run({"info", "out.vtu"}).output, HasSubstr("1 polyhedron"));
}

TEST_F(VtkFormats, PartsOfLsDynaResultsAreMaterials)
{
    const std::filesystem::path plot = std::filesystem::path(VELTRANE_FORMAT_FILES) / "dyna/d3plot";
    EXPECT_EQ(veltrane::readStepTimes(plot), (std::vector<double>{0.5, 2}));
    const auto grid = readByFormat(plot, {.step = 0});
    EXPECT_EQ(veltrane::groupNames(*grid), (veltrane::GroupNames{{1, "Part1 (Matl1)"}, {2, "Part2 (Matl2)"}}));
    ASSERT_EQ(grid->GetNumberOfCells(), 2);
    EXPECT_EQ(grid->GetCellData()->GetArray("EffPlastStrn")->GetComponent(1, 0), 16);
    for (vtkIdType point = 0; point < grid->GetNumberOfPoints(); ++point)
    {
        EXPECT_EQ(grid->GetPointData()->GetArray("Deflection")->GetComponent(point, 2), 0.125);
    }
}

} // namespace
