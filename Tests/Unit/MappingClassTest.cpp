// The mapping object's beginning and end, and its count of progress.
#include "MappingClass.h"
#include "AllocationFailure.h"
#include "TestInOwnDirectory.h"

#include <gtest/gtest.h>

namespace
{
using MappingClassTest = TestInOwnDirectory;
}

TEST_F(MappingClassTest, StartsEmptyWithItsUsualSettings)
{
    const MappingClass mapping;
    EXPECT_EQ(mapping.itsTransferType, 0);
    EXPECT_STREQ(mapping.itsTitle, "");
    EXPECT_STREQ(mapping.itsStage, "");
    EXPECT_EQ(mapping.itsProgress, 0);
    EXPECT_EQ(mapping.itsCallback, nullptr);
    EXPECT_EQ(mapping.itsCancelled, 0);
    EXPECT_EQ(mapping.itsInterpoMode, 0);
    EXPECT_EQ(mapping.itsDefaultValue, 0.0F);
    EXPECT_EQ(mapping.itsErrorMessage, nullptr);
    EXPECT_EQ(mapping.itsErrorCode, 0);
    EXPECT_EQ(mapping.itsBucketFactor, 0.1F);
    EXPECT_EQ(mapping.itsBoxMarginRatio, 0.01F);
    EXPECT_EQ(mapping.itsRefCoordTolerance, 0.001F);
    EXPECT_EQ(mapping.itsBucketSpace.itsMaxNbBuckets, 10000000);
    EXPECT_EQ(mapping.itsNbTargetNodesOutside, 0);
    EXPECT_EQ(mapping.itsNbTargetGPsOutside, 0);
    EXPECT_EQ(mapping.itsInterpoAtNodes, 0);
    EXPECT_EQ(mapping.itsInterpoAtGPs, 0);
    EXPECT_EQ(mapping.itsInterpoAtElts, 0);
    EXPECT_EQ(mapping.itsNbTargetNodesFarOutside, 0);
    EXPECT_EQ(mapping.itsNbTargetGPsFarOutside, 0);
    EXPECT_EQ(mapping.itsNbInterpolatedPoints, 0);
    EXPECT_EQ(mapping.itsMeanIterations, 0.0F);
}

TEST_F(MappingClassTest, RemovesTheLogOfAnEarlierCall)
{
    writeFile("interpoLog.txt", "old");
    writeFile("other.txt", "kept");
    const MappingClass mapping;
    EXPECT_FALSE(std::filesystem::exists("interpoLog.txt"));
    EXPECT_TRUE(std::filesystem::exists("other.txt"));
}

TEST_F(MappingClassTest, AnUnusedOneTakesNoMemory)
{
    const std::int64_t before = nbAllocationRequests();
    {
        const MappingClass mapping;
    }
    EXPECT_EQ(nbAllocationRequests(), before);
}

TEST_F(MappingClassTest, GivesBackItsErrorTextWithItself)
{
    const std::int64_t before = nbLiveAllocations();
    {
        MappingClass mapping;
        mapping.itsTransferType = meshToMesh;
        mapping.itsInterpoMode = 3;
        mapping.checkInterpo();
        EXPECT_NE(mapping.itsErrorMessage, nullptr);
        EXPECT_EQ(nbLiveAllocations(), before + 1);
    }
    EXPECT_EQ(nbLiveAllocations(), before);
}

TEST(ProgressCounter, ReportsEveryPointOfAFewAndAboutEveryHundredthPartOfMany)
{
    const std::int64_t stepOf[][2] = {{1, 1}, {99, 1}, {100, 1}, {199, 1}, {200, 2}, {250, 2}, {1000, 10}};
    for (const auto& [total, step] : stepOf)
    {
        ProgressCounter counter(total);
        for (std::int64_t done = 1; done <= total; ++done)
        {
            EXPECT_EQ(counter.advance(), done % step == 0) << done << " of " << total;
        }
    }
}

TEST(ProgressCounter, NeverReportsLessThanFivePercent)
{
    ProgressCounter counter(200);
    for (int done = 1; done <= 200; ++done)
    {
        counter.advance();
        EXPECT_EQ(counter.percent(), done < 12 ? 5 : done / 2) << done;
    }
}

TEST(ProgressCounter, RoundsDown)
{
    ProgressCounter counter(3);
    counter.advance();
    EXPECT_EQ(counter.percent(), 33);
    counter.advance();
    EXPECT_EQ(counter.percent(), 66);
    counter.advance();
    EXPECT_EQ(counter.percent(), 100);
}

TEST(ProgressCounter, StartsAgainBeyond32BitsOnlyWhereHostsKnowItSo)
{
    constexpr std::int64_t total = 30000000;
    constexpr std::int64_t done = 22000000; // a hundred times as many do not fit into 31 bits
    ProgressCounter wide(total);
    ProgressCounter wrapping(total, ProgressCounter::Arithmetic::wrapping32Bit);
    for (std::int64_t i = 0; i < done; ++i)
    {
        wide.advance();
        wrapping.advance();
    }
    EXPECT_EQ(wide.percent(), 73);
    EXPECT_EQ(wrapping.percent(), 5) << "2200000000 - 2^32 is negative, and raised to 5";
}
