// Propagation of node fields to far nodes, on strips of triangles: triangle k has the nodes k, k + 1 and k + 2.
#include "MappingClass.h"
#include "TestInOwnDirectory.h"
#include "TestModels.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
constexpr const char* warning =
    "Warning: propagation is not possible for nodes located in a region\nthat is not connected to an already "
    "interpolated region.\nFields are set to zero in these regions.\n";

/// The value of a far node before, which nothing may use.
constexpr float unset = NAN;

class PropagationTest : public TestInOwnDirectory
{
protected:
    TestMesh target;
    std::vector<float> values;
    std::vector<int> flags{1};
    std::vector<FieldStruct> fields; ///< the values at nodes if empty
    MappingClass mapping;

    void addTriangle(int first, int second, int third, int matl = 0)
    {
        target.addElement(7, std::vector<int>{first, second, third}, matl);
    }

    /// Propagates to these nodes, all of which are to be mapped, in the material of their first element.
    void propagate(const std::vector<int>& farNodes)
    {
        load(farNodes);
        mapping.nodeFieldsPropagation();
    }

    void load(const std::vector<int>& farNodes)
    {
        target.nodes.resize(values.size());
        target.loadInto(mapping.itsTargetMesh);
        loadFields(mapping.itsTargetFields, fields.empty() ? std::vector{fieldRecord(atNodes, 1, values)} : fields);
        mapping.itsTargetMatlMappingFlags = flags.data();
        const int nbNodes = target.nbNodes();
        ASSERT_TRUE(mapping.itsTargetNodesFarOutside.allocate(nbNodes));
        ASSERT_TRUE(mapping.itsTargetMeshMatlIdPerNode.allocate(nbNodes));
        ASSERT_TRUE(mapping.itsTargetMeshMappingAtNode.allocate(nbNodes));
        for (int node = 0; node < nbNodes; ++node)
        {
            mapping.itsTargetNodesFarOutside[node] = 0;
            mapping.itsTargetMeshMatlIdPerNode[node] = -1;
            mapping.itsTargetMeshMappingAtNode[node] = 1;
        }
        for (int elt = target.nbElts() - 1; elt >= 0; --elt)
        {
            for (const int node : target.connectivity[static_cast<std::size_t>(elt)])
            {
                mapping.itsTargetMeshMatlIdPerNode[node] = target.matlIds[static_cast<std::size_t>(elt)];
            }
        }
        for (const int node : farNodes)
        {
            mapping.itsTargetNodesFarOutside[node] = 1;
        }
        mapping.itsNbTargetNodesFarOutside = static_cast<int>(farNodes.size());
        mapping.itsInterpoMode = propagateToFarNodes;
    }

    std::vector<int> stillFar() const
    {
        std::vector<int> nodes;
        for (int node = 0; node < target.nbNodes(); ++node)
        {
            if (mapping.itsTargetNodesFarOutside[node] == 1)
            {
                nodes.push_back(node);
            }
        }
        return nodes;
    }

    void expectSuccess() const
    {
        EXPECT_EQ(mapping.itsErrorCode, 0);
        EXPECT_EQ(mapping.itsErrorMessage, nullptr);
        EXPECT_EQ(stillFar(), std::vector<int>{});
    }

    void expectWarning() const
    {
        EXPECT_EQ(mapping.itsErrorCode, -1);
        ASSERT_NE(mapping.itsErrorMessage, nullptr);
        EXPECT_STREQ(mapping.itsErrorMessage, warning);
    }
};
} // namespace

TEST_F(PropagationTest, AFarNodeTakesTheMeanOfItsElementsFilledNodes)
{
    values = {8, 2, unset};
    addTriangle(0, 1, 2);
    propagate({2});
    EXPECT_EQ(values, (std::vector<float>{8, 2, 5}));
    expectSuccess();
}

TEST_F(PropagationTest, AllFarNodesOfAnElementTakeTheSameMean)
{
    values = {unset, 6, unset, 7};
    target.addElement(6, std::vector<int>{0, 1, 2, 3});
    propagate({0, 2});
    EXPECT_EQ(values, (std::vector<float>{6.5F, 6, 6.5F, 7}));
    expectSuccess();
}

TEST_F(PropagationTest, AFrontAdvancesThroughAllElementsThatFollowItInOrder)
{
    values = {8, 0, unset, unset, unset, unset};
    for (int k = 0; k < 4; ++k)
    {
        addTriangle(k, k + 1, k + 2);
    }
    propagate({2, 3, 4, 5});
    EXPECT_EQ(values, (std::vector<float>{8, 0, 4, 2, 3, 2.5F}));
    expectSuccess();
}

TEST_F(PropagationTest, AgainstTheOrderOfTheElementsTheFrontTakesOneSweepAfterAnother)
{
    // In the first sweep triangle (1, 2, 3) is the first one with a filled node, node 1, and gives its value to nodes 2
    // and 3. In the second one triangle (3, 4, 5) comes first, and gives it on to nodes 4 and 5.
    values = {8, 6, unset, unset, unset, unset};
    addTriangle(3, 4, 5);
    addTriangle(2, 3, 4);
    addTriangle(1, 2, 3);
    addTriangle(0, 1, 2);
    propagate({2, 3, 4, 5});
    EXPECT_EQ(values, (std::vector<float>{8, 6, 6, 6, 6, 6}));
    expectSuccess();
}

TEST_F(PropagationTest, ALongChainAgainstTheOrderIsFilledToItsEnd)
{
    // A chain of quadrilaterals, of which the last one in the order is the only one with filled nodes.
    constexpr int length = 50;
    values.assign(2 * (length + 1), unset);
    values[0] = 3;
    values[1] = 5;
    std::vector<int> farNodes;
    for (int node = 2; node < 2 * (length + 1); ++node)
    {
        farNodes.push_back(node);
    }
    for (int k = length - 1; k >= 0; --k)
    {
        target.addElement(6, std::vector<int>{2 * k, 2 * k + 1, 2 * k + 3, 2 * k + 2});
    }
    propagate(farNodes);
    std::vector<float> expected(2 * (length + 1), 4);
    expected[0] = 3;
    expected[1] = 5;
    EXPECT_EQ(values, expected);
    expectSuccess();
}

TEST_F(PropagationTest, LaterElementsDoNotChangeANodeThatIsFilled)
{
    values = {2, 2, unset, 100, 100};
    addTriangle(0, 1, 2);
    addTriangle(2, 3, 4);
    propagate({2});
    EXPECT_EQ(values[2], 2.0F);
    expectSuccess();
}

TEST_F(PropagationTest, TheFirstElementInTheOrderDecides)
{
    values = {2, 2, unset, 100, 100};
    addTriangle(2, 3, 4);
    addTriangle(0, 1, 2);
    propagate({2});
    EXPECT_EQ(values[2], 100.0F);
}

TEST_F(PropagationTest, ComponentsArePropagatedApart)
{
    std::vector<float> pairs{1, 10, 3, 30, unset, unset};
    values.resize(3);
    fields = {fieldRecord(atNodes, 2, pairs)};
    addTriangle(0, 1, 2);
    propagate({2});
    EXPECT_EQ(pairs, (std::vector<float>{1, 10, 3, 30, 2, 20}));
}

TEST_F(PropagationTest, DoublesAreNarrowedBeforeTheyAreAdded)
{
    std::vector<double> doubles{0.1, 0.3, NAN};
    values.resize(3);
    fields = {fieldRecord(atNodes, 1, doubles)};
    addTriangle(0, 1, 2);
    propagate({2});
    EXPECT_EQ(doubles[2], static_cast<double>((0.1F + 0.3F) / 2.0F));
    EXPECT_EQ(doubles[0], 0.1);
}

TEST_F(PropagationTest, OnlyFieldsAtNodesAreTouched)
{
    std::vector<float> gaussPoints{9, 9, 9};
    values = {8, 2, unset};
    fields = {fieldRecord(atGaussPoints, 1, gaussPoints), fieldRecord(atNodes, 1, values)};
    addTriangle(0, 1, 2);
    propagate({2});
    EXPECT_EQ(values[2], 5.0F);
    EXPECT_EQ(gaussPoints, (std::vector<float>{9, 9, 9}));
}

TEST_F(PropagationTest, ARestrictedFieldKeepsItsValueInClassTwoWhileTheNodeCountsAsFilled)
{
    // Triangle 0 is of class 2, triangle 1 of class 1. Triangle 0 reaches node 2 first, and clears its mark.
    target.matlStates = {4, 1};
    flags = {1, 1};
    values = {8, 2, 77, 4, unset};
    std::vector<float> everywhere = {8, 2, unset, 4, unset};
    fields = {fieldRecord(atNodes, 1, values), fieldRecord(atNodes, 1, everywhere)};
    fields[0].matlStateFlag = 1;
    addTriangle(0, 1, 2, 0);
    addTriangle(2, 3, 4, 1);
    propagate({2, 4});
    EXPECT_EQ(values, (std::vector<float>{8, 2, 77, 4, 40.5F}));
    EXPECT_EQ(everywhere, (std::vector<float>{8, 2, 5, 4, 4.5F}));
    expectSuccess();
}

TEST_F(PropagationTest, ADetachedRegionIsSetToZeroWithAWarning)
{
    values = {8, 2, unset, unset, unset, unset};
    addTriangle(0, 1, 2);
    addTriangle(3, 4, 5);
    propagate({2, 3, 4, 5});
    EXPECT_EQ(values, (std::vector<float>{8, 2, 5, 0, 0, 0}));
    expectWarning();
    EXPECT_EQ(stillFar(), (std::vector<int>{3, 4, 5}));
}

TEST_F(PropagationTest, NothingIsPropagatedThroughUnselectedMaterials)
{
    target.matlStates = {1, 1};
    flags = {1, 0};
    values = {8, 2, 3, unset, unset, unset};
    addTriangle(0, 1, 2, 0);
    addTriangle(1, 2, 3, 1);
    addTriangle(3, 4, 5, 0);
    propagate({3, 4, 5});
    EXPECT_EQ(values, (std::vector<float>{8, 2, 3, 0, 0, 0}));
    expectWarning();
}

TEST_F(PropagationTest, OnlyNodesToBeMappedAreSetToZero)
{
    values = {7, 7, 7};
    addTriangle(0, 1, 2);
    load({0, 1, 2});
    mapping.itsTargetMeshMappingAtNode[1] = 0;
    mapping.nodeFieldsPropagation();
    EXPECT_EQ(values, (std::vector<float>{0, 7, 0}));
    expectWarning();
}

TEST_F(PropagationTest, ZeroesGoToAllComponentsOfTheFieldsThatExistOnTheNodesMaterial)
{
    // Nodes 0 to 2 are of class 2, nodes 3 to 5 of class 1.
    target.matlStates = {4, 1};
    flags = {1, 1};
    values.resize(6);
    std::vector<double> pairs(12, 7);
    std::vector<float> restricted(6, 7);
    std::vector<float> gaussPoints(6, 7);
    fields = {fieldRecord(atNodes, 2, pairs), fieldRecord(atNodes, 1, restricted),
              fieldRecord(atGaussPoints, 1, gaussPoints)};
    fields[1].matlStateFlag = 1;
    addTriangle(0, 1, 2, 0);
    addTriangle(3, 4, 5, 1);
    propagate({0, 1, 2, 3, 4, 5});
    EXPECT_EQ(pairs, std::vector<double>(12, 0));
    EXPECT_EQ(restricted, (std::vector<float>{7, 7, 7, 0, 0, 0}));
    EXPECT_EQ(gaussPoints, std::vector<float>(6, 7));
    expectWarning();
}

TEST_F(PropagationTest, ElementsWithoutFarNodesChangeNothing)
{
    values = {1, 2, 3, 4, unset};
    addTriangle(0, 1, 2);
    addTriangle(1, 2, 3);
    addTriangle(2, 3, 4);
    propagate({4});
    EXPECT_EQ(values, (std::vector<float>{1, 2, 3, 4, 3.5F}));
    expectSuccess();
}
