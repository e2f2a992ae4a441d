// Where the grid of buckets lies, how it is cut, and which bucket a point falls into.
#include "AllocationFailure.h"
#include "GridBuild.h"
#include "ProcessEnd.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace
{
constexpr const char* nothingSelectedText = "Error: please select at least one domain in the target model.\n";
constexpr const char* notIncludedText = "Error: the target mesh is not included in the source mesh.\n";

void expectNoGrid(const BucketSpaceClass& grid)
{
    EXPECT_FALSE(grid.itsBucketState);
    EXPECT_FALSE(grid.itsBuckets);
    EXPECT_FALSE(grid.itsItemInGrid);
    EXPECT_EQ(grid.itsNbEntries, 0);
}

/// A cloud of two points at the corners of a box.
void addCorners(GridBuild& build, const Vector3& low, const Vector3& high)
{
    build.target.addPoint(low);
    build.target.addPoint(high);
}

/// A row of 5 buckets of size 1, from x = 0.
void buildRow(GridBuild& build)
{
    build.addTargetPoint(0);
    build.addTargetPoint(4);
    ASSERT_EQ(build.build(), "(null)");
    ASSERT_EQ(build.nbBuckets(), (std::vector<int>{5, 1, 1}));
}
} // namespace

TEST(BucketClass, IsEmptyAtFirst)
{
    const BucketClass bucket;
    EXPECT_EQ(bucket.itsNbItems, 0);
    EXPECT_EQ(bucket.itsItems, nullptr);
}

TEST(BucketGrid, IsEmptyUntilItIsBuilt)
{
    const BucketSpaceClass grid;
    EXPECT_EQ(grid.itsMin, (Vector3{0, 0, 0}));
    EXPECT_EQ(grid.itsMax, (Vector3{0, 0, 0}));
    EXPECT_EQ(grid.itsBucketSize, 0.0F);
    EXPECT_EQ(grid.itsInvBucketSize, 0.0F);
    EXPECT_EQ(grid.nbBuckets(), 0);
    EXPECT_EQ(grid.itsMaxNbBuckets, 10000000);
    expectNoGrid(grid);
}

TEST(BucketGrid, NeedsASelectedMaterialOfATargetMesh)
{
    GridBuild build;
    build.targetKind = ModelKind::mesh;
    build.target.addBox({0, 0, 0}, {1, 1, 1});
    build.source = build.target;
    for (const int flag : {0, 2, -1})
    {
        build.flags = {flag};
        EXPECT_EQ(build.build(), nothingSelectedText) << flag;
        expectNoGrid(build.grid);
    }
}

TEST(BucketGrid, NeedsASelectedMaterialOfAPointCloud)
{
    GridBuild build;
    build.addTargetPoint(0);
    build.flags = {0};
    EXPECT_EQ(build.build(), nothingSelectedText);
    expectNoGrid(build.grid);
}

TEST(BucketGrid, NeedsATargetOfAKnownKind)
{
    GridBuild build;
    build.target.addBox({0, 0, 0}, {1, 1, 1});
    build.source = build.target;
    for (const ModelKind kind : {ModelKind::none, static_cast<ModelKind>(2)})
    {
        build.targetKind = kind;
        EXPECT_EQ(build.build(), nothingSelectedText);
        expectNoGrid(build.grid);
    }
}

TEST(BucketGrid, ARefusedBuildKeepsNothing)
{
    GridBuild build;
    build.addTargetPoint(0);
    build.flags = {0};
    EXPECT_EQ(build.build(), nothingSelectedText);
    const std::int64_t before = nbLiveAllocations();
    {
        BucketSpaceClass other;
        EXPECT_EQ(build.buildInto(other), nothingSelectedText);
    }
    EXPECT_EQ(nbLiveAllocations(), before);
}

TEST(BucketGrid, LiesAroundTheSelectedTargetElements)
{
    GridBuild build;
    build.targetKind = ModelKind::mesh;
    build.target.matlStates = {1, 1, 1};
    build.flags = {1, 0, 1};
    build.target.addBox({0, 0, 0}, {1, 1, 1}, 0);
    build.target.addBox({-5, -5, -5}, {9, 9, 9}, 1);
    build.target.addBox({2, 1, -1}, {3, 2, 0}, 2);
    build.source.addBox({-100, -100, -100}, {100, 100, 100});
    ASSERT_EQ(build.build(), "(null)");
    EXPECT_EQ(build.grid.itsMin, (Vector3{0, 0, -1}));
    EXPECT_EQ(build.grid.itsMax, (Vector3{3, 2, 1}));
}

TEST(BucketGrid, LiesAroundTheSelectedPoints)
{
    GridBuild build;
    build.target.matlStates = {1, 1};
    build.flags = {0, 1};
    build.target.addPoint({-7, 0, 0}, 0);
    build.target.addPoint({1, 2, 3}, 1);
    build.target.addPoint({2, 0, 3}, 1);
    ASSERT_EQ(build.build(), "(null)");
    EXPECT_EQ(build.grid.itsMin, (Vector3{1, 0, 3}));
    EXPECT_EQ(build.grid.itsMax, (Vector3{2, 2, 3}));
}

TEST(BucketGrid, IsEnlargedByAFractionOfEachExtent)
{
    GridBuild build;
    addCorners(build, {0, 0, 0}, {1, 2, 4});
    build.boxMarginRatio = 0.25F;
    ASSERT_EQ(build.build(), "(null)");
    EXPECT_EQ(build.grid.itsMin, (Vector3{-0.25F, -0.5F, -1}));
    EXPECT_EQ(build.grid.itsMax, (Vector3{1.25F, 2.5F, 5}));
}

TEST(BucketGrid, ATargetMeshMustLieStrictlyInsideTheEnlargedSource)
{
    // The source reaches from 0 to 20, with 5 % from -1 to 21. One face of the target after the other goes there.
    for (std::size_t face = 0; face < 6; ++face)
    {
        const bool isHigh = face >= 3;
        const float limit = isHigh ? 21.0F : -1.0F;
        for (const bool isOnLimit : {true, false})
        {
            Box target{{5, 5, 5}, {15, 15, 15}};
            (isHigh ? target.high : target.low)[face % 3] = isOnLimit ? limit : std::nextafter(limit, 10.0F);
            GridBuild build;
            build.targetKind = ModelKind::mesh;
            build.bucketSize = 20;
            build.target.addBox(target.low, target.high);
            build.source.addBox({0, 0, 0}, {20, 20, 20});
            EXPECT_EQ(build.build(), isOnLimit ? notIncludedText : "(null)") << "face " << face;
            EXPECT_EQ(static_cast<bool>(build.grid.itsBuckets), !isOnLimit);
        }
    }
}

TEST(BucketGrid, TheTargetsMarginCountsWhenItMustLieInsideTheSource)
{
    GridBuild build;
    build.targetKind = ModelKind::mesh;
    build.target.addBox({0, 0, 0}, {20, 20, 20});
    build.source = build.target;
    build.bucketSize = 20;
    build.boxMarginRatio = 0.04F;
    EXPECT_EQ(build.build(), "(null)");
    GridBuild wider;
    wider.targetKind = ModelKind::mesh;
    wider.target = build.target;
    wider.source = build.source;
    wider.boxMarginRatio = 0.06F;
    EXPECT_EQ(wider.build(), notIncludedText);
}

TEST(BucketGrid, AllSourceElementsHoldTheTargetMesh)
{
    GridBuild build;
    build.targetKind = ModelKind::mesh;
    build.target.addBox({1, 1, 1}, {19, 9, 9});
    build.source.matlStates = {1, 4};
    build.source.addBox({0, 0, 0}, {10, 10, 10}, 0);
    build.source.addBox({10, 0, 0}, {20, 10, 10}, 1);
    EXPECT_EQ(build.build(), "(null)");
}

TEST(BucketGrid, APointCloudMayReachOutOfTheSource)
{
    GridBuild build;
    build.addTargetPoint(-50);
    build.addTargetPoint(50);
    build.addSource(0, 1);
    EXPECT_EQ(build.build(), "(null)");
}

TEST(BucketGrid, HasOneBucketMoreThanWholeOnesFitIn)
{
    GridBuild build;
    addCorners(build, {0, 0, 0}, {1, 1, 1});
    build.bucketSize = 0.25F;
    ASSERT_EQ(build.build(), "(null)");
    EXPECT_EQ(build.nbBuckets(), (std::vector<int>{5, 5, 5}));
    EXPECT_EQ(build.grid.itsInvBucketSize, 4.0F);
    EXPECT_EQ(build.grid.nbBuckets(), 125);
}

TEST(BucketGrid, HasOneBucketOnAnAxisWithoutExtent)
{
    GridBuild build;
    addCorners(build, {1, 2, 3}, {1, 2.5F, 3});
    build.bucketSize = 0.25F;
    ASSERT_EQ(build.build(), "(null)");
    EXPECT_EQ(build.nbBuckets(), (std::vector<int>{1, 3, 1}));
}

TEST(BucketGrid, TheSizeIsDoubledOnlyBeyondTheLimit)
{
    for (const std::int64_t limit : {125, 124})
    {
        GridBuild build;
        addCorners(build, {0, 0, 0}, {1, 1, 1});
        build.bucketSize = 0.25F;
        build.grid.itsMaxNbBuckets = limit;
        ASSERT_EQ(build.build(), "(null)");
        // Half of size: 2 whole ones and one more.
        EXPECT_EQ(build.grid.itsBucketSize, limit == 125 ? 0.25F : 0.5F);
        EXPECT_EQ(build.grid.nbBuckets(), limit == 125 ? 125 : 27);
    }
}

TEST(BucketGrid, ABillionBucketsAreCutDownToTheUsualLimit)
{
    GridBuild build;
    addCorners(build, {0, 0, 0}, {1000, 1000, 1000});
    ASSERT_EQ(build.build(), "(null)");
    // 1001, 501, 251 and 126 to the third; only the last is below ten million.
    EXPECT_EQ(build.grid.itsBucketSize, 8.0F);
    EXPECT_EQ(build.nbBuckets(), (std::vector<int>{126, 126, 126}));
    EXPECT_EQ(build.grid.nbBuckets(), 2000376);
}

TEST(BucketGrid, CountsBeyondAllIntegersAreCutDownToo)
{
    GridBuild build;
    addCorners(build, {0, 0, 0}, {1e30F, 1e30F, 1e30F});
    build.grid.itsMaxNbBuckets = 30;
    ASSERT_EQ(build.build(), "(null)");
    EXPECT_LE(build.grid.nbBuckets(), 30);
    EXPECT_GT(build.grid.nbBuckets(), 1);
}

TEST(BucketGrid, ALimitThatCannotBeMetEndsWithOneBucket)
{
    for (const std::int64_t limit : {std::int64_t{0}, std::int64_t{-1}, std::numeric_limits<std::int64_t>::min()})
    {
        GridBuild build;
        build.addTargetPoint(0);
        build.addTargetPoint(4);
        build.addSource(1, 2);
        build.grid.itsMaxNbBuckets = limit;
        ASSERT_EQ(build.build(), "(null)");
        EXPECT_EQ(build.nbBuckets(), (std::vector<int>{1, 1, 1}));
        EXPECT_EQ(build.items(build.grid.bucketOfPoint({2, 0, 0})), std::vector<int>{0});
    }
}

TEST(BucketGrid, AUselessSizeGivesABucketThatNoPointFallsInto)
{
    for (const float size : {NAN, 0.0F})
    {
        GridBuild build;
        build.addTargetPoint(0);
        build.addTargetPoint(4);
        build.addSource(1, 2);
        build.bucketSize = size;
        ASSERT_EQ(build.build(), "(null)") << size;
        EXPECT_EQ(build.nbBuckets(), (std::vector<int>{1, 1, 1})) << size;
        for (const float x : {0.0F, 1.5F, 4.0F, -1.0F})
        {
            EXPECT_EQ(build.grid.bucketOfPoint({x, 0, 0}), -1) << size;
        }
        EXPECT_EQ(build.itemsInGrid(), std::vector<int>{0}) << size;
    }
}

TEST(BucketGrid, AnInfiniteSizeGivesOneBucketForAll)
{
    GridBuild build;
    build.addTargetPoint(0);
    build.addTargetPoint(4);
    build.addSource(1, 2);
    build.bucketSize = INFINITY;
    ASSERT_EQ(build.build(), "(null)");
    EXPECT_EQ(build.nbBuckets(), (std::vector<int>{1, 1, 1}));
    EXPECT_EQ(build.grid.bucketOfPoint({4, 0, 0}), 0);
}

TEST(BucketGrid, TheBucketOfAPointIsFoundByTruncation)
{
    GridBuild build;
    buildRow(build);
    EXPECT_EQ(build.grid.bucketOfPoint({0, 0, 0}), 0);
    EXPECT_EQ(build.grid.bucketOfPoint({1, 0, 0}), 1);
    EXPECT_EQ(build.grid.bucketOfPoint({std::nextafter(1.0F, 0.0F), 0, 0}), 0);
    EXPECT_EQ(build.grid.bucketOfPoint({std::nextafter(5.0F, 0.0F), 0, 0}), 4);
    EXPECT_EQ(build.grid.bucketOfPoint({5, 0, 0}), -1);
}

TEST(BucketGrid, APointUpToOneBucketBelowTheGridFallsIntoTheFirstBucket)
{
    GridBuild build;
    buildRow(build);
    EXPECT_EQ(build.grid.bucketOfPoint({-0.5F, 0, 0}), 0);
    EXPECT_EQ(build.grid.bucketOfPoint({std::nextafter(-1.0F, 0.0F), 0, 0}), 0);
    EXPECT_EQ(build.grid.bucketOfPoint({-1, 0, 0}), -1);
    EXPECT_EQ(build.grid.bucketOfPoint({3.5F, -0.75F, -0.75F}), 3);
    EXPECT_EQ(build.grid.bucketOfPoint({3.5F, -1.5F, 0}), -1);
    EXPECT_EQ(build.grid.bucketOfPoint({3.5F, 0, 1}), -1);
}

TEST(BucketGrid, PointsWithoutAPlaceAreInNoBucket)
{
    GridBuild build;
    buildRow(build);
    for (const float x : {NAN, INFINITY, -INFINITY, 1e30F, -1e30F, 2147483648.0F, 4294967296.0F})
    {
        EXPECT_EQ(build.grid.bucketOfPoint({x, 0, 0}), -1) << x;
        EXPECT_EQ(build.grid.bucketOfPoint({0, 0, x}), -1) << x;
    }
    EXPECT_TRUE(build.grid.items(-1).empty());
}

TEST(BucketGrid, BucketsAreNumberedWithTheLastAxisFastest)
{
    GridBuild build;
    addCorners(build, {0, 0, 0}, {1, 2, 3});
    ASSERT_EQ(build.build(), "(null)");
    ASSERT_EQ(build.nbBuckets(), (std::vector<int>{2, 3, 4}));
    EXPECT_EQ(build.grid.bucketOfPoint({0.5F, 0.5F, 1.5F}), 1);
    EXPECT_EQ(build.grid.bucketOfPoint({0.5F, 1.5F, 0.5F}), 4);
    EXPECT_EQ(build.grid.bucketOfPoint({1.5F, 0.5F, 0.5F}), 12);
    EXPECT_EQ(build.grid.bucketOfPoint({1.5F, 2.5F, 3.5F}), 23);
}

TEST(BucketGrid, AnUnknownModeEndsTheProcess)
{
    for (const int mode : {2, -1})
    {
        GridBuild build;
        build.addTargetPoint(0);
        build.mode = mode;
        EXPECT_PROCESS_END(build.build(), "Error in BucketSpaceClass file at line 982: mode number " +
                                              std::to_string(mode) + " is unknown.\n");
    }
}

TEST(BucketGrid, TheUsersFaultsComeBeforeAnUnknownMode)
{
    GridBuild build;
    build.addTargetPoint(0);
    build.flags = {0};
    build.mode = 2;
    EXPECT_EQ(build.build(), nothingSelectedText);
}

TEST(SurveyedBoxes, StayInexactOnceAnElementHidesItsNodes)
{
    constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
    const Box usual{{0, 0, 0}, {1, 1, 1}};
    for (const Box& hiding : {Box{{0, notANumber, 0}, {1, notANumber, 1}}, boxOfPoint({unreachable, 0, 0})})
    {
        SurveyedBoxes boxes;
        boxes.add(boxes.source, usual);
        EXPECT_TRUE(boxes.areExact);
        boxes.add(boxes.source, hiding);
        boxes.add(boxes.source, usual);
        EXPECT_FALSE(boxes.areExact);
    }
}

TEST(SurveyedBoxes, AreUsedByTheGridOnlyWhileExact)
{
    TestMesh mesh;
    mesh.addBox({0, 0, 0}, {1, 1, 1});
    ModelClass model;
    mesh.loadInto(model);
    BoxTable boxes;
    fillBoxTable(boxes, mesh.boxes());
    SurveyedBoxes surveyed;
    surveyed.source.add({{5, 5, 5}, {6, 6, 6}}); // elsewhere, so that its use shows
    surveyed.selectedTarget.add({{0, 0, 0}, {1, 1, 1}});
    const int selected = 1;
    const auto textOfBuild = [&]
    {
        BucketSpaceClass grid;
        return takeText(grid.build(BucketSpaceClass::elementBuckets, model, model, boxes, boxes, &selected, 1.0F, 0.01F,
                                   0.1F, &surveyed));
    };
    EXPECT_EQ(textOfBuild(), "Error: the target mesh is not included in the source mesh.\n");
    surveyed.areExact = false;
    EXPECT_EQ(textOfBuild(), "(null)");
}
