/// The numbers of some cells or points of a file.
#ifndef VELTRANE_HOST_ITEM_NUMBERS_H
#define VELTRANE_HOST_ITEM_NUMBERS_H

#include <vtkType.h>

#include <cstddef>
#include <utility>
#include <vector>

namespace veltrane
{

/// In rising order. They take no memory if they are all that there are.
class ItemNumbers
{
public:
    /// From 0 on.
    explicit ItemNumbers(std::size_t count = 0) : count_(count) {}
    explicit ItemNumbers(std::vector<vtkIdType> numbers) : count_(numbers.size()), numbers_(std::move(numbers)) {}

    std::size_t size() const { return count_; }
    vtkIdType operator[](std::size_t i) const { return numbers_.empty() ? static_cast<vtkIdType>(i) : numbers_[i]; }

private:
    std::size_t count_;
    std::vector<vtkIdType> numbers_{}; ///< empty: all
};

} // namespace veltrane

#endif
