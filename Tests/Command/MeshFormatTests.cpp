// The formats of mesh files: what is read and written stays as it is, and a file that is no such file is refused.
#include "CommandRunner.h"
#include "FileFormat.h"
#include "MeshFile.h"
#include "TestGrids.h"

#include <vtkCellData.h>
#include <vtkCellType.h>
#include <vtkDoubleArray.h>
#include <vtkExodusIIWriter.h>
#include <vtkFieldData.h>
#include <vtkFloatArray.h>
#include <vtkLongLongArray.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkStringArray.h>
#include <vtkUnsignedCharArray.h>
#include <vtkUnstructuredGridReader.h>
#include <vtkUnstructuredGridWriter.h>
#include <vtkVariant.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <limits>

namespace
{

using veltrane::MeshFile;
using veltrane::MeshRole;

void writeLegacy(vtkUnstructuredGrid& grid, const std::filesystem::path& path)
{
    vtkNew<vtkUnstructuredGridWriter> writer;
    writer->SetFileName(path.c_str());
    writer->SetInputData(&grid);
    writer->SetFileTypeToBinary();
    writer->Write();
}

vtkSmartPointer<vtkUnstructuredGrid> readLegacy(const std::filesystem::path& path)
{
    vtkNew<vtkUnstructuredGridReader> reader;
    reader->SetFileName(path.c_str());
    reader->ReadAllScalarsOn();
    reader->ReadAllFieldsOn();
    reader->Update();
    return reader->GetOutput();
}

vtkSmartPointer<vtkUnstructuredGrid> readBack(const std::filesystem::path& path)
{
    return path.extension() == ".vtk" ? readLegacy(path) : readGrid(path);
}

/// An array with values that a careless writer changes.
template <typename Array, typename Value>
void addArray(vtkFieldData& data, const std::string& name, int componentCount, vtkIdType tupleCount,
              const std::vector<Value>& values)
{
    vtkNew<Array> array;
    array->SetName(name.c_str());
    array->SetNumberOfComponents(componentCount);
    for (vtkIdType i = 0; i < tupleCount * componentCount; ++i)
    {
        array->InsertNextValue(values[static_cast<std::size_t>(i) % values.size()]);
    }
    data.AddArray(array);
}

/// All kinds of elements, points and lines beside them, and arrays of all sorts everywhere.
vtkSmartPointer<vtkUnstructuredGrid> richGrid()
{
    GridBuilder builder;
    int place = 0;
    for (const int cellType :
         {VTK_TETRA, VTK_HEXAHEDRON, VTK_VOXEL, VTK_WEDGE, VTK_PYRAMID, VTK_QUADRATIC_TETRA, VTK_QUADRATIC_HEXAHEDRON,
          VTK_TRIQUADRATIC_HEXAHEDRON, VTK_QUADRATIC_WEDGE, VTK_BIQUADRATIC_QUADRATIC_WEDGE, VTK_QUADRATIC_PYRAMID,
          VTK_TRIANGLE, VTK_QUAD, VTK_PIXEL})
    {
        builder.addCube(cellType, {1.0 / 3.0 * place++, 0, 0}, 1.0 / 3.0);
    }
    builder.addCell(VTK_LINE, {{0, 0, 0}, {7, 0, 0}});
    builder.addCell(VTK_VERTEX, {{8, 0, 0}}); // in no element
    const auto grid = builder.grid();
    const vtkIdType pointCount = grid->GetNumberOfPoints();
    const vtkIdType cellCount = grid->GetNumberOfCells();

    const std::vector<double> doubles{0.1, -1e-300, 1e300, 1.0 / 3.0, std::numeric_limits<double>::quiet_NaN()};
    const std::vector<float> floats{0.1F, -1e-38F, 1.0F / 3.0F, std::numeric_limits<float>::infinity()};
    const std::vector<long long> integers{9007199254740993, -1, 0};
    const std::vector<unsigned char> bytes{0, 255, 7};
    const std::vector<std::string> words{"steel", "", "two words"};
    addArray<vtkDoubleArray>(*grid->GetPointData(), "temperature", 1, pointCount, doubles);
    addArray<vtkFloatArray>(*grid->GetPointData(), "stress of step 1 (MPa)", 6, pointCount, floats);
    addArray<vtkFloatArray>(*grid->GetPointData(), "displacement", 3, pointCount, floats);
    addArray<vtkLongLongArray>(*grid->GetPointData(), "id", 1, pointCount, integers);
    addArray<vtkUnsignedCharArray>(*grid->GetCellData(), "flags", 2, cellCount, bytes);
    addArray<vtkStringArray>(*grid->GetCellData(), "names", 1, cellCount, words);
    addArray<vtkDoubleArray>(*grid->GetFieldData(), "TimeValue", 1, 1, doubles);
    addArray<vtkFloatArray>(*grid->GetFieldData(), "table", 3, 17, floats);
    grid->GetPointData()->SetActiveScalars("temperature");
    grid->GetPointData()->SetActiveVectors("displacement");
    return grid;
}

void expectSameArrays(vtkFieldData& actual, vtkFieldData& expected)
{
    EXPECT_EQ(actual.GetNumberOfArrays(), expected.GetNumberOfArrays());
    for (int i = 0; i < expected.GetNumberOfArrays(); ++i)
    {
        vtkAbstractArray& original = *expected.GetAbstractArray(i);
        vtkAbstractArray* found = actual.GetAbstractArray(original.GetName());
        ASSERT_NE(found, nullptr) << original.GetName();
        EXPECT_EQ(found->GetDataType(), original.GetDataType()) << original.GetName();
        ASSERT_EQ(found->GetNumberOfComponents(), original.GetNumberOfComponents()) << original.GetName();
        ASSERT_EQ(found->GetNumberOfTuples(), original.GetNumberOfTuples()) << original.GetName();
        for (vtkIdType value = 0; value < original.GetNumberOfValues(); ++value)
        {
            EXPECT_EQ(found->GetVariantValue(value).ToString(), original.GetVariantValue(value).ToString())
                << original.GetName() << " " << value;
        }
    }
}

void expectSameGrid(vtkUnstructuredGrid& actual, vtkUnstructuredGrid& expected)
{
    ASSERT_EQ(actual.GetNumberOfPoints(), expected.GetNumberOfPoints());
    for (vtkIdType point = 0; point < expected.GetNumberOfPoints(); ++point)
    {
        EXPECT_EQ(pointOf(actual, point), pointOf(expected, point));
    }
    ASSERT_EQ(actual.GetNumberOfCells(), expected.GetNumberOfCells());
    for (vtkIdType cell = 0; cell < expected.GetNumberOfCells(); ++cell)
    {
        EXPECT_EQ(actual.GetCellType(cell), expected.GetCellType(cell));
        vtkNew<vtkIdList> points;
        vtkNew<vtkIdList> expectedPoints;
        actual.GetCellPoints(cell, points);
        expected.GetCellPoints(cell, expectedPoints);
        EXPECT_TRUE(std::equal(points->begin(), points->end(), expectedPoints->begin(), expectedPoints->end()))
            << "cell " << cell;
    }
    expectSameArrays(*actual.GetPointData(), *expected.GetPointData());
    expectSameArrays(*actual.GetCellData(), *expected.GetCellData());
    expectSameArrays(*actual.GetFieldData(), *expected.GetFieldData());
}

class MeshFormatRoundTrip : public testing::TestWithParam<std::tuple<std::string, std::string>>
{
};

TEST_P(MeshFormatRoundTrip, ChangesNoValueAndLosesNoArray)
{
    const auto& [from, to] = GetParam();
    const TemporaryDirectory directory;
    const auto grid = richGrid();
    if (from == ".vtk")
    {
        writeLegacy(*grid, directory / "in.vtk");
    }
    else
    {
        writeGrid(*grid, directory / "in.vtu");
    }
    const MeshFile file(directory / ("in" + from), MeshRole::target);
    file.writeWith({}, {}, directory / ("out" + to));
    expectSameGrid(*readBack(directory / ("out" + to)), *grid);
}

INSTANTIATE_TEST_SUITE_P(AllFormats, MeshFormatRoundTrip,
                         testing::Combine(testing::Values(".vtu", ".vtk"), testing::Values(".vtu", ".vtk")));

/// A source with a linear field in some format, and a target.
class MeshFormat : public testing::Test
{
protected:
    MeshFormat() { writeGrid(*makeGrid(VTK_TETRA, 2), runner.file("target.vtu")); }

    static vtkSmartPointer<vtkUnstructuredGrid> source(double from = 0, double to = 1)
    {
        const auto grid = makeGrid(VTK_HEXAHEDRON, 2, from, to);
        addDoubles(*grid, "T", linear);
        return grid;
    }

    CommandResult transfer(const std::string& name, const std::string& output = "out.vtu",
                           const std::vector<std::string>& options = {}) const
    {
        std::vector<std::string> arguments{"transfer", name, "target.vtu", "-o", output, "--quiet"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return runner.run(arguments);
    }

    void expectLinear(const std::string& output = "out.vtu") const
    {
        const auto grid = readBack(runner.file(output));
        vtkDataArray* values = grid->GetPointData()->GetArray("T");
        ASSERT_NE(values, nullptr);
        for (vtkIdType point = 0; point < grid->GetNumberOfPoints(); ++point)
        {
            EXPECT_NEAR(values->GetComponent(point, 0), linear(pointOf(*grid, point)), 1e-5);
        }
    }

    void expectRefused(const std::string& name, const std::string& reason) const
    {
        expectFailure(runner, 65, reason, {"transfer", name, "target.vtu", "-o", "out.vtu"});
    }

    CommandRunner runner;
};

TEST_F(MeshFormat, ReadsAndWritesLegacyFiles)
{
    writeLegacy(*source(), runner.file("source.vtk"));
    const CommandResult result = transfer("source.vtk", "out.vtk");
    ASSERT_EQ(result.status, 0) << result.errors;
    expectLinear("out.vtk");
}

TEST_F(MeshFormat, EndingsMayBeInCapitals)
{
    writeGrid(*source(), runner.file("SOURCE.VTU"));
    const CommandResult result = transfer("SOURCE.VTU", "OUT.VTU");
    ASSERT_EQ(result.status, 0) << result.errors;
    expectLinear("OUT.VTU");
}

TEST_F(MeshFormat, ReadsFilesInPieces)
{
    for (const std::string half : {"0", "1"})
    {
        GridBuilder builder;
        for (int i = 0; i < 4; ++i)
        {
            builder.addCube(VTK_HEXAHEDRON, {half == "0" ? 0 : 0.5, 0.5 * (i % 2), 0.5 * (i / 2)}, 0.5);
        }
        addDoubles(*builder.grid(), "T", linear);
        writeGrid(*builder.grid(), runner.file("piece" + half + ".vtu"));
    }
    std::ofstream(runner.file("source.pvtu"))
        << "<VTKFile type=\"PUnstructuredGrid\" version=\"0.1\"><PUnstructuredGrid GhostLevel=\"0\">"
           "<PPointData><PDataArray type=\"Float64\" Name=\"T\"/></PPointData>"
           "<PPoints><PDataArray type=\"Float64\" NumberOfComponents=\"3\"/></PPoints>"
           "<Piece Source=\"piece0.vtu\"/><Piece Source=\"piece1.vtu\"/></PUnstructuredGrid></VTKFile>\n";
    const CommandResult result = transfer("source.pvtu");
    ASSERT_EQ(result.status, 0) << result.errors;
    expectLinear();

    std::filesystem::remove(runner.file("piece1.vtu"));
    expectFailure(runner, 66, "there is no file 'piece1.vtu'",
                  {"transfer", "source.pvtu", "target.vtu", "-o", "2.vtu"});
}

TEST_F(MeshFormat, ReadsTheLastStepOfExodusFilesAndTheirBlocksAsMaterials)
{
    const auto grid = source();
    addCellNumbers(*grid, "ElementBlockIds", [](vtkIdType cell) { return cell < 4 ? 3 : 8; });
    vtkNew<vtkExodusIIWriter> writer;
    writer->SetInputData(grid);
    writer->SetBlockIdArrayName("ElementBlockIds");
    writer->SetFileName(runner.file("source.exo").c_str());
    ASSERT_EQ(writer->Write(), 1);
    const auto target = makeGrid(VTK_HEXAHEDRON, 2);
    addCellNumbers(*target, "material", [](vtkIdType cell) { return cell < 4 ? 3 : 8; });
    writeGrid(*target, runner.file("target.vtu"));

    const CommandResult result = runner.run({"transfer", "source.exo", "target.vtu", "-o", "out.vtu"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, testing::HasSubstr("3, 8 in the source, 3, 8 in the target"));
    expectLinear();
}

TEST_F(MeshFormat, EndingAndContentMustBeThoseOfAFormat)
{
    writeGrid(*source(), runner.file("source.dat"));
    expectRefused("source.dat",
                  "'source.dat' is not named as a mesh file is: " + veltrane::endingsOf(veltrane::isMeshInput));
    writeGrid(*source(), runner.file("source.e"));
    expectRefused("source.e", "cannot read 'source.e': it is not an Exodus file");
    writeLegacy(*source(), runner.file("source.vtu"));
    expectRefused("source.vtu", "cannot read 'source.vtu': Error parsing XML in stream at line 1, column 1, byte index "
                                "1: not well-formed (invalid token)");
    std::ofstream(runner.file("source.vtk")) << "solid\n";
    expectRefused("source.vtk", "cannot read 'source.vtk': Unrecognized file type: solid for file: source.vtk");
}

/// A legacy text file of two tetrahedra with a section of cells to be tried.
std::string legacyFile(const std::string& version, const std::string& cells)
{
    return "# vtk DataFile Version " + version +
           "\ntitle\nASCII\nDATASET UNSTRUCTURED_GRID\nPOINTS 5 double\n0 0 0 1 0 0 0 1 0 0 0 1 1 1 1\n" + cells +
           "\nCELL_TYPES 2\n10 10\nPOINT_DATA 5\nSCALARS linear double 1\nLOOKUP_TABLE default\n0 1 2 3 4\n";
}

TEST_F(MeshFormat, CellsOfLegacyFilesMustFillTheirSection)
{
    const auto write = [&](const std::string& version, const std::string& cells)
    { std::ofstream(runner.file("source.vtk")) << legacyFile(version, cells); };
    const auto refusal = [](const std::string& sizes)
    { return "cannot read 'source.vtk': its cells do not fill the section 'CELLS " + sizes + "'"; };
    write("3.0", "CELLS 2 10\n4 0 1 2 3\n6 1 2 3 4");
    expectRefused("source.vtk", refusal("2 10"));
    write("3.0", "CELLS 2 12\n4 0 1 2 3\n4 1 2 3 4 6 0");
    expectRefused("source.vtk", refusal("2 12"));
    write("3.0", "CELLS 2 10\n-1 0 1 2 3\n4 1 2 3 4");
    expectRefused("source.vtk", refusal("2 10"));
    write("5.1", "CELLS 3 8\nOFFSETS vtktypeint64\n0 4 9\nCONNECTIVITY vtktypeint64\n0 1 2 3 1 2 3 4");
    expectRefused("source.vtk", refusal("3 8"));
    write("5.1", "CELLS 3 8\nOFFSETS vtktypeint64\n0 -4 8\nCONNECTIVITY vtktypeint64\n0 1 2 3 1 2 3 4");
    expectRefused("source.vtk", refusal("3 8"));
}

TEST_F(MeshFormat, LegacyFilesMustBeWhole)
{
    writeLegacy(*source(), runner.file("source.vtk"));
    const auto size = std::filesystem::file_size(runner.file("source.vtk"));
    for (const auto part : {size / 4, size / 2, size - 20})
    {
        std::filesystem::resize_file(runner.file("source.vtk"), part);
        const CommandResult result = transfer("source.vtk");
        EXPECT_EQ(result.status, 65) << part;
        EXPECT_THAT(result.errors, testing::MatchesRegex("veltrane: cannot read 'source.vtk': [^\n]+\n"));
        writeLegacy(*source(), runner.file("source.vtk"));
    }
}

TEST_F(MeshFormat, FailureToWriteALegacyFileIsReported)
{
    writeGrid(*source(), runner.file("source.vtu"));
    constexpr rlim_t tooFewBytes = 1000;
    const CommandResult result =
        runner.run({"transfer", "source.vtu", "target.vtu", "-o", "out.vtk", "--quiet"}, tooFewBytes);
    EXPECT_EQ(result.status, 73);
    EXPECT_EQ(result.errors, "veltrane: cannot write 'out.vtk': there is not enough disk space\n");
    EXPECT_THAT(runner.directory().names(), testing::UnorderedElementsAre("source.vtu", "target.vtu"));
}

TEST_F(MeshFormat, PointsAndLinesBesideTheElementsAreLeftOut)
{
    const auto grid = source();
    grid->InsertNextCell(VTK_LINE, 2, std::array<vtkIdType, 2>{0, 1}.data());
    grid->InsertNextCell(VTK_POLY_VERTEX, 2, std::array<vtkIdType, 2>{0, 1}.data());
    writeGrid(*grid, runner.file("source.vtu"));
    const auto target = makeGrid(VTK_TETRA, 2);
    target->InsertNextCell(VTK_VERTEX, 1, std::array<vtkIdType, 1>{0}.data());
    writeGrid(*target, runner.file("target.vtu"));
    const CommandResult result = transfer("source.vtu");
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    expectLinear();
    EXPECT_EQ(readBack(runner.file("out.vtu"))->GetNumberOfCells(), target->GetNumberOfCells());
}

TEST_F(MeshFormat, CellsWithoutCounterpartAreNamedAndSkippedOnRequest)
{
    const auto grid = source();
    std::array<vtkIdType, 20> points{};
    for (std::size_t i = 0; i < points.size(); ++i)
    {
        points[i] = static_cast<vtkIdType>(i);
    }
    grid->InsertNextCell(VTK_HEXAGONAL_PRISM, 12, points.data());
    grid->InsertNextCell(VTK_PENTAGONAL_PRISM, 10, points.data());
    grid->InsertNextCell(VTK_PENTAGONAL_PRISM, 10, points.data());
    writeGrid(*grid, runner.file("source.vtu"));
    const std::string cells = "cells that cannot be used: 2 pentagonal prisms, 1 hexagonal prism";
    expectRefused("source.vtu", "'source.vtu' has " + cells + "; --skip-unsupported leaves them out");

    const CommandResult result = transfer("source.vtu", "out.vtu", {"--skip-unsupported"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "veltrane: warning: left out cells of 'source.vtu' that cannot be used: 2 "
                             "pentagonal prisms, 1 hexagonal prism\n");
    expectLinear();
}

} // namespace
