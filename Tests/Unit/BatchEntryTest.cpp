// The order in which a batch of points is visited.
#include "Search/BatchEntry.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace
{
std::vector<BatchEntry> randomEntries(std::size_t count, std::int64_t nbBuckets)
{
    std::mt19937_64 generator(count);
    std::vector<BatchEntry> entries;
    for (std::size_t i = 0; i < count; ++i)
    {
        entries.push_back(
            entryOf(static_cast<std::int64_t>(generator() % static_cast<std::uint64_t>(nbBuckets + 1)) - 1, i));
    }
    return entries;
}
} // namespace

TEST(BatchEntry, holdsBucketAndPosition)
{
    for (const std::int64_t bucket : {std::int64_t{-1}, std::int64_t{0}, std::int64_t{9999999}, std::int64_t{1} << 45})
    {
        const BatchEntry entry = entryOf(bucket, batchCapacity - 1);
        EXPECT_EQ(bucketOf(entry), bucket);
        EXPECT_EQ(positionOf(entry), static_cast<std::size_t>(batchCapacity - 1));
    }
}

TEST(BatchEntry, isSortedByBucketThenPosition)
{
    for (const std::int64_t nbBuckets :
         {std::int64_t{1}, std::int64_t{100}, std::int64_t{5000000}, std::int64_t{1} << 40})
    {
        for (const std::size_t count : {std::size_t{0}, std::size_t{1}, std::size_t{2}, std::size_t{5000}})
        {
            auto entries = randomEntries(count, nbBuckets);
            auto expected = entries;
            std::sort(expected.begin(), expected.end());
            std::vector<BatchEntry> room(count);
            sortByBucket(entries, room);
            EXPECT_EQ(entries, expected) << count << " entries, " << nbBuckets << " buckets";
        }
    }
}
