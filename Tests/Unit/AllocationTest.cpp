#include "Allocation.h"
#include "AllocationFailure.h"

#include <gtest/gtest.h>

#include <limits>
#include <new>

TEST(Allocation, ARequestForANegativeNumberOfValuesGetsNullWithoutAskingTheRuntime)
{
    const std::int64_t before = nbAllocationRequests();
    EXPECT_EQ(allocateArray<int>(-1), nullptr);
    EXPECT_EQ(allocateArray<char>(std::numeric_limits<std::int64_t>::min()), nullptr);
    EXPECT_EQ(nbAllocationRequests(), before);
}

TEST(Allocation, ARequestOfMoreBytesThanCanBeCountedGetsNullWithoutAskingTheRuntime)
{
    const std::int64_t before = nbAllocationRequests();
    EXPECT_EQ(allocateArray<double>(std::numeric_limits<std::int64_t>::max() / 8 + 1), nullptr);
    EXPECT_EQ(allocateArray<int>(std::numeric_limits<std::int64_t>::max()), nullptr);
    EXPECT_EQ(nbAllocationRequests(), before);
}

TEST(Allocation, ARequestForNoValuesIsMet)
{
    int* none = allocateArray<int>(0);
    EXPECT_NE(none, nullptr);
    releaseBytes(none);
}

TEST(Allocation, NullOfTheRuntimeArrivesAsNull)
{
    const AllocationFailure failure(1);
    EXPECT_EQ(allocateBytes(8), nullptr);
    EXPECT_TRUE(failure.happened());
}

TEST(Allocation, TheRuntimesExceptionPassesThrough)
{
    const AllocationFailure failure(1, AllocationFailure::Answer::exception);
    EXPECT_THROW(allocateBytes(8), std::bad_alloc);
}

TEST(Allocation, NullCanBeGivenBack)
{
    const std::int64_t before = nbLiveAllocations();
    releaseBytes(nullptr);
    EXPECT_EQ(nbLiveAllocations(), before);
}

TEST(OwnedArray, IsEmptyUntilItIsAllocated)
{
    OwnedArray<int> values;
    EXPECT_FALSE(values);
    EXPECT_EQ(values.get(), nullptr);
    ASSERT_TRUE(values.allocate(3));
    EXPECT_TRUE(values);
    values[0] = 1;
    values[2] = 3;
    EXPECT_EQ(values.get()[0], 1);
    EXPECT_EQ(values.get()[2], 3);
}

TEST(OwnedArray, GivesItsValuesBackWhenItEnds)
{
    const std::int64_t before = nbLiveAllocations();
    {
        OwnedArray<double> values;
        ASSERT_TRUE(values.allocate(5));
        EXPECT_EQ(nbLiveAllocations(), before + 1);
    }
    EXPECT_EQ(nbLiveAllocations(), before);
}

TEST(OwnedArray, ASecondAllocationTakesThePlaceOfTheFirst)
{
    const std::int64_t before = nbLiveAllocations();
    OwnedArray<int> values;
    ASSERT_TRUE(values.allocate(2));
    ASSERT_TRUE(values.allocate(4));
    values[3] = 7;
    EXPECT_EQ(values[3], 7);
    EXPECT_EQ(nbLiveAllocations(), before + 1);
}

TEST(OwnedArray, IsEmptyAfterAFailedAllocation)
{
    const std::int64_t before = nbLiveAllocations();
    OwnedArray<int> values;
    ASSERT_TRUE(values.allocate(2));
    {
        const AllocationFailure failure(1);
        EXPECT_FALSE(values.allocate(4));
    }
    EXPECT_FALSE(values);
    EXPECT_EQ(nbLiveAllocations(), before);
    EXPECT_FALSE(values.allocate(-1));
}
