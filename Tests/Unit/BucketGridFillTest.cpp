// Which buckets the target needs, what the source puts into them, and how the grid keeps it.
#include "AllocationFailure.h"
#include "GridBuild.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace
{
/// A grid of element buckets that has buckets of every state: points in buckets 0, 1, 2, 4 and 8 of a row of nine.
void addEveryState(GridBuild& build)
{
    for (const float x : {0.0F, 1.5F, 2.5F, 4.0F, 8.0F})
    {
        build.addTargetPoint(x);
    }
    build.addSource(1.25F, 1.75F); // widened by half: 1 to 2
    build.addSource(3.25F, 3.75F); // widened by half: 3 to 4
    build.addSource(20, 21);
    build.bucketFactor = 0.5F;
}

std::vector<std::string> tableTexts(int itemInGridLine)
{
    std::vector<std::string> texts;
    const auto add = [&](int line, const char* what)
    {
        texts.push_back("Error in BucketSpaceClass file at line " + std::to_string(line) + ": impossible to allocate " +
                        what + " \n");
    };
    add(307, "an int**");
    add(315, "an int*");
    add(328, "an int");
    add(482, "an BucketClass**");
    add(490, "an BucketClass*");
    add(502, "a BucketClass");
    add(992, "int");
    add(itemInGridLine, "int");
    return texts;
}
} // namespace

TEST(BucketStates, TellNeededBucketsAndWhatFilledThem)
{
    GridBuild build;
    addEveryState(build);
    ASSERT_EQ(build.build(), "(null)");
    // Element 0 lies in bucket 1 and, widened, reaches bucket 2. Element 1 lies in bucket 3, which is not needed, and
    // reaches bucket 4.
    EXPECT_EQ(build.states(), (std::vector<int>{0, 1, 2, -1, 2, -1, -1, -1, 0}));
    EXPECT_EQ(build.items(0), std::vector<int>{});
    EXPECT_EQ(build.items(1), std::vector<int>{0});
    EXPECT_EQ(build.items(2), std::vector<int>{0});
    EXPECT_EQ(build.items(3), std::vector<int>{});
    EXPECT_EQ(build.items(4), std::vector<int>{1});
    EXPECT_EQ(build.items(8), std::vector<int>{});
    EXPECT_EQ(build.grid.itsNbEntries, 3);
    // Element 1 is only in a bucket that its widened box reaches, element 2 in none.
    EXPECT_EQ(build.itemsInGrid(), (std::vector<int>{1, 1, 0}));
}

TEST(BucketStates, AnEmptyNeededBucketCollectsEveryElementWhoseWidenedBoxReachesIt)
{
    GridBuild build;
    build.addTargetPoint(0.5F);
    build.addTargetPoint(2);
    build.addTargetPoint(4);
    // Buckets from 0.5 on: 0.5 to 1.5, 1.5 to 2.5, ...
    build.addSource(2.75F, 3.25F);
    build.addSource(0.5F, 1.25F);
    build.addSource(2.625F, 3.375F);
    build.bucketFactor = 1;
    ASSERT_EQ(build.build(), "(null)");
    EXPECT_EQ(build.states(), (std::vector<int>{1, 2, -1, 2}));
    EXPECT_EQ(build.items(1), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(build.items(3), (std::vector<int>{0, 2}));
}

TEST(BucketStates, TheWidenedPassLeavesFilledBucketsAlone)
{
    GridBuild build;
    build.addTargetPoint(0);
    build.addTargetPoint(1.5F);
    build.addSource(0.25F, 0.75F);
    build.addSource(1.25F, 1.75F);
    build.bucketFactor = 4;
    ASSERT_EQ(build.build(), "(null)");
    EXPECT_EQ(build.states(), (std::vector<int>{1, 1}));
    EXPECT_EQ(build.items(0), std::vector<int>{0});
    EXPECT_EQ(build.items(1), std::vector<int>{1});
}

TEST(BucketStates, AnElementIsWidenedByItsOwnExtentOnEachAxis)
{
    // 4 long and half a unit wide: by half, from 2.25 ... 6.25 to 0.25 ... 8.25, and from 1.25 ... 1.75 to 1 ... 2.
    GridBuild build;
    build.target.addPoint({0, 0, 0});
    build.target.addPoint({9, 9, 0});
    const Vector3 reached[] = {{8.5F, 1.5F, 0}, {0.5F, 1.5F, 0}, {4.5F, 2.5F, 0}};
    const Vector3 notReached[] = {{9.5F, 1.5F, 0}, {4.5F, 0.5F, 0}, {4.5F, 3.5F, 0}};
    for (std::size_t i = 0; i < 3; ++i)
    {
        build.target.addPoint(reached[i]);
        build.target.addPoint(notReached[i]);
    }
    build.source.addBox({2.25F, 1.25F, -1}, {6.25F, 1.75F, 1});
    build.bucketFactor = 0.5F;
    ASSERT_EQ(build.build(), "(null)");
    for (std::size_t i = 0; i < 3; ++i)
    {
        EXPECT_EQ(build.grid.state(build.grid.bucketOfPoint(reached[i])), filledByEnlarged) << i;
        EXPECT_EQ(build.grid.state(build.grid.bucketOfPoint(notReached[i])), neededEmpty) << i;
    }
}

TEST(BucketStates, UnselectedTargetsNeedTheirBucketsToo)
{
    GridBuild build;
    build.target.matlStates = {1, 1};
    build.flags = {1, 0};
    build.addTargetPoint(0, 0);
    build.addTargetPoint(4, 0);
    build.addTargetPoint(2.5F, 1);
    build.addTargetPoint(7, 1);
    build.addSource(-1, 9);
    ASSERT_EQ(build.build(), "(null)");
    EXPECT_EQ(build.states(), (std::vector<int>{1, -1, 1, -1, 1}));
}

TEST(BucketStates, ATargetMeshNeedsTheBucketsOfItsElementBoxes)
{
    GridBuild build;
    build.targetKind = ModelKind::mesh;
    build.target.matlStates = {1, 1};
    build.flags = {1, 0};
    build.target.addBox({0, 0, 0}, {5.5F, 0.5F, 0.5F}, 0);
    build.target.addBox({3, 0, 0}, {4, 0.5F, 0.5F}, 1);
    build.source.addBox({-10, -10, -10}, {20, 20, 20});
    // The boxes as they are given, of the element that is not selected too.
    build.targetBoxes = {{{0.25F, 0, 0}, {1.5F, 0.5F, 0.5F}}, {{3.5F, 0, 0}, {3.75F, 0.5F, 0.5F}}};
    ASSERT_EQ(build.build(), "(null)");
    EXPECT_EQ(build.states(), (std::vector<int>{1, 1, -1, 1, -1, -1}));
}

TEST(BucketStates, APointNeedsTheBucketsWithinItsReach)
{
    // A quarter of the bucket size to both sides; the grid goes a quarter of 6 beyond the first and the last point.
    GridBuild build;
    build.boxMarginRatio = 0.25F;
    build.addTargetPoint(0);
    build.addTargetPoint(2.625F); // 4.125 from the beginning
    build.addTargetPoint(6);
    ASSERT_EQ(build.build(), "(null)");
    ASSERT_EQ(build.grid.itsMin[0], -1.5F);
    EXPECT_EQ(build.states(), (std::vector<int>{-1, 0, -1, 0, 0, -1, -1, 0, -1, -1}));
}

TEST(BucketStates, TheReachOfAPointFollowsTheDoubledSize)
{
    // The grid goes from -1 to 5; doubled once, its buckets begin at -1, 1, 3 and 5. Half a length unit below 3.25 is
    // the bucket at 1, a quarter is not.
    GridBuild build;
    build.boxMarginRatio = 0.25F;
    build.grid.itsMaxNbBuckets = 4;
    build.addTargetPoint(0);
    build.addTargetPoint(4);
    build.addTargetPoint(3.25F);
    ASSERT_EQ(build.build(), "(null)");
    ASSERT_EQ(build.grid.itsBucketSize, 2.0F);
    EXPECT_EQ(build.states(), (std::vector<int>{0, 0, 0, -1}));
}

TEST(BucketRanges, ABoxTouchesTheBucketsFromItsLowToItsHighEnd)
{
    GridBuild build;
    for (const float x : {0.0F, 1.0F, 2.0F, 3.0F, 4.0F})
    {
        build.addTargetPoint(x);
    }
    build.addSource(1, 3);
    build.addSource(1.5F, 2.75F);
    build.addSource(-7, 0);
    build.addSource(4.75F, 30);
    ASSERT_EQ(build.build(), "(null)");
    EXPECT_EQ(build.items(0), std::vector<int>{2});
    EXPECT_EQ(build.items(1), (std::vector<int>{0, 1}));
    EXPECT_EQ(build.items(2), (std::vector<int>{0, 1}));
    EXPECT_EQ(build.items(3), std::vector<int>{0});
    EXPECT_EQ(build.items(4), std::vector<int>{3});
}

TEST(BucketRanges, ABoxOutsideTheGridTouchesNothing)
{
    // Unlike a point, a box that ends less than a bucket below the grid is outside; so is one that ends a whole number
    // of buckets below, and one that begins where the last bucket ends.
    GridBuild build;
    build.addTargetPoint(0);
    build.addTargetPoint(4);
    build.addSource(-2, -0.25F);
    build.addSource(-3, -1);
    build.addSource(5, 6);
    build.source.addBox({0, 1, -0.5F}, {4, 2, 0.5F});
    ASSERT_EQ(build.build(), "(null)");
    EXPECT_EQ(build.grid.itsNbEntries, 0);
    EXPECT_EQ(build.itemsInGrid(), (std::vector<int>{0, 0, 0, 0}));
    EXPECT_EQ(build.states(), (std::vector<int>{0, -1, -1, -1, 0}));
}

TEST(BucketRanges, ABoxThatBeginsAWholeNumberOfBucketsBelowTheGridIsClipped)
{
    GridBuild build;
    build.addTargetPoint(0);
    build.addTargetPoint(1);
    build.addSource(-1, 0.5F);
    build.addSource(-2, 1.5F);
    ASSERT_EQ(build.build(), "(null)");
    EXPECT_EQ(build.items(0), (std::vector<int>{0, 1}));
    EXPECT_EQ(build.items(1), std::vector<int>{1});
}

TEST(BucketRanges, EndlessBoxesAreClippedAndNotANumberIsOutside)
{
    GridBuild build;
    build.addTargetPoint(0);
    build.addTargetPoint(1);
    const float ends[][2] = {{-INFINITY, INFINITY}, {-1e30F, 1e30F}, {NAN, 1}, {0, NAN}};
    for (const auto& [low, high] : ends)
    {
        build.addSource(0, 1);
        build.sourceBoxes.push_back({{low, -0.5F, -0.5F}, {high, 0.5F, 0.5F}});
    }
    ASSERT_EQ(build.build(), "(null)");
    EXPECT_EQ(build.items(0), (std::vector<int>{0, 1}));
    EXPECT_EQ(build.items(1), (std::vector<int>{0, 1}));
}

TEST(BucketRanges, CountBucketsOnEachAxisByItself)
{
    GridBuild build;
    build.target.addPoint({0, 0, 0});
    build.target.addPoint({1, 2, 3});
    for (const Vector3& point : {Vector3{1.5F, 1.5F, 2.5F}, Vector3{1.5F, 1.5F, 1.5F}, Vector3{0.5F, 1.5F, 2.5F}})
    {
        build.target.addPoint(point);
    }
    build.source.addBox({1.25F, 1.25F, 1.25F}, {1.75F, 1.75F, 2.75F});
    ASSERT_EQ(build.build(), "(null)");
    // The grid ends at 1.5, 2 and 3: 2 x 3 x 4 buckets.
    ASSERT_EQ(build.nbBuckets(), (std::vector<int>{2, 3, 4}));
    EXPECT_EQ(build.items((1 * 3 + 1) * 4 + 2), std::vector<int>{0});
    EXPECT_EQ(build.items((1 * 3 + 1) * 4 + 1), std::vector<int>{0});
    EXPECT_EQ(build.items((0 * 3 + 1) * 4 + 2), std::vector<int>{});
    EXPECT_EQ(build.grid.itsNbEntries, 2);
}

TEST(BucketStorage, RunsFollowOneAnotherInTheOrderOfTheBuckets)
{
    GridBuild build;
    addEveryState(build);
    ASSERT_EQ(build.build(), "(null)");
    const int* start = build.grid.itsBuckets[0][0][0].itsItems;
    EXPECT_EQ(build.grid.itsBuckets[1][0][0].itsItems, start);
    EXPECT_EQ(build.grid.itsBuckets[2][0][0].itsItems, start + 1);
    EXPECT_EQ(build.grid.itsBuckets[4][0][0].itsItems, start + 2);
    EXPECT_EQ(build.grid.itsBuckets[8][0][0].itsItems, nullptr);
    EXPECT_EQ((std::vector<int>{start, start + 3}), (std::vector<int>{0, 0, 1}));
}

TEST(BucketStorage, TheFirstBucketHoldsTheStartEvenIfItIsNotNeeded)
{
    GridBuild build;
    build.target.addPoint({0, 1, 0});
    build.target.addPoint({1, 0, 0});
    build.source.addBox({-1, -1, -1}, {3, 3, 3});
    ASSERT_EQ(build.build(), "(null)");
    ASSERT_EQ(build.states(), (std::vector<int>{-1, 1, 1, -1}));
    const BucketClass& first = build.grid.itsBuckets[0][0][0];
    EXPECT_EQ(first.itsNbItems, 0);
    ASSERT_NE(first.itsItems, nullptr);
    EXPECT_EQ(first.itsItems, build.grid.itsBuckets[0][1][0].itsItems);
    EXPECT_EQ(first.itsItems + 1, build.grid.itsBuckets[1][0][0].itsItems);
    EXPECT_TRUE(build.grid.items(0).empty());
}

TEST(BucketStorage, StatesAndBucketsAreChainedThroughPointers)
{
    GridBuild build;
    build.target.addPoint({0, 0, 0});
    build.target.addPoint({1, 2, 3});
    ASSERT_EQ(build.build(), "(null)");
    ASSERT_EQ(build.nbBuckets(), (std::vector<int>{2, 3, 4}));
    for (int i = 0; i < 2; ++i)
    {
        for (int j = 0; j < 3; ++j)
        {
            EXPECT_EQ(build.grid.itsBucketState[i][j], build.grid.itsBucketState.values() + (i * 3 + j) * 4);
            EXPECT_EQ(build.grid.itsBuckets[i][j], build.grid.itsBuckets.values() + (i * 3 + j) * 4);
        }
    }
    EXPECT_EQ(build.grid.itsBucketState[0][0][0], 0);
    EXPECT_EQ(build.grid.itsBucketState[1][2][3], 0);
    EXPECT_EQ(std::accumulate(build.grid.itsBucketState.values(), build.grid.itsBucketState.values() + 24, 0), -22);
}

TEST(BucketStorage, IsGivenBackWithTheGrid)
{
    GridBuild build;
    addEveryState(build);
    ASSERT_EQ(build.build(), "(null)");
    const std::int64_t before = nbLiveAllocations();
    {
        BucketSpaceClass other;
        EXPECT_EQ(build.buildInto(other), "(null)");
        // Three blocks of states, three of buckets, the entries, and the marks of the items.
        EXPECT_EQ(nbLiveAllocations(), before + 8);
    }
    EXPECT_EQ(nbLiveAllocations(), before);
}

TEST(BucketStorage, ManyElementsAreListedInIncreasingOrder)
{
    constexpr int nbElts = 700000;
    constexpr int nbBuckets = 10;
    GridBuild build;
    for (int i = 0; i < nbBuckets; ++i)
    {
        build.addTargetPoint(static_cast<float>(i));
    }
    ModelClass target;
    ModelClass source;
    build.target.loadCloudInto(target);
    const std::vector<int> none(1);
    source.init(ModelKind::mesh, nbElts, 0, nullptr, nullptr, nullptr, 1, none.data(), none.data());
    std::vector<Box> boxes;
    for (int elt = 0; elt < nbElts; ++elt)
    {
        const auto x = static_cast<float>(elt % nbBuckets);
        boxes.push_back({{x + 0.25F, -0.5F, -0.5F}, {x + 0.75F, 0.5F, 0.5F}});
    }
    BoxTable sourceBoxes;
    fillBoxTable(sourceBoxes, boxes);
    BucketSpaceClass grid;
    ASSERT_EQ(grid.build(0, target, source, sourceBoxes, {}, build.flags.data(), 1.0F, 0.0F, 0.1F), nullptr);
    EXPECT_EQ(grid.itsNbEntries, nbElts);
    for (int bucket = 0; bucket < nbBuckets; ++bucket)
    {
        const auto items = grid.items(bucket);
        ASSERT_EQ(items.size(), static_cast<std::size_t>(nbElts / nbBuckets));
        for (std::size_t i = 0; i < items.size(); ++i)
        {
            ASSERT_EQ(items[i], static_cast<int>(i) * nbBuckets + bucket);
        }
    }
    EXPECT_EQ(std::count(grid.itsItemInGrid.get(), grid.itsItemInGrid.get() + nbElts, 1), nbElts);
}

TEST(NodeBuckets, ListTheSourceNodesInNeededBuckets)
{
    GridBuild build;
    build.mode = BucketSpaceClass::nodeBuckets;
    build.addTargetPoint(0);
    build.addTargetPoint(1.5F);
    build.addTargetPoint(4);
    for (const float x : {4.5F, 0.25F, 2.5F, 0.75F, 9.0F})
    {
        build.addSourceNode(x);
    }
    ASSERT_EQ(build.build(), "(null)");
    EXPECT_EQ(build.states(), (std::vector<int>{1, 0, -1, -1, 1}));
    EXPECT_EQ(build.items(0), (std::vector<int>{1, 3}));
    EXPECT_EQ(build.items(4), std::vector<int>{0});
    EXPECT_EQ(build.itemsInGrid(), (std::vector<int>{1, 1, 0, 1, 0}));
    EXPECT_EQ(build.grid.itsNbEntries, 3);
}

TEST(NodeBuckets, ANodeReachesAThousandthOfTheSize)
{
    GridBuild build;
    build.mode = BucketSpaceClass::nodeBuckets;
    for (const float x : {0.0F, 1.0F, 2.0F, 3.0F, 4.0F})
    {
        build.addTargetPoint(x);
    }
    for (const float x : {0.9995F, 0.9985F, 2.0005F, 2.0015F, -0.0005F, -0.0015F, 5.0005F, 5.0015F})
    {
        build.addSourceNode(x);
    }
    ASSERT_EQ(build.build(), "(null)");
    EXPECT_EQ(build.items(0), (std::vector<int>{0, 1, 4}));
    EXPECT_EQ(build.items(1), (std::vector<int>{0, 2}));
    EXPECT_EQ(build.items(2), (std::vector<int>{2, 3}));
    EXPECT_EQ(build.items(4), std::vector<int>{6});
    EXPECT_EQ(build.itemsInGrid(), (std::vector<int>{1, 1, 1, 1, 1, 0, 1, 0}));
}

TEST(NodeBuckets, TheReachOfANodeDoesNotFollowTheDoubledSize)
{
    // Doubled once, the second bucket begins at 2. A node 0.0015 above it would reach the first with twice the size.
    GridBuild build;
    build.mode = BucketSpaceClass::nodeBuckets;
    build.grid.itsMaxNbBuckets = 3;
    build.addTargetPoint(0);
    build.addTargetPoint(2.5F);
    build.addTargetPoint(4);
    build.addSourceNode(2.0015F);
    build.addSourceNode(2.0005F);
    ASSERT_EQ(build.build(), "(null)");
    ASSERT_EQ(build.grid.itsBucketSize, 2.0F);
    EXPECT_EQ(build.items(0), std::vector<int>{1});
    EXPECT_EQ(build.items(1), (std::vector<int>{0, 1}));
}

TEST(NodeBuckets, AreNotFilledByAWidenedPass)
{
    GridBuild build;
    build.mode = BucketSpaceClass::nodeBuckets;
    build.bucketFactor = 100;
    build.addTargetPoint(0);
    build.addTargetPoint(4);
    build.addSource(0.25F, 0.75F);
    ASSERT_EQ(build.build(), "(null)");
    EXPECT_EQ(build.states()[4], 0);
}

TEST(BucketAllocations, OfElementBucketsHaveTextsOfTheirOwn)
{
    GridBuild build;
    addEveryState(build);
    ASSERT_EQ(build.build(), "(null)");
    EXPECT_EQ(outcomesOfFailedTables(
                  [&build]
                  {
                      BucketSpaceClass other;
                      build.buildInto(other);
                  }),
              tableTexts(1026));
}

TEST(BucketAllocations, OfNodeBucketsHaveTextsOfTheirOwn)
{
    GridBuild build;
    addEveryState(build);
    build.mode = BucketSpaceClass::nodeBuckets;
    ASSERT_EQ(build.build(), "(null)");
    EXPECT_EQ(outcomesOfFailedTables(
                  [&build]
                  {
                      BucketSpaceClass other;
                      build.buildInto(other);
                  }),
              tableTexts(1103));
}
