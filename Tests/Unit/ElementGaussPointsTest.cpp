// Gauss points of every element kind: where they lie, the shape functions there, and what they give the nodes.
#include "Elements/ElementKinds.h"
#include "TestModels.h"

#include <gtest/gtest.h>

namespace
{
/// 1/sqrt(3) in single precision.
constexpr float a = 0.577350259F;

template <class Kind> NodeValues<Kind::nbNodes> shapeAtGaussPoint(std::size_t gaussPoint)
{
    NodeValues<Kind::nbNodes> values;
    Kind::shapeFunctionsAtGaussPoint(gaussPoint, values);
    return values;
}

template <class Kind> NodeValues<Kind::nbNodes> given(const NodeValues<Kind::nbGaussPoints>& gaussPointValues)
{
    NodeValues<Kind::nbNodes> nodeValues;
    Kind::gaussPointsToNodes(gaussPointValues, nodeValues);
    return nodeValues;
}
} // namespace

TEST(GaussPoints, OfTheHexahedronFollowItsNodes)
{
    const std::vector<Vector3> nodes = referenceNodes(1);
    for (std::size_t k = 0; k < 8; ++k)
    {
        EXPECT_EQ(LinearHexahedron::gaussPoints[k], (Vector3{a * nodes[k][0], a * nodes[k][1], a * nodes[k][2]})) << k;
    }
}

TEST(GaussPoints, OfTheTetrahedronIsItsCentre)
{
    EXPECT_EQ(LinearTetrahedron::gaussPoints[0], (Vector3{0.25F, 0.25F, 0.25F}));
    for (const float value : shapeAtGaussPoint<LinearTetrahedron>(0))
    {
        EXPECT_EQ(value, 0.25F);
    }
}

TEST(GaussPoints, OfTheWedgeLieOnMidEdgesInTwoLayers)
{
    const auto& points = LinearWedge::gaussPoints;
    EXPECT_EQ(points[0], (Vector3{0.5F, 0, -a}));
    EXPECT_EQ(points[1], (Vector3{0.5F, 0.5F, -a}));
    EXPECT_EQ(points[2], (Vector3{0, 0.5F, -a}));
    EXPECT_EQ(points[3], (Vector3{0.5F, 0, a}));
    EXPECT_EQ(points[4], (Vector3{0.5F, 0.5F, a}));
    EXPECT_EQ(points[5], (Vector3{0, 0.5F, a}));
}

TEST(GaussPoints, OfThePyramidLieInAnUpperAndALowerLayer)
{
    // 0.455848155988 a and 1 - 0.455848155988, 0.8774851773445 a and 1 - 0.8774851773445, each rounded once.
    const float upperSide = 0.263184041F;
    const float upperHeight = 0.544151843F;
    const float lowerSide = 0.506616294F;
    const float lowerHeight = 0.122514822F;
    const std::vector<Vector3> base = referenceNodes(12);
    for (std::size_t k = 0; k < 4; ++k)
    {
        EXPECT_EQ(LinearPyramid::gaussPoints[k], (Vector3{upperSide * base[k][0], upperSide * base[k][1], upperHeight}))
            << k;
        EXPECT_EQ(LinearPyramid::gaussPoints[k + 4],
                  (Vector3{lowerSide * base[k][0], lowerSide * base[k][1], lowerHeight}))
            << k;
    }
}

TEST(GaussPoints, OfTheQuadraticTetrahedronAreItsCentreAndOneTowardsEachCorner)
{
    constexpr float sixth = 0.166666672F;
    const std::array<std::array<float, 4>, 5> expected{{{0.25F, 0.25F, 0.25F, 0.25F},
                                                        {0.5F, sixth, sixth, sixth},
                                                        {sixth, 0.5F, sixth, sixth},
                                                        {sixth, sixth, 0.5F, sixth},
                                                        {sixth, sixth, sixth, 0.5F}}};
    EXPECT_EQ(QuadraticTetrahedron::gaussPointVolumeCoords, expected);
}

TEST(ShapeFunctionsAtGaussPoints, OfTheHexahedronDependOnTheNumberOfFacesBetween)
{
    // p^3, p^2 q, p q^2, q^3 with p = (1 + a)/2 and q = (1 - a)/2.
    const float byOppositeAxes[4] = {0.490562588F, 0.131445855F, 0.035220813F, 0.00943738874F};
    const std::vector<Vector3> nodes = referenceNodes(1);
    for (std::size_t k = 0; k < 8; ++k)
    {
        const auto values = shapeAtGaussPoint<LinearHexahedron>(k);
        for (std::size_t i = 0; i < 8; ++i)
        {
            std::size_t nbOpposite = 0;
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                nbOpposite += nodes[i][axis] != nodes[k][axis] ? 1 : 0;
            }
            EXPECT_EQ(values[i], byOppositeAxes[nbOpposite]) << "node " << i << ", Gauss point " << k;
        }
    }
}

TEST(ShapeFunctionsAtGaussPoints, OfTheWedgeAreSharedByTheTwoNodesOfTheEdge)
{
    // (1 + a)/4 in the layer of the point, (1 - a)/4 in the other.
    constexpr float near = 0.394337565F;
    constexpr float far = 0.105662435F;
    const std::size_t oppositeNode[3] = {2, 0, 1};
    for (std::size_t k = 0; k < 6; ++k)
    {
        const auto values = shapeAtGaussPoint<LinearWedge>(k);
        for (std::size_t i = 0; i < 6; ++i)
        {
            const float onEdge = i / 3 == k / 3 ? near : far;
            EXPECT_EQ(values[i], i % 3 == oppositeNode[k % 3] ? 0.0F : onEdge) << "node " << i << ", Gauss point " << k;
        }
    }
}

TEST(ShapeFunctionsAtGaussPoints, OfThePyramidDependOnTheLayerAndTheDistance)
{
    // Next to the node, beside it, across, and at the apex; per layer.
    const float expected[2][4] = {{0.26287052F, 0.0966455787F, -0.000313521217F, 0.544151843F},
                                  {0.536844432F, 0.155206278F, 0.030228164F, 0.122514822F}};
    for (std::size_t k = 0; k < 8; ++k)
    {
        const auto values = shapeAtGaussPoint<LinearPyramid>(k);
        const float* layer = expected[k / 4];
        EXPECT_EQ(values[k % 4], layer[0]) << k;
        EXPECT_EQ(values[(k + 1) % 4], layer[1]) << k;
        EXPECT_EQ(values[(k + 2) % 4], layer[2]) << k;
        EXPECT_EQ(values[(k + 3) % 4], layer[1]) << k;
        EXPECT_EQ(values[4], layer[3]) << k;
    }
}

TEST(ShapeFunctionsAtGaussPoints, OfTheQuadraticTetrahedronUseTheStoredFourthVolumeCoordinate)
{
    // One minus the other three coordinates would be 0.166666657 in the second row, and change its last digits.
    constexpr float m = -0.111111112F;
    constexpr float third = 0.333333343F;
    constexpr float ninth = 0.111111119F;
    const NodeValues<10> expected[5] = {{-0.125F, -0.125F, -0.125F, -0.125F, 0.25F, 0.25F, 0.25F, 0.25F, 0.25F, 0.25F},
                                        {0.0F, m, m, m, third, ninth, third, third, ninth, ninth},
                                        {m, 0.0F, m, m, third, third, ninth, ninth, third, ninth},
                                        {m, m, m, 0.0F, ninth, ninth, ninth, third, third, third},
                                        {m, m, 0.0F, m, ninth, third, third, ninth, ninth, third}};
    for (std::size_t k = 0; k < 5; ++k)
    {
        EXPECT_EQ(shapeAtGaussPoint<QuadraticTetrahedron>(k), expected[k]) << k;
    }
}

TEST(GaussPointsToNodes, EveryNodeOfTheHexahedronTakesItsOwnPoint)
{
    const NodeValues<8> values{1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(given<LinearHexahedron>(values), values);
}

TEST(GaussPointsToNodes, EveryNodeOfTheTetrahedronTakesTheOnePoint)
{
    EXPECT_EQ(given<LinearTetrahedron>({7}), (NodeValues<4>{7, 7, 7, 7}));
}

TEST(GaussPointsToNodes, ANodeOfTheWedgeTakesTheMeanOfTheTwoPointsOnItsEdges)
{
    EXPECT_EQ(given<LinearWedge>({1, 2, 4, 8, 16, 32}), (NodeValues<6>{2.5F, 1.5F, 3, 20, 12, 24}));
}

TEST(GaussPointsToNodes, ABaseNodeOfThePyramidTakesALowerPointAndTheApexTheMeanOfTheUpperOnes)
{
    EXPECT_EQ(given<LinearPyramid>({1, 2, 4, 8, 16, 32, 64, 128}), (NodeValues<5>{16, 32, 64, 128, 3.75F}));
}

TEST(GaussPointsToNodes, TheQuadraticTetrahedronGoesByNumber)
{
    // Centre 3, points 2 to 5 with 6, 12, 24, 48: all thirds are whole.
    EXPECT_EQ(given<QuadraticTetrahedron>({3, 6, 12, 24, 48}), (NodeValues<10>{6, 12, 24, 48, 7, 13, 11, 19, 21, 25}));
}

TEST(GaussPointsToNodes, TheLastTwoCornersOfTheQuadraticTetrahedronTakeEachOthersPoint)
{
    // Value 1 at the point next to corner 4 (the one with zeta = 1/2), which is not the one that corner 4 takes.
    const auto& coords = QuadraticTetrahedron::gaussPointVolumeCoords;
    ASSERT_EQ(coords[3][2], 0.5F);
    ASSERT_EQ(referenceNodes(10)[3][2], 1.0F);
    const auto nodeValues = given<QuadraticTetrahedron>({0, 0, 0, 1, 0});
    EXPECT_EQ(nodeValues[2], 1.0F);
    EXPECT_EQ(nodeValues[3], 0.0F);
    // The mid-edge nodes of corner 3 take it as well, those of corner 4 do not, but for the edge between the two.
    EXPECT_EQ(nodeValues[5], static_cast<float>(1.0 / 3.0));
    EXPECT_EQ(nodeValues[6], static_cast<float>(1.0 / 3.0));
    EXPECT_EQ(nodeValues[7], 0.0F);
    EXPECT_EQ(nodeValues[8], 0.0F);
    EXPECT_EQ(nodeValues[9], static_cast<float>(1.0 / 3.0));
}

TEST(GaussPointsToNodes, SumsInSinglePrecisionBeforeItDivides)
{
    // (2^24 + 1) + 1 stays 2^24 in single precision.
    const float big = 16777216.0F;
    EXPECT_EQ(given<QuadraticTetrahedron>({1, big, 1, 0, 0})[4], static_cast<float>(16777216.0 / 3.0));
    EXPECT_EQ(given<LinearPyramid>({big, 1, 1, 0, 0, 0, 0, 0})[4], 4194304.0F);
}
