// Codes, messages, and the default value that failures leave in the target.
#include "Scenes.h"

#include <algorithm>

namespace
{
constexpr double fill = -7.0;

class Success : public Host
{
};

TEST_F(Success, givesCodeAndTextOfTheEntryPoint)
{
    const Outcome onMesh = run(transferOf(linear, roomySource(), unitHexahedron({1, 1, 1})));
    EXPECT_EQ(onMesh.code, 0);
    EXPECT_EQ(onMesh.message, meshTermination);
    const Outcome onCloud = run(transferOf(linear, roomySource(), cloud({{1, 1, 1}})));
    EXPECT_EQ(onCloud.code, 0);
    EXPECT_EQ(onCloud.message, cloudTermination);
}

TEST_F(Success, aSecondCallStartsFromNothing)
{
    const Transfer transfer = transferOf(linear, roomySource(), unitHexahedron({1, 1, 1}));
    Transfer failing = transfer;
    failing.target.matlStates = {4};
    const Outcome first = run(transfer);
    EXPECT_EQ(run(failing).code, 2);
    const Outcome second = run(transfer);
    EXPECT_EQ(second.code, 0);
    EXPECT_EQ(second.fields, first.fields);
    EXPECT_EQ(second.files, first.files);
}

/// Two hexahedra that share a face; the first is not selected. The source does not reach around the second.
class FailureOfTheGrid : public Host
{
protected:
    static Transfer twoHexahedra()
    {
        Mesh target = box(element::hexahedron, {0, 0, 0}, {2, 1, 1}, {2, 1, 1});
        target = withMaterials(target, {0, 1}, {1, 1});
        Transfer transfer = transferOf(linear, box(element::hexahedron, {-1, -1, -1}, {1.5F, 2, 2}), target);
        transfer.flags = {0, 1};
        return transfer;
    }

    /// The nodes of the second element that the first does not share are 2, 5, 8 and 11.
    static std::vector<double> fillAtNodesOfTheSecondOnly()
    {
        std::vector<double> expected = constant(12, untouched);
        for (const std::size_t node : {2U, 5U, 8U, 11U})
        {
            expected[node] = fill;
        }
        return expected;
    }
};

TEST_F(FailureOfTheGrid, fillsTheSelectedNodes)
{
    const Outcome outcome = run(twoHexahedra());
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.message, "Error: the target mesh is not included in the source mesh.\n");
    EXPECT_EQ(outcome.fields[0], fillAtNodesOfTheSecondOnly());
    EXPECT_FALSE(outcome.hasLog());
}

TEST_F(FailureOfTheGrid, numbersTheFilledGaussPointsOverTheSelectedElementsOnly)
{
    Transfer transfer = twoHexahedra();
    transfer.targetFields = {atGaussPoints()};
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 1);
    std::vector<double> expected = constant(16, untouched);
    std::fill_n(expected.begin(), 8, fill);
    EXPECT_EQ(outcome.fields[0], expected);
}

TEST_F(FailureOfTheGrid, fillsAllComponentsInThePrecisionOfTheField)
{
    Transfer transfer = twoHexahedra();
    transfer.defaultValue = 0.1F;
    transfer.sourceFields = {transfer.sourceFields[0], transfer.sourceFields[0]};
    transfer.targetFields = {{.components = 2, .precision = doublePrecision},
                             {.location = atGaussPointsLocation, .components = 3, .precision = doublePrecision}};
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 1);
    const double widened = static_cast<double>(0.1F);
    std::vector<double> nodes = constant(24, untouched);
    for (const std::size_t node : {2U, 5U, 8U, 11U})
    {
        nodes[2 * node] = widened;
        nodes[2 * node + 1] = widened;
    }
    EXPECT_EQ(outcome.fields[0], nodes);
    std::vector<double> gaussPoints = constant(48, untouched);
    std::fill_n(gaussPoints.begin(), 24, widened);
    EXPECT_EQ(outcome.fields[1], gaussPoints);
}

TEST_F(FailureOfTheGrid, fillsFieldsOfStateClassOneOnEveryMaterial)
{
    Transfer transfer = twoHexahedra();
    transfer.target.matlStates = {1, 4};
    transfer.targetFields[0].stateFlag = 1;
    EXPECT_EQ(run(transfer).fields[0], fillAtNodesOfTheSecondOnly());
}

TEST_F(FailureOfTheGrid, fillsTargetFieldsThatHaveNoSourceField)
{
    Transfer transfer = twoHexahedra();
    transfer.targetFields = {Field{}, Field{}};
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.fields[0], fillAtNodesOfTheSecondOnly());
    EXPECT_EQ(outcome.fields[1], fillAtNodesOfTheSecondOnly());
}

TEST_F(FailureOfTheGrid, neverFillsANodeInNoElement)
{
    Transfer transfer = twoHexahedra();
    transfer.target.nodes.push_back({1.2F, 0.5F, 0.5F});
    std::vector<double> expected = fillAtNodesOfTheSecondOnly();
    expected.push_back(untouched);
    EXPECT_EQ(run(transfer).fields[0], expected);
}

TEST_F(FailureOfTheGrid, withNothingSelectedFillsNothing)
{
    Transfer transfer = twoHexahedra();
    transfer.flags = {0, 0};
    transfer.sourceFields = {transfer.sourceFields[0], transfer.sourceFields[0]};
    transfer.targetFields = {Field{}, atGaussPoints()};
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.message, "Error: please select at least one domain in the target model.\n");
    EXPECT_EQ(outcome.fields[0], constant(12, untouched));
    EXPECT_EQ(outcome.fields[1], constant(16, untouched));
}

class PointOutsideInModeZero : public Host
{
};

TEST_F(PointOutsideInModeZero, endsAMeshTransferAndFillsAllSelectedNodes)
{
    // The nodes of the second element that the first does not share match no source element.
    const Mesh chain = box(element::hexahedron, {1, 1, 1}, {3, 2, 2}, {2, 1, 1});
    Transfer transfer = transferOf(linear, roomySource(), withMaterials(chain, {0, 1}, {1, 4}));
    transfer.flags = {1, 1};
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.message, "Some regions of the target model are outside the source model.");
    EXPECT_EQ(outcome.fields[0], constant(12, fill));
    EXPECT_FALSE(outcome.hasLog());
}

TEST_F(PointOutsideInModeZero, isFoundInAGapOfTheSource)
{
    const Outcome outcome = run(transferOf(linear, sourceWithGap(), chainAcrossGap()));
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.message, "Some regions of the target model are outside the source model.");
    EXPECT_EQ(outcome.fields[0], constant(36, fill));
}

TEST_F(PointOutsideInModeZero, endsACloudTransferAndFillsTheSelectedPoints)
{
    Transfer transfer = transferOf(linear, roomySource(), cloud({{1, 1, 1}, {2, 2, 2}, {50, 1, 1}, {3, 3, 3}}));
    transfer.target = withMaterials(transfer.target, {0, 1, 0, 0}, {1, 1});
    transfer.flags = {1, 0};
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.message, "Some points of the points cloud target model are outside the source model.");
    EXPECT_EQ(outcome.fields[0], (std::vector<double>{fill, untouched, fill, fill}));
    EXPECT_FALSE(outcome.hasLog());
}

TEST_F(PointOutsideInModeZero, leavesGaussPointsWhereTheyWereComputedAndFillsByAnotherNumbering)
{
    // Four hexahedra: two not selected, one that lies in the source, one whose material the source does not have.
    const Mesh chain = box(element::hexahedron, {0.5F, 1, 1}, {3.5F, 2, 2}, {4, 1, 1});
    Transfer transfer =
        transferOf([](const Point&) { return 2.5; }, roomySource(), withMaterials(chain, {0, 0, 1, 2}, {1, 1, 4}));
    transfer.flags = {0, 1, 1};
    transfer.targetFields = {atGaussPoints()};
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 2);
    // Two selected elements fill 16 rows from the first on; the computed rows are 16 to 23.
    std::vector<double> expected = constant(32, untouched);
    std::fill_n(expected.begin(), 16, fill);
    std::fill_n(expected.begin() + 16, 8, 2.5);
    expectNear(outcome.fields[0], expected, 1e-5);
}

TEST_F(PointOutsideInModeZero, amongGaussPointsFillsTheNodesToo)
{
    // All nodes of the target belong to an element that the source covers; the Gauss points of another element do not.
    Mesh target = unitHexahedron({1, 1, 1});
    target.connectivity.push_back(target.connectivity[0]);
    target.types.push_back(target.types[0]);
    Transfer transfer = transferOf(linear, roomySource(), withMaterials(target, {0, 1}, {1, 4}));
    transfer.flags = {1, 1};
    transfer.sourceFields.push_back(transfer.sourceFields[0]);
    transfer.targetFields = {Field{}, atGaussPoints()};
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.fields[0], constant(8, fill));
    EXPECT_EQ(outcome.fields[1], constant(16, fill));
}
} // namespace
