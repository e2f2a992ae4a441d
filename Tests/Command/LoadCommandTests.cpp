// --loads of veltrane transfer and veltrane compare: sums and moments on both sides.
#include "CommandRunner.h"
#include "TestGrids.h"

#include <vtkCellType.h>

#include <nlohmann/json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <numeric>

namespace
{

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class LoadsCommand : public testing::Test
{
protected:
    LoadsCommand()
    {
        const auto source = makeGrid(VTK_HEXAHEDRON, 8);
        addDoubles(*source, "T", linear);
        addDoubles(*source, "flow", [](const Point& p) { return 1 + p[0]; });
        addFloats(*source, "force",
                  {[](const Point&) { return 1.0; }, [](const Point& p) { return p[0]; },
                   [](const Point& p) { return p[1] * p[2]; }});
        writeGrid(*source, runner.file("source.vtu"));
        writeGrid(*makeGrid(VTK_TETRA, 3), runner.file("target.vtu"));
    }

    CommandResult transfer(std::vector<std::string> options) const
    {
        options.insert(options.begin(),
                       {"transfer", "source.vtu", "target.vtu", "-o", "out.vtu", "--report", "report.json"});
        return runner.run(options);
    }

    json report() const
    {
        std::ifstream stream(runner.file("report.json"));
        return json::parse(stream);
    }

    CommandRunner runner;
};

/// The 729 flows 1 + x have the sum 1.5 times 729.
TEST_F(LoadsCommand, KeepsSumsAndMoments)
{
    const CommandResult result = transfer({"--loads", "flow", "--loads", "force=F"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, StartsWith("verdict           good: none of 64 nodes is far from the source, all loads "
                                          "'flow' are distributed, all loads 'F' are distributed"));
    EXPECT_THAT(result.output, HasSubstr("\nflow                               1093.5         1093.5             0\n"));
    EXPECT_THAT(result.output, HasSubstr("\nF x                                   729            729             0\n"));
    EXPECT_THAT(result.output, HasSubstr("\nF, moment about z "));
    const json loads = report()["loads"];
    ASSERT_EQ(loads.size(), 2U);
    for (const json& one : loads)
    {
        EXPECT_EQ(one["loadedNodes"], 729);
        EXPECT_EQ(one["outsideNodes"], 0);
        for (const char* figure : {"sum", "moment"})
        {
            for (std::size_t i = 0; i < one["source"][figure].size(); ++i)
            {
                EXPECT_NEAR(one["source"][figure][i].get<double>(), one["target"][figure][i].get<double>(), 1e-6 * 729);
            }
        }
    }
    const auto out = readGrid(runner.file("out.vtu"));
    const std::vector<double> flows = valuesOf(*out, "flow");
    EXPECT_NEAR(std::accumulate(flows.begin(), flows.end(), 0.0), 1093.5, 1e-3);
    EXPECT_EQ(valuesOf(*out, "T").size(), 64U);
}

TEST_F(LoadsCommand, CanBeAllThereIs)
{
    const auto source = makeGrid(VTK_HEXAHEDRON, 2);
    addDoubles(*source, "flow", linear);
    writeGrid(*source, runner.file("source.vtu"));
    const CommandResult result = transfer({"--loads", "flow"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, StartsWith("verdict           good: all loads 'flow' are distributed\n"));
    EXPECT_EQ(report()["fields"].size(), 0U);
    EXPECT_THAT(result.output, Not(HasSubstr("search buckets")));
}

TEST_F(LoadsCommand, OutsideAreAnErrorOrLeftOutAndSummedUp)
{
    writeGrid(*makeGrid(VTK_TETRA, 3, 0, 0.5), runner.file("target.vtu"));
    expectFailure(runner, 2,
                  "604 of 729 nodes with loads 'flow' are outside the target, with 937.25 in sum; --outside default "
                  "leaves them out and tells what they are in sum",
                  {"transfer", "source.vtu", "target.vtu", "-o", "out.vtu", "--field", "T", "--loads", "flow",
                   "--near-limit", "0.01"});
    const CommandResult result =
        transfer({"--field", "T", "--loads", "flow", "--near-limit", "0.01", "--outside", "default"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.errors, HasSubstr("the loads 'flow' at 604 of 729 loaded nodes are outside the target and left "
                                         "out, with 937.2 in sum"));
    const json loads = report()["loads"][0];
    EXPECT_EQ(loads["outsideNodes"], 604);
    // Within are 5 * 25 nodes at x = 0, 0.125 ... 0.5.
    EXPECT_NEAR(loads["source"]["sum"][0].get<double>(), 1093.5, 1e-3);
    EXPECT_NEAR(loads["outside"]["sum"][0].get<double>(), 1093.5 - 25 * 5 * 1.25, 1e-3);
    EXPECT_NEAR(loads["target"]["sum"][0].get<double>(), 25 * 5 * 1.25, 1e-3);
    EXPECT_THAT(report()["verdict"]["text"].get<std::string>(),
                HasSubstr("the loads 'flow' of 604 of 729 nodes are outside the target"));
}

TEST_F(LoadsCommand, JustOutsideAreTakenToTheTargetWithAWarning)
{
    writeGrid(*makeGrid(VTK_HEXAHEDRON, 4, 0, 0.9375), runner.file("target.vtu"));
    const CommandResult result =
        transfer({"--field", "T", "--loads", "flow", "--outside", "default", "--near-limit", "0.1"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.errors, HasSubstr(" of 729 loaded nodes are taken to the target from up to "));
    EXPECT_GE(report()["loads"][0]["largestNearDistance"].get<double>(), 0.0624);
    EXPECT_GT(report()["loads"][0]["nearNodes"].get<int>(), 100);
}

/// A quarter turn about z makes a force along x one along y.
TEST_F(LoadsCommand, TurnWithTheSource)
{
    const CommandResult result =
        transfer({"--field", "T", "--loads", "force", "--rotate", "z,90", "--translate", "1,0,0"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_NEAR(report()["loads"][0]["target"]["sum"][1].get<double>(), 729, 1e-3);
    EXPECT_NEAR(report()["loads"][0]["target"]["sum"][0].get<double>(), -364.5, 1e-3);
}

TEST_F(LoadsCommand, RefusesWhatDoesNotFit)
{
    const auto expect = [&](int status, const std::string& sentence, const std::vector<std::string>& options)
    {
        std::vector<std::string> words{"transfer", "source.vtu", "target.vtu", "-o", "out.vtu"};
        words.insert(words.end(), options.begin(), options.end());
        expectFailure(runner, status, sentence, words);
    };
    expect(64,
           "--loads: loads outside the target cannot be propagated; --outside default leaves them out and sums them up",
           {"--loads", "flow", "--outside", "propagate"});
    expect(64, "--loads flow is given twice", {"--loads", "flow", "--loads", "flow"});
    expect(64, "--loads and --field give the name 'T' to two arrays", {"--loads", "flow=T", "--field", "T"});
    expect(65, "'source.vtu' has no floating-point point-data array 'heat', only 'T', 'flow', 'force'",
           {"--loads", "heat"});
}

TEST_F(LoadsCommand, ThatAreZeroAreToldOf)
{
    const auto source = makeGrid(VTK_HEXAHEDRON, 2);
    addDoubles(*source, "flow", [](const Point&) { return 0.0; });
    writeGrid(*source, runner.file("source.vtu"));
    const CommandResult result = transfer({"--loads", "flow"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.errors, HasSubstr("the loads 'flow' are 0 everywhere"));
}

TEST_F(LoadsCommand, AreComparedByTheirSums)
{
    ASSERT_EQ(transfer({"--loads", "force"}).status, 0);
    const CommandResult same =
        runner.run({"compare", "out.vtu", "source.vtu", "--loads", "force", "--tolerance", "1e-6"});
    EXPECT_EQ(same.status, 0) << same.errors << same.output;
    EXPECT_THAT(same.output, HasSubstr("\nforce x                         729           729             0\n"));
    EXPECT_THAT(same.output, HasSubstr("tolerance         1e-06, kept by all"));
    const auto other = makeGrid(VTK_HEXAHEDRON, 1);
    addFloats(*other, "force",
              {[](const Point&) { return 1.0; }, [](const Point&) { return 0.0; }, [](const Point&) { return 0.0; }});
    writeGrid(*other, runner.file("other.vtu"));
    const CommandResult different =
        runner.run({"compare", "other.vtu", "source.vtu", "--loads", "force", "--tolerance", "1e-6"});
    EXPECT_EQ(different.status, 1);
    EXPECT_THAT(different.output, HasSubstr("not kept by 'force'"));
}

} // namespace
