// The location of points in batches, on models small enough to be worked out by hand.
#include "Search/PointLocator.h"
#include "TestModels.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

namespace
{
/// Locates points in a mesh whose elements are all listed in one bucket.
std::vector<LocatedPoint> locate(TestMesh& mesh, const std::vector<Box>& elementBoxes,
                                 const std::vector<TargetPoint>& targets)
{
    ModelClass model;
    mesh.loadInto(model);
    BoxTable boxes;
    fillBoxTable(boxes, elementBoxes);
    TestMesh cloud;
    cloud.addPoint({0.5F, 0.5F, 0.5F});
    ModelClass target;
    cloud.loadCloudInto(target);
    const int flag = 1;
    BucketSpaceClass grid;
    if (grid.build(BucketSpaceClass::elementBuckets, target, model, boxes, {}, &flag, 10.0F, 0.0F, 0.0F) != nullptr)
    {
        throw std::runtime_error("no grid");
    }
    const PointLocator locator(model, boxes, grid, 0.001F);
    std::vector<LocatedPoint> located(targets.size());
    std::vector<BatchEntry> order(2 * targets.size());
    locator.locate(targets, located, order);
    return located;
}
} // namespace

TEST(PointLocator, FindsEachPointOfABatchInItsElement)
{
    TestMesh mesh;
    mesh.addBox({0, 0, 0}, {1, 1, 1});
    mesh.addBox({1, 0, 0}, {2, 1, 1});
    const auto located = locate(mesh, mesh.boxes(0.01F),
                                {{0, {1.75F, 0.5F, 0.5F}, 1, 1},
                                 {1, {0.25F, 0.5F, 0.5F}, 1, 1},
                                 {2, {1, 0.5F, 0.5F}, 1, 1},
                                 {3, {2.5F, 0.5F, 0.5F}, 1, 1}});
    EXPECT_EQ(located[0].elt, 1);
    EXPECT_EQ(located[0].nbIterations, 1);
    EXPECT_NEAR(located[0].referenceCoords[0], 0.5F, 1e-5F);
    EXPECT_EQ(located[1].elt, 0);
    EXPECT_EQ(located[2].elt, 0);
    EXPECT_EQ(located[3].elt, -1);
    EXPECT_EQ(located[3].nbIterations, 0);
}

TEST(PointLocator, FindsNothingOfAStateThatTheSourceDoesNotHave)
{
    for (const std::vector<int>& matlStates : {std::vector<int>{1}, std::vector<int>{1, 2}})
    {
        TestMesh mesh;
        mesh.matlStates = matlStates;
        mesh.addBox({0, 0, 0}, {1, 1, 1});
        const auto located =
            locate(mesh, mesh.boxes(0.01F), {{0, {0.5F, 0.5F, 0.5F}, 1, 7}, {1, {0.5F, 0.5F, 0.5F}, 1, 1}});
        EXPECT_EQ(located[0].elt, -1);
        EXPECT_EQ(located[1].elt, 0);
    }
}

TEST(PointLocator, TestsAllElementsOfALongList)
{
    // A hundred tetrahedra whose boxes hold the point, and which all refuse it, before the one that holds it.
    TestMesh mesh;
    for (int i = 0; i < 100; ++i)
    {
        mesh.addElement(2, referenceNodes(2));
    }
    mesh.addElement(2, {{1, 1, 1}, {0, 1, 1}, {1, 0, 1}, {1, 1, 0}});
    const auto located = locate(mesh, mesh.boxes(0.01F), {{0, {0.75F, 0.75F, 0.75F}, 1, 1}});
    EXPECT_EQ(located[0].elt, 100);
    EXPECT_EQ(located[0].nbIterations, 1);
}

TEST(PointLocator, NotesASingularElementInsteadOfEndingTheProcess)
{
    // A flat hexahedron in a box that is not flat.
    TestMesh mesh;
    mesh.addBox({0, 0, 0.5F}, {1, 1, 0.5F});
    const auto located = locate(mesh, {{{0, 0, 0}, {1, 1, 1}}}, {{0, {0.5F, 0.5F, 0.75F}, 1, 1}});
    EXPECT_TRUE(located[0].isSingular);
    EXPECT_EQ(located[0].elt, -1);
}
