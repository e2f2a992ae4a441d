#include "ChainedTable.h"
#include "AllocationFailure.h"

#include <gtest/gtest.h>

namespace
{
struct Counted
{
    Counted() { ++nbAlive; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    ~Counted() { --nbAlive; }
    static inline int nbAlive = 0;
};
} // namespace

TEST(ChainedTable, IsEmptyUntilItIsAllocated)
{
    const ChainedTable<float> table;
    EXPECT_FALSE(table);
    EXPECT_EQ(table.values(), nullptr);
    EXPECT_EQ(table.nbValues(), 0);
}

TEST(ChainedTable, ItsValuesLieInOneBlockWithTheLastIndexFastest)
{
    ChainedTable<int> table;
    ASSERT_EQ(table.allocate(3, 4, 5), TableBlock::none);
    ASSERT_EQ(table.nbValues(), 60);
    for (int i = 0; i < 60; ++i)
    {
        table.values()[i] = i;
    }
    for (int i = 0; i < 3; ++i)
    {
        for (int j = 0; j < 4; ++j)
        {
            EXPECT_EQ(table[i][j], table.values() + (i * 4 + j) * 5);
            EXPECT_EQ(table[i][j][4], (i * 4 + j) * 5 + 4);
        }
        // The pointers of the middle level are one block too.
        EXPECT_EQ(table[i], table[0] + i * 4);
    }
}

TEST(ChainedTable, TakesThreeBlocksAndGivesThemBack)
{
    const std::int64_t before = nbLiveAllocations();
    {
        ChainedTable<float> table;
        ASSERT_EQ(table.allocate(7, 2, 3), TableBlock::none);
        EXPECT_EQ(nbLiveAllocations(), before + 3);
    }
    EXPECT_EQ(nbLiveAllocations(), before);
}

TEST(ChainedTable, NamesTheBlockThatCouldNotBeAllocatedAndGivesBackTheOthers)
{
    const TableBlock blocks[] = {TableBlock::outerPointers, TableBlock::innerPointers, TableBlock::values};
    const std::int64_t before = nbLiveAllocations();
    for (int n = 1; n <= 3; ++n)
    {
        {
            ChainedTable<Counted> table;
            const AllocationFailure failure(n);
            EXPECT_EQ(table.allocate(2, 2, 2), blocks[n - 1]);
            EXPECT_FALSE(table);
        }
        EXPECT_EQ(Counted::nbAlive, 0);
        EXPECT_EQ(nbLiveAllocations(), before);
    }
}

TEST(ChainedTable, ConstructsAndDestroysValuesOfClasses)
{
    {
        ChainedTable<Counted> table;
        ASSERT_EQ(table.allocate(2, 3, 4), TableBlock::none);
        EXPECT_EQ(Counted::nbAlive, 24);
    }
    EXPECT_EQ(Counted::nbAlive, 0);
}

TEST(ChainedTable, MayHaveNoValues)
{
    ChainedTable<float> table;
    EXPECT_EQ(table.allocate(0, 2, 3), TableBlock::none);
    EXPECT_EQ(table.nbValues(), 0);
}
