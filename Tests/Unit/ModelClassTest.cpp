#include "ModelClass.h"
#include "AllocationFailure.h"
#include "ProcessEnd.h"
#include "TestModels.h"

#include <gtest/gtest.h>

TEST(ModelClass, IsEmptyUntilItIsSetUp)
{
    const ModelClass model;
    EXPECT_EQ(model.itsNbElts, 0);
    EXPECT_EQ(model.itsNbNodes, 0);
    EXPECT_EQ(model.itsNbMatls, 0);
    EXPECT_EQ(model.itsNodeCoords, nullptr);
    EXPECT_EQ(model.itsConnectivity, nullptr);
    EXPECT_EQ(model.itsEltTypes, nullptr);
    EXPECT_EQ(model.itsMatlIdPerItem, nullptr);
    EXPECT_EQ(model.itsMatlStates, nullptr);
    EXPECT_FALSE(model.itsMatlStateClasses);
    EXPECT_FALSE(model.itsEltNbPerNode);
}

TEST(ModelClass, BorrowsTheHostsArrays)
{
    const float coords[1][3] = {{1, 2, 3}};
    const int nodeNumbers[] = {0};
    const int* const connectivity[] = {nodeNumbers};
    const int types[] = {9};
    const int matlIds[] = {1};
    const int matlStates[] = {5, 3};
    ModelClass model;
    model.init(ModelKind::mesh, 1, 1, coords, connectivity, types, 2, matlIds, matlStates);
    EXPECT_EQ(model.itsKind, ModelKind::mesh);
    EXPECT_EQ(model.itsNbElts, 1);
    EXPECT_EQ(model.itsNbNodes, 1);
    EXPECT_EQ(model.itsNodeCoords, coords);
    EXPECT_EQ(model.itsConnectivity, connectivity);
    EXPECT_EQ(model.itsEltTypes, types);
    EXPECT_EQ(model.itsNbMatls, 2);
    EXPECT_EQ(model.itsMatlIdPerItem, matlIds);
    EXPECT_EQ(model.itsMatlStates, matlStates);
    EXPECT_EQ(model.nodePosition(0), (Vector3{1, 2, 3}));
}

TEST(ModelClass, SortsMaterialStatesIntoTwoClasses)
{
    TestMesh mesh;
    mesh.matlStates = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, -1, 1000, -2147483647 - 1};
    const int expected[] = {2, 1, 1, 1, 2, 2, 2, 1, 1, 2, 2, 2, 2};
    ModelClass model;
    mesh.loadInto(model);
    for (std::size_t i = 0; i < mesh.matlStates.size(); ++i)
    {
        EXPECT_EQ(model.itsMatlStateClasses[static_cast<std::int64_t>(i)], expected[i]) << mesh.matlStates[i];
    }
}

TEST(ModelClass, KnowsStateAndClassOfAnItemsMaterial)
{
    TestMesh mesh;
    mesh.matlStates = {4, 8};
    mesh.addBox({0, 0, 0}, {1, 1, 1}, 1);
    mesh.addBox({1, 0, 0}, {2, 1, 1}, 0);
    ModelClass model;
    mesh.loadInto(model);
    EXPECT_EQ(model.matlStateOfItem(0), 8);
    EXPECT_EQ(model.matlStateClassOfItem(0), 1);
    EXPECT_EQ(model.matlStateOfItem(1), 4);
    EXPECT_EQ(model.matlStateClassOfItem(1), 2);
}

TEST(ModelClass, APointCloudHasAMaterialPerPointAndNoElements)
{
    TestMesh cloud;
    cloud.matlStates = {0, 7};
    cloud.addPoint({1, 1, 1}, 1);
    cloud.addPoint({2, 2, 2}, 0);
    ModelClass model;
    cloud.loadCloudInto(model);
    EXPECT_EQ(model.itsKind, ModelKind::pointCloud);
    EXPECT_EQ(model.itsNbElts, 0);
    EXPECT_EQ(model.itsNbNodes, 2);
    EXPECT_EQ(model.itsConnectivity, nullptr);
    EXPECT_EQ(model.matlStateOfItem(0), 7);
    EXPECT_EQ(model.matlStateClassOfItem(1), 2);
}

TEST(ModelClass, AMeshWithoutMaterialsEndsTheProcess)
{
    TestMesh mesh;
    mesh.matlStates.clear();
    ModelClass model;
    EXPECT_PROCESS_END(mesh.loadInto(model), "Error in ModelClass file at line 76: no material in this model \n");
}

TEST(ModelClass, APointCloudWithoutMaterialsEndsTheProcess)
{
    TestMesh cloud;
    cloud.matlStates.clear();
    ModelClass model;
    EXPECT_PROCESS_END(cloud.loadCloudInto(model), "Error in ModelClass file at line 76: no material in this model \n");
}

TEST(ModelClass, AFailedAllocationOfTheStateClassesEndsTheProcess)
{
    const float coords[1][3] = {{0, 0, 0}};
    const int none[] = {0};
    const int* const connectivity[] = {none};
    EXPECT_EQ(
        outcomesOfFailedRequests(
            [&]
            {
                ModelClass model;
                model.init(ModelKind::mesh, 0, 1, coords, connectivity, none, 1, none, none);
            }),
        std::vector<std::string>{"Error in ModelClass file at line 84: impossible to allocate an integer table \n"});
}

TEST(ModelClass, CountsTheElementsOfEachNode)
{
    // Node 5 belongs to three elements, node 6 to none; the last element has one node twice.
    TestMesh mesh;
    mesh.nodes.resize(8);
    mesh.addElement(2, std::vector<int>{0, 1, 2, 5});
    mesh.addElement(7, std::vector<int>{5, 2, 3});
    mesh.addElement(9, std::vector<int>{5, 4});
    mesh.addElement(9, std::vector<int>{7, 7});
    ModelClass model;
    mesh.loadInto(model);
    model.countEltsPerNode();
    const int expected[] = {1, 1, 2, 1, 1, 3, 0, 2};
    for (int node = 0; node < 8; ++node)
    {
        EXPECT_EQ(model.itsEltNbPerNode[node], expected[node]) << node;
    }
}

TEST(ModelClass, CountsOnlyTheNodesThatATypeHas)
{
    TestMesh mesh;
    mesh.nodes.resize(4);
    mesh.addElement(7, std::vector<int>{0, 1, 2, 3});
    ModelClass model;
    mesh.loadInto(model);
    model.countEltsPerNode();
    EXPECT_EQ(model.itsEltNbPerNode[2], 1);
    EXPECT_EQ(model.itsEltNbPerNode[3], 0);
}

TEST(ModelClass, CountingTwiceEndsTheProcess)
{
    TestMesh mesh;
    mesh.addBox({0, 0, 0}, {1, 1, 1});
    ModelClass model;
    mesh.loadInto(model);
    model.countEltsPerNode();
    EXPECT_PROCESS_END(model.countEltsPerNode(),
                       "Error in ModelClass file at line 119: itsEltNbPerNode already calculated.\n");
}

TEST(ModelClass, AFailedAllocationOfTheCountsEndsTheProcess)
{
    TestMesh mesh;
    mesh.addBox({0, 0, 0}, {1, 1, 1});
    ModelClass model;
    mesh.loadInto(model);
    EXPECT_EQ(
        outcomesOfFailedRequests([&] { model.countEltsPerNode(); }),
        std::vector<std::string>{"Error in ModelClass file at line 127: impossible to allocate itsEltNbPerNode \n"});
}

TEST(ModelClass, GivesBackItsTablesAndNothingElse)
{
    TestMesh mesh;
    mesh.addBox({0, 0, 0}, {1, 1, 1});
    ModelClass unused;
    mesh.loadInto(unused);
    const std::int64_t before = nbLiveAllocations();
    {
        ModelClass model;
        mesh.loadInto(model);
        model.countEltsPerNode();
    }
    EXPECT_EQ(nbLiveAllocations(), before);
    EXPECT_EQ(unused.nodePosition(6), (Vector3{1, 1, 1}));
}

TEST(ModelClass, PlacesGaussPointsByTheShapeFunctions)
{
    TestMesh mesh;
    mesh.addBox({10, 20, 30}, {12, 24, 38});
    mesh.addElement(2, {{0, 0, 0}, {4, 0, 0}, {0, 8, 0}, {0, 0, 16}});
    ModelClass model;
    mesh.loadInto(model);
    // The third Gauss point of the hexahedron at (a, a, -a), a = 1/sqrt(3), of a box with half sides 1, 2 and 4.
    const Vector3 third = model.gaussPointPosition(0, 2);
    EXPECT_NEAR(third[0], 11.5773503F, 2e-6F);
    EXPECT_NEAR(third[1], 23.1547005F, 4e-6F);
    EXPECT_NEAR(third[2], 31.6905989F, 4e-6F);
    EXPECT_EQ(model.gaussPointPosition(1, 0), (Vector3{1, 2, 4}));
}

TEST(ModelClass, PlacesGaussPointsOfEveryKindWhereTheReferenceElementHasThem)
{
    // An element that is its own reference domain.
    const float a = 0.577350259F;
    const Vector3 lastPoints[] = {{-a, a, a},
                                  {0.25F, 0.25F, 0.25F},
                                  {0, 0.5F, a},
                                  {1.0F / 6.0F, 1.0F / 6.0F, 1.0F / 6.0F},
                                  {-0.506616294F, 0.506616294F, 0.122514822F}};
    for (std::size_t i = 0; i < typesWithShapeFunctions.size(); ++i)
    {
        const int type = typesWithShapeFunctions[i];
        TestMesh mesh;
        mesh.addElement(type, referenceNodes(type));
        ModelClass model;
        mesh.loadInto(model);
        const Vector3 position = model.gaussPointPosition(0, model.nbGaussPointsOfElt(0) - 1);
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            EXPECT_NEAR(position[axis], lastPoints[i][axis], 1e-7F) << "type " << type << ", axis " << axis;
        }
    }
}

TEST(ModelClass, GaussPointsOfTypesWithoutShapeFunctionsLieAtTheOrigin)
{
    TestMesh mesh;
    mesh.addElement(6, {{1, 1, 1}, {2, 1, 1}, {2, 2, 1}, {1, 2, 1}});
    ModelClass model;
    mesh.loadInto(model);
    EXPECT_EQ(model.gaussPointPosition(0, 3), (Vector3{0, 0, 0}));
}
