// The arrays of VTK's legacy files: VTK's reader would take anything for values that are missing.
#include "CommandRunner.h"
#include "FileContents.h"
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

#include <array>
#include <cctype>
#include <cmath>
#include <fstream>
#include <optional>

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
               "T 1 1 double\n1\nU 1 1 double\n2\nPOINTS 4 double\n0 0 0 1 0 0 0 1 0 0 0 1\nCELLS 1 5\n4 0 1 2 3\n"
               "CELL_TYPES 1\n10\n"
            << arrays;
    }

    /// \param part  of the file, such as an array
    void expectMissing(const std::string& part) const
    {
        expectFailure(runner, 65,
                      "cannot read 'mesh.vtk': " + part + " lacks values, or has some that are not finite numbers",
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

TEST_F(LegacyArrays, OfAllSortsArePassed)
{
    for (const std::string first :
         {"VECTORS T double\n1 2 3 1 2 3 1 2 3 1 2 3\n", "NORMALS T float\n1 0 0 1 0 0 1 0 0 1 0 0\n",
          "TENSORS T float\n1 0 0 0 1 0 0 0 1\n1 0 0 0 1 0 0 0 1\n1 0 0 0 1 0 0 0 1\n1 0 0 0 1 0 0 0 1\n",
          "TENSORS6 T float\n1 1 1 0 0 0\n1 1 1 0 0 0\n1 1 1 0 0 0\n1 1 1 0 0 0\n",
          "TEXTURE_COORDINATES T 2 float\n0 0 1 0 1 1 0 1\n", "COLOR_SCALARS T 3\n0 0 1 0 1 1 0 1 0 0 1 1\n",
          "GLOBAL_IDS T vtkIdType\n1 2 3 4\n", "LOOKUP_TABLE table 2\n0 0 0 1\n1 1 1 1\n",
          "SCALARS T double 1\nLOOKUP_TABLE table\n1 2 3 4\nLOOKUP_TABLE table 2\n0 0 0 1\n1 1 1 1\n"})
    {
        SCOPED_TRACE(first);
        write("POINT_DATA 4\n" + first + "FIELD FieldData 1\nU 1 4 double\n4 3 2\n");
        expectMissing("array 'U'");
        write("POINT_DATA 4\n" + first.substr(0, first.size() - 2));
        expectMissing(first.find("LOOKUP_TABLE table 2") == std::string::npos ? "array 'T'" : "array 'table'");
    }
}

TEST_F(LegacyArrays, MayEndTheFileWithoutAnEndOfTheLine)
{
    const std::string first = "POINT_DATA 4\nFIELD FieldData 2\nwords 1 4 string\na\nb\nc\nd\n";
    write(first + "others 1 4 string\na\nb\nc\ne");
    expectAccepted();
    write("POINT_DATA 4\n" + scalars + "SCALARS U double 1\nLOOKUP_TABLE default\n1 2 3 4");
    expectAccepted();
    write(first + "others 1 4 string\na\nb");
    expectMissing("array 'others'");
}

TEST_F(LegacyArrays, WordsWithinThemAreNoSections)
{
    write("POINT_DATA 4\nFIELD FieldData 3\nT 1 4 double\n1 2 3 4\nMETADATA\nCOMPONENT_NAMES\n\nINFORMATION 0\n\n"
          "words 1 4 string\nT 1 4 double\nT 1 4 double\nMETADATA\n\nPOINT_DATA 1 4 double\n1 2 3 4\n");
    expectAccepted();
}

TEST_F(LegacyArrays, MustBeWhole)
{
    const auto expect = [&](const std::string& sentence) {
        expectFailure(runner, 65, "cannot read 'mesh.vtk': " + sentence, {"info", "mesh.vtk"});
    };
    const std::string heading = "POINT_DATA 4\nSCALARS T double 1\nLOOKUP_TABLE default\n";
    for (const std::string values : {"1 2 3\n", "1 2 3\nVECTORS U float\n", "1 -nan 3 4\n", "1 +.5 -3e-2 inf\n"})
    {
        write(heading + values);
        expectMissing("array 'T'");
    }
    write("POINT_DATA 4\nFIELD FieldData 2\nT 1 4 double\n1 2 3 4\n");
    expectMissing("the section FIELD");
    write("POINT_DATA 4\nFIELD FieldData 1\nT -1 4 double\n1 2 3 4\n");
    expectMissing("array 'T'");
    write("POINT_DATA 3\nSCALARS T double 1\nLOOKUP_TABLE default\n1 2 3\n");
    expect("it has point data for 3 points, but there are 4");
    write("CELL_DATA 4\nSCALARS T double 1\nLOOKUP_TABLE default\n1 2 3 4\n");
    expect("it has cell data for 4 cells, but there are 1");
    for (const std::string section : {"POINT_DATA -4", "CELLS 3000000000"})
    {
        write(section + " 12000000000\n");
        expect("its section '" + section + "' has more than can be counted, or less than nothing");
    }
    write("POINTS 1 double\n0 nan 0\n");
    expectMissing("the section POINTS");
}

/// Arrays whose values take up their room in different ways, with what is said about them behind.
///
/// \param longest  of the strings
vtkSmartPointer<vtkUnstructuredGrid> richGrid(std::size_t longest)
{
    const auto grid = makeGrid(VTK_HEXAHEDRON, 1);
    addFloats(*grid, "U", {linear, linear, linear});
    grid->GetPointData()->GetArray("U")->SetComponentName(2, "up");
    vtkNew<vtkStringArray> words;
    words->SetName("words");
    vtkNew<vtkBitArray> bits;
    bits->SetName("bits");
    vtkNew<vtkVariantArray> variants;
    variants->SetName("variants");
    for (int i = 0; i < 8; ++i)
    {
        const std::array<std::size_t, 3> lengths{0, 7, longest};
        words->InsertNextValue(std::string(i == 7 ? 100 : lengths[static_cast<std::size_t>(i) % 3], 'T'));
        bits->InsertNextValue(i & 1);
        variants->InsertNextValue(vtkVariant(i));
    }
    grid->GetPointData()->AddArray(words);
    grid->GetPointData()->AddArray(bits);
    grid->GetPointData()->AddArray(variants);
    addDoubles(*grid, "T", linear);
    addCellNumbers(*grid, "material", [](vtkIdType) { return 1; });
    return grid;
}

class LegacyForms : public LegacyArrays, public testing::WithParamInterface<bool>
{
protected:
    std::string written(vtkUnstructuredGrid& grid) const
    {
        vtkNew<vtkUnstructuredGridWriter> writer;
        writer->SetFileName(runner.file("mesh.vtk").c_str());
        writer->SetInputData(&grid);
        GetParam() ? writer->SetFileTypeToBinary() : writer->SetFileTypeToASCII();
        EXPECT_EQ(writer->Write(), 1);
        return contentsOf(runner.file("mesh.vtk"));
    }

    /// Nothing if it is refused.
    std::optional<veltrane::FileContents> readBeginning(const std::string& content, std::size_t length) const
    {
        std::ofstream(runner.file("mesh.vtk"), std::ios::binary) << content.substr(0, length);
        try
        {
            return veltrane::readContents(runner.file("mesh.vtk"));
        }
        catch (const veltrane::BadFile&)
        {
            return std::nullopt;
        }
    }
};

TEST_P(LegacyForms, ArraysOfAllSortsArePassed)
{
    constexpr std::size_t countInFourBytes = 70000;
    const auto grid = richGrid(countInFourBytes);
    grid->GetPointData()->SetActiveScalars("U");
    grid->GetPointData()->SetActiveVectors("U"); // which writes it twice
    const std::string content = written(*grid);
    expectAccepted();
    std::ofstream(runner.file("mesh.vtk"), std::ios::binary) << content.substr(0, content.find("\nT 1 8 double") + 18);
    expectMissing("array 'T'");
}

/// Between sections a file may end: nothing tells that there were more. Nor does a number tell that it has lost digits.
TEST_P(LegacyForms, CutOffAnywhereAreRefusedUnlessSectionsAreWhole)
{
    constexpr std::size_t countInOneByte = 20;
    const std::string content = written(*richGrid(countInOneByte));
    const auto whole = readBeginning(content, content.size());
    ASSERT_TRUE(whole.has_value());
    int acceptedCount = 0;
    for (std::size_t length = 0; length < content.size(); ++length)
    {
        const auto part = readBeginning(content, length);
        if (!part)
        {
            continue;
        }
        ++acceptedCount;
        EXPECT_TRUE(part->pointCount == 0 || part->pointCount == 8) << length;
        EXPECT_TRUE(part->cellCount == 0 || part->cellCount == 1) << length;
        const auto expectWhole = [&](const auto& arrays, const auto& expected)
        {
            ASSERT_TRUE(arrays.empty() || arrays.size() == expected.size()) << length;
            for (std::size_t i = 0; i < arrays.size(); ++i)
            {
                EXPECT_EQ(arrays[i].tupleCount, expected[i].tupleCount) << length;
                if (!GetParam() && std::isspace(static_cast<unsigned char>(content[length - 1])) == 0)
                {
                    continue;
                }
                EXPECT_TRUE(arrays[i].min == expected[i].min || std::isnan(expected[i].min)) << length;
                EXPECT_TRUE(arrays[i].max == expected[i].max || std::isnan(expected[i].max)) << length;
            }
        };
        expectWhole(part->pointArrays, whole->pointArrays);
        expectWhole(part->cellArrays, whole->cellArrays);
    }
    EXPECT_LT(acceptedCount, 200); // of some thousand
}

INSTANTIATE_TEST_SUITE_P(AsTextAndBinary, LegacyForms, testing::Bool(),
                         [](const auto& information) { return information.param ? "binary" : "text"; });

} // namespace
