#include "NodeGroups.h"

#include <algorithm>
#include <cstddef>

namespace veltrane
{

int addNodeGroup(MeshData& data, std::span<const vtkIdType> points)
{
    constexpr std::size_t others = 3; // beside the node that all share
    const auto node = [&](std::size_t i) { return static_cast<int>(points[std::min(i, points.size() - 1)]); };
    int count = 0;
    for (std::size_t first = 1; first == 1 || first < points.size(); first += others)
    {
        data.connectivity.push_back(node(0));
        for (std::size_t i = 0; i < others; ++i)
        {
            data.connectivity.push_back(node(first + i));
        }
        data.kinds.push_back(ElementKind::quadrilateral);
        data.offsets.push_back(data.connectivity.size());
        ++count;
    }
    return count;
}

} // namespace veltrane
