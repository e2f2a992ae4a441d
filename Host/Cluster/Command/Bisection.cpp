#include "Bisection.h"

#include <algorithm>
#include <numeric>
#include <span>

namespace veltrane
{
namespace
{

class Cutter
{
public:
    Cutter(const Mesh& mesh, Lists& parts) : mesh_(mesh), parts_(parts) {}

    void cut(std::span<int> elements, std::size_t firstPart, std::size_t partCount)
    {
        if (partCount == 1)
        {
            std::ranges::sort(elements);
            parts_[firstPart].assign(elements.begin(), elements.end());
            return;
        }
        const std::size_t axis = longestAxis(elements);
        const std::size_t lower = partCount / 2;
        const std::size_t middle = elements.size() * lower / partCount;
        // Of elements at one place the lower number comes first, so that the cut is always the same.
        const auto comesBefore = [&](int first, int second)
        { return std::pair(placeOf(first)[axis], first) < std::pair(placeOf(second)[axis], second); };
        std::nth_element(elements.begin(), elements.begin() + static_cast<std::ptrdiff_t>(middle), elements.end(),
                         comesBefore);
        cut(elements.first(middle), firstPart, lower);
        cut(elements.subspan(middle), firstPart + lower, partCount - lower);
    }

private:
    std::span<const float, 3> placeOf(int element) const { return mesh_.nodePosition(mesh_.nodesOf(element)[0]); }

    std::size_t longestAxis(std::span<const int> elements) const
    {
        Box box;
        for (const int element : elements)
        {
            box.add(placeOf(element));
        }
        std::size_t longest = 0;
        for (std::size_t axis = 1; axis < 3; ++axis)
        {
            longest = box.max[axis] - box.min[axis] > box.max[longest] - box.min[longest] ? axis : longest;
        }
        return longest;
    }

    const Mesh& mesh_;
    Lists& parts_;
};

} // namespace

Lists bisected(const Mesh& mesh, int partCount)
{
    Lists parts(static_cast<std::size_t>(partCount));
    std::vector<int> elements(static_cast<std::size_t>(mesh.elementCount()));
    std::iota(elements.begin(), elements.end(), 0);
    Cutter(mesh, parts).cut(elements, 0, parts.size());
    return parts;
}

} // namespace veltrane
