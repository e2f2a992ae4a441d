// The location of many points at once, which must say the same as the search for each of them.
#include "PointLocator.h"
#include "TestModels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <random>
#include <stdexcept>
#include <vector>

namespace
{
/// A block of cubes, each cut into tetrahedra or wedges or left as it is, with a grid around it.
class Block
{
public:
    explicit Block(int side, float bucketSize, int nbMatlStates) : itsSide(side)
    {
        itsMesh.matlStates.clear();
        for (int i = 0; i < nbMatlStates; ++i)
        {
            itsMesh.matlStates.push_back(i);
        }
        for (int i = 0; i < side * side * side; ++i)
        {
            addCube(i);
        }
        itsMesh.loadInto(itsModel);
        fillBoxTable(itsBoxes, itsMesh.boxes(0.01F));
        buildGrid(bucketSize);
    }

    const ModelClass& model() const { return itsModel; }
    const BoxTable& boxes() const { return itsBoxes; }
    const BucketSpaceClass& grid() const { return itsGrid; }

private:
    void addCube(int number)
    {
        const std::array<int, 3> index{number % itsSide, number / itsSide % itsSide, number / (itsSide * itsSide)};
        const Vector3 low{static_cast<float>(index[0]), static_cast<float>(index[1]), static_cast<float>(index[2])};
        const std::vector<Vector3> c = cornersOf(low, {low[0] + 1, low[1] + 1, low[2] + 1});
        const int matl = number % static_cast<int>(itsMesh.matlStates.size());
        switch (number % 3)
        {
        case 0: itsMesh.addElement(1, c, matl); break;
        case 1:
            itsMesh.addElement(3, {c[0], c[1], c[2], c[4], c[5], c[6]}, matl);
            itsMesh.addElement(3, {c[0], c[2], c[3], c[4], c[6], c[7]}, matl);
            break;
        default:
            itsMesh.addElement(2, {c[0], c[1], c[3], c[4]}, matl);
            itsMesh.addElement(2, {c[1], c[2], c[3], c[6]}, matl);
            itsMesh.addElement(2, {c[1], c[4], c[5], c[6]}, matl);
            itsMesh.addElement(2, {c[3], c[4], c[6], c[7]}, matl);
            itsMesh.addElement(2, {c[1], c[3], c[4], c[6]}, matl);
        }
    }

    void buildGrid(float bucketSize)
    {
        TestMesh cloud;
        for (const auto& node : itsMesh.nodes)
        {
            cloud.addPoint({node[0] + 0.5F, node[1] + 0.5F, node[2] + 0.5F});
            cloud.addPoint(node);
        }
        ModelClass target;
        cloud.loadCloudInto(target);
        const int flag = 1;
        if (itsGrid.build(0, target, itsModel, itsBoxes, {}, &flag, bucketSize, 0.0F, 0.0F) != nullptr)
        {
            throw std::runtime_error("no grid");
        }
    }

    int itsSide;
    TestMesh itsMesh;
    ModelClass itsModel;
    BoxTable itsBoxes;
    BucketSpaceClass itsGrid;
};

/// Points in and around a block, in an order that jumps about or along x.
std::vector<TargetPoint> points(int count, int side, int nbMatlStates, bool isJumping)
{
    std::mt19937 random(1);
    std::vector<TargetPoint> result;
    for (int i = 0; i < count; ++i)
    {
        Vector3 position;
        for (float& coordinate : position)
        {
            coordinate = single(-0.5 + (side + 1.0) * static_cast<double>(random()) / 4294967296.0);
            // Many points lie on faces between elements.
            coordinate = i % 3 == 0 ? std::round(2.0F * coordinate) / 2.0F : coordinate;
        }
        result.push_back({i, position, 1, static_cast<int>(random() % static_cast<unsigned>(nbMatlStates))});
    }
    if (!isJumping)
    {
        std::sort(result.begin(), result.end(),
                  [](const TargetPoint& a, const TargetPoint& b) { return a.position < b.position; });
    }
    return result;
}

void expectSameAsSearch(const PointLocator& locator, const std::vector<TargetPoint>& targets)
{
    std::vector<LocatedPoint> located(targets.size());
    std::vector<PointLocator::BatchOrder> order(targets.size());
    locator.locate(targets, located, order);
    int nbFound = 0;
    for (std::size_t i = 0; i < targets.size(); ++i)
    {
        const LocatedPoint expected = locator.search(targets[i].position, targets[i].matlState);
        ASSERT_EQ(located[i].elt, expected.elt) << i;
        ASSERT_EQ(located[i].nbIterations, expected.nbIterations) << i;
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            ASSERT_EQ(std::bit_cast<std::uint32_t>(located[i].referenceCoords[axis]),
                      std::bit_cast<std::uint32_t>(expected.referenceCoords[axis]))
                << i;
        }
        ASSERT_FALSE(located[i].isNearMiss || located[i].isSingular);
        nbFound += expected.elt == -1 ? 0 : 1;
    }
    EXPECT_GT(nbFound, static_cast<int>(targets.size()) / 20);
    EXPECT_LT(nbFound, static_cast<int>(targets.size()));
}
} // namespace

TEST(PointLocator, FindsManyPointsAsItFindsOne)
{
    const int side = 12;
    for (const float bucketSize : {0.5F, 1.3F, 100.0F})
    {
        for (const int nbMatlStates : {1, 3})
        {
            const Block block(side, bucketSize, nbMatlStates);
            const PointLocator locator(block.model(), block.boxes(), block.grid(), 0.001F);
            for (const bool isJumping : {true, false})
            {
                expectSameAsSearch(locator, points(1500, side, nbMatlStates, isJumping));
            }
        }
    }
}

TEST(PointLocator, FindsAWholeBatch)
{
    const Block block(8, 0.4F, 2);
    const PointLocator locator(block.model(), block.boxes(), block.grid(), 0.001F);
    expectSameAsSearch(locator, points(PointLocator::batchCapacity, 8, 2, true));
}

TEST(PointLocator, FindsNothingOfAStateThatTheSourceDoesNotHave)
{
    const Block block(2, 1.0F, 1);
    const PointLocator locator(block.model(), block.boxes(), block.grid(), 0.001F);
    const std::vector<TargetPoint> targets{{0, {0.5F, 0.5F, 0.5F}, 1, 7}, {1, {0.5F, 0.5F, 0.5F}, 1, 0}};
    std::vector<LocatedPoint> located(2);
    std::vector<PointLocator::BatchOrder> order(2);
    locator.locate(targets, located, order);
    EXPECT_EQ(located[0].elt, -1);
    EXPECT_EQ(located[1].elt, 0);
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
    ModelClass model;
    mesh.loadInto(model);
    BoxTable boxes;
    fillBoxTable(boxes, mesh.boxes(0.01F));
    TestMesh cloud;
    cloud.addPoint({0.75F, 0.75F, 0.75F});
    ModelClass target;
    cloud.loadCloudInto(target);
    const int flag = 1;
    BucketSpaceClass grid;
    ASSERT_EQ(grid.build(0, target, model, boxes, {}, &flag, 10.0F, 0.0F, 0.0F), nullptr);
    const PointLocator locator(model, boxes, grid, 0.001F);
    const std::vector<TargetPoint> targets{{0, {0.75F, 0.75F, 0.75F}, 1, 1}};
    std::vector<LocatedPoint> located(1);
    std::vector<PointLocator::BatchOrder> order(1);
    locator.locate(targets, located, order);
    EXPECT_EQ(located[0].elt, 100);
    EXPECT_EQ(located[0].nbIterations, 1);
}

TEST(PointLocator, NotesASingularElementInsteadOfEndingTheProcess)
{
    // A flat hexahedron in a box that is not flat.
    TestMesh mesh;
    mesh.addBox({0, 0, 0.5F}, {1, 1, 0.5F});
    ModelClass model;
    mesh.loadInto(model);
    BoxTable boxes;
    fillBoxTable(boxes, {{{0, 0, 0}, {1, 1, 1}}});
    TestMesh cloud;
    cloud.addPoint({0.5F, 0.5F, 0.5F});
    ModelClass target;
    cloud.loadCloudInto(target);
    const int flag = 1;
    BucketSpaceClass grid;
    ASSERT_EQ(grid.build(0, target, model, boxes, {}, &flag, 10.0F, 0.0F, 0.0F), nullptr);
    const PointLocator locator(model, boxes, grid, 0.001F);
    const std::vector<TargetPoint> targets{{0, {0.5F, 0.5F, 0.75F}, 1, 1}};
    std::vector<LocatedPoint> located(1);
    std::vector<PointLocator::BatchOrder> order(1);
    locator.locate(targets, located, order);
    EXPECT_TRUE(located[0].isSingular);
    EXPECT_EQ(located[0].elt, -1);
}
