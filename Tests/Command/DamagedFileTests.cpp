// Files that VTK's readers do not survive.
#include "CommandRunner.h"
#include "ReadingGuard.h"
#include "TestGrids.h"

#include <vtkCellType.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace
{

/// A tetrahedron with the values 1, 2, 3 and 4, which are compressed into one block of 32 bytes of values. What tells
/// the size of the blocks says 0 for all but the last one, by which the reader divides.
void writeWithBlocksOfNoSize(const std::filesystem::path& path)
{
    std::ofstream(path)
        << "<VTKFile type=\"UnstructuredGrid\" version=\"1.0\" byte_order=\"LittleEndian\" header_type=\"UInt32\" "
           "compressor=\"vtkZLibDataCompressor\"><UnstructuredGrid><Piece NumberOfPoints=\"4\" NumberOfCells=\"1\">"
           "<PointData><DataArray type=\"Float64\" Name=\"T\" format=\"binary\">"
           "AQAAAAAAAAAgAAAAFwAAAA==eJxjYACBD/YMEOAAoTigtIADACXXAgg=</DataArray></PointData>"
           "<Points><DataArray type=\"Float64\" NumberOfComponents=\"3\" format=\"ascii\">0 0 0 1 0 0 0 1 0 0 0 1"
           "</DataArray></Points><Cells><DataArray type=\"Int64\" Name=\"connectivity\" format=\"ascii\">0 1 2 3"
           "</DataArray><DataArray type=\"Int64\" Name=\"offsets\" format=\"ascii\">4</DataArray>"
           "<DataArray type=\"UInt8\" Name=\"types\" format=\"ascii\">10</DataArray></Cells></Piece>"
           "</UnstructuredGrid></VTKFile>\n";
}

/// Elements in elements, so many that a reader that goes into each from within the other uses up its stack.
void writeDeep(const std::filesystem::path& path)
{
    constexpr int depth = 500000;
    std::ofstream stream(path);
    stream << "<VTKFile type=\"UnstructuredGrid\">";
    for (const char* tag : {"<a>", "</a>"})
    {
        for (int i = 0; i < depth; ++i)
        {
            stream << tag;
        }
    }
    stream << "</VTKFile>\n";
}

class DamagedFiles : public testing::Test
{
protected:
    DamagedFiles()
    {
        const auto grid = makeGrid(VTK_TETRA, 2);
        addDoubles(*grid, "T", linear);
        writeGrid(*grid, runner.file("mesh.vtu"));
    }

    void expectRefused(const std::vector<std::string>& arguments) const
    {
        expectFailure(runner, 65, sentence("SIGFPE"), arguments);
    }

    static std::string sentence(const std::string& signal)
    {
        return "cannot read 'damaged.vtu': VTK's reader ends with the signal " + signal +
               "; the file is probably damaged";
    }

    CommandRunner runner;
};

TEST_F(DamagedFiles, AreRefusedIfTheirReaderDividesByZero)
{
    writeWithBlocksOfNoSize(runner.file("damaged.vtu"));
    expectRefused({"info", "damaged.vtu"});
    expectRefused({"compare", "mesh.vtu", "damaged.vtu"});
    const std::vector<std::string> output{"-o", "out.vtu", "--quiet"};
    for (std::vector<std::string> arguments : {std::vector<std::string>{"transfer", "damaged.vtu", "mesh.vtu"},
                                               {"transfer", "mesh.vtu", "damaged.vtu"},
                                               {"sample", "mesh.vtu", "damaged.vtu"},
                                               {"match", "nodes", "damaged.vtu", "mesh.vtu"}})
    {
        arguments.insert(arguments.end(), output.begin(), output.end());
        expectRefused(arguments);
    }
}

TEST_F(DamagedFiles, AreRefusedIfTheirReaderUsesUpItsStack)
{
    writeDeep(runner.file("damaged.vtu"));
    expectFailure(runner, 65, sentence("SIGSEGV"), {"info", "damaged.vtu"});
}

TEST_F(DamagedFiles, AreRefusedAsStepsOfASeries)
{
    writeWithBlocksOfNoSize(runner.file("damaged.vtu"));
    std::ofstream(runner.file("source.pvd"))
        << "<VTKFile type=\"Collection\"><Collection><DataSet timestep=\"1\" file=\"mesh.vtu\"/>"
           "<DataSet timestep=\"2\" file=\"damaged.vtu\"/></Collection></VTKFile>\n";
    expectRefused({"transfer", "source.pvd", "mesh.vtu", "-o", "out.pvd", "--quiet", "--replace"});
}

TEST_F(DamagedFiles, LeaveWhatHasBeenToldOfOthers)
{
    writeWithBlocksOfNoSize(runner.file("damaged.vtu"));
    const CommandResult alone = runner.run({"info", "mesh.vtu"});
    const CommandResult both = runner.run({"info", "mesh.vtu", "damaged.vtu"});
    EXPECT_EQ(both.status, 65);
    EXPECT_EQ(both.output, alone.output);
    EXPECT_EQ(both.errors, "veltrane: " + sentence("SIGFPE") + "\n");
}

TEST_F(DamagedFiles, AreToldOfInThePlaceOfTheBar)
{
    writeWithBlocksOfNoSize(runner.file("damaged.vtu"));
    constexpr int noSignal = 0;
    const CommandResult result =
        runner.runAndInterrupt({"transfer", "damaged.vtu", "mesh.vtu", "-o", "out.vtu"}, noSignal, "reading");
    EXPECT_EQ(result.status, 65);
    EXPECT_THAT(result.errors, testing::EndsWith("\r\033[Kveltrane: " + sentence("SIGFPE") + "\r\n"));
}

TEST(ReadingGuardDeathTest, BlamesTheFileForFaultsOfItsReaderAlone)
{
    using veltrane::guarded;
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    constexpr int unsuitableData = 65;
    EXPECT_EXIT(guarded("mesh.vtu", [] { std::raise(SIGILL); }), testing::ExitedWithCode(unsuitableData),
                "'mesh.vtu': VTK's reader ends with the signal SIGILL");
    EXPECT_EXIT(guarded("mesh.vtu", [] { std::thread([] { std::raise(SIGFPE); }).join(); }),
                testing::KilledBySignal(SIGFPE), "^$");
    const auto raiseLater = []
    {
        guarded("mesh.vtu", [] {});
        std::raise(SIGFPE);
    };
    EXPECT_EXIT(raiseLater(), testing::KilledBySignal(SIGFPE), "^$");
}

} // namespace
