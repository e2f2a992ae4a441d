/// The order of elements that are spread over ranks.
#ifndef VELTRANE_HOST_ELEMENT_ORDER_H
#define VELTRANE_HOST_ELEMENT_ORDER_H

#include "Communicator.h"

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <string_view>
#include <vector>

namespace veltrane
{

/// The elements of a rank by their numbers in the whole.
struct ElementOrder
{
    std::vector<std::int64_t> numbers; ///< per element of the part
    std::vector<int> sorted;           ///< the elements of the part in the order of their numbers
};

/// Collective. Without numbers the elements of lower ranks come first. Throws InvalidData on all ranks if there is not
/// one number from 0 per element; `side` is "source" or "target".
ElementOrder elementOrder(const Communicator& ranks, int elementCount, std::span<const std::int64_t> numbers,
                          std::string_view side);

/// Collective. One running sum in single precision over the extents of all elements, x, y, z of each, in the order of
/// the elements: it goes from rank to rank. Throws InvalidData on all ranks if an element is there twice.
float sumInOrder(const Communicator& ranks, const ElementOrder& order,
                 const std::function<std::array<float, 3>(int element)>& extentsOf);

} // namespace veltrane

#endif
