// Damaged files of Gmsh, CalculiX, Abaqus and Nastran: a sentence with the line, or the byte, of what is wrong.
#include "Solver/AbaqusFile.h"
#include "Solver/FrdFile.h"
#include "Solver/GmshFile.h"
#include "Solver/NastranFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <utility>

namespace
{

using veltrane::BadFile;
using veltrane::ParsedMesh;
using veltrane::SourceText;

SourceText openNothing(const std::filesystem::path& path)
{
    throw veltrane::NoInput("there is no file '" + path.string() + "'");
}

ParsedMesh parse(const std::string& name, const std::string& bytes)
{
    const SourceText source(bytes, name);
    const std::string ending = name.substr(name.find('.'));
    return ending == ".msh"   ? veltrane::parseGmsh(source, std::nullopt)
           : ending == ".frd" ? veltrane::parseFrd(source, std::nullopt)
           : ending == ".inp" ? veltrane::parseAbaqus(source, openNothing)
                              : veltrane::parseNastran(source, openNothing);
}

/// What is said of a file; empty if nothing is wrong.
std::string complaint(const std::string& name, const std::string& bytes)
{
    try
    {
        parse(name, bytes);
        return "";
    }
    catch (const BadFile& error)
    {
        return error.what();
    }
}

void expectComplaint(const std::string& name, const std::string& bytes, const std::string& reason)
{
    EXPECT_EQ(complaint(name, bytes), "cannot read '" + name + "': " + reason) << bytes;
}

std::string bytesOf(const std::string& name)
{
    std::ifstream file(std::filesystem::path(VELTRANE_SOLVER_FILES) / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string replaced(std::string text, const std::string& from, const std::string& to)
{
    const std::size_t place = text.find(from);
    EXPECT_NE(place, std::string::npos) << from;
    return text.replace(place, from.size(), to);
}

class CutOffSolverFile : public testing::TestWithParam<std::string>
{
};

TEST_P(CutOffSolverFile, IsRefusedWhereverItEnds)
{
    const std::string whole = bytesOf(GetParam());
    const std::string content = whole.substr(0, whole.find_last_not_of("\n ") + 1);
    ASSERT_EQ(complaint(GetParam(), content), "");
    const std::size_t stride = content.size() > 5000 ? 7 : 1;
    for (std::size_t size = 1; size < content.size(); size += stride)
    {
        EXPECT_THAT(complaint(GetParam(), content.substr(0, size)), testing::StartsWith("cannot read '" + GetParam()))
            << size;
    }
}

INSTANTIATE_TEST_SUITE_P(FormatsWithAnEnd, CutOffSolverFile,
                         testing::Values("kinds_complete.msh", "kinds_binary.msh", "kinds_version2.msh",
                                         "kinds_version2_binary.msh", "solved.frd", "solved_binary.frd"),
                         [](const auto& tested)
                         {
                             std::string name = tested.param;
                             std::ranges::replace(name, '.', '_');
                             return name;
                         });

const std::string gmsh = "$MeshFormat\n4.1 0 8\n$EndMeshFormat\n$Nodes\n1 4 1 4\n3 1 0 4\n1\n2\n3\n4\n0 0 0\n1 0 0\n"
                         "0 1 0\n0 0 1\n$EndNodes\n$Elements\n1 1 1 1\n3 1 4 1\n1 1 2 3 4\n$EndElements\n";

TEST(DamagedGmshFile, IsToldOfWithItsLine)
{
    const auto expect = [](const std::string& from, const std::string& to, const std::string& reason)
    { expectComplaint("mesh.msh", replaced(gmsh, from, to), reason); };
    ASSERT_EQ(complaint("mesh.msh", gmsh), "");
    expect("$MeshFormat", "solid", "it is no mesh file of Gmsh, which begins with $MeshFormat");
    expect("4.1 0 8", "4 0 8", "line 2 tells of version 4; save the mesh in version 4.1 or 2.2");
    expect("1 4 1 4", "1 x 1 4", "line 5 has 'x' where the number of nodes should be");
    expect("1 4 1 4", "1 4000000000 1 4",
           "line 5 tells of 4000000000 as the number of nodes, more than the file has room for");
    expect("0 1 0\n0", "0 1,5 0\n0", "line 13 has '1,5' where a coordinate should be");
    expect("3\n4\n", "3\n3\n", "line 15 ends a section in which two nodes have the same number");
    expect("3 1 4 1\n", "3 1 92 1\n",
           "line 18 tells of elements of type 92, which cannot be read; there are those of first and second order");
    expect("1 1 2 3 4", "1 1 2 3 9", "line 19 has node 9 of element 1, which is not in the file");
    expect("$EndNodes", "$EndElements", "line 15 has '$EndElements' where the section '$Nodes' should end");
    expect("$EndElements", "", "it ends within the section '$Elements'");
    expect("$EndElements\n", "$EndElements\n$NodeData\n1\n\"T\"\n1\n0\n3\n0\n1\n1\n7 1\n$EndNodeData\n",
           "line 30 has values of 'T' at node 7, which is not in the file");
}

TEST(DamagedGmshFile, IsToldOfWithItsByte)
{
    std::string bytes = bytesOf("kinds_binary.msh");
    const std::size_t elements = bytes.find("$Elements\n") + 10;
    bytes[elements + 4 * 8 + 8] = 99; // the type in the first block
    EXPECT_THAT(complaint("mesh.msh", bytes),
                testing::MatchesRegex("cannot read 'mesh.msh': byte [0-9]+ tells of elements of type 99, .*"));
}

TEST(DamagedCalculixResult, IsToldOfWithItsLine)
{
    const std::string file = bytesOf("solved.frd");
    const auto expect = [&](const std::string& from, const std::string& to, const std::string& reason)
    { expectComplaint("job.frd", replaced(file, from, to), reason); };
    expect("    2C                            45", "    2C                            46",
           "line 14 tells of 46 nodes, but 45 follow");
    expect("    2C                            45", "    2C                   45000000000",
           "line 14 tells of 45000000000 nodes, more than the file has room for");
    expect(" -1         2 1.00000E+00", " -1         2 1.00000F+00",
           "line 16 has '1.00000F+00' where a coordinate should be");
    expect(" -1         2 1.00000E+00", " -1         1 1.00000E+00",
           "line 14 begins a block in which two nodes have the same number");
    expect(" -1         1    4    0    1", " -1         1   44    0    1",
           "line 62 tells of an element of type 44, but there are the types 1 to 12");
    expect(" -2        11", " -2        77", "line 64 has node 77 of element 1, which is not in the file");
    expect("  100CL  101", "  200CL  101", "line 72 begins with '200C', which no part of a result file does");
    expect(" -4  DISP", " -5  DISP", "line 73 should name a field and begin with -4");
}

const std::string deck = "*NODE\n1,0,0,0\n2,1,0,0\n3,0,1,0\n4,0,0,1\n*ELEMENT,TYPE=C3D4,ELSET=A\n1,1,2,3,4\n";

TEST(DamagedAbaqusDeck, IsToldOfWithItsLine)
{
    const auto expect = [](const std::string& from, const std::string& to, const std::string& reason)
    { expectComplaint("deck.inp", replaced(deck, from, to), reason); };
    expect("2,1,0,0", "2,1,O,0", "line 3 has 'O' where a coordinate should be");
    expect("3,0,1,0", "x3,0,1,0", "line 4 has 'x3' where the number of a node should be");
    expect("C3D4", "C3D7", "line 6 has elements of the type 'C3D7', which is not known");
    expect("TYPE=C3D4,", "", "line 6 has elements without a type");
    expect("1,1,2,3,4", "1,1,2,3", "line 7 begins element 1, which has 3 nodes instead of 4");
    expect("1,1,2,3,4", "1,1,2,3,4,5", "line 7 has more than the 4 nodes of element 1");
    expect("1,1,2,3,4", "1,1,2,3,9", "line 7 begins element 1 with node 9, which is not there");
    expect("*NODE", "*NGEN",
           "line 1 has *NGEN, which cannot be read; let a program write all nodes and elements one by one");
    expect("*NODE", "*NODE,SYSTEM=C",
           "line 1 has nodes in a coordinate system 'C', which cannot be read; let a program write them in x, y and z");
    expect("*ELEMENT", "*INCLUDE,INPUT=more.inp\n*ELEMENT",
           "line 6 includes the file 'more.inp', which cannot be opened");
    expect("*ELEMENT", "*INSTANCE,NAME=I,PART=P\n*ELEMENT",
           "line 6 has an instance of the part 'P', which is not there");
    expect("*ELEMENT", "*ELSET,ELSET=B,GENERATE\n5,1,1\n*ELEMENT",
           "line 7 has a range of elements that ends with 1 before it begins with 5");
    expectComplaint("deck.inp", "*HEADING\n", "it has no nodes");
}

SourceText openItself(const std::filesystem::path& path)
{
    return {"*INCLUDE,INPUT=deck.inp\n", path};
}

TEST(DamagedAbaqusDeck, MayNotIncludeItself)
{
    const SourceText source("*INCLUDE,INPUT=deck.inp\n", "deck.inp");
    EXPECT_THROW(veltrane::parseAbaqus(source, openItself), BadFile);
}

const std::string bulk = "GRID,1,,0.,0.,0.\nGRID,2,,1.,0.,0.\nGRID,3,,0.,1.,0.\nGRID,4,,0.,0.,1.\nCTETRA,1,1,1,2,3,4\n";

TEST(DamagedNastranFile, IsToldOfWithItsLine)
{
    const auto expect = [](const std::string& from, const std::string& to, const std::string& reason)
    { expectComplaint("bulk.bdf", replaced(bulk, from, to), reason); };
    ASSERT_EQ(complaint("bulk.bdf", bulk), "");
    expect("2,,1.,0.", "2,,1.x,0.", "line 2 has '1.x' where a coordinate should be");
    expect("GRID,3", "GRID,three", "line 3 has 'three' where the number of a node should be");
    expect("1,2,3,4", "1,2,3", "line 5 has '' where a node of an element should be");
    expect("1,2,3,4", "1,2,3,7", "line 5 has element 1 with node 7, which is not there");
    expect("1,2,3,4", "1,2,3,4,1,2", "line 5 has a CTETRA with 2 of 6 nodes within its edges; it can have all or none");
    expect("GRID,2,,", "GRID,2,5,", "line 2 needs the coordinate system 5, which is not there");
    expect("GRID,2,,", "CORD2R,5,5,0.,0.,0.,0.,0.,1.\n,1.,0.,0.\nGRID,2,5,",
           "line 2 defines the coordinate system 5 by others that need it itself");
    expect("GRID,2,,", "CORD2R,5,,0.,0.,0.,0.,0.,1.\n,0.,0.,2.\nGRID,2,5,",
           "line 2 defines the coordinate system 5 by points on one line");
    expect("GRID,2,,", "CORD3G,5\nGRID,2,5,",
           "line 2 has a coordinate system of the kind 'CORD3G', which cannot be read");
    expect("GRID,2", "INCLUDE 'other.bdf'\nGRID,2", "line 2 includes the file 'other.bdf', which cannot be opened");
    expect("GRID,1", "+,1", "line 1 continues a card, but there is none before it");
}

/// Every byte of a file in turn is another one: whatever comes of it, it is a mesh or a sentence.
TEST(DamagedSolverFile, IsReadOrRefusedWhicheverByteIsWrong)
{
    for (const std::string name : {"kinds_complete.msh", "kinds_version2.msh", "kinds_version2_binary.msh", "kinds.inp",
                                   "kinds.bdf", "solved_binary.frd"})
    {
        const std::string whole = bytesOf(name);
        for (std::size_t place = 0; place<whole.size(); place += whole.size()> 5000 ? 5 : 1)
        {
            for (const char letter : {'9', '-', ',', '\n', '\xff'})
            {
                std::string bytes = whole;
                bytes[place] = letter;
                const std::string sentence = complaint(name, bytes);
                EXPECT_TRUE(sentence.empty() || sentence.starts_with("cannot read '" + name + "': ")) << sentence;
                EXPECT_EQ(sentence.find('\n'), std::string::npos) << sentence;
            }
        }
    }
}

} // namespace
