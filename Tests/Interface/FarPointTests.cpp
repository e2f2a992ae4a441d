// Target points far outside the source, in the mode that gives their nodes default values.
#include "Scenes.h"

#include <algorithm>

namespace
{
class FarPoints : public Host
{
protected:
    /// Two hexahedra that share a face. The material of the second has a state code (of class 2) that no source
    /// element has: its Gauss points are far outside, and so are its nodes 2, 5, 8 and 11, which the first does not
    /// share.
    static Transfer partlyFar()
    {
        const Mesh chain = box(element::hexahedron, {1, 1, 1}, {3, 2, 2}, {2, 1, 1});
        Transfer transfer = transferOf(linear, roomySource(), withMaterials(chain, {0, 1}, {1, 4}));
        transfer.flags = {1, 1};
        transfer.mode = 1;
        return transfer;
    }

    static bool isFar(std::size_t node) { return node % 3 == 2; }

    /// The exact values at the first element's nodes, `farValue` at the others.
    static std::vector<double> expectedAtNodes(const Transfer& transfer, double farValue)
    {
        std::vector<double> expected = atNodes(transfer.target, linear);
        for (std::size_t node = 0; node < expected.size(); ++node)
        {
            expected[node] = isFar(node) ? farValue : expected[node];
        }
        return expected;
    }
};

TEST_F(FarPoints, farNodesTakeTheDefaultOfTheirField)
{
    Transfer transfer = partlyFar();
    transfer.targetFields[0].defaultValue = 5.5F;
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.message, meshTermination);
    expectNear(outcome.fields[0], expectedAtNodes(transfer, 5.5), 1e-5);
    EXPECT_EQ(outcome.transcript, successfulTranscript(meshTitle, interpolationSuccess, 12));
    EXPECT_TRUE(outcome.hasLog());
}

TEST_F(FarPoints, theDefaultOfADoubleFieldIsASingleValueWidened)
{
    Transfer transfer = partlyFar();
    transfer.targetFields[0].precision = doublePrecision;
    transfer.targetFields[0].defaultValue = 0.1F;
    const Outcome outcome = run(transfer);
    expectNear(outcome.fields[0], expectedAtNodes(transfer, 0.1), 1e-5);
    EXPECT_EQ(outcome.fields[0][2], static_cast<double>(0.1F));
}

TEST_F(FarPoints, everyFieldTakesItsOwnDefaultInAllComponents)
{
    Transfer transfer = partlyFar();
    const Field threeComponents = {.components = 3, .values = constant(3 * 27, 1.0)};
    transfer.sourceFields = {threeComponents, transfer.sourceFields[0]};
    transfer.targetFields = {{.components = 3, .defaultValue = -1.5F}, {.defaultValue = 2.5F}};
    const Outcome outcome = run(transfer);
    std::vector<double> expected = constant(36, 1.0);
    for (std::size_t node = 0; node < 12; ++node)
    {
        if (isFar(node))
        {
            std::fill_n(expected.begin() + static_cast<std::ptrdiff_t>(3 * node), 3, -1.5);
        }
    }
    expectNear(outcome.fields[0], expected, 1e-5);
    expectNear(outcome.fields[1], expectedAtNodes(transfer, 2.5), 1e-5);
}

TEST_F(FarPoints, aTargetFieldWithoutSourceFieldTakesItsDefaultAtFarNodesOnly)
{
    Transfer transfer = partlyFar();
    transfer.targetFields = {Field{}, {.defaultValue = 2.5F}};
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    std::vector<double> expected = constant(12, untouched);
    for (std::size_t node = 2; node < 12; node += 3)
    {
        expected[node] = 2.5;
    }
    EXPECT_EQ(outcome.fields[1], expected);
}

TEST_F(FarPoints, fieldsOfStateClassOneKeepTheirValuesOnMaterialsOfClassTwo)
{
    Transfer transfer = partlyFar();
    transfer.sourceFields = {transfer.sourceFields[0], transfer.sourceFields[0]};
    transfer.targetFields = {{.stateFlag = 1, .defaultValue = 5.5F},
                             {.location = atGaussPointsLocation, .stateFlag = 1}};
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    expectNear(outcome.fields[0], expectedAtNodes(transfer, untouched), 1e-5);
    EXPECT_EQ(std::vector<double>(outcome.fields[1].begin() + 8, outcome.fields[1].end()), constant(8, untouched));
}

TEST_F(FarPoints, fieldsOfStateClassOneTakeTheirDefaultOnOtherMaterialsOfClassOne)
{
    Transfer transfer = partlyFar();
    transfer.target.matlStates = {1, 7};
    transfer.targetFields = {{.stateFlag = 1, .defaultValue = 5.5F}};
    expectNear(run(transfer).fields[0], expectedAtNodes(transfer, 5.5), 1e-5);
}

TEST_F(FarPoints, farGaussPointsBecomeZeroInAllComponents)
{
    for (const int mode : {1, 2})
    {
        Transfer transfer = partlyFar();
        transfer.mode = mode;
        const Field twoComponents = {.components = 2, .values = constant(2 * 27, 3.0)};
        transfer.sourceFields = {twoComponents, twoComponents};
        transfer.targetFields = {{.location = atGaussPointsLocation, .components = 2, .defaultValue = 5.5F},
                                 {.location = atGaussPointsLocation, .components = 2, .precision = doublePrecision}};
        const Outcome outcome = run(transfer);
        EXPECT_EQ(outcome.code, 0);
        std::vector<double> expected = constant(32, 3.0);
        std::fill(expected.begin() + 16, expected.end(), 0.0);
        expectNear(outcome.fields[0], expected, 1e-5);
        expectNear(outcome.fields[1], expected, 1e-5);
        EXPECT_EQ(outcome.fields[0].back(), 0.0);
    }
}

TEST_F(FarPoints, farGaussPointsTouchNoNodeAndFarNodesTouchNoGaussPoint)
{
    // 36 nodes and 64 Gauss points: a row of one kind used for the other would show as a value that does not belong.
    Transfer transfer = transferOf([](const Point&) { return 3.0; }, sourceWithGap(), chainAcrossGap());
    transfer.mode = 1;
    transfer.sourceFields = {transfer.sourceFields[0], transfer.sourceFields[0]};
    transfer.targetFields = {{.defaultValue = 5.5F}, atGaussPoints()};
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    std::vector<double> nodes;
    for (std::size_t node = 0; node < 36; ++node)
    {
        const std::size_t plane = node % 9;
        nodes.push_back(plane >= 3 && plane <= 5 ? 5.5 : 3.0);
    }
    expectNear(outcome.fields[0], nodes, 1e-5);
    std::vector<double> gaussPoints = constant(64, 3.0);
    std::fill(gaussPoints.begin() + 2 * 8, gaussPoints.begin() + 6 * 8, 0.0);
    expectNear(outcome.fields[1], gaussPoints, 1e-5);
}

TEST_F(FarPoints, nodesWithinReachOfTheSourceAreNotFar)
{
    Transfer transfer = transferOf(linear, sourceWithGap(), chainAcrossGap());
    transfer.mode = 1;
    transfer.targetFields[0].defaultValue = 5.5F;
    std::vector<double> expected;
    for (std::size_t node = 0; node < 36; ++node)
    {
        const std::size_t plane = node % 9;
        Point p = transfer.target.nodes[node];
        // The third and the seventh plane take the values of the nearest face of the source.
        p[0] = plane == 2 ? 2.0F : plane == 6 ? 7.0F : p[0];
        expected.push_back(plane >= 3 && plane <= 5 ? 5.5 : linear(p));
    }
    expectNear(run(transfer).fields[0], expected, 1e-4);
}

class FarCloudPoints : public Host
{
protected:
    static Transfer partlyFar()
    {
        Transfer transfer =
            transferOf(linear, roomySource(), cloud({{1, 1, 1}, {30, 1, 1}, {2, 2, 2}, {2, 2, 3}, {1, -30, 1}}));
        transfer.target = withMaterials(transfer.target, {0, 0, 0, 1, 0}, {1, 4});
        transfer.flags = {1, 1};
        transfer.mode = 1;
        return transfer;
    }
};

TEST_F(FarCloudPoints, takeTheDefaultOfTheirField)
{
    Transfer transfer = partlyFar();
    transfer.sourceFields = {transfer.sourceFields[0], transfer.sourceFields[0]};
    transfer.targetFields = {{.defaultValue = 5.5F}, {.precision = doublePrecision, .defaultValue = 0.1F}};
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.message, cloudTermination);
    const double first = linear({1, 1, 1});
    const double third = linear({2, 2, 2});
    expectNear(outcome.fields[0], {first, 5.5, third, 5.5, 5.5}, 1e-5);
    const double widened = static_cast<double>(0.1F);
    expectNear(outcome.fields[1], {first, widened, third, widened, widened}, 1e-5);
    EXPECT_EQ(outcome.fields[1][1], widened);
    EXPECT_EQ(outcome.transcript, successfulTranscript(cloudTitle, interpolationSuccess, 5));
}

TEST_F(FarCloudPoints, keepFieldsOfStateClassOneOnMaterialsOfClassTwo)
{
    Transfer transfer = partlyFar();
    transfer.targetFields = {{.stateFlag = 1, .defaultValue = 5.5F}};
    expectNear(run(transfer).fields[0], {linear({1, 1, 1}), 5.5, linear({2, 2, 2}), untouched, 5.5}, 1e-5);
}

TEST_F(FarCloudPoints, beingCloseToTheSourceDoesNotHelp)
{
    // A mesh node there would take the value of the nearest element.
    Transfer transfer = transferOf(linear, unitHexahedron({0, 0, 0}), cloud({{0.5F, 0.5F, 0.5F}, {0.5F, 0.5F, 1.05F}}));
    EXPECT_EQ(run(transfer).code, 2);
    transfer.mode = 1;
    transfer.targetFields[0].defaultValue = 5.5F;
    expectNear(run(transfer).fields[0], {linear({0.5F, 0.5F, 0.5F}), 5.5}, 1e-5);
}

TEST_F(FarCloudPoints, mayAllBeFar)
{
    Transfer transfer = transferOf(linear, roomySource(), cloud({{30, 1, 1}, {40, 1, 1}}));
    transfer.mode = 1;
    transfer.targetFields[0].defaultValue = 5.5F;
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.fields[0], (std::vector<double>{5.5, 5.5}));
}

TEST_F(FarCloudPoints, aPointWithoutAPlaceIsFar)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    Transfer transfer = transferOf(linear, roomySource(), cloud({{1, 1, 1}, {nan, 1, 1}, {1, 1, nan}, {3, 3, 3}}));
    EXPECT_EQ(run(transfer).code, 2);
    transfer.mode = 1;
    transfer.targetFields[0].defaultValue = 5.5F;
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    expectNear(outcome.fields[0], {linear({1, 1, 1}), 5.5, 5.5, linear({3, 3, 3})}, 1e-5);
}

TEST_F(FarCloudPoints, anEnormousDistanceIsFarToo)
{
    Transfer transfer = transferOf(linear, roomySource(), cloud({{1, 1, 1}, {1e30F, 1, 1}, {3, 3, 3}}));
    transfer.mode = 1;
    transfer.targetFields[0].defaultValue = 5.5F;
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    expectNear(outcome.fields[0], {linear({1, 1, 1}), 5.5, linear({3, 3, 3})}, 1e-5);
}
} // namespace
