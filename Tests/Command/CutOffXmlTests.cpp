// VTK's XML files that end too early: its readers would take what is missing for zeros.
#include "CommandRunner.h"
#include "FileContents.h"
#include "TestGrids.h"

#include <vtkCellType.h>
#include <vtkNew.h>
#include <vtkXMLUnstructuredGridWriter.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace
{

struct Encoding
{
    bool isRaw;
    bool isCompressed;
    int headerType;
    bool isBigEndian;
};

std::string textOf(const std::string& whole, std::size_t length)
{
    return whole.substr(0, length);
}

class CutOffXml : public testing::TestWithParam<Encoding>
{
protected:
    CutOffXml()
    {
        const auto grid = makeGrid(VTK_TETRA, 1);
        addDoubles(*grid, "T", linear);
        vtkNew<vtkXMLUnstructuredGridWriter> writer;
        writer->SetFileName(runner.file("mesh.vtu").c_str());
        writer->SetInputData(grid);
        writer->SetDataModeToAppended();
        writer->SetEncodeAppendedData(!GetParam().isRaw);
        if (!GetParam().isCompressed)
        {
            writer->SetCompressorTypeToNone();
        }
        writer->SetHeaderType(GetParam().headerType);
        GetParam().isBigEndian ? writer->SetByteOrderToBigEndian() : writer->SetByteOrderToLittleEndian();
        writer->Write();
        whole = contentsOf(runner.file("mesh.vtu"));
    }

    void write(const std::string& content) const
    {
        std::ofstream(runner.file("mesh.vtu"), std::ios::binary) << content;
    }

    bool isAccepted() const
    {
        try
        {
            veltrane::readContents(runner.file("mesh.vtu"));
            return true;
        }
        catch (const veltrane::BadFile&)
        {
            return false;
        }
    }

    CommandRunner runner;
    std::string whole;
};

TEST_P(CutOffXml, IsRefusedWhereverItEnds)
{
    EXPECT_TRUE(isAccepted());
    const std::size_t end = whole.rfind('>');
    for (std::size_t length = end; length > 20; length -= length > end - 40 ? 1 : 7)
    {
        write(textOf(whole, length));
        ASSERT_FALSE(isAccepted()) << length << " of " << end + 1;
    }
}

TEST_P(CutOffXml, IsRefusedWithASentence)
{
    write(textOf(whole, whole.rfind('>') - 40));
    expectFailure(runner, 65, "cannot read 'mesh.vtu': it is cut off, its closing tag is missing",
                  {"info", "mesh.vtu"});
    expectFailure(runner, 65, "cannot read 'mesh.vtu': it is cut off, its closing tag is missing",
                  {"sample", "mesh.vtu", "mesh.vtu", "-o", "out.vtu"});
}

TEST_P(CutOffXml, NeedsTheValuesThatItTellsOf)
{
    const std::size_t end = whole.rfind("</AppendedData");
    write(textOf(whole, end - 20) + whole.substr(end));
    EXPECT_THAT(runner.run({"info", "mesh.vtu"}).errors,
                testing::MatchesRegex("veltrane: cannot read 'mesh.vtu': it does not have all the values of array "
                                      "'(offsets|types)' that it tells of\n"));
    const std::size_t begin = whole.find('_', whole.find("<AppendedData"));
    write(textOf(whole, begin + 3) + whole.substr(end));
    expectFailure(runner, 65, "cannot read 'mesh.vtu': it does not have all the values of array 'T' that it tells of",
                  {"info", "mesh.vtu"});
}

TEST_P(CutOffXml, IsRefusedAsAPieceOfAnother)
{
    std::ofstream(runner.file("all.pvtu"))
        << "<VTKFile type=\"PUnstructuredGrid\"><PUnstructuredGrid><PPointData><PDataArray type=\"Float64\" "
           "Name=\"T\"/>"
           "</PPointData><PPoints><PDataArray type=\"Float64\" NumberOfComponents=\"3\"/></PPoints>"
           "<Piece Source=\"mesh.vtu\"/></PUnstructuredGrid></VTKFile>\n";
    EXPECT_EQ(runner.run({"info", "all.pvtu"}).status, 0);
    write(textOf(whole, whole.rfind('>') - 40));
    expectFailure(runner, 65, "cannot read 'mesh.vtu': it is cut off, its closing tag is missing",
                  {"info", "all.pvtu"});
}

INSTANTIATE_TEST_SUITE_P(Encodings, CutOffXml,
                         testing::Values(Encoding{true, false, vtkXMLWriter::UInt64, false},
                                         Encoding{true, true, vtkXMLWriter::UInt32, false},
                                         Encoding{false, false, vtkXMLWriter::UInt32, false},
                                         Encoding{false, true, vtkXMLWriter::UInt64, false},
                                         Encoding{true, false, vtkXMLWriter::UInt32, true},
                                         Encoding{false, true, vtkXMLWriter::UInt32, true}));

} // namespace
