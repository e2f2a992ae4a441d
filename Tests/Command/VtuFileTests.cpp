// Our own reader of .vtu files beside VTK's.
#include "Base64.h"
#include "DataSetWriter.h"
#include "TemporaryDirectory.h"
#include "TestGrids.h"
#include "VtuFile.h"
#include "XmlText.h"

#include <vtkCellArray.h>
#include <vtkCellData.h>
#include <vtkCellType.h>
#include <vtkDataArray.h>
#include <vtkFieldData.h>
#include <vtkIdTypeArray.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkStringArray.h>
#include <vtkUnsignedCharArray.h>
#include <vtkXMLUnstructuredGridWriter.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace
{
using namespace veltrane;

/// How VTK writes a file.
struct Form
{
    std::string name;
    int dataMode;
    bool isEncoded;
    bool isCompressed;
    bool hasLongHeaders;
    bool hasShortNumbers;
};

void write(vtkUnstructuredGrid& grid, const std::filesystem::path& path, const Form& form)
{
    vtkNew<vtkXMLUnstructuredGridWriter> writer;
    writer->SetFileName(path.c_str());
    writer->SetInputData(&grid);
    writer->SetDataMode(form.dataMode);
    writer->SetEncodeAppendedData(form.isEncoded);
    if (!form.isCompressed)
    {
        writer->SetCompressorTypeToNone();
    }
    writer->SetHeaderType(form.hasLongHeaders ? vtkXMLWriter::UInt64 : vtkXMLWriter::UInt32);
    ASSERT_EQ(writer->Write(), 1);
}

vtkSmartPointer<vtkUnstructuredGrid> mixedGrid(int n, bool hasShortNumbers)
{
    GridBuilder builder;
    builder.addGrid(VTK_HEXAHEDRON, n, 0, 1);
    builder.addGrid(VTK_QUADRATIC_TETRA, 1, 1, 2);
    builder.addGrid(VTK_VOXEL, 2, 2, 3);
    auto grid = builder.grid();
    addDoubles(*grid, "T", [](const Point& p) { return std::sin(50 * p[0]) + p[1] * p[2]; });
    addFloats(*grid, "u", {linear, linear, [](const Point& p) { return p[0] * p[1]; }});
    grid->GetPointData()->SetActiveScalars("T");
    grid->GetPointData()->SetActiveVectors("u");
    grid->GetPointData()->GetArray("u")->SetComponentName(2, "upwards");
    addCellNumbers(*grid, "part", [](vtkIdType cell) { return static_cast<int>(cell % 5) - 2; });
    vtkNew<vtkIdTypeArray> ids;
    ids->SetName("ids");
    ids->InsertNextValue(1LL << 40);
    grid->GetFieldData()->AddArray(ids);
    vtkNew<vtkStringArray> words;
    words->SetName("words");
    words->InsertNextValue("one");
    words->InsertNextValue("");
    grid->GetFieldData()->AddArray(words);
    if (hasShortNumbers)
    {
        grid->GetCells()->ConvertTo32BitStorage();
    }
    return grid;
}

template <typename Value> std::vector<double> numbersOf(const std::vector<Value>& values)
{
    return {values.begin(), values.end()};
}

std::vector<double> numbersOf(vtkDataArray& array)
{
    std::vector<double> numbers;
    for (vtkIdType i = 0; i < array.GetNumberOfValues(); ++i)
    {
        numbers.push_back(array.GetVariantValue(i).ToDouble());
    }
    return numbers;
}

void expectSame(vtkFieldData& expected, vtkFieldData& actual)
{
    ASSERT_EQ(actual.GetNumberOfArrays(), expected.GetNumberOfArrays());
    for (int i = 0; i < expected.GetNumberOfArrays(); ++i)
    {
        vtkAbstractArray& one = *expected.GetAbstractArray(i);
        vtkAbstractArray& other = *actual.GetAbstractArray(i);
        EXPECT_STREQ(other.GetName(), one.GetName());
        EXPECT_STREQ(other.GetClassName(), one.GetClassName());
        EXPECT_EQ(other.GetNumberOfComponents(), one.GetNumberOfComponents());
        ASSERT_EQ(other.GetNumberOfValues(), one.GetNumberOfValues());
        for (vtkIdType value = 0; value < one.GetNumberOfValues(); ++value)
        {
            ASSERT_EQ(other.GetVariantValue(value), one.GetVariantValue(value)) << one.GetName();
        }
        for (int component = 0; component < one.GetNumberOfComponents(); ++component)
        {
            EXPECT_STREQ(other.GetComponentName(component), one.GetComponentName(component));
        }
    }
}

class VtuFileForms : public testing::TestWithParam<Form>
{
protected:
    TemporaryDirectory directory;
    std::filesystem::path file = directory / "grid.vtu";
};

TEST_P(VtuFileForms, AreReadAsVtkReadsThem)
{
    const auto grid = mixedGrid(18, GetParam().hasShortNumbers);
    write(*grid, file, GetParam());
    const auto expected = readGrid(file);
    for (const int threads : {1, 3})
    {
        const auto contents = readVtu(file, threads);
        ASSERT_TRUE(contents.has_value());
        EXPECT_STREQ(contents->grid->GetPoints()->GetData()->GetClassName(),
                     expected->GetPoints()->GetData()->GetClassName());
        EXPECT_EQ(numbersOf(*contents->grid->GetPoints()->GetData()), numbersOf(*expected->GetPoints()->GetData()));
        expectSame(*expected->GetPointData(), *contents->grid->GetPointData());
        expectSame(*expected->GetCellData(), *contents->grid->GetCellData());
        expectSame(*expected->GetFieldData(), *contents->grid->GetFieldData());
        EXPECT_STREQ(contents->grid->GetPointData()->GetScalars()->GetName(), "T");
        EXPECT_STREQ(contents->grid->GetPointData()->GetVectors()->GetName(), "u");
        EXPECT_EQ(numbersOf(*contents->types), numbersOf(*expected->GetCellTypesArray()));
        EXPECT_EQ(numbersOf(contents->cells.connectivity), numbersOf(*expected->GetCells()->GetConnectivityArray()));
        EXPECT_EQ(numbersOf(contents->cells.offsets), numbersOf(*expected->GetCells()->GetOffsetsArray()));
        EXPECT_EQ(contents->cells.numberType, expected->GetCells()->GetConnectivityArray()->GetDataType());
    }
}

TEST_P(VtuFileForms, AreLeftToVtkWhereverTheyAreCutOff)
{
    write(*mixedGrid(1, GetParam().hasShortNumbers), file, GetParam());
    ASSERT_TRUE(readVtu(file, 1).has_value());
    const std::string whole = contentsOf(file);
    const std::size_t end = whole.rfind("</VTKFile>") + std::string("</VTKFile>").size();
    for (std::size_t length = end; length-- > 0;)
    {
        std::filesystem::resize_file(file, length);
        ASSERT_FALSE(readVtu(file, 1).has_value()) << length;
    }
}

const Form forms[] = {
    {"RawCompressed", vtkXMLWriter::Appended, false, true, true, false},
    {"RawCompressedShortHeaders", vtkXMLWriter::Appended, false, true, false, true},
    {"RawPlain", vtkXMLWriter::Appended, false, false, true, false},
    {"RawPlainShortHeaders", vtkXMLWriter::Appended, false, false, false, true},
    {"AppendedBase64Compressed", vtkXMLWriter::Appended, true, true, false, false},
    {"AppendedBase64Plain", vtkXMLWriter::Appended, true, false, true, false},
    {"InlineCompressed", vtkXMLWriter::Binary, true, true, false, false},
    {"InlineCompressedLongHeaders", vtkXMLWriter::Binary, true, true, true, true},
    {"InlinePlain", vtkXMLWriter::Binary, true, false, false, false},
    {"InlinePlainLongHeaders", vtkXMLWriter::Binary, true, false, true, true},
};

INSTANTIATE_TEST_SUITE_P(AllForms, VtuFileForms, testing::ValuesIn(forms),
                         [](const auto& form) { return form.param.name; });

class VtuFile : public testing::Test
{
protected:
    VtuFile() { writeDataSet(*mixedGrid(2, false), file); }

    /// Whether the file is read after a change.
    bool isReadWith(const std::string& from, const std::string& to) const
    {
        std::string contents = contentsOf(file);
        const std::size_t place = contents.find(from);
        EXPECT_NE(place, std::string::npos) << from;
        contents.replace(place, from.size(), to);
        writeFile(directory / "changed.vtu", contents);
        return readVtu(directory / "changed.vtu", 1).has_value();
    }

    TemporaryDirectory directory;
    std::filesystem::path file = directory / "grid.vtu";
};

TEST_F(VtuFile, OfTheCommandIsRead)
{
    for (const Compression compression : {Compression::none, Compression::fast, Compression::small})
    {
        writeDataSet(*mixedGrid(2, false), file, {.compression = compression});
        EXPECT_TRUE(readVtu(file, 1).has_value());
    }
    EXPECT_TRUE(isReadWith("<Points>", "<!-- all of them --><Points>"));
}

TEST_F(VtuFile, WithAnythingElseIsLeftToVtk)
{
    EXPECT_FALSE(isReadWith("LittleEndian", "BigEndian"));
    EXPECT_FALSE(isReadWith("vtkZLibDataCompressor", "vtkLZ4DataCompressor"));
    EXPECT_FALSE(isReadWith("UnstructuredGrid", "PolyData"));
    EXPECT_FALSE(isReadWith("Grid\" version=\"1.0\"", "Grid\" version=\"9.0\""));
    EXPECT_FALSE(isReadWith("Name=\"u\"", "Name=\"T\""));
    EXPECT_FALSE(isReadWith("Name=\"u\"", "TimeStep=\"1\""));
    EXPECT_FALSE(isReadWith("Name=\"u\"", "Name=\"&auml;\""));
    EXPECT_FALSE(isReadWith("NumberOfComponents=\"3\"", "NumberOfComponents=\"2\""));
    EXPECT_FALSE(isReadWith("NumberOfPoints=\"", "NumberOfPoints=\"1"));
    EXPECT_FALSE(isReadWith("NumberOfCells=\"", "NumberOfCells=\"1"));
    EXPECT_FALSE(isReadWith("<CellData>", "<CellData><Other/>"));
    EXPECT_FALSE(isReadWith("format=\"appended\" offset=\"", "format=\"appended\" offset=\"7"));
    EXPECT_FALSE(isReadWith("encoding=\"raw\"", "encoding=\"hex\""));
    EXPECT_FALSE(readVtu(directory / "nothing.vtu", 1).has_value());
    EXPECT_FALSE(readVtu(directory.path(), 1).has_value());
    writeGrid(*mixedGrid(2, false), file, true);
    EXPECT_FALSE(readVtu(file, 1).has_value());
}

/// Whatever a byte becomes, the reader gives what holds together, or nothing.
TEST_F(VtuFile, WithAWrongByteIsNoDanger)
{
    const std::string contents = contentsOf(file);
    int refusedCount = 0;
    for (std::size_t i = 0; i < contents.size(); i += 3)
    {
        std::string changed = contents;
        changed[i] = static_cast<char>(changed[i] ^ 0x55);
        writeFile(file, changed);
        const auto read = readVtu(file, 1);
        refusedCount += read ? 0 : 1;
        if (read)
        {
            EXPECT_EQ(read->cells.offsets.back(), read->cells.connectivity.size());
            EXPECT_EQ(read->cells.offsets.size(), static_cast<std::size_t>(read->types->GetNumberOfValues()) + 1);
        }
    }
    EXPECT_GT(refusedCount, static_cast<int>(contents.size() / 3 / 2)); // zlib's checksums find the most
}

std::string decoded(std::string_view letters, std::size_t size)
{
    std::string bytes(size, '?');
    return decodeBase64(letters, std::as_writable_bytes(std::span(bytes))) ? bytes : "refused";
}

TEST(Base64, GivesTheBytesOfTheStandard)
{
    EXPECT_EQ(decoded("", 0), "");
    EXPECT_EQ(decoded("Zg==", 1), "f");
    EXPECT_EQ(decoded("Zm8=", 2), "fo");
    EXPECT_EQ(decoded("Zm9v", 3), "foo");
    EXPECT_EQ(decoded("Zm9vYg==", 4), "foob");
    EXPECT_EQ(decoded("Zm9vYmFy", 6), "foobar");
    EXPECT_EQ(decoded("+/8=", 2), "\xFB\xFF");
}

TEST(Base64, RefusesOtherCharactersAndTooFew)
{
    EXPECT_EQ(decoded("Zm9", 3), "refused");
    EXPECT_EQ(decoded("Zm 9", 3), "refused");
    EXPECT_EQ(decoded("Zg==", 2), "refused");
    EXPECT_EQ(decoded("Z\xE4==", 1), "refused");
}

TEST(XmlText, IsTakenApart)
{
    const auto root =
        parseXml("<?xml version=\"1.0\"?>\n<a b='1' c=\"&lt;&#65;&amp;\"><!-- <no> --> <d/><e>words</e></a>\n");
    ASSERT_TRUE(root.has_value());
    EXPECT_EQ(root->name, "a");
    EXPECT_EQ(*root->attribute("b"), "1");
    EXPECT_EQ(*root->attribute("c"), "<A&");
    EXPECT_EQ(root->attribute("d"), nullptr);
    ASSERT_EQ(root->children.size(), 2U);
    EXPECT_EQ(root->children[1].text, "words");
}

TEST(XmlText, ThatIsNotWellFormedIsRefused)
{
    for (const char* wrong :
         {"", "a", "<a>", "<a></b>", "<a b></a>", "<a b=1/>", "<a b='1' b='2'/>", "<a/><a/>", "<a b='&x;'/>",
          "<a b='&#900;'/>", "<a b='<'/>", "<a><b/>x</a>", "<!DOCTYPE a><a/>", "<a><![CDATA[x]]></a>"})
    {
        EXPECT_FALSE(parseXml(wrong).has_value()) << wrong;
    }
    std::string deep;
    for (int i = 0; i < 100000; ++i)
    {
        deep += "<a>";
    }
    EXPECT_FALSE(parseXml(deep).has_value());
}

} // namespace
