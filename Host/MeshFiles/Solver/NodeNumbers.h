/// From the numbers that a file gives its nodes to their places in a list.
#ifndef VELTRANE_HOST_NODE_NUMBERS_H
#define VELTRANE_HOST_NODE_NUMBERS_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace veltrane
{

class NodeNumbers
{
public:
    NodeNumbers() = default;

    /// Numbers beyond this cannot be told apart.
    static constexpr long long highest = 1LL << 60;

    /// \param numbers  of the nodes, in any order, from -`highest` to `highest`; must live as long
    explicit NodeNumbers(std::span<const long long> numbers);

    static constexpr std::int64_t missing = -1;

    /// The place of the node of a number, or `missing`. Of several nodes of one number the last.
    std::int64_t placeOf(long long number) const
    {
        if (number < first_ || number > last_)
        {
            return missing;
        }
        const auto fromFirst = static_cast<std::size_t>(number - first_);
        if (isInSequence_)
        {
            return static_cast<std::int64_t>(fromFirst);
        }
        return table_.empty() ? placeInOrder(number) : table_[fromFirst];
    }

    bool hasRepeated() const { return hasRepeated_; }

private:
    std::int64_t placeInOrder(long long number) const;

    std::span<const long long> numbers_{};
    long long first_ = 0;
    long long last_ = -1;
    bool isInSequence_ = true;
    bool hasRepeated_ = false;
    std::vector<std::int64_t>
        table_{}; ///< per number from the first on, if these are not much more than there are nodes
    std::vector<std::int64_t> order_{}; ///< places by number, otherwise
};

} // namespace veltrane

#endif
