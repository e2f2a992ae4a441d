// The search for the source element that holds a point, and what happens to points in none.
#include "AllocationFailure.h"
#include "PointTransfer.h"
#include "TestInOwnDirectory.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace
{
class PointLocationTest : public TestInOwnDirectory
{
protected:
    PointTransfer run;

    /// Adds a cube of edge length 1 whose nodes have a value of their own.
    void addCube(const Vector3& low, float value, int matl = 0)
    {
        run.source.addBox(low, {low[0] + 1, low[1] + 1, low[2] + 1}, matl);
        run.sourceValues.insert(run.sourceValues.end(), 8, value);
    }

    /// A quadratic tetrahedron with x = xi^2, y = eta, z = zeta: negative x is out of reach of any iteration.
    void addFoldedTetrahedron(float value)
    {
        std::vector<Vector3> nodes = referenceNodes(10);
        for (Vector3& node : nodes)
        {
            node[0] *= node[0];
        }
        run.source.addElement(10, nodes);
        run.sourceValues.insert(run.sourceValues.end(), 10, value);
    }

    /// A cube in bucket 0 of three, of which the outer two are needed; widened, it reaches bucket 2.
    void addCubeNearAnEmptyBucket()
    {
        addCube({0, 0, 0}, 7);
        run.gridPoints.addPoint({0.5F, 0.5F, 0.5F});
        run.gridPoints.addPoint({2.5F, 0.5F, 0.5F});
        run.bucketSize = 1;
        run.bucketFactor = 2;
    }

    float value() const { return run.targetValues[0]; }
};

constexpr float untouched = -1.0F;
constexpr const char* meshOutsideText = "Some regions of the target model are outside the source model.";
constexpr const char* cloudOutsideText = "Some points of the points cloud target model are outside the source model.";
} // namespace

TEST_F(PointLocationTest, APointIsFoundInItsElement)
{
    addCube({0, 0, 0}, 10);
    addCube({5, 0, 0}, 20);
    run.prepare();
    const LocatedPoint located = run.mapping.pointLocator().search({5.75F, 0.5F, 0.25F}, 1);
    EXPECT_EQ(located.elt, 1);
    EXPECT_FALSE(located.isNearMiss);
    EXPECT_NEAR(located.referenceCoords[0], 0.5F, 1e-5F);
    EXPECT_NEAR(located.referenceCoords[1], 0.0F, 1e-5F);
    EXPECT_NEAR(located.referenceCoords[2], -0.5F, 1e-5F);
    EXPECT_EQ(run.mapping.pointLocator().search({3, 0.5F, 0.5F}, 1).elt, -1);
}

TEST_F(PointLocationTest, APointOnASharedFaceBelongsToTheFirstElement)
{
    addCube({1, 0, 0}, 10);
    addCube({0, 0, 0}, 20);
    run.prepare();
    EXPECT_EQ(run.mapping.pointLocator().search({1, 0.5F, 0.5F}, 1).elt, 0);
    EXPECT_EQ(run.transfer({1, 0.5F, 0.5F}), 0);
    EXPECT_EQ(value(), 10.0F);
}

TEST_F(PointLocationTest, OnlyElementsOfTheSameStateCodeHoldAPoint)
{
    run.source.matlStates = {4, 5, 4};
    addCube({0, 0, 0}, 10, 0);
    addCube({0, 0, 0}, 20, 1);
    addCube({0, 0, 0}, 30, 2);
    run.prepare();
    const Vector3 point{0.5F, 0.5F, 0.5F};
    EXPECT_EQ(run.mapping.pointLocator().search(point, 4).elt, 0);
    EXPECT_EQ(run.mapping.pointLocator().search(point, 5).elt, 1);
    // Code 6 is of the same class, but not the same.
    EXPECT_EQ(run.mapping.pointLocator().search(point, 6).elt, -1);
}

TEST_F(PointLocationTest, TheElementsBoxRulesOutBeforeTheInsideTest)
{
    // 0.0005 outside, which is inside for the inside test.
    addCube({0, 0, 0}, 10);
    run.boxMargin = 0;
    run.prepare();
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        Vector3 above{0.5F, 0.5F, 0.5F};
        Vector3 below = above;
        above[axis] = 1.0005F;
        below[axis] = -0.0005F;
        EXPECT_EQ(run.mapping.pointLocator().search(above, 1).elt, -1) << axis;
        EXPECT_EQ(run.mapping.pointLocator().search(below, 1).elt, -1) << axis;
        above[axis] = 1;
        below[axis] = 0;
        EXPECT_EQ(run.mapping.pointLocator().search(above, 1).elt, 0) << axis;
        EXPECT_EQ(run.mapping.pointLocator().search(below, 1).elt, 0) << axis;
    }
}

TEST_F(PointLocationTest, APointInTheBoxButNotInTheElementIsNotFound)
{
    run.source.addElement(2, referenceNodes(2));
    run.sourceValues.assign(4, 10);
    run.prepare();
    EXPECT_EQ(run.mapping.pointLocator().search({0.9F, 0.9F, 0.9F}, 1).elt, -1);
    EXPECT_EQ(run.mapping.itsNbInterpolatedPoints, 0);
}

TEST_F(PointLocationTest, OnlyTheIterationsInTheElementThatIsTakenAreCounted)
{
    // The first element rejects the point after a step of its own.
    run.source.addElement(2, referenceNodes(2));
    run.source.addElement(2, {{1, 1, 1}, {0, 1, 1}, {1, 0, 1}, {1, 1, 0}});
    run.sourceValues.assign(8, 10);
    run.prepare();
    EXPECT_EQ(run.transfer({0.75F, 0.75F, 0.75F}), 0);
    EXPECT_EQ(run.mapping.itsNbInterpolatedPoints, 1);
    EXPECT_EQ(run.mapping.itsMeanIterations, 1.0F);
    EXPECT_EQ(run.transfer({0.125F, 0.125F, 0.125F}), 0);
    EXPECT_EQ(run.mapping.itsNbInterpolatedPoints, 2);
    EXPECT_EQ(run.mapping.itsMeanIterations, 2.0F);
}

TEST_F(PointLocationTest, OnlyDirectlyFilledBucketsAreSearched)
{
    addCubeNearAnEmptyBucket();
    run.prepare();
    ASSERT_EQ(run.mapping.itsBucketSpace.state(2), filledByEnlarged);
    const Vector3 pointInCube{0.75F, 0.5F, 0.5F};
    EXPECT_EQ(run.mapping.pointLocator().search(pointInCube, 1).elt, 0);
    run.mapping.itsBucketSpace.itsBucketState[0][0][0] = filledByEnlarged;
    EXPECT_EQ(run.mapping.pointLocator().search(pointInCube, 1).elt, -1);
}

TEST_F(PointLocationTest, PointsOutsideTheGridAreInNoElement)
{
    addCube({0, 0, 0}, 10);
    run.gridPoints.addPoint({0.5F, 0.5F, 0.5F});
    run.bucketSize = 0.25F;
    run.prepare();
    EXPECT_EQ(run.mapping.pointLocator().search({0.5F, 0.5F, 0.5F}, 1).elt, 0);
    EXPECT_EQ(run.mapping.pointLocator().search({0.9F, 0.5F, 0.5F}, 1).elt, -1);
    EXPECT_EQ(run.mapping.pointLocator().search({0.1F, 0.5F, 0.5F}, 1).elt, -1);
}

TEST_F(PointLocationTest, CentresAreTheMeansOfTheNodes)
{
    run.source.addElement(2, {{0, 0, 0}, {4, 0, 0}, {0, 8, 0}, {0, 0, 16}});
    run.source.addElement(12, {{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}, {5, 5, 20}});
    run.sourceValues.assign(9, 0);
    run.prepare();
    EXPECT_EQ(takeText(run.mapping.createBaryPerRefElt()), "(null)");
    const float* first = run.mapping.itsRefMeshBaryPerElt[0];
    const float* second = run.mapping.itsRefMeshBaryPerElt[1];
    EXPECT_EQ((Vector3{first[0], first[1], first[2]}), (Vector3{1, 2, 4}));
    EXPECT_EQ((Vector3{second[0], second[1], second[2]}), (Vector3{5, 5, 4}));
    EXPECT_EQ(second, first + 3);
}

TEST_F(PointLocationTest, CentresAreMadeOnce)
{
    addCube({0, 0, 0}, 10);
    run.prepare();
    EXPECT_EQ(takeText(run.mapping.createBaryPerRefElt()), "(null)");
    EXPECT_EQ(takeText(run.mapping.createBaryPerRefElt()),
              "Barycenters of FE of the source mesh have been already calculated by "
              "MappingClass::createBaryPerRefElt() function.\n");
}

TEST_F(PointLocationTest, CentresThatCannotBeAllocatedAreReported)
{
    addCube({0, 0, 0}, 10);
    run.prepare();
    EXPECT_EQ(
        outcomesOfFailedTables([this] { std::fputs(takeText(run.mapping.createBaryPerRefElt()).c_str(), stdout); }),
        (std::vector<std::string>{"Allocation of itsRefMeshBaryPerElt is not possible in "
                                  "MappingClass::createBaryPerRefElt() function.\n",
                                  "Allocation of itsRefMeshBaryPerElt[0] is not possible in "
                                  "MappingClass::createBaryPerRefElt() function.\n"}));
}

TEST_F(PointLocationTest, APointThatIsFoundIsNoNearMiss)
{
    addCube({0, 0, 0}, 10);
    run.prepare();
    EXPECT_EQ(run.transfer({0.5F, 0.5F, 0.5F}), 0);
    EXPECT_EQ(value(), 10.0F);
    EXPECT_EQ(run.mapping.itsNbTargetNodesOutside, 0);
    EXPECT_FALSE(run.mapping.itsRefMeshBaryPerElt);
}

TEST_F(PointLocationTest, ANearMissTakesTheElementWithTheNearestCentre)
{
    addCube({0, 0, 0}, 10);
    addCube({3, 0, 0}, 20);
    addCube({6, 0, 0}, 30);
    run.prepare();
    EXPECT_EQ(run.transfer({3.75F, 0.5F, 1.5F}), 0);
    EXPECT_NEAR(value(), 20.0F, 1e-4F);
    EXPECT_EQ(run.mapping.itsNbTargetNodesOutside, 1);
    EXPECT_EQ(run.mapping.itsNbInterpolatedPoints, 1);
    EXPECT_EQ(run.mapping.itsErrorCode, 0);
}

TEST_F(PointLocationTest, AmongEquallyNearCentresTheLastIsTaken)
{
    addCube({0, 0, 0}, 10);
    addCube({1, 0, 0}, 20);
    addCube({-7, 0, 0}, 30);
    run.prepare();
    EXPECT_EQ(run.transfer({1, 0.5F, 1.5F}), 0);
    EXPECT_NEAR(value(), 20.0F, 1e-4F);
}

TEST_F(PointLocationTest, ANearMissStaysInItsStateCode)
{
    run.source.matlStates = {1, 2};
    addCube({0, 0, 0}, 10, 0);
    addCube({5, 0, 0}, 20, 1);
    run.prepare();
    EXPECT_EQ(run.transfer({0.5F, 0.5F, 1.5F}, atNodes, 0, 1, 2), 0);
    EXPECT_NEAR(value(), 20.0F, 1e-4F);
}

TEST_F(PointLocationTest, TheWeightsOfANearMissAreClampedAtZeroAndSumToOne)
{
    // At zeta = 1.4 the lower nodes' weights are negative, and the upper ones' are 0.3 each.
    addCube({0, 0, 0}, 0);
    run.sourceValues = {100, 200, 300, 400, 1, 2, 3, 6};
    run.prepare();
    EXPECT_EQ(run.transfer({0.5F, 0.5F, 1.2F}), 0);
    EXPECT_NEAR(value(), 3.0F, 1e-4F);
}

TEST_F(PointLocationTest, TheWeightsOfANearMissAreClampedAtOne)
{
    // At 1.4 on every axis the weight of the corner is 2.4^3 / 8 = 1.728, that of three nodes 0.4^2 * 2.4 / 8 = 0.048,
    // and the others' are negative.
    addCube({0, 0, 0}, 0);
    run.sourceValues = {0, 1, 0, 1, 1, 0, 10, 0};
    run.prepare();
    EXPECT_EQ(run.transfer({1.2F, 1.2F, 1.2F}), 0);
    EXPECT_NEAR(value(), (10.0F + 3 * 0.048F) / (1.0F + 3 * 0.048F), 1e-3F);
}

TEST_F(PointLocationTest, ANearMissLooksIntoABucketOfAnyState)
{
    addCubeNearAnEmptyBucket();
    run.prepare();
    EXPECT_EQ(run.transfer({2.5F, 0.5F, 0.5F}), 0);
    EXPECT_NEAR(value(), 7.0F, 1e-4F);
    EXPECT_EQ(run.mapping.itsNbTargetNodesOutside, 1);
}

TEST_F(PointLocationTest, NearMissesOfNodesAndGaussPointsAreCountedApart)
{
    addCube({0, 0, 0}, 10);
    run.prepare();
    run.transfer({0.5F, 0.5F, 1.5F}, atGaussPoints);
    run.transfer({0.5F, 0.5F, 1.5F}, atGaussPoints);
    run.transfer({0.5F, 0.5F, 1.5F}, atNodes);
    EXPECT_EQ(run.mapping.itsNbTargetGPsOutside, 2);
    EXPECT_EQ(run.mapping.itsNbTargetNodesOutside, 1);
}

TEST_F(PointLocationTest, AFarPointOfAMeshIsRefusedInModeZero)
{
    addCube({0, 0, 0}, 10);
    run.prepare();
    EXPECT_EQ(run.transfer({0.5F, 0.5F, 0.5F}, atNodes, 0, 2, 4), 0);
    EXPECT_EQ(run.mapping.itsErrorCode, 2);
    EXPECT_EQ(run.errorText(), meshOutsideText);
    EXPECT_EQ(value(), untouched);
    EXPECT_EQ(run.mapping.itsNbTargetNodesOutside, 1);
}

TEST_F(PointLocationTest, AFarPointOfAMeshIsFlaggedInTheOtherModes)
{
    addCube({0, 0, 0}, 10);
    run.prepare();
    for (const int mode : {1, 2})
    {
        run.mapping.itsInterpoMode = mode;
        EXPECT_EQ(run.transfer({0.5F, 0.5F, 0.5F}, atNodes, 0, 2, 4), 1);
        EXPECT_EQ(run.mapping.itsErrorCode, 0);
        EXPECT_EQ(value(), untouched);
    }
    EXPECT_EQ(run.mapping.itsNbTargetNodesOutside, 2);
    EXPECT_EQ(run.mapping.itsNbInterpolatedPoints, 0);
}

TEST_F(PointLocationTest, ANearestElementThatDoesNotConvergeLeavesThePointFar)
{
    addFoldedTetrahedron(10);
    run.mapping.itsInterpoMode = 1;
    run.prepare();
    EXPECT_EQ(run.transfer({-0.9F, 0.25F, 0.25F}), 1);
    EXPECT_EQ(value(), untouched);
    EXPECT_EQ(run.mapping.itsNbInterpolatedPoints, 0);
    EXPECT_EQ(run.mapping.itsMeanIterations, 0.0F);
}

TEST_F(PointLocationTest, AFarGaussPointIsSetToZero)
{
    addCube({0, 0, 0}, 10);
    std::vector<float> atNodesValues(4, 9);
    std::vector<float> floats{9, 9, 9, 9, 9, 9};
    std::vector<double> doubles{9, 9, 9};
    std::vector<float> restricted{9, 9, 9};
    run.sourceFields.assign(4, fieldRecord(atNodes, 1, run.sourceValues));
    run.targetFields = {fieldRecord(atNodes, 1, atNodesValues), fieldRecord(atGaussPoints, 2, floats),
                        fieldRecord(atGaussPoints, 1, doubles), fieldRecord(atGaussPoints, 1, restricted)};
    run.targetFields[3].matlStateFlag = 1;
    run.mapping.itsInterpoMode = 1;
    run.prepare();
    // In class 2 the restricted field does not exist.
    EXPECT_EQ(run.transfer({0.5F, 0.5F, 0.5F}, atGaussPoints, 1, 2, 4), 1);
    EXPECT_EQ(floats, (std::vector<float>{9, 9, 0, 0, 9, 9}));
    EXPECT_EQ(doubles, (std::vector<double>{9, 0, 9}));
    EXPECT_EQ(restricted, (std::vector<float>{9, 9, 9}));
    EXPECT_EQ(atNodesValues, (std::vector<float>{9, 9, 9, 9}));
    EXPECT_EQ(run.transfer({0.5F, 0.5F, 0.5F}, atGaussPoints, 2, 1, 3), 1);
    EXPECT_EQ(restricted, (std::vector<float>{9, 9, 0}));
    EXPECT_EQ(run.mapping.itsNbTargetGPsOutside, 2);
}

TEST_F(PointLocationTest, AFarNodeLeavesGaussPointsAlone)
{
    addCube({0, 0, 0}, 10);
    std::vector<float> gaussPoints{9};
    run.targetFields = {fieldRecord(atGaussPoints, 1, gaussPoints)};
    run.mapping.itsInterpoMode = 1;
    run.prepare();
    EXPECT_EQ(run.transfer({0.5F, 0.5F, 0.5F}, atNodes, 0, 2, 4), 1);
    EXPECT_EQ(gaussPoints[0], 9.0F);
}

TEST_F(PointLocationTest, APointOfACloudHasNoNearMiss)
{
    addCube({0, 0, 0}, 10);
    run.targetKind = ModelKind::pointCloud;
    run.mapping.itsInterpoMode = 1;
    run.prepare();
    EXPECT_EQ(run.transfer({0.5F, 0.5F, 1.2F}), 1);
    EXPECT_EQ(value(), untouched);
    EXPECT_EQ(run.mapping.itsNbTargetNodesOutside, 0);
    EXPECT_FALSE(run.mapping.itsRefMeshBaryPerElt);
    EXPECT_EQ(run.transfer({0.5F, 0.5F, 0.9F}), 0);
    EXPECT_EQ(value(), 10.0F);
}

TEST_F(PointLocationTest, APointOfACloudOutsideTheSourceIsRefusedInModeZero)
{
    addCube({0, 0, 0}, 10);
    run.targetKind = ModelKind::pointCloud;
    run.prepare();
    EXPECT_EQ(run.transfer({0.5F, 0.5F, 1.2F}), 0);
    EXPECT_EQ(run.mapping.itsErrorCode, 2);
    EXPECT_EQ(run.errorText(), cloudOutsideText);
    EXPECT_EQ(value(), untouched);
}
