// Processes that the command starts, signals that it gets, and files that it leaves.
#include "CommandRunner.h"
#include "TestGrids.h"

#include <vtkCellType.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>

namespace
{

using testing::UnorderedElementsAre;

class Processes : public testing::Test
{
protected:
    Processes()
    {
        const auto source = makeGrid(VTK_HEXAHEDRON, 2);
        addDoubles(*source, "T", linear);
        writeGrid(*source, runner.file("source.vtu"));
        writeGrid(*source, runner.file("step.vtu"));
        writeGrid(*makeGrid(VTK_TETRA, 2), runner.file("target.vtu"));
        std::ofstream(runner.file("source.pvd"))
            << "<VTKFile type=\"Collection\"><Collection><DataSet timestep=\"1\" file=\"source.vtu\"/>"
               "<DataSet timestep=\"2\" file=\"step.vtu\"/></Collection></VTKFile>\n";
        inputs = runner.directory().names();
    }

    CommandRunner runner;
    std::set<std::string> inputs;
    const std::vector<std::string> series{"transfer", "source.pvd", "target.vtu", "-o",
                                          "out.pvd",  "--jobs",     "2",          "--quiet"};
    const std::vector<std::string> picture{"transfer", "source.vtu", "target.vtu", "-o",     "out.vtu",
                                           "--report", "out.json",   "--picture",  "out.png"};
};

TEST_F(Processes, ASeriesEndsWhereProcessesThatEndAreIgnored)
{
    const CommandResult result = runner.runPrepared(
        []
        {
            ::signal(SIGCHLD, SIG_IGN);
            ::alarm(60); // it would wait for ever
        },
        series);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_TRUE(std::filesystem::exists(runner.file("out/out_0002.vtu")));
}

TEST_F(Processes, AForeignChildIsNoneOfTheSeries)
{
    const CommandResult result = runner.runPrepared(
        []
        {
            if (::fork() == 0)
            {
                std::_Exit(1);
            }
            ::usleep(50000);
        },
        series);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_TRUE(std::filesystem::exists(runner.file("out/out_0002.vtu")));
}

TEST_F(Processes, TheFirstIsEndedIfTheSecondCannotBeStarted)
{
    const CommandResult result = runner.runPrepared([] { ::setenv("LD_PRELOAD", VELTRANE_FAILING_FORK, 1); }, series);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "veltrane: cannot start a process: Resource temporarily unavailable\n");
    EXPECT_EQ(runner.directory().names(), inputs);
}

TEST_F(Processes, CtrlCDuringThePictureLeavesNoResult)
{
    const CommandResult result = runner.runAndInterrupt(picture, SIGINT, "drawing picture");
    EXPECT_EQ(result.status, 130);
    EXPECT_THAT(result.errors, testing::EndsWith("veltrane: cancelled\r\n"));
    EXPECT_EQ(runner.directory().names(), inputs);
}

TEST_F(Processes, APictureThatCannotBeWrittenLeavesNoResult)
{
    ASSERT_EQ(runner.run({"transfer", "source.vtu", "target.vtu", "-o", "out.vtu"}).status, 0);
    const auto size = std::filesystem::file_size(runner.file("out.vtu"));
    std::filesystem::remove(runner.file("out.vtu"));
    const CommandResult result = runner.run(picture, size + 100);
    EXPECT_EQ(result.status, 73);
    EXPECT_THAT(result.errors, testing::StartsWith("veltrane: cannot write 'out.png': "));
    EXPECT_EQ(runner.directory().names(), inputs);
}

TEST_F(Processes, ASecondCtrlCEndsAtOnce)
{
    const CommandResult result = runner.runAndInterrupt(picture, SIGINT, "drawing picture", 2);
    EXPECT_EQ(result.status, 130);
    EXPECT_THAT(result.errors, testing::EndsWith("\r\nveltrane: cancelled at once\r\n"));
    for (const char* name : {"out.vtu", "out.png", "out.json"})
    {
        EXPECT_FALSE(std::filesystem::exists(runner.file(name))) << name;
    }
}

TEST_F(Processes, LeftoversOfAKilledRunWithTheSameNumberAreNoObstacle)
{
    const CommandResult result = runner.runPrepared(
        [&]
        {
            const std::string number = std::to_string(::getpid());
            std::ofstream(runner.file(".out." + number + ".part.pvd")) << "left over";
            std::filesystem::create_directory(runner.file(".out." + number + ".parts"));
        },
        series);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_TRUE(std::filesystem::exists(runner.file("out/out_0002.vtu")));
}

} // namespace
