// The command started by mpirun, beside the command by itself: the same arrays.
#include "TemporaryDirectory.h"
#include "TestGrids.h"

#include <gtest/gtest.h>

#include <vtkCellData.h>
#include <vtkCellType.h>
#include <vtkDataArray.h>
#include <vtkFieldData.h>
#include <vtkIdList.h>
#include <vtkIntArray.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkUnsignedCharArray.h>
#include <vtkUnstructuredGrid.h>
#include <vtkXMLPUnstructuredGridReader.h>
#include <vtkXMLUnstructuredGridReader.h>

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <vector>

namespace
{

struct Result
{
    int status;
    std::string output; ///< of both streams
};

Result runShell(const std::string& line)
{
    FILE* pipe = ::popen((line + " 2>&1").c_str(), "r");
    std::string output;
    std::array<char, 4096> buffer{};
    while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), pipe))
    {
        output.append(buffer.data(), count);
    }
    const int status = ::pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

/// How often the command has told something.
int sentenceCount(const std::string& output)
{
    int count = 0;
    for (std::size_t place = output.find("veltrane: "); place != std::string::npos;
         place = output.find("veltrane: ", place + 1))
    {
        ++count;
    }
    return count;
}

/// Cubes of several kinds of cells in three materials along x, with values.
vtkSmartPointer<vtkUnstructuredGrid> body(int first, int count, double from, double edge)
{
    constexpr std::array kinds{VTK_HEXAHEDRON, VTK_WEDGE, VTK_PYRAMID, VTK_TETRA, VTK_QUADRATIC_TETRA};
    GridBuilder builder;
    for (int i = 0; i < count; ++i)
    {
        for (int j = 0; j < 3; ++j)
        {
            for (int k = 0; k < 3; ++k)
            {
                const auto kind = static_cast<std::size_t>(i + 2 * j + k) % kinds.size();
                builder.addCube(kinds[kind], {from + edge * (first + i), from + edge * j, from + edge * k}, edge);
            }
        }
    }
    vtkSmartPointer<vtkUnstructuredGrid> grid = builder.grid();
    addDoubles(*grid, "temperature", [](const Point& p) { return std::sin(3 * p[0]) + p[1] * p[2] / 7; });
    addFloats(*grid, "displacement",
              {[](const Point& p) { return p[0] / 3; }, [](const Point& p) { return p[1] * p[2]; },
               [](const Point& p) { return std::cos(p[2]); }});
    addCellNumbers(*grid, "material",
                   [&](vtkIdType cell)
                   {
                       vtkNew<vtkIdList> points;
                       grid->GetCellPoints(cell, points);
                       return pointOf(*grid, points->GetId(0))[0] < 2.9 ? 4 : 9;
                   });
    return grid;
}

/// The cells of a stretch of x, as a piece.
void writePieces(const TemporaryDirectory& directory, const std::string& name, int pieceCount, double from, double edge,
                 bool hasGhosts = false)
{
    std::ofstream summary(directory / (name + ".pvtu"));
    summary << "<?xml version=\"1.0\"?>\n<VTKFile type=\"PUnstructuredGrid\" version=\"0.1\" "
               "byte_order=\"LittleEndian\">\n<PUnstructuredGrid GhostLevel=\"0\">\n<PPointData>\n"
               "<PDataArray type=\"Float64\" Name=\"temperature\"/>\n"
               "<PDataArray type=\"Float32\" Name=\"displacement\" NumberOfComponents=\"3\"/>\n</PPointData>\n"
               "<PCellData>\n<PDataArray type=\"Int32\" Name=\"material\"/>\n";
    summary << (hasGhosts ? "<PDataArray type=\"UInt8\" Name=\"vtkGhostType\"/>\n" : "");
    summary << "</PCellData>\n<PPoints>\n<PDataArray type=\"Float64\" NumberOfComponents=\"3\"/>\n</PPoints>\n";
    for (int piece = 0; piece < pieceCount; ++piece)
    {
        const std::string file = name + "_" + std::to_string(piece) + ".vtu";
        const vtkSmartPointer<vtkUnstructuredGrid> grid =
            body(2 * piece, hasGhosts && piece + 1 < pieceCount ? 3 : 2, from, edge);
        if (hasGhosts)
        {
            vtkNew<vtkUnsignedCharArray> ghosts;
            ghosts->SetName("vtkGhostType");
            for (vtkIdType cell = 0; cell < grid->GetNumberOfCells(); ++cell)
            {
                std::array<double, 6> bounds{};
                grid->GetCellBounds(cell, bounds.data());
                const bool isGhost = bounds[1] > from + edge * (2 * piece + 2) + edge / 100;
                ghosts->InsertNextValue(isGhost ? vtkDataSetAttributes::DUPLICATECELL : 0);
            }
            grid->GetCellData()->AddArray(ghosts);
        }
        writeGrid(*grid, directory / file);
        summary << "<Piece Source=\"" << file << "\"/>\n";
    }
    summary << "</PUnstructuredGrid>\n</VTKFile>\n";
}

template <class Reader> vtkSmartPointer<vtkUnstructuredGrid> readBy(const std::filesystem::path& path)
{
    vtkNew<Reader> reader;
    reader->SetFileName(path.c_str());
    reader->Update();
    return reader->GetOutput();
}

vtkSmartPointer<vtkUnstructuredGrid> readAny(const std::filesystem::path& path)
{
    return path.extension() == ".pvtu" ? readBy<vtkXMLPUnstructuredGridReader>(path)
                                       : readBy<vtkXMLUnstructuredGridReader>(path);
}

/// The bytes of all arrays of one sort.
std::map<std::string, std::string> bytesOf(vtkFieldData& data)
{
    std::map<std::string, std::string> arrays;
    for (int i = 0; i < data.GetNumberOfArrays(); ++i)
    {
        if (vtkDataArray* array = data.GetArray(i))
        {
            const auto size = static_cast<std::size_t>(array->GetNumberOfValues() * array->GetDataTypeSize());
            arrays[array->GetName()] = std::string(static_cast<const char*>(array->GetVoidPointer(0)), size);
        }
    }
    return arrays;
}

class TheCommandUnderMpirun : public testing::Test
{
protected:
    Result alone(const std::string& arguments) const
    {
        return runShell("cd " + (directory / "").string() + " && " VELTRANE_COMMAND " " + arguments);
    }

    Result withRanks(int count, const std::string& arguments) const
    {
        return runShell("cd " + (directory / "").string() + " && " VELTRANE_MPIEXEC " -n " + std::to_string(count) +
                        " " VELTRANE_COMMAND " " + arguments);
    }

    void expectSameArrays(const std::string& plain, const std::string& other) const
    {
        const auto first = readAny(directory / plain);
        const auto second = readAny(directory / other);
        ASSERT_GT(first->GetNumberOfPoints(), 0);
        EXPECT_EQ(bytesOf(*first->GetPointData()), bytesOf(*second->GetPointData()));
        EXPECT_EQ(bytesOf(*first->GetFieldData()), bytesOf(*second->GetFieldData()));
        EXPECT_NE(bytesOf(*first->GetPointData()).count("temperature") +
                      bytesOf(*first->GetFieldData()).count("temperature"),
                  0U);
    }

    void expectSameFor(const std::string& arguments, const std::string& ending, const std::vector<int>& rankCounts)
    {
        const Result plain = alone("transfer " + arguments + " -o plain.vtu --replace");
        ASSERT_TRUE(plain.status == 0 || plain.status == 3) << plain.output;
        for (const int ranks : rankCounts)
        {
            const std::string output = "of" + std::to_string(ranks) + ending;
            const Result result = withRanks(ranks, "transfer " + arguments + " -o " + output + " --replace");
            ASSERT_EQ(result.status, plain.status) << result.output;
            expectSameArrays("plain.vtu", output);
        }
    }

    TemporaryDirectory directory;
};

TEST_F(TheCommandUnderMpirun, GivesPiecesTheArraysOfThePlainCommand)
{
    writePieces(directory, "source", 4, 0, 0.7);
    writePieces(directory, "target", 4, -0.1, 0.72);
    expectSameFor("source.pvtu target.pvtu --outside default --default -1", ".pvtu",
                  {1, 3, 7}); // fewer and more than pieces
    expectSameFor("source.pvtu target.pvtu --outside propagate --near-limit 0.01", ".pvtu", {3});
}

TEST_F(TheCommandUnderMpirun, UsesGhostCellsForNothing)
{
    writePieces(directory, "source", 3, 0, 0.7, true);
    writePieces(directory, "target", 3, 0.1, 0.65, true);
    expectSameFor("source.pvtu target.pvtu --outside default", ".pvtu", {2});
    // As if they were not there, but for the points that only they have.
    writePieces(directory, "bare", 3, 0, 0.7);
    ASSERT_EQ(alone("transfer bare.pvtu target.pvtu --outside default -o bare.vtu --replace").status, 0);
    expectSameArrays("plain.vtu", "bare.vtu");
}

TEST_F(TheCommandUnderMpirun, DealsFilesInOnePiece)
{
    writeGrid(*body(0, 8, 0, 0.7), directory / "source.vtu");
    writeGrid(*body(0, 9, -0.1, 0.65), directory / "target.vtu");
    expectSameFor("source.vtu target.vtu --outside default --state 4=12 --class1-only temperature", ".vtu", {1, 5});
    expectSameFor("source.vtu target.vtu --outside propagate --near-limit 0.01", ".vtu", {3});
    expectSameFor("source.vtu target.vtu --outside default --gauss", ".vtu", {3});
}

TEST_F(TheCommandUnderMpirun, EndsWithOneSentenceAndNothingWritten)
{
    writePieces(directory, "source", 4, 0, 0.7);
    writePieces(directory, "target", 4, 0.1, 0.65);
    std::filesystem::resize_file(directory / "source_3.vtu", 700);
    const auto before = directory.names();
    const Result damaged = withRanks(3, "transfer source.pvtu target.pvtu -o out.pvtu --replace");
    EXPECT_EQ(damaged.status, 65) << damaged.output;
    EXPECT_EQ(sentenceCount(damaged.output), 1) << damaged.output;
    const Result missing = withRanks(3, "transfer absent.pvtu target.pvtu -o out.pvtu");
    EXPECT_EQ(missing.status, 66) << missing.output;
    EXPECT_EQ(sentenceCount(missing.output), 1) << missing.output;
    const Result wrong = withRanks(2, "transfer --no-such-option");
    EXPECT_EQ(wrong.status, 64) << wrong.output;
    EXPECT_EQ(sentenceCount(wrong.output), 1) << wrong.output;
    EXPECT_EQ(directory.names(), before);
}

TEST_F(TheCommandUnderMpirun, TellsHowManyAreOutside)
{
    writePieces(directory, "source", 2, 0, 0.7);
    writePieces(directory, "target", 3, 0.1, 0.7);
    const Result result = withRanks(3, "transfer source.pvtu target.pvtu -o out.pvtu --replace --ignore-materials");
    EXPECT_EQ(result.status, 2) << result.output;
    EXPECT_NE(result.output.find("are outside the source"), std::string::npos) << result.output;
    EXPECT_EQ(sentenceCount(result.output), 1) << result.output;
}

TEST_F(TheCommandUnderMpirun, RefusesUnequalPieces)
{
    writePieces(directory, "source", 2, 0, 0.7);
    writePieces(directory, "target", 2, 0.1, 0.65);
    const vtkSmartPointer<vtkUnstructuredGrid> other = body(2, 2, 0, 0.7);
    other->GetPointData()->RemoveArray("temperature");
    writeGrid(*other, directory / "source_1.vtu");
    const Result result = withRanks(2, "transfer source.pvtu target.pvtu -o out.pvtu --replace");
    EXPECT_EQ(result.status, 65) << result.output;
    EXPECT_EQ(sentenceCount(result.output), 1) << result.output;
}

TEST_F(TheCommandUnderMpirun, LeavesNoHalfFileWhenItIsInterrupted)
{
    writePieces(directory, "source", 4, 0, 0.7);
    writePieces(directory, "target", 4, 0.1, 0.65);
    for (const std::string delay : {"0.2", "0.4", "0.6"}) // somewhere before, in and after the work
    {
        runShell("cd " + (directory / "").string() + " && timeout -s INT " + delay +
                 " " VELTRANE_MPIEXEC " -n 3 " VELTRANE_COMMAND
                 " transfer source.pvtu target.pvtu -o out.pvtu --replace --outside default");
        const auto files = directory.files();
        for (const auto& [name, contents] : files)
        {
            EXPECT_EQ(name.find(".part"), std::string::npos) << name;
        }
        EXPECT_TRUE(!files.contains("out.pvtu") || files.contains("out/out_2.vtu"));
    }
}

TEST_F(TheCommandUnderMpirun, KnowsOtherLaunchers)
{
    const Result result = runShell("PMI_RANK=0 " VELTRANE_COMMAND " info absent.vtu");
    EXPECT_EQ(result.status, 64);
    EXPECT_NE(result.output.find("Open MPI"), std::string::npos);
    EXPECT_EQ(runShell("PMI_RANK=1 " VELTRANE_COMMAND " info absent.vtu").output, "");
}

TEST_F(TheCommandUnderMpirun, LeavesOtherCommandsToOneProcess)
{
    writePieces(directory, "source", 2, 0, 0.7);
    const Result plain = alone("info source.pvtu");
    EXPECT_EQ(plain.status, 0) << plain.output;
    EXPECT_EQ(withRanks(3, "info source.pvtu").output, plain.output);
}

} // namespace
