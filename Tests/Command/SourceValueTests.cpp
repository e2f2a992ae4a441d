// What is said of values at the target that are none of the source's.
#include "CommandRunner.h"
#include "TestGrids.h"

#include <vtkCellType.h>

#include <nlohmann/json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace
{

using testing::ContainsRegex;
using testing::Not;

/// The source is an angle with the value 4 everywhere.
class SourceValues : public testing::Test
{
protected:
    SourceValues() { writeGrid(*angle(), runner.file("source.vtu")); }

    CommandResult transfer(const std::vector<std::string>& options) const
    {
        std::vector<std::string> arguments{"transfer", "source.vtu", "target.vtu",  "-o",
                                           "out.vtu",  "--report",   "report.json", "--outside"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return runner.run(arguments);
    }

    nlohmann::json report() const { return nlohmann::json::parse(contentsOf(runner.file("report.json"))); }

    CommandRunner runner;
};

TEST_F(SourceValues, DefaultValuesAreNotCounted)
{
    writeGrid(*diagonal(false), runner.file("target.vtu"));
    const CommandResult result = transfer({"default", "--default", "-7.5"});
    EXPECT_THAT(result.output, ContainsRegex("target +4 +4 +4\n"));
    EXPECT_EQ(report()["fields"][0]["components"][0]["target"]["min"], 4);
    std::ofstream(runner.file("points.csv")) << "x,y,z\n0.5,0.5,0.5\n9,9,0.5\n";
    const CommandResult sampled = runner.run(
        {"sample", "source.vtu", "points.csv", "-o", "out.csv", "--outside", "default", "--default", "-7.5"});
    EXPECT_THAT(sampled.output, ContainsRegex("target +4 +4 +4\n"));
}

TEST_F(SourceValues, UnreachedNodesAreNotCounted)
{
    writeGrid(*diagonal(false), runner.file("target.vtu"));
    const CommandResult result = transfer({"propagate"});
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.output, ContainsRegex("target +4 +4 +4\n"));
    EXPECT_THAT(result.output, ContainsRegex("  far +14   too far from the source\n"
                                             "    reached +0\n"
                                             "    not reached +14   connected to no node with values: hold 0\n"));
    EXPECT_EQ(report()["points"]["farReached"], 0);
}

TEST_F(SourceValues, ReachedNodesAreToldOf)
{
    writeGrid(*diagonal(true), runner.file("target.vtu"));
    const CommandResult result = transfer({"propagate"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, ContainsRegex("    reached +[1-9][0-9]*   values of neighbouring nodes\n"
                                             "    not reached +0\n"));
    EXPECT_EQ(report()["points"]["farReached"], report()["points"]["far"]);
}

TEST_F(SourceValues, NodesOfAMaterialThatTheSourceLacksAreToldApart)
{
    const auto source = makeGrid(VTK_HEXAHEDRON, 2);
    addDoubles(*source, "T", linear);
    addCellNumbers(*source, "material", [](vtkIdType) { return 1; });
    writeGrid(*source, runner.file("source.vtu"));
    // Two layers of cells: the lower one is of material 1 and has two layers of nodes, the upper one has one of its
    // own.
    const auto target = makeGrid(VTK_HEXAHEDRON, 2);
    addCellNumbers(*target, "material", [](vtkIdType cell) { return cell < 4 ? 1 : 2; });
    writeGrid(*target, runner.file("target.vtu"));
    const CommandResult result = transfer({"default"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, ContainsRegex("  far +0\n"
                                             "  no material +9   no such material in the source: default value\n"));
    EXPECT_EQ(report()["points"]["far"], 9);
    EXPECT_EQ(report()["points"]["farOfMissingMaterial"], 9);
    std::ofstream(runner.file("points.csv")) << "x,y,z,material\n0.5,0.5,0.5,1\n0.5,0.5,0.75,2\n9,9,9,1\n";
    const CommandResult sampled =
        runner.run({"sample", "source.vtu", "points.csv", "-o", "out.csv", "--outside", "default"});
    EXPECT_THAT(sampled.output, ContainsRegex("  outside +1   in no cell of the source: default value\n"
                                              "  no material +1   no such material in the source: default value\n"));
}

} // namespace
