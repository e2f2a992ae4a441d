// Targets that reach beyond the source: what is near takes its values, what is far obeys --outside, and both are told.
#include "CommandRunner.h"
#include "TestGrids.h"

#include <vtkCellType.h>
#include <vtkDataArray.h>
#include <vtkFieldData.h>

#include <nlohmann/json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

namespace
{

using testing::ContainsRegex;
using testing::HasSubstr;

constexpr double singlePrecision = 1e-5;

/// The source is the unit cube in cells of 0.25.
class NearPoints : public testing::Test
{
protected:
    NearPoints()
    {
        const auto source = makeGrid(VTK_HEXAHEDRON, 4);
        addDoubles(*source, "T", linear);
        writeGrid(*source, runner.file("source.vtu"));
    }

    CommandResult transfer(const std::vector<std::string>& options) const
    {
        std::vector<std::string> arguments{"transfer", "source.vtu", "target.vtu", "-o", "out.vtu"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return runner.run(arguments);
    }

    /// The unit cube in cells of 0.25, moved along x: 25 of its 125 nodes leave the source.
    void writeMoved(double way) const
    {
        const auto target = makeGrid(VTK_HEXAHEDRON, 4);
        for (vtkIdType i = 0; i < target->GetNumberOfPoints(); ++i)
        {
            const Point p = pointOf(*target, i);
            target->GetPoints()->SetPoint(i, p[0] + way, p[1], p[2]);
        }
        writeGrid(*target, runner.file("target.vtu"));
    }

    CommandRunner runner;
};

const std::string advice = "; --outside default gives such nodes the default value, --outside propagate the values of "
                           "neighbouring nodes";

/// Of 27 nodes at 0, 0.75 and 1.5 along each axis 8 are inside.
TEST_F(NearPoints, ATargetThatReachesFarBeyondTheSourceObeys)
{
    writeGrid(*makeGrid(VTK_TETRA, 2, 0, 1.5), runner.file("target.vtu"));
    expectFailure(runner, 2,
                  "19 of 27 nodes are outside the source; the farthest, at (1.5, 1.5, 1.5), is 0.866025 from the "
                  "nearest node of the source" +
                      advice,
                  {"transfer", "source.vtu", "target.vtu", "-o", "out.vtu", "--quiet"});
    const CommandResult result = transfer({"--outside", "default", "--default", "-7"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, ContainsRegex("inside +8\n"));
    const auto out = readGrid(runner.file("out.vtu"));
    const std::vector<double> values = valuesOf(*out, "T");
    for (vtkIdType i = 0; i < out->GetNumberOfPoints(); ++i)
    {
        const Point p = pointOf(*out, i);
        const bool isInside = std::max({p[0], p[1], p[2]}) < 1;
        EXPECT_NEAR(values[static_cast<std::size_t>(i)], isInside ? linear(p) : -7, singlePrecision);
    }
    EXPECT_EQ(transfer({"--outside", "propagate"}).status, 0);
}

TEST_F(NearPoints, ATargetElsewhereObeysToo)
{
    writeGrid(*makeGrid(VTK_TETRA, 1, 2, 3), runner.file("target.vtu"));
    expectFailure(runner, 2,
                  "8 of 8 nodes are outside the source; the farthest, at (3, 3, 3), is 3.4641 from the nearest node of "
                  "the source" +
                      advice,
                  {"transfer", "source.vtu", "target.vtu", "-o", "out.vtu", "--quiet"});
    EXPECT_EQ(transfer({"--outside", "default"}).status, 0);
    EXPECT_EQ(transfer({"--outside", "propagate"}).status, 3);
}

TEST_F(NearPoints, TheUnitsAreAskedForInEveryMode)
{
    for (const auto& [factor, size] : std::vector<std::pair<std::string, double>>{{"1000", 1000}, {"25.4", 25.4}})
    {
        writeGrid(*makeGrid(VTK_TETRA, 1, 0, size), runner.file("target.vtu"));
        const std::string question =
            "the target is " + factor + " times as large as the source: are both in the same unit of length?\n";
        EXPECT_THAT(transfer({}).errors, testing::EndsWith("; " + question));
        EXPECT_EQ(transfer({"--outside", "default"}).errors, "veltrane: warning: " + question);
        EXPECT_EQ(transfer({"--outside", "propagate"}).errors, "veltrane: warning: " + question);
        const CommandResult sampled =
            runner.run({"sample", "source.vtu", "target.vtu", "-o", "out.vtu", "--outside", "default"});
        EXPECT_EQ(sampled.errors, "veltrane: warning: " + question);
    }
}

TEST_F(NearPoints, TheirDistancesAreTold)
{
    writeMoved(0.002);
    const CommandResult result = transfer({"--distances", "--report", "report.json"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, ContainsRegex("near +25   just outside the source: values of a nearby element, "
                                             "0.002 away on average, at most 0.002\n"));
    const auto report = nlohmann::json::parse(contentsOf(runner.file("report.json")));
    EXPECT_NEAR(report["points"]["nearDistance"]["mean"].get<double>(), 0.002, singlePrecision);
    EXPECT_NEAR(report["points"]["nearDistance"]["largest"].get<double>(), 0.002, singlePrecision);
    const auto out = readGrid(runner.file("out.vtu"));
    const std::vector<double> distances = valuesOf(*out, "SourceDistance");
    const std::vector<double> mask = valuesOf(*out, "vtkValidPointMask");
    for (vtkIdType i = 0; i < out->GetNumberOfPoints(); ++i)
    {
        const bool isNear = pointOf(*out, i)[0] > 1;
        EXPECT_NEAR(distances[static_cast<std::size_t>(i)], isNear ? 0.002 : 0, singlePrecision);
        EXPECT_EQ(mask[static_cast<std::size_t>(i)], isNear ? 3 : 1);
    }
    // The distances are not a field that goes on to the next mesh.
    EXPECT_THAT(runner.run({"transfer", "out.vtu", "source.vtu", "-o", "again.vtu", "--replace"}).output,
                testing::Not(HasSubstr("SourceDistance")));
}

TEST_F(NearPoints, ManyOfThemAreWarnedOf)
{
    writeMoved(0.02);
    EXPECT_EQ(transfer({}).errors,
              "veltrane: warning: 25 of 125 nodes are not in the source but near it and take values from up to 0.02 "
              "away, where source cells are 0.25 long on average: do both lie where they should? --near-limit makes "
              "those farther away far\n");
}

TEST_F(NearPoints, FartherThanTheLimitAreFar)
{
    writeMoved(0.02);
    EXPECT_EQ(transfer({"--near-limit", "0.019"}).status, 2);
    EXPECT_EQ(transfer({"--near-limit", "0.021"}).status, 0);
    const CommandResult result = transfer({"--near-limit", "0", "--outside", "default", "--distances"});
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, ContainsRegex("near +0\n +far +25   too far from the source: default value\n"));
    const auto out = readGrid(runner.file("out.vtu"));
    const std::vector<double> distances = valuesOf(*out, "SourceDistance");
    const std::vector<double> mask = valuesOf(*out, "vtkValidPointMask");
    for (vtkIdType i = 0; i < out->GetNumberOfPoints(); ++i)
    {
        const bool isFar = pointOf(*out, i)[0] > 1;
        EXPECT_EQ(std::isnan(distances[static_cast<std::size_t>(i)]), isFar);
        EXPECT_EQ(mask[static_cast<std::size_t>(i)], isFar ? -1 : 1);
    }
}

/// At (1, 0.5, 0.5) the field is 4.
TEST_F(NearPoints, OfATableTakeValuesIfThatIsAskedFor)
{
    std::ofstream(runner.file("points.csv")) << "x,y,z\n0.5,0.5,0.5\n1.02,0.5,0.5\n";
    const std::vector<std::string> sample{"sample", "source.vtu", "points.csv", "-o", "out.csv"};
    expectFailure(runner, 2,
                  "1 of 2 points is outside the source; the farthest, at (1.02, 0.5, 0.5), is 0.02 from the nearest "
                  "node of the source; --outside default gives such points the default value, --near those just "
                  "outside the values of a near cell",
                  {"sample", "source.vtu", "points.csv", "-o", "out.csv", "--quiet"});
    const CommandResult result =
        runner.run({"sample", "source.vtu", "points.csv", "-o", "out.csv", "--near", "--report", "report.json"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, ContainsRegex("inside +1\n +near +1   just outside the source"));
    const auto report = nlohmann::json::parse(contentsOf(runner.file("report.json")));
    EXPECT_EQ(report["points"]["inside"], 1);
    EXPECT_EQ(report["points"]["near"], 1);
    EXPECT_NEAR(report["fields"][0]["components"][0]["target"]["max"].get<double>(), 4, 0.01);
    EXPECT_THAT(contentsOf(runner.file("out.csv")), testing::EndsWith(",3\n"));
    expectFailure(runner, 64, "--near-limit has an effect only together with --near",
                  {"sample", "source.vtu", "points.csv", "-o", "out.csv", "--near-limit", "1"});
}

/// Eight hexahedra of the edge 1, of which the first one lies where the source is.
TEST_F(NearPoints, FarGaussPointsHoldTheDefaultValueOrNone)
{
    writeGrid(*makeGrid(VTK_HEXAHEDRON, 2, 0, 2), runner.file("target.vtu"));
    const auto arrayOf = [&](const char* name)
    {
        const auto out = readGrid(runner.file("out.vtu"));
        vtkDataArray& array = *out->GetFieldData()->GetArray(name);
        std::vector<double> values;
        for (vtkIdType i = 0; i < array.GetNumberOfTuples(); ++i)
        {
            values.push_back(array.GetComponent(i, 0));
        }
        return values;
    };
    const CommandResult result = transfer({"--gauss", "--near-limit", "0", "--outside", "default", "--default", "-7"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, ContainsRegex("far +56   too far from the source: default value\n"));
    std::vector<double> values = arrayOf("T");
    ASSERT_EQ(values.size(), 64U);
    EXPECT_THAT(std::vector(values.begin() + 8, values.end()), testing::Each(-7));
    EXPECT_THAT(std::vector(values.begin(), values.begin() + 8), testing::Each(testing::Gt(-2.1)));
    const std::vector<double> mask = arrayOf("ValidGaussPointMask");
    EXPECT_THAT(std::vector(mask.begin(), mask.begin() + 8), testing::Each(1));
    EXPECT_THAT(std::vector(mask.begin() + 8, mask.end()), testing::Each(-1));
    ASSERT_EQ(transfer({"--gauss", "--near-limit", "0", "--outside", "propagate"}).status, 0);
    values = arrayOf("T");
    EXPECT_THAT(std::vector(values.begin() + 8, values.end()), testing::Each(testing::IsNan()));
    EXPECT_EQ(transfer({"--gauss", "--near-limit", "0"}).errors,
              "veltrane: 56 of 64 Gauss points are outside the source" + advice + "\n");
}

/// Nodes at 1.2 are nearer than a cell is long, those at 2.4 are not.
TEST_F(NearPoints, AreFarBeyondTheLengthOfACell)
{
    GridBuilder builder;
    builder.addCell(VTK_POLY_LINE, {{0.5, 0.5, 0.5}, {1.2, 0.5, 0.5}, {2.4, 0.5, 0.5}});
    writeGrid(*builder.grid(), runner.file("target.vtu"));
    EXPECT_EQ(transfer({}).status, 2);
    EXPECT_EQ(transfer({"--outside", "default"}).status, 0);
    EXPECT_EQ(valuesOf(*readGrid(runner.file("out.vtu")), "vtkValidPointMask").back(), -1);
}

} // namespace
