// Standard input and output in the place of files.
#include "CommandRunner.h"
#include "TestGrids.h"

#include <vtkCellType.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <fstream>

namespace
{

class StandardStreams : public testing::Test
{
protected:
    StandardStreams()
    {
        const auto grid = makeGrid(VTK_HEXAHEDRON, 2);
        addDoubles(*grid, "T", linear);
        writeGrid(*grid, runner.file("source.vtu"));
        std::ofstream(runner.file("points.csv")) << "x,y,z\n0.25,0.5,0.125\n1,1,1\n";
    }

    /// With a file behind standard input.
    CommandResult runWith(const std::string& input, const std::vector<std::string>& arguments) const
    {
        return runner.runPrepared(
            [&]
            {
                const int file = ::open(runner.file(input).c_str(), O_RDONLY);
                ::dup2(file, STDIN_FILENO);
            },
            arguments);
    }

    CommandRunner runner;
    const std::string readings = "x,y,z,T,vtkValidPointMask\n0.25,0.5,0.125,0.625,1\n1,1,1,5,1\n";
};

TEST_F(StandardStreams, SampleTakesPointsAndGivesReadings)
{
    const CommandResult result = runWith("points.csv", {"sample", "source.vtu", "-", "-o", "-"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, readings);
    EXPECT_THAT(result.errors, testing::HasSubstr("target points             2\n")); // the summary
    EXPECT_THAT(runner.temporaryNames(), testing::IsEmpty());
    EXPECT_EQ(runWith("points.csv", {"sample", "source.vtu", "-", "-o", "-", "--quiet"}).errors, "");
}

TEST_F(StandardStreams, AllStepsTakeTheSamePoints)
{
    std::ofstream(runner.file("source.pvd"))
        << "<VTKFile type=\"Collection\"><Collection><DataSet timestep=\"1\" file=\"source.vtu\"/>"
           "<DataSet timestep=\"2\" file=\"source.vtu\"/></Collection></VTKFile>\n";
    const CommandResult result =
        runWith("points.csv", {"sample", "source.pvd", "-", "-o", "out.pvd", "--quiet", "--jobs", "2"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(runner.run({"info", "out/out_0001.vtp", "out/out_0002.vtp"}).output,
                testing::ContainsRegex("points            2\n(.*\n)*points            2\n"));
}

TEST_F(StandardStreams, TransferAndMatchGiveTheirOutputs)
{
    const std::vector<std::string> transfer{"transfer", "source.vtu", "source.vtu", "--replace", "--quiet", "-o"};
    auto toFile = transfer;
    toFile.push_back("out.vtu");
    auto toStream = transfer;
    toStream.push_back("-");
    ASSERT_EQ(runner.run(toFile).status, 0);
    const CommandResult result = runner.run(toStream);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, contentsOf(runner.file("out.vtu")));
    const CommandResult match = runner.run({"match", "nodes", "source.vtu", "source.vtu", "-o", "-"});
    EXPECT_THAT(match.output, testing::StartsWith("target_node,source_node\n1,1\n2,2\n"));
    EXPECT_EQ(match.errors, "matched all 27 nodes of 'source.vtu' with those of 'source.vtu'\n");
}

TEST_F(StandardStreams, AMeshNeedsAFile)
{
    const std::string sentence = "a mesh cannot come from standard input, only the points of sample, as a table";
    expectFailure(runner, 66, sentence, {"transfer", "-", "source.vtu", "-o", "out.vtu", "--quiet"});
    expectFailure(runner, 66, sentence, {"transfer", "source.vtu", "-", "-o", "out.vtu", "--quiet"});
    expectFailure(runner, 66, sentence, {"compare", "-", "source.vtu"});
    std::ofstream(runner.file("empty.csv"));
    EXPECT_EQ(runWith("empty.csv", {"info", "-"}).errors, "veltrane: '-' is empty\n");
}

} // namespace
