#include "TestModels.h"

#include <gtest/gtest.h>

#include <limits>

TEST(BoundingBox, OfAPointIsThePoint)
{
    const float point[3] = {1, 2, 3};
    const Box box = boxOfPoint(point);
    EXPECT_EQ(box.low, (Vector3{1, 2, 3}));
    EXPECT_EQ(box.high, (Vector3{1, 2, 3}));
    EXPECT_EQ(box.extents(), (Vector3{0, 0, 0}));
}

TEST(BoundingBox, GrowsToHoldAPointOnEachAxisByItself)
{
    const float first[3] = {1, 2, 3};
    const float second[3] = {0, 5, 3};
    Box box = boxOfPoint(first);
    box.add(second);
    EXPECT_EQ(box.low, (Vector3{0, 2, 3}));
    EXPECT_EQ(box.high, (Vector3{1, 5, 3}));
    EXPECT_EQ(box.extents(), (Vector3{1, 3, 0}));
}

TEST(BoundingBox, IsInflatedOnBothSidesOfAnAxis)
{
    Box box{{0, 0, 0}, {1, 1, 1}};
    box.inflate({0.5F, 1, 2});
    EXPECT_EQ(box.low, (Vector3{-0.5F, -1, -2}));
    EXPECT_EQ(box.high, (Vector3{1.5F, 2, 3}));
}

TEST(BoundingBox, OfAnElementHoldsItsNodesAndNoOthers)
{
    TestMesh mesh;
    mesh.addElement(2, {{9, 9, 9}, {9, 10, 9}, {9, 9, 10}, {10, 9, 9}});
    mesh.addElement(2, {{2, 0, 1}, {3, -1, 1}, {2, 4, 1}, {2, 0, 7}});
    ModelClass model;
    mesh.loadInto(model);
    const Box box = boxOf(boxLanesOfElt(model, 1));
    EXPECT_EQ(box.low, (Vector3{2, -1, 1}));
    EXPECT_EQ(box.high, (Vector3{3, 4, 7}));
}

TEST(BoundingBox, OfATypeWithoutNodesIsWhereNoPointIs)
{
    TestMesh mesh;
    mesh.addElement(0, std::vector<int>{});
    ModelClass model;
    mesh.loadInto(model);
    const Box box = boxOf(boxLanesOfElt(model, 0));
    EXPECT_EQ(box.extents(), (Vector3{0, 0, 0}));
    for (const float corner : box.low)
    {
        EXPECT_EQ(corner, std::numeric_limits<float>::max());
    }
}

TEST(BoundingBox, ATableHoldsTheLowCornerBeforeTheHighOne)
{
    BoxTable table;
    fillBoxTable(table, {{{0, 1, 2}, {3, 4, 5}}, {{10, 11, 12}, {13, 14, 15}}});
    EXPECT_EQ(table[1][0][2], 12.0F);
    EXPECT_EQ(table[1][1][0], 13.0F);
    EXPECT_EQ(boxValues(table, 1)[5], 15.0F);
    EXPECT_EQ(boxOfElement(table, 1).low, (Vector3{10, 11, 12}));
    EXPECT_EQ(boxOfElement(table, 1).high, (Vector3{13, 14, 15}));
}

TEST(RunningBox, IsEmptyUntilItIsGivenABox)
{
    RunningBox running;
    EXPECT_TRUE(running.isEmpty());
    running.add({{5, 5, 5}, {6, 6, 6}});
    EXPECT_FALSE(running.isEmpty());
    // The first box replaces the empty one, which is not a box at the origin.
    EXPECT_EQ(running.box().low, (Vector3{5, 5, 5}));
    running.add({{4, 5.5F, 7}, {5, 5.5F, 8}});
    EXPECT_EQ(running.box().low, (Vector3{4, 5, 5}));
    EXPECT_EQ(running.box().high, (Vector3{6, 6, 8}));
}
