#include "ElementOrder.h"

#include "Agreement.h"
#include "Exchange.h"
#include "Text.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace veltrane
{
namespace
{

struct Extents
{
    std::int64_t number;
    std::array<float, 3> values;
};

/// The numbers of a rank's elements, from first to last.
struct Interval
{
    std::int64_t first = 0;
    std::int64_t last = -1;
    int rank = 0;

    bool isEmpty() const { return last < first; }
};

std::vector<Interval> intervalsInOrder(const Communicator& ranks, const ElementOrder& order)
{
    Interval own{.rank = ranks.rank()};
    if (!order.sorted.empty())
    {
        own.first = order.numbers[static_cast<std::size_t>(order.sorted.front())];
        own.last = order.numbers[static_cast<std::size_t>(order.sorted.back())];
    }
    std::vector<Interval> intervals = ranks.gathered(own);
    std::erase_if(intervals, [](const Interval& interval) { return interval.isEmpty(); });
    std::ranges::sort(intervals, {}, &Interval::first);
    return intervals;
}

bool areApart(const std::vector<Interval>& intervals)
{
    for (std::size_t i = 1; i < intervals.size(); ++i)
    {
        if (intervals[i].first <= intervals[i - 1].last)
        {
            return false;
        }
    }
    return true;
}

/// Gives every rank a block of numbers.
std::vector<Extents> inBlocks(const Communicator& ranks, const std::vector<Extents>& own, std::int64_t numberCount)
{
    const std::int64_t blockLength = numberCount / ranks.size() + 1;
    const auto rankOf = [&](const Extents& extents) { return static_cast<int>(extents.number / blockLength); };
    std::vector<std::vector<Extents>> lists(static_cast<std::size_t>(ranks.size()));
    for (const Extents& extents : own)
    {
        lists[static_cast<std::size_t>(rankOf(extents))].push_back(extents);
    }
    std::vector<Extents> block = Exchange(ranks, sizesOf(lists)).run(lists);
    std::ranges::sort(block, {}, &Extents::number);
    return block;
}

/// The sum goes through the ranks in this order.
float passedOn(const Communicator& ranks, const std::vector<int>& order, const std::vector<Extents>& own)
{
    float sum = 0.0F;
    for (std::size_t i = 0; i < order.size(); ++i)
    {
        if (order[i] != ranks.rank())
        {
            continue;
        }
        if (i > 0)
        {
            std::vector<MPI_Request> request;
            ranks.receive(&sum, sizeof(sum), order[i - 1], request);
            Communicator::wait(request);
        }
        for (const Extents& extents : own)
        {
            for (const float extent : extents.values)
            {
                sum += extent;
            }
        }
        if (i + 1 < order.size())
        {
            ranks.send(&sum, sizeof(sum), order[i + 1]);
        }
    }
    return order.empty() ? sum : ranks.told(sum, order.back());
}

} // namespace

ElementOrder elementOrder(const Communicator& ranks, int elementCount, std::span<const std::int64_t> numbers,
                          std::string_view side)
{
    ElementOrder order;
    const bool areNumbered = ranks.isAnywhere(!numbers.empty());
    const std::vector<std::int64_t> counts = ranks.gathered(std::int64_t{elementCount});
    agree(ranks,
          [&]
          {
              const auto count = static_cast<std::size_t>(elementCount);
              if (areNumbered && numbers.size() != count)
              {
                  throw InvalidData(text("the ", side, " has ", elementCount, " elements on rank ", ranks.rank(),
                                         ", but ", numbers.size(), " global numbers of elements"));
              }
              if (std::ranges::any_of(numbers, [](std::int64_t number) { return number < 0; }))
              {
                  throw InvalidData(
                      text("the ", side, " has a negative global number of an element on rank ", ranks.rank()));
              }
              order.numbers.assign(numbers.begin(), numbers.end());
              if (!areNumbered)
              {
                  order.numbers.resize(count);
                  const auto first = std::accumulate(counts.begin(), counts.begin() + ranks.rank(), std::int64_t{0});
                  std::iota(order.numbers.begin(), order.numbers.end(), first);
              }
              const auto numberOf = [&](int element) { return order.numbers[static_cast<std::size_t>(element)]; };
              order.sorted.resize(count);
              std::iota(order.sorted.begin(), order.sorted.end(), 0);
              if (!std::ranges::is_sorted(order.numbers))
              {
                  std::ranges::sort(order.sorted, {}, numberOf);
              }
          });
    return order;
}

float sumInOrder(const Communicator& ranks, const ElementOrder& order,
                 const std::function<std::array<float, 3>(int element)>& extentsOf)
{
    std::vector<Extents> own;
    agree(ranks,
          [&]
          {
              own.reserve(order.sorted.size());
              for (const int element : order.sorted)
              {
                  own.push_back({order.numbers[static_cast<std::size_t>(element)], extentsOf(element)});
              }
          });
    const std::vector<Interval> intervals = intervalsInOrder(ranks, order);
    std::vector<int> path;
    if (areApart(intervals))
    {
        std::ranges::transform(intervals, std::back_inserter(path), &Interval::rank);
    }
    else
    {
        const auto last = std::ranges::max_element(intervals, {}, &Interval::last);
        own = inBlocks(ranks, own, last->last + 1);
        path.resize(static_cast<std::size_t>(ranks.size()));
        std::iota(path.begin(), path.end(), 0);
    }
    agree(ranks,
          [&]
          {
              const auto twice = std::ranges::adjacent_find(own, {}, &Extents::number);
              if (twice != own.end())
              {
                  throw InvalidData(text("element ", twice->number, " of the source is there twice"));
              }
          });
    return passedOn(ranks, path, own);
}

} // namespace veltrane
