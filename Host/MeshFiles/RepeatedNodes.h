/// Cells that are given as others with some of their nodes repeated.
#ifndef VELTRANE_HOST_REPEATED_NODES_H
#define VELTRANE_HOST_REPEATED_NODES_H

#include <vtkType.h>

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace veltrane
{

template <typename Number> bool hasRepeatedNodes(std::span<const Number> points)
{
    for (std::size_t i = 1; i < points.size(); ++i)
    {
        for (std::size_t j = 0; j < i; ++j)
        {
            if (points[i] == points[j])
            {
                return true;
            }
        }
    }
    return false;
}

/// A cell of VTK.
struct PlainCell
{
    int cellType;
    std::vector<vtkIdType> points;
};

/// What a hexahedron of VTK is if repeated nodes make a wedge, a pyramid or a tetrahedron of it, with the same
/// orientation. Nothing if no node is repeated, or if it is none of these.
std::optional<PlainCell> withoutRepeatedNodes(std::span<const vtkIdType> hexahedron);

} // namespace veltrane

#endif
