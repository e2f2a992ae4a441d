// --validate and --require of veltrane transfer and veltrane sample: what they say, and how they end.
#include "CommandRunner.h"
#include "TestGrids.h"

#include "CommandLine.h"
#include "Requirements.h"
#include "Sha256.h"

#include <vtkCellType.h>

#include <nlohmann/json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <limits>

namespace
{

using nlohmann::json;
using testing::HasSubstr;
using testing::StartsWith;
using veltrane::Relation;
using veltrane::Requirement;
using veltrane::Rule;

/// In the middle of the unit cube, narrower than a coarse mesh can show.
double peak(const Point& p)
{
    const double square = std::pow(p[0] - 0.5, 2) + std::pow(p[1] - 0.5, 2) + std::pow(p[2] - 0.5, 2);
    return std::exp(-50 * square);
}

class Quality : public testing::Test
{
protected:
    Quality()
    {
        const auto source = makeGrid(VTK_HEXAHEDRON, 8);
        addDoubles(*source, "T", linear);
        writeGrid(*source, runner.file("source.vtu"));
    }

    CommandResult transfer(vtkUnstructuredGrid& target, std::vector<std::string> options) const
    {
        writeGrid(target, runner.file("target.vtu"));
        options.insert(options.begin(),
                       {"transfer", "source.vtu", "target.vtu", "-o", "out.vtu", "--report", "report.json"});
        return runner.run(options);
    }

    json report() const
    {
        std::ifstream stream(runner.file("report.json"));
        return json::parse(stream);
    }

    std::string verdict() const { return report()["verdict"]["text"]; }

    json rule(const std::string& key) const
    {
        const json read = report();
        for (const json& rule : read["verdict"]["rules"])
        {
            if (rule["key"] == key)
            {
                return rule;
            }
        }
        return nullptr;
    }

    CommandRunner runner;
};

TEST_F(Quality, OfALinearFieldIsGoodToTheTolerance)
{
    const CommandResult result = transfer(*makeGrid(VTK_TETRA, 5), {"--validate"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, StartsWith("verdict           good: none of 216 nodes is far from the source; mapped "
                                          "back, T differs from the source by "));
    EXPECT_THAT(result.output, HasSubstr("\nof the source            100 %     100 %     100 %"));
    const json validation = report()["validation"];
    EXPECT_EQ(validation["source"]["mappedNodes"], 729);
    EXPECT_NEAR(validation["source"]["mappedVolume"].get<double>(), 1, 1e-6);
    const json& field = validation["fields"][0];
    EXPECT_EQ(field["compared"], 729);
    EXPECT_LT(field["relativeDifference"].get<double>(), 1e-6);
    // The integral of 1 + 2 x - 3 y + 5 z over the unit cube.
    EXPECT_NEAR(field["integral"]["source"]["components"][0].get<double>(), 3, 1e-5);
    EXPECT_NEAR(field["integral"]["target"]["components"][0].get<double>(), 3, 1e-5);
}

TEST_F(Quality, OfATargetThatIsTooCoarseSaysSoAtOnce)
{
    const auto source = makeGrid(VTK_HEXAHEDRON, 8);
    addDoubles(*source, "T", peak);
    writeGrid(*source, runner.file("source.vtu"));
    const CommandResult result = transfer(*makeGrid(VTK_HEXAHEDRON, 3), {"--validate"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, StartsWith("verdict           doubtful: mapped back, T differs from the source by "));
    EXPECT_THAT(verdict(), HasSubstr("the target is too coarse, its nodes are 2.3 times as far apart as the source's"));
    EXPECT_EQ(rule("peak")["kept"], false);
    const json field = report()["validation"]["fields"][0];
    ASSERT_EQ(field["worst"].size(), 10U);
    EXPECT_EQ(field["worst"][0]["place"], json({0.5, 0.5, 0.5}));
    EXPECT_EQ(field["worst"][0]["node"], 365);
    EXPECT_EQ(field["worst"][0]["source"], 1);
    EXPECT_GE(field["worst"][0]["cell"].get<int>(), 1);
    long long counted = 0;
    for (const json& count : field["histogram"]["counts"])
    {
        counted += count.get<long long>();
    }
    EXPECT_EQ(counted, 729);
}

TEST_F(Quality, OfATargetInAnotherPlaceSaysSoAtOnce)
{
    const CommandResult result = transfer(*makeGrid(VTK_TETRA, 4), {"--validate", "--translate", "0.0625,0,0"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(verdict(), StartsWith("doubtful: the target is as large as the source and lies -0.0625, 0, 0 "
                                      "away from it: are both in the same place?; 25 of 125 nodes (20 %) lie beside "
                                      "the source, by "));
    EXPECT_NEAR(rule("distance")["figure"].get<double>(), 0.5, 1e-3);
    ASSERT_FALSE(report()["nearDistances"].is_null());
}

TEST_F(Quality, OfATargetInAnotherUnitSaysSoAtOnce)
{
    const CommandResult result = transfer(*makeGrid(VTK_TETRA, 5, 0, 1000), {"--validate", "--outside", "default"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(verdict(), StartsWith("doubtful: the target is 1000 times as large as the source: are both in the same "
                                      "unit of length?; 215 of 216 nodes (99.5 %) are far from the source"));
}

/// Of half of the source nothing is wrong, though the integral is half as large and a maximum is not reached.
TEST_F(Quality, OfAPartOfTheSourceIsNotBlamedForWhatItLacks)
{
    const CommandResult result = transfer(*makeGrid(VTK_TETRA, 4, 0, 0.5), {"--validate"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(verdict(), StartsWith("good: "));
    EXPECT_EQ(rule("integral")["judged"], false);
    EXPECT_EQ(rule("peak")["judged"], false);
    EXPECT_NEAR(report()["validation"]["source"]["mappedVolume"].get<double>(), 0.125, 1e-6);
}

TEST_F(Quality, IsNotValidatedUnlessThatIsAskedFor)
{
    const CommandResult result = transfer(*makeGrid(VTK_TETRA, 5), {});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(report()["validation"], nullptr);
    EXPECT_EQ(verdict(), "good: none of 216 nodes is far from the source");
    EXPECT_EQ(rule("validation")["figure"], nullptr);
    EXPECT_EQ(rule("validation")["judged"], false);
}

TEST_F(Quality, NeedsVolumesToGoBackFrom)
{
    const CommandResult result = transfer(*makeGrid(VTK_QUAD, 5), {"--validate"});
    EXPECT_EQ(result.status, 65);
    EXPECT_THAT(result.errors, HasSubstr("the target has no volume elements"));
}

TEST_F(Quality, OfGaussPointsIsValidatedThere)
{
    const CommandResult result = transfer(*makeGrid(VTK_TETRA, 5), {"--validate", "--gauss"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(report()["validation"]["fields"][0]["compared"], 729);
    EXPECT_NEAR(report()["validation"]["fields"][0]["integral"]["target"]["components"][0].get<double>(), 3, 1e-5);
}

TEST_F(Quality, ThatIsRequiredAndThereEndsAsUsual)
{
    const CommandResult result =
        transfer(*makeGrid(VTK_TETRA, 5), {"--require", "validation<0.001, far=0, near<=0,integral<1e-4,peak<0.2"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(rule("validation")["required"], true);
    EXPECT_EQ(rule("validation")["relation"], "<");
    EXPECT_EQ(rule("validation")["limit"], 0.001);
    EXPECT_EQ(rule("distance")["required"], false);
}

TEST_F(Quality, ThatIsRequiredAndNotThereEndsWithAStatusOfItsOwn)
{
    const CommandResult result =
        transfer(*makeGrid(VTK_TETRA, 4), {"--require", "near<0.1,far=0", "--translate", "0.0625,0,0"});
    EXPECT_EQ(result.status, 4);
    EXPECT_THAT(result.errors, HasSubstr("veltrane: warning: 'near < 0.1' is not kept: 25 of 125 nodes (20 %) lie "
                                         "beside the source, by "));
    EXPECT_TRUE(std::filesystem::exists(runner.file("out.vtu")));
    EXPECT_EQ(rule("far")["kept"], true);
}

TEST_F(Quality, OfPointsHasNoWayBack)
{
    std::ofstream(runner.file("points.csv")) << "x,y,z\n0.5,0.5,0.5\n2,2,2\n";
    const auto sample = [&](const std::string& rules)
    {
        return runner.run(
            {"sample", "source.vtu", "points.csv", "-o", "out.csv", "--outside", "default", "--require", rules});
    };
    const CommandResult missed = sample("far<0.5");
    EXPECT_EQ(missed.status, 4);
    EXPECT_THAT(missed.errors, HasSubstr("'far < 0.5' is not kept: 1 of 2 points (50 %) are far from the source"));
    EXPECT_EQ(sample("far<=0.5").status, 0);
    const CommandResult refused = sample("validation<1");
    EXPECT_EQ(refused.status, 64);
    EXPECT_THAT(refused.errors, HasSubstr("points cannot be mapped back"));
}

TEST_F(Quality, OfTheBundledFlangeIsToldInTheFirstLine)
{
    const std::string meshes = VELTRANE_EXAMPLE_MESHES;
    const auto firstLine = [&](const std::string& target, std::vector<std::string> options)
    {
        options.insert(options.begin(), {"transfer", meshes + "/flange_quadratic_tetrahedra_fine.vtu",
                                         meshes + "/" + target, "-o", "out.vtu", "--validate"});
        const std::string output = runner.run(options).output;
        return output.substr(0, output.find('\n'));
    };
    EXPECT_THAT(firstLine("flange_mixed_fine.vtu", {}),
                StartsWith("verdict           good: none of 15904 nodes is far from the source; mapped back, stress "
                           "differs from the source by "));
    EXPECT_THAT(firstLine("flange_mixed_coarse.vtu", {}), HasSubstr(": the target is too coarse, its nodes are "));
    EXPECT_THAT(firstLine("flange_mixed_fine.vtu", {"--translate", "3,0,0", "--outside", "default"}),
                StartsWith("verdict           doubtful: the target is as large as the source and lies -3, 0, 0 away "
                           "from it: are both in the same place?"));
    EXPECT_THAT(firstLine("flange_mixed_fine.vtu", {"--scale", "0.001", "--outside", "default"}),
                StartsWith("verdict           doubtful: the target is 1000 times as large as the source: are both in "
                           "the same unit of length?"));
}

TEST(Requirements, AreReadFromWords)
{
    const auto rules = veltrane::parseRequirements("validation<0.02,far=0,distance<=1e-1");
    ASSERT_EQ(rules.size(), 3U);
    EXPECT_EQ(rules[0].rule, Rule::validation);
    EXPECT_EQ(rules[0].relation, Relation::below);
    EXPECT_EQ(rules[0].limit, 0.02);
    EXPECT_EQ(rules[1].rule, Rule::far);
    EXPECT_EQ(rules[1].relation, Relation::equal);
    EXPECT_EQ(rules[2].relation, Relation::atMost);
    EXPECT_EQ(rules[2].limit, 0.1);
    EXPECT_TRUE(veltrane::parseRequirements("").empty());
}

TEST(Requirements, AreKeptOrNot)
{
    EXPECT_TRUE((Requirement{Rule::far, Relation::equal, 0}).isKeptBy(0));
    EXPECT_FALSE((Requirement{Rule::far, Relation::equal, 0}).isKeptBy(0.1));
    EXPECT_FALSE((Requirement{Rule::far, Relation::below, 0.1}).isKeptBy(0.1));
    EXPECT_TRUE((Requirement{Rule::far, Relation::atMost, 0.1}).isKeptBy(0.1));
    EXPECT_FALSE((Requirement{Rule::validation, Relation::below, 1}).isKeptBy(std::nan("")));
}

TEST_F(Quality, RulesThatAreNoneAreRefused)
{
    writeGrid(*makeGrid(VTK_TETRA, 2), runner.file("target.vtu"));
    const auto expect = [&](const std::string& rules, const std::string& sentence) {
        expectFailure(runner, 64, sentence,
                      {"transfer", "source.vtu", "target.vtu", "-o", "out.vtu", "--require", rules});
    };
    const std::string keys = " is not a rule such as validation<0.02 or far=0; its keys are far, near, distance, "
                             "validation, integral, peak";
    expect("nearest<1", "--require: 'nearest<1'" + keys);
    expect("far", "--require: 'far'" + keys);
    expect("far>1", "--require: 'far>1'" + keys);
    expect("far<many", "--require: 'far<many'" + keys);
    expect("far<-1", "--require: 'far<-1'" + keys);
    expect("far<1,far=0", "--require far<1,far=0 has two rules for the same figure");
}

/// The examples of the standard, and lengths around a block's end.
TEST(Sha256, IsThatOfTheStandard)
{
    const auto of = [](const std::string& words) {
        return veltrane::sha256Of({reinterpret_cast<const std::uint8_t*>(words.data()), words.size()});
    };
    EXPECT_EQ(of("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(of(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(of("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
}

TEST_F(Quality, NamesTheInputsByTheirChecksums)
{
    ASSERT_EQ(transfer(*makeGrid(VTK_TETRA, 2), {}).status, 0);
    const std::string checksum = report()["source"]["sha256"];
    EXPECT_EQ(checksum, veltrane::sha256OfFile(runner.file("source.vtu")));
    EXPECT_EQ(checksum.size(), 64U);
    EXPECT_EQ(report()["command"], "veltrane transfer source.vtu target.vtu -o out.vtu --report report.json");
}

TEST(CommandLine, IsQuotedForAShell)
{
    EXPECT_EQ(veltrane::quotedForShell("a-b_1.vtu"), "a-b_1.vtu");
    EXPECT_EQ(veltrane::quotedForShell("von mises"), "'von mises'");
    EXPECT_EQ(veltrane::quotedForShell("far<1"), "'far<1'");
    EXPECT_EQ(veltrane::quotedForShell("it's"), "'it'\\''s'");
    EXPECT_EQ(veltrane::quotedForShell(""), "''");
}

} // namespace
