#include "NodeNumbers.h"

#include <algorithm>
#include <numeric>

namespace veltrane
{

NodeNumbers::NodeNumbers(std::span<const long long> numbers) : numbers_(numbers)
{
    if (numbers.empty())
    {
        return;
    }
    const auto ends = std::ranges::minmax(numbers);
    first_ = ends.min;
    last_ = ends.max;
    const std::size_t count = numbers.size();
    for (std::size_t i = 0; i < count && isInSequence_; ++i)
    {
        isInSequence_ = numbers[i] - first_ == static_cast<long long>(i);
    }
    if (isInSequence_)
    {
        return;
    }
    constexpr std::size_t roomy = 8;
    const auto extent = static_cast<std::size_t>(last_ - first_) + 1;
    if (extent / roomy <= count)
    {
        table_.assign(extent, missing);
        for (std::size_t i = 0; i < count; ++i)
        {
            std::int64_t& place = table_[static_cast<std::size_t>(numbers[i] - first_)];
            hasRepeated_ = hasRepeated_ || place != missing;
            place = static_cast<std::int64_t>(i);
        }
        return;
    }
    order_.resize(count);
    std::iota(order_.begin(), order_.end(), 0);
    const auto numberAt = [&](std::int64_t place) { return numbers[static_cast<std::size_t>(place)]; };
    std::ranges::stable_sort(order_, {}, numberAt);
    hasRepeated_ = std::ranges::adjacent_find(order_, {}, numberAt) != order_.end();
}

std::int64_t NodeNumbers::placeInOrder(long long number) const
{
    const auto behind = std::ranges::upper_bound(
        order_, number, {}, [&](std::int64_t place) { return numbers_[static_cast<std::size_t>(place)]; });
    if (behind == order_.begin())
    {
        return missing;
    }
    const std::int64_t place = *(behind - 1);
    return numbers_[static_cast<std::size_t>(place)] == number ? place : missing;
}

} // namespace veltrane
