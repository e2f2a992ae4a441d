// The boxes of a bucket, tested side by side and one by one.
#include "Search/BucketBoxes.h"
#include "Search/PackedSearch.h"

#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

namespace
{
/// What both tests are defined by.
ItemSet plainItemsAround(const Vector3& point, std::span<const int> items, const float* boxes)
{
    ItemSet found = 0;
    for (std::size_t i = 0; i < items.size(); ++i)
    {
        found |= static_cast<ItemSet>(boxContains(boxes + 6 * items[i], point)) << i;
    }
    return found;
}
} // namespace

TEST(BucketBoxes, areThoseThatHoldThePointForEveryLengthOfTheList)
{
    constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
    std::mt19937_64 generator(1);
    const auto value = [&] { return static_cast<float>(generator() % 8); };
    std::vector<float> boxes(6 * 200);
    for (float& side : boxes)
    {
        side = generator() % 50 == 0 ? notANumber : value();
    }
    for (std::size_t i = 0; i < boxes.size(); i += 6)
    {
        boxes[i + 3] += 4;
        boxes[i + 4] += 4;
        boxes[i + 5] += 4;
    }
    for (std::size_t size = 1; size <= maxItemSetSize; ++size)
    {
        std::vector<int> items(size);
        for (int& item : items)
        {
            item = static_cast<int>(generator() % 200);
        }
        BucketBoxes together;
        together.gather(items, boxes.data());
        for (int i = 0; i < 50; ++i)
        {
            const Vector3 point{value(), value(), i == 0 ? notANumber : value()};
            const ItemSet expected = plainItemsAround(point, items, boxes.data());
            for (const std::size_t packSize : {4U, 8U, 16U})
            {
                const BoxesAround boxesAround = packedSearch(packSize).boxesAround;
                if (boxesAround != nullptr) // on this processor
                {
                    ASSERT_EQ(together.around(point, boxesAround), expected) << "list of " << size << ", " << packSize;
                }
            }
            ASSERT_EQ(itemsAround(point, items, boxes.data()), expected) << "list of " << size;
        }
    }
}

TEST(BucketBoxes, giveTheirItemsInTheOrderOfTheList)
{
    ItemSet items = ItemSet{1} << 63 | 0b1001;
    EXPECT_EQ(takeFirst(items), 0U);
    EXPECT_EQ(takeFirst(items), 3U);
    EXPECT_EQ(takeFirst(items), 63U);
    EXPECT_EQ(items, 0U);
}
