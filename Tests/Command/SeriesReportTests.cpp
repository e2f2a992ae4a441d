// Reports and pictures of series.
#include "CommandRunner.h"
#include "TestGrids.h"

#include <vtkCellType.h>

#include <nlohmann/json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace
{

using nlohmann::json;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

/// Three steps, of which the second one has a peak that the target is too coarse for.
class SeriesReport : public testing::Test
{
protected:
    SeriesReport()
    {
        std::string entries;
        for (int step = 0; step < 3; ++step)
        {
            const auto grid = makeGrid(VTK_HEXAHEDRON, 8);
            addDoubles(*grid, "T",
                       [=](const Point& p)
                       {
                           const double way = std::hypot(p[0] - 0.5, p[1] - 0.5, p[2] - 0.5);
                           return step == 1 ? std::exp(-50 * way * way) : linear(p);
                       });
            const std::string name = "step" + std::to_string(step) + ".vtu";
            writeGrid(*grid, runner.file(name));
            entries += "<DataSet timestep=\"" + std::to_string(0.5 * step) + "\" file=\"" + name + "\"/>";
        }
        std::ofstream(runner.file("source.pvd"))
            << "<VTKFile type=\"Collection\"><Collection>" << entries << "</Collection></VTKFile>\n";
        writeGrid(*makeGrid(VTK_HEXAHEDRON, 3), runner.file("target.vtu"));
    }

    CommandResult transfer(std::vector<std::string> options) const
    {
        options.insert(options.begin(), {"transfer", "source.pvd", "target.vtu", "-o", "out.pvd", "--quiet"});
        return runner.run(options);
    }

    std::string contentOf(const std::string& name) const
    {
        std::ifstream stream(runner.file(name), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(stream), {});
    }

    CommandRunner runner;
};

TEST_F(SeriesReport, IsOnePageWithARowForEachStep)
{
    for (const char* jobs : {"1", "3"})
    {
        const CommandResult result = transfer({"--report", "report.html", "--jobs", jobs});
        ASSERT_EQ(result.status, 0) << result.errors;
        const std::string page = contentOf("report.html");
        EXPECT_THAT(page, HasSubstr("<h1 class=\"doubtful\"><b>doubtful</b>: 1 of 3 steps; step 2: mapped back, T "
                                    "differs from the source by "));
        for (const char* row : {"<tr><th scope=\"row\">1</th><td class=\"n\">0</td><td>out/out_0001.vtu</td>",
                                "<tr><th scope=\"row\">2</th><td class=\"n\">0.5</td><td>out/out_0002.vtu</td>",
                                "<tr><th scope=\"row\">3</th><td class=\"n\">1</td><td>out/out_0003.vtu</td>"})
        {
            EXPECT_THAT(page, HasSubstr(row));
        }
        EXPECT_THAT(page, HasSubstr("veltrane transfer source.pvd target.vtu -o out.pvd"));
    }
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(runner.file("out")))
    {
        names.insert(entry.path().filename().string());
    }
    EXPECT_THAT(names, UnorderedElementsAre("out_0001.vtu", "out_0002.vtu", "out_0003.vtu"));
}

TEST_F(SeriesReport, HasTheReportOfEachStepForMachines)
{
    ASSERT_EQ(transfer({"--report", "report.json", "--validate"}).status, 0);
    const json report = json::parse(contentOf("report.json"));
    EXPECT_EQ(report["format"], "veltrane series report");
    EXPECT_EQ(report["verdict"]["good"], false);
    ASSERT_EQ(report["steps"].size(), 3U);
    EXPECT_EQ(report["steps"][1]["output"], "out/out_0002.vtu");
    EXPECT_EQ(report["steps"][1]["time"], 0.5);
    EXPECT_EQ(report["steps"][0]["report"]["verdict"]["good"], true);
    EXPECT_EQ(report["steps"][1]["report"]["verdict"]["good"], false);
    EXPECT_LT(report["steps"][2]["report"]["validation"]["fields"][0]["relativeDifference"].get<double>(), 1e-6);
    const std::string program = "import fastjsonschema, json, sys\n"
                                "fastjsonschema.compile(json.load(open(sys.argv[1])))(json.load(open(sys.argv[2])))";
    const std::string command = "/usr/bin/python3 -c '" + program + "' '" + VELTRANE_REPORT_SCHEMA + "' '" +
                                runner.file("report.json").string() + "'";
    EXPECT_EQ(std::system(command.c_str()), 0);
}

TEST_F(SeriesReport, ComesWithPicturesOfAllSteps)
{
    std::filesystem::create_directory(runner.file("frames"));
    ASSERT_EQ(transfer({"--picture", "frames/T.png", "--picture-range", "0,1", "--picture-plane", "z=0.4"}).status, 0);
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(runner.file("frames")))
    {
        names.insert(entry.path().filename().string());
    }
    EXPECT_THAT(names, UnorderedElementsAre("T_0001.png", "T_0002.png", "T_0003.png"));
    EXPECT_TRUE(contentOf("frames/T_0001.png") != contentOf("frames/T_0002.png"));
}

TEST_F(SeriesReport, ARuleThatAStepDoesNotKeepGivesTheStatus)
{
    const CommandResult result = transfer({"--require", "validation<0.1"});
    EXPECT_EQ(result.status, 4);
    EXPECT_THAT(result.errors, HasSubstr("'validation < 0.1' is not kept"));
    EXPECT_TRUE(std::filesystem::exists(runner.file("out/out_0003.vtu")));
}

TEST_F(SeriesReport, AFailureLeavesNone)
{
    std::filesystem::remove(runner.file("step2.vtu"));
    EXPECT_EQ(transfer({"--report", "report.html", "--picture", "p.png"}).status, 66);
    EXPECT_THAT(runner.directory().names(), UnorderedElementsAre("source.pvd", "step0.vtu", "step1.vtu", "target.vtu"));
}

} // namespace
