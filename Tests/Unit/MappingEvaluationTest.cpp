// Values at a located point, and which fields receive them.
#include "PointTransfer.h"
#include "TestInOwnDirectory.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
/// A source of one tetrahedron with the corners of the reference domain, in which weights are coordinates.
class EvaluationTest : public TestInOwnDirectory
{
protected:
    EvaluationTest()
    {
        run.source.addElement(2, referenceNodes(2));
        run.sourceValues = {8, 16, 32, 64};
    }

    PointTransfer run;
    const Vector3 point{0.125F, 0.25F, 0.5F}; // 1/8 remains for the first node
};

/// The values that mark undefined source values and results.
constexpr float undefinedLimit = -88880002891776.0F;
constexpr float undefinedResult = -99990001156096.0F;
constexpr float untouched = -1.0F;
} // namespace

TEST_F(EvaluationTest, AValueIsTheWeightedSumOfTheNodesValues)
{
    run.prepare();
    EXPECT_EQ(run.transfer(point), 0);
    EXPECT_NEAR(run.targetValues[0], 1.0F + 2.0F + 8.0F + 32.0F, 1e-4F);
}

TEST_F(EvaluationTest, NodesAreFoundByTheirNumbers)
{
    run.source = {};
    run.source.nodes = {{9, 9, 9}, {0, 0, 1}, {0, 1, 0}, {9, 9, 9}, {1, 0, 0}, {0, 0, 0}};
    run.source.addElement(2, std::vector<int>{5, 4, 2, 1});
    run.sourceValues = {1e6F, 64, 32, 1e6F, 16, 8};
    run.prepare();
    run.transfer(point);
    EXPECT_NEAR(run.targetValues[0], 43.0F, 1e-4F);
}

TEST_F(EvaluationTest, ComponentsAndPointsLieRowByRow)
{
    run.sourceValues = {0, 8, 0, 16, 0, 32, 8, 64};
    run.targetValues.assign(6, untouched);
    run.sourceFields = {fieldRecord(atNodes, 2, run.sourceValues)};
    run.targetFields = {fieldRecord(atNodes, 2, run.targetValues)};
    run.prepare();
    run.transfer(point, atNodes, 1);
    EXPECT_NEAR(run.targetValues[2], 4.0F, 1e-4F);
    EXPECT_NEAR(run.targetValues[3], 43.0F, 1e-4F);
    run.targetValues[2] = untouched;
    run.targetValues[3] = untouched;
    EXPECT_EQ(run.targetValues, std::vector<float>(6, untouched));
}

TEST_F(EvaluationTest, TheSourceFieldsNumberOfComponentsCounts)
{
    run.sourceValues = {0, 8, 0, 16, 0, 32, 8, 64};
    run.targetValues.assign(6, untouched);
    run.sourceFields = {fieldRecord(atNodes, 2, run.sourceValues)};
    run.targetFields = {fieldRecord(atNodes, 3, run.targetValues)};
    run.prepare();
    run.transfer(point, atNodes, 1);
    EXPECT_EQ(run.targetValues[1], untouched);
    EXPECT_NEAR(run.targetValues[2], 4.0F, 1e-4F);
    EXPECT_NEAR(run.targetValues[3], 43.0F, 1e-4F);
    EXPECT_EQ(run.targetValues[4], untouched);
}

TEST_F(EvaluationTest, PrecisionsMayDiffer)
{
    const double third = 1.0 / 3.0;
    std::vector<double> doubles(4, third);
    std::vector<float> floats(4, 0.1F);
    std::vector<float> fromDoubles{untouched};
    std::vector<double> fromFloats{untouched};
    run.sourceFields = {fieldRecord(atNodes, 1, doubles), fieldRecord(atNodes, 1, floats)};
    run.targetFields = {fieldRecord(atNodes, 1, fromDoubles), fieldRecord(atNodes, 1, fromFloats)};
    run.prepare();
    run.transfer(point);
    EXPECT_NEAR(fromDoubles[0], 0.333333343F, 1e-7F);
    // Computed in single precision and widened.
    EXPECT_NEAR(fromFloats[0], 0.1, 1e-7);
    EXPECT_EQ(fromFloats[0], static_cast<double>(static_cast<float>(fromFloats[0])));
}

TEST_F(EvaluationTest, FieldsArePairedByPosition)
{
    std::vector<float> others{2, 2, 2, 2};
    std::vector<float> first{untouched};
    std::vector<float> second{untouched};
    run.sourceFields = {fieldRecord(atNodes, 1, run.sourceValues, "a"), fieldRecord(atNodes, 1, others, "b")};
    run.targetFields = {fieldRecord(atNodes, 1, first, "b"), fieldRecord(atNodes, 1, second, "a")};
    run.prepare();
    run.transfer(point);
    EXPECT_NEAR(first[0], 43.0F, 1e-4F);
    EXPECT_NEAR(second[0], 2.0F, 1e-5F);
}

TEST_F(EvaluationTest, ATargetFieldWithoutASourceFieldIsLeftAlone)
{
    std::vector<float> first{untouched};
    std::vector<float> second{untouched};
    run.targetFields = {fieldRecord(atNodes, 1, first), fieldRecord(atNodes, 1, second)};
    run.prepare();
    run.transfer(point);
    EXPECT_NEAR(first[0], 43.0F, 1e-4F);
    EXPECT_EQ(second[0], untouched);
}

TEST_F(EvaluationTest, OnlyFieldsAtTheKindOfPointAreWritten)
{
    std::vector<float> nodes{untouched};
    std::vector<float> gaussPoints{untouched};
    run.sourceFields.assign(2, fieldRecord(atNodes, 1, run.sourceValues));
    run.targetFields = {fieldRecord(atNodes, 1, nodes), fieldRecord(atGaussPoints, 1, gaussPoints)};
    run.prepare();
    run.transfer(point, atGaussPoints);
    EXPECT_EQ(nodes[0], untouched);
    EXPECT_NEAR(gaussPoints[0], 43.0F, 1e-4F);
    gaussPoints[0] = untouched;
    run.transfer(point, atNodes);
    EXPECT_NEAR(nodes[0], 43.0F, 1e-4F);
    EXPECT_EQ(gaussPoints[0], untouched);
}

TEST_F(EvaluationTest, ARestrictedTargetFieldIsNotWrittenInClassTwo)
{
    std::vector<float> restricted{untouched};
    std::vector<float> everywhere{untouched};
    run.sourceFields.assign(2, fieldRecord(atNodes, 1, run.sourceValues));
    // The source field's own flag does not count.
    run.sourceFields[1].matlStateFlag = 1;
    run.targetFields = {fieldRecord(atNodes, 1, restricted), fieldRecord(atNodes, 1, everywhere)};
    run.targetFields[0].matlStateFlag = 1;
    run.prepare();
    run.transfer(point, atNodes, 0, 2);
    EXPECT_EQ(restricted[0], untouched);
    EXPECT_NEAR(everywhere[0], 43.0F, 1e-4F);
    run.transfer(point, atNodes, 0, 1);
    EXPECT_NEAR(restricted[0], 43.0F, 1e-4F);
}

TEST_F(EvaluationTest, AFieldAtGaussPointsIsTakenFromItsAveragesAtNodes)
{
    std::vector<float> gaussPointValue{6};
    run.sourceFields = {fieldRecord(atGaussPoints, 1, gaussPointValue)};
    run.prepare();
    ASSERT_EQ(run.mapping.itsRefFields.fields()[0].interpoAtNodes(run.mapping.itsRefMesh), nullptr);
    run.transfer(point);
    EXPECT_NEAR(run.targetValues[0], 6.0F, 1e-5F);
}

TEST_F(EvaluationTest, AnUndefinedSourceValueMakesTheResultUndefined)
{
    // The first and the last of the nodes, and the largest value that is undefined.
    for (const std::size_t node : {0U, 3U})
    {
        for (const float value : {-1e14F, undefinedLimit, undefinedResult})
        {
            PointTransfer other;
            other.source.addElement(2, referenceNodes(2));
            other.sourceValues = {8, 16, 32, 64};
            other.sourceValues[node] = value;
            other.prepare();
            other.transfer(point);
            EXPECT_EQ(other.targetValues[0], undefinedResult) << value << " at node " << node;
        }
    }
}

TEST_F(EvaluationTest, ValuesAboveTheUndefinedOnesCount)
{
    run.sourceValues.assign(4, std::nextafter(undefinedLimit, 0.0F));
    run.prepare();
    run.transfer(point);
    EXPECT_GT(run.targetValues[0], undefinedResult);
    EXPECT_NEAR(run.targetValues[0] / undefinedLimit, 1.0F, 1e-6F);
}

TEST_F(EvaluationTest, UndefinedComponentsLeaveTheOthersDefined)
{
    std::vector<double> source{8, -1e14, 16, 1, 32, 1, 64, 1};
    std::vector<double> target(2, untouched);
    run.sourceFields = {fieldRecord(atNodes, 2, source)};
    run.targetFields = {fieldRecord(atNodes, 2, target)};
    run.prepare();
    run.transfer(point);
    EXPECT_NEAR(target[0], 43.0, 1e-4);
    EXPECT_EQ(target[1], static_cast<double>(undefinedResult));
}
