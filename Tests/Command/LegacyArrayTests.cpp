// The arrays of VTK's legacy files: of two of one name VTK's reader would keep one without a word, and of missing
// values it does not tell the place.
#include "CommandRunner.h"
#include "TestGrids.h"

#include <vtkBitArray.h>
#include <vtkCellData.h>
#include <vtkCellType.h>
#include <vtkDoubleArray.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkStringArray.h>
#include <vtkUnstructuredGridWriter.h>
#include <vtkVariant.h>
#include <vtkVariantArray.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace
{

class LegacyArrays : public testing::Test
{
protected:
    /// A tetrahedron as text with these arrays.
    void write(const std::string& arrays) const
    {
        std::ofstream(runner.file("mesh.vtk"))
            << "# vtk DataFile Version 3.0\ntitle\nASCII\nDATASET UNSTRUCTURED_GRID\nFIELD FieldData 2\n"
               "T 1 1 double\n1\nT 1 1 double\n2\nPOINTS 4 double\n0 0 0 1 0 0 0 1 0 0 0 1\nCELLS 1 5\n4 0 1 2 3\n"
               "CELL_TYPES 1\n10\n"
            << arrays;
    }

    void expectTwo(const std::string& kind, const std::string& name) const
    {
        expectFailure(runner, 65, "'mesh.vtk' has two " + kind + "-data arrays of the name '" + name + "'",
                      {"info", "mesh.vtk"});
    }

    void expectAccepted() const
    {
        const CommandResult result = runner.run({"info", "mesh.vtk"});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors, "");
    }

    CommandRunner runner;
};

const std::string scalars = "SCALARS T double 1\nLOOKUP_TABLE default\n1 2 3 4\n";

TEST_F(LegacyArrays, MustHaveNamesOfTheirOwn)
{
    write("POINT_DATA 4\n" + scalars + "SCALARS T double\nLOOKUP_TABLE default\n1 2 3 5\n");
    expectTwo("point", "T");
    write("CELL_DATA 1\nSCALARS m int 1\nLOOKUP_TABLE default\n1\nscalars m int\nlookup_table default\n2\n");
    expectTwo("cell", "m");
    write("POINT_DATA 4\nFIELD FieldData 3\nT 1 4 double\n1 2 3 4\nU 2 4 float\n1 2 3 4 5 6 7 8\n"
          "T 1 4 double\n4 3 2 1\n");
    expectTwo("point", "T");
    write("POINT_DATA 4\n" + scalars + "CELL_DATA 1\nSCALARS T double 1\nLOOKUP_TABLE default\n1\n");
    expectAccepted(); // the points and the cell have one each, and the file has two that nobody asks for
}

TEST_F(LegacyArrays, OfAllSortsAreSeen)
{
    const std::string second = "FIELD FieldData 1\nT 1 4 double\n4 3 2 1\n";
    for (const std::string first :
         {"VECTORS T double\n1 2 3 1 2 3 1 2 3 1 2 3\n", "NORMALS T float\n1 0 0 1 0 0 1 0 0 1 0 0\n",
          "TENSORS T float\n1 0 0 0 1 0 0 0 1\n1 0 0 0 1 0 0 0 1\n1 0 0 0 1 0 0 0 1\n1 0 0 0 1 0 0 0 1\n",
          "TENSORS6 T float\n1 1 1 0 0 0\n1 1 1 0 0 0\n1 1 1 0 0 0\n1 1 1 0 0 0\n",
          "TEXTURE_COORDINATES T 2 float\n0 0 1 0 1 1 0 1\n", "COLOR_SCALARS T 3\n0 0 1 0 1 1 0 1 0 0 1 1\n",
          "GLOBAL_IDS T vtkIdType\n1 2 3 4\n", "LOOKUP_TABLE table 2\n0 0 0 1\n1 1 1 1\n",
          "SCALARS T double 1\nLOOKUP_TABLE table\n1 2 3 4\nLOOKUP_TABLE table 2\n0 0 0 1\n1 1 1 1\n"})
    {
        SCOPED_TRACE(first);
        const bool hasArray = first.find(" T ") != std::string::npos;
        write("POINT_DATA 4\n" + (hasArray ? "" : scalars) + first + second);
        expectTwo("point", "T");
    }
}

TEST_F(LegacyArrays, NamesAreComparedAsTheyAreMeant)
{
    write("POINT_DATA 4\nFIELD FieldData 2\nmy%20T 1 4 double\n1 2 3 4\n%6dy%20T 1 4 double\n4 3 2 1\n");
    expectTwo("point", "my T");
    write("POINT_DATA 4\nFIELD FieldData 2\nT 1 4 double\n1 2 3 4\nT% 1 4 double\n4 3 2 1\n");
    expectTwo("point", "T");
}

TEST_F(LegacyArrays, MayEndTheFileWithoutAnEndOfTheLine)
{
    const std::string first = "POINT_DATA 4\nFIELD FieldData 2\nwords 1 4 string\na\nb\nc\nd\n";
    write(first + "words 1 4 string\na\nb\nc\ne");
    expectTwo("point", "words");
    write(first + "others 1 4 string\na\nb\nc\ne");
    expectAccepted();
    write("POINT_DATA 4\n" + scalars + "SCALARS T double 1\nLOOKUP_TABLE default\n1 2 3 4");
    expectAccepted();
    write(first + "others 1 4 string\na\nb");
    expectFailure(runner, 65, "cannot read 'mesh.vtk': array 'others' ends after 2 of 4 values", {"info", "mesh.vtk"});
}

TEST_F(LegacyArrays, WordsWithinThemAreNoSections)
{
    write("POINT_DATA 4\nFIELD FieldData 3\nT 1 4 double\n1 2 3 4\nMETADATA\nCOMPONENT_NAMES\n\nINFORMATION 0\n\n"
          "words 1 4 string\nT 1 4 double\nT 1 4 double\nMETADATA\n\nPOINT_DATA 1 4 double\n1 2 3 4\n");
    expectAccepted();
}

TEST_F(LegacyArrays, ThatServeForTwoPurposesAreRepeated)
{
    write("POINT_DATA 4\n" + scalars + "FIELD FieldData 1\nT 1 4 double\n1 2 3 4\n");
    expectAccepted();
    write("POINT_DATA 4\n" + scalars + "FIELD FieldData 1\nT 1 4 float\n1 2 3 4\n");
    expectTwo("point", "T");
}

TEST_F(LegacyArrays, MustBeWhole)
{
    const auto expect = [&](const std::string& sentence) {
        expectFailure(runner, 65, "cannot read 'mesh.vtk': " + sentence, {"info", "mesh.vtk"});
    };
    const std::string heading = "POINT_DATA 4\nSCALARS T double 1\nLOOKUP_TABLE default\n";
    write(heading + "1 2 3\n");
    expect("array 'T' ends after 3 of 4 values");
    write(heading + "1 2 3\nVECTORS U float\n");
    expect("array 'T' has 'VECTORS' in the place of the number 3 of 4, counted from 0");
    write(heading + "1 -nan 3 4\n");
    expect("array 'T' has '-nan' in the place of the number 1 of 4, counted from 0");
    write(heading + "1 +.5 -3e-2 inf\n");
    expect("array 'T' has 'inf' in the place of the number 3 of 4, counted from 0");
    write("POINT_DATA 4\nFIELD FieldData 2\nT 1 4 double\n1 2 3 4\n");
    expect("the section FIELD ends after 1 of 2 arrays");
    write("POINT_DATA 4\nFIELD FieldData 1\nT -1 4 double\n1 2 3 4\n");
    expect("array 'T' has -1 components");
    write("POINT_DATA 3\nSCALARS T double 1\nLOOKUP_TABLE default\n1 2 3\n");
    expect("it has point data for 3 points, but there are 4");
    write("CELL_DATA 4\nSCALARS T double 1\nLOOKUP_TABLE default\n1 2 3 4\n");
    expect("it has cell data for 4 cells, but there are 1");
    write("POINT_DATA -4\n");
    expect("it has the section 'POINT_DATA -4'");
    write("CELLS 3000000000 12000000000\n");
    expect("it has the section 'CELLS 3000000000', more than the 2147483647 that can be counted");
    write("POINTS 1 double\n0 nan 0\n");
    expect("the section POINTS has 'nan' in the place of the number 1 of 3, counted from 0");
}

/// Arrays whose values take up their room in different ways, with what is said about them behind.
vtkSmartPointer<vtkUnstructuredGrid> richGrid()
{
    const auto grid = makeGrid(VTK_HEXAHEDRON, 1);
    addFloats(*grid, "U", {linear, linear, linear});
    grid->GetPointData()->GetArray("U")->SetComponentName(2, "up");
    grid->GetPointData()->SetActiveScalars("U");
    grid->GetPointData()->SetActiveVectors("U");
    vtkNew<vtkStringArray> words;
    words->SetName("words");
    vtkNew<vtkBitArray> bits;
    bits->SetName("bits");
    vtkNew<vtkVariantArray> variants;
    variants->SetName("variants");
    for (int i = 0; i < 8; ++i)
    {
        constexpr std::array<std::size_t, 3> lengths{0, 7, 70000}; // whose counts take one, two and four bytes
        words->InsertNextValue(std::string(i == 7 ? 100 : lengths[static_cast<std::size_t>(i) % 3], 'T'));
        bits->InsertNextValue(i & 1);
        variants->InsertNextValue(vtkVariant(i));
    }
    grid->GetPointData()->AddArray(words);
    grid->GetPointData()->AddArray(bits);
    grid->GetPointData()->AddArray(variants);
    addDoubles(*grid, "T", linear);
    addDoubles(*grid, "V", linear);
    addCellNumbers(*grid, "material", [](vtkIdType) { return 1; });
    return grid;
}

TEST_F(LegacyArrays, AreFoundBehindOthersOfAllSorts)
{
    for (const bool isBinary : {false, true})
    {
        vtkNew<vtkUnstructuredGridWriter> writer;
        writer->SetFileName(runner.file("mesh.vtk").c_str());
        writer->SetInputData(richGrid());
        isBinary ? writer->SetFileTypeToBinary() : writer->SetFileTypeToASCII();
        ASSERT_EQ(writer->Write(), 1);
        expectAccepted();

        std::string content = contentsOf(runner.file("mesh.vtk"));
        const std::size_t name = content.find("\nV 1 8 double");
        ASSERT_NE(name, std::string::npos);
        content.replace(name, 2, "\nT");
        content[name + 20] = isBinary ? '\1' : '7'; // of the first value
        std::ofstream(runner.file("mesh.vtk"), std::ios::binary) << content;
        expectTwo("point", "T");
        if (isBinary)
        {
            std::ofstream(runner.file("mesh.vtk"), std::ios::binary) << content.substr(0, name + 14 + 50);
            expectFailure(runner, 65,
                          "cannot read 'mesh.vtk': array 'T' needs 64 bytes for 8 values, but the file ends after 50",
                          {"info", "mesh.vtk"});
        }
    }
}

} // namespace
