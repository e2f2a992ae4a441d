// --report of veltrane transfer and veltrane sample: what is in the file, and that the published schema describes it.
#include "CommandRunner.h"
#include "TestGrids.h"

#include <vtkCellData.h>
#include <vtkCellType.h>
#include <vtkDataArray.h>

#include <nlohmann/json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <limits>

namespace
{

using nlohmann::json;
using testing::UnorderedElementsAre;

class JsonReport : public testing::Test
{
protected:
    JsonReport()
    {
        source = makeGrid(VTK_HEXAHEDRON, 2);
        addDoubles(*source, "linear", linear);
        target = makeGrid(VTK_TETRA, 3, 0.1, 0.9);
    }

    CommandResult transfer(std::vector<std::string> options = {}) const
    {
        writeGrid(*source, runner.file("source.vtu"));
        writeGrid(*target, runner.file("target.vtu"));
        options.insert(options.begin(),
                       {"transfer", "source.vtu", "target.vtu", "-o", "out.vtu", "--report", "report.json"});
        return runner.run(options);
    }

    json report() const
    {
        std::ifstream stream(runner.file("report.json"));
        return json::parse(stream);
    }

    /// Whether Documentation/report.schema.json describes the report.
    bool isOfTheSchema() const
    {
        const std::string program =
            "import fastjsonschema, json, sys\n"
            "fastjsonschema.compile(json.load(open(sys.argv[1])))(json.load(open(sys.argv[2])))";
        // Debian's, which has the module
        const std::string command = "/usr/bin/python3 -c '" + program + "' '" + VELTRANE_REPORT_SCHEMA + "' '" +
                                    runner.file("report.json").string() + "'";
        return std::system(command.c_str()) == 0;
    }

    CommandRunner runner;
    vtkSmartPointer<vtkUnstructuredGrid> source;
    vtkSmartPointer<vtkUnstructuredGrid> target;
};

/// The field 1 + 2 x - 3 y + 5 z on a grid around (0.5, 0.5, 0.5) has the mean 3.
TEST_F(JsonReport, TellsWhatHasBeenDone)
{
    const CommandResult result = transfer({"--tolerance", "0.25"});
    ASSERT_EQ(result.status, 0) << result.errors;
    const json read = report();
    EXPECT_EQ(read["format"], "veltrane transfer report");
    EXPECT_EQ(read["formatVersion"], 2);
    EXPECT_EQ(read["outcome"], "done");
    EXPECT_EQ(read["options"], json({{"mode", 0}, {"defaultValue", 0}, {"precision", "double"}, {"tolerance", 0.25}}));
    EXPECT_EQ(read["source"]["file"], "source.vtu");
    EXPECT_EQ(read["source"]["elements"], json({{"hexahedron", 8}}));
    EXPECT_EQ(read["source"]["box"], json({{"min", {0, 0, 0}}, {"max", {1, 1, 1}}}));
    EXPECT_EQ(read["source"]["materialArray"], nullptr);
    EXPECT_EQ(read["target"]["nodes"], 64);
    EXPECT_EQ(read["target"]["elements"], json({{"tetrahedron", 162}}));
    EXPECT_EQ(read["points"], json({{"nodes", 64},
                                    {"inNoCell", 0},
                                    {"notMapped", 0},
                                    {"inside", 64},
                                    {"near", 0},
                                    {"nearDistance", nullptr},
                                    {"far", 0},
                                    {"farOfMissingMaterial", 0},
                                    {"farReached", 0}}));
    EXPECT_EQ(read["gaussPoints"], nullptr);
    EXPECT_EQ(read["search"]["locatedPoints"], 64);
    std::vector<std::string> stages;
    for (const json& stage : read["stages"])
    {
        stages.push_back(stage["name"]);
        EXPECT_GE(stage["seconds"], 0);
    }
    EXPECT_THAT(stages, testing::ElementsAre("reading source", "reading target", "preparing search", "interpolating",
                                             "writing output"));
    ASSERT_EQ(read["fields"].size(), 1U);
    EXPECT_EQ(read["fields"][0]["name"], "linear");
    EXPECT_EQ(read["fields"][0]["precision"], "double");
    const json& values = read["fields"][0]["components"][0];
    EXPECT_EQ(values["source"], json({{"min", -2}, {"mean", 3}, {"max", 8}, {"unusable", 0}}));
    EXPECT_NEAR(values["target"]["min"].get<double>(), -1, 1e-5);
    EXPECT_NEAR(values["target"]["mean"].get<double>(), 3, 1e-5);
    EXPECT_NEAR(values["target"]["max"].get<double>(), 7, 1e-5);
    EXPECT_TRUE(isOfTheSchema());
}

TEST_F(JsonReport, HasNullInThePlaceOfWhatIsNoNumber)
{
    addFloats(*source, "nothing", {[](const Point&) { return std::numeric_limits<double>::quiet_NaN(); }});
    addCellNumbers(*source, "material", [](vtkIdType) { return 5; });
    addCellNumbers(*target, "material", [](vtkIdType) { return 5; });
    source->InsertNextCell(VTK_TRIANGLE, 3, std::array<vtkIdType, 3>{0, 1, 3}.data());
    source->GetCellData()->GetArray("material")->InsertNextTuple1(5);
    target->GetPoints()->InsertNextPoint(0.5, 0.5, 0.5);
    const CommandResult result = transfer({"--mode", "2", "--field", "nothing"});
    ASSERT_EQ(result.status, 0) << result.errors;
    const json read = report();
    EXPECT_EQ(read["source"]["leftOutCells"], 1);
    EXPECT_EQ(read["source"]["materialArray"], "material");
    EXPECT_EQ(read["target"]["materials"], json({"5"}));
    EXPECT_EQ(read["points"]["nodes"], 65);
    EXPECT_EQ(read["points"]["inNoCell"], 1);
    EXPECT_EQ(read["fields"][0]["precision"], "single");
    EXPECT_EQ(read["fields"][0]["components"][0]["source"],
              json({{"min", nullptr}, {"mean", nullptr}, {"max", nullptr}, {"unusable", 27}}));
    EXPECT_TRUE(isOfTheSchema());
}

/// 162 tetrahedra with a Gauss point each.
TEST_F(JsonReport, TellsOfGaussPoints)
{
    const CommandResult result = transfer({"--gauss"});
    ASSERT_EQ(result.status, 0) << result.errors;
    const json read = report();
    EXPECT_EQ(read["points"], nullptr);
    EXPECT_EQ(read["gaussPoints"], json({{"all", 162}, {"near", 0}, {"nearDistance", nullptr}, {"far", 0}}));
    EXPECT_EQ(read["fields"][0]["sourceLocation"], "nodes");
    EXPECT_EQ(read["fields"][0]["targetLocation"], "Gauss points");
    EXPECT_TRUE(isOfTheSchema());
}

/// Of three points one is inside, one in a material that is not asked for, and one in none of the source's cells.
TEST_F(JsonReport, TellsOfPoints)
{
    addCellNumbers(*source, "material", [](vtkIdType) { return 5; });
    writeGrid(*source, runner.file("source.vtu"));
    std::ofstream(runner.file("points.csv")) << "x,y,z,material\n0.25,0.5,0.125,5\n1,1,1,6\n0.5,0.5,1.03125,5\n";
    const CommandResult result = runner.run({"sample", "source.vtu", "points.csv", "-o", "out.csv", "--outside",
                                             "default", "--default", "nan", "--only", "5", "--report", "report.json"});
    ASSERT_EQ(result.status, 0) << result.errors;
    const json read = report();
    EXPECT_EQ(read["format"], "veltrane transfer report");
    EXPECT_EQ(read["formatVersion"], 2);
    EXPECT_EQ(read["source"]["nodes"], 27);
    EXPECT_EQ(read["target"], json({{"file", "points.csv"},
                                    {"sha256", read["target"]["sha256"]},
                                    {"points", 3},
                                    {"materialArray", "material"},
                                    {"materials", {"5", "6"}},
                                    {"box", {{"min", {0.25, 0.5, 0.125}}, {"max", {1, 1, 1.03125}}}}}));
    EXPECT_EQ(read["points"], json({{"points", 3},
                                    {"notMapped", 1},
                                    {"inside", 1},
                                    {"near", 0},
                                    {"nearDistance", nullptr},
                                    {"outside", 1},
                                    {"outsideOfMissingMaterial", 0}}));
    EXPECT_EQ(read["gaussPoints"], nullptr);
    EXPECT_EQ(read["search"]["locatedPoints"], 1);
    std::vector<std::string> stages;
    for (const json& stage : read["stages"])
    {
        stages.push_back(stage["name"]);
    }
    EXPECT_THAT(stages, testing::ElementsAre("reading source", "reading points", "preparing search", "sampling",
                                             "writing output"));
    EXPECT_EQ(read["fields"][0]["sourceLocation"], "nodes");
    EXPECT_EQ(read["fields"][0]["targetLocation"], "points");
    EXPECT_EQ(read["fields"][0]["components"][0]["target"],
              json({{"min", 0.625}, {"mean", 0.625}, {"max", 0.625}, {"unusable", 0}}));
    EXPECT_TRUE(isOfTheSchema());
}

TEST_F(JsonReport, AFailureLeavesNone)
{
    target = makeGrid(VTK_TETRA, 2, 0, 3);
    EXPECT_EQ(transfer().status, 2);
    EXPECT_THAT(runner.directory().names(), UnorderedElementsAre("source.vtu", "target.vtu"));
}

TEST_F(JsonReport, MustHaveAPlaceOfItsOwn)
{
    ASSERT_EQ(transfer().status, 0);
    const auto expect =
        [&](int status, const std::string& sentence, const std::string& output, const std::string& report)
    {
        expectFailure(runner, status, sentence,
                      {"transfer", "source.vtu", "target.vtu", "-o", output, "--report", report});
    };
    expect(64, "the file 'report.txt' of --report is not named .html or .json", "new.vtu", "report.txt");
    expect(73, "there is no directory 'nowhere' for the output", "new.vtu", "nowhere/report.json");
    std::filesystem::rename(runner.file("source.vtu"), runner.file("source.json"));
    expectFailure(runner, 73, "the output 'source.json' is the input 'source.json' itself",
                  {"transfer", "source.json", "target.vtu", "-o", "new.vtu", "--report", "source.json"});
}

} // namespace
