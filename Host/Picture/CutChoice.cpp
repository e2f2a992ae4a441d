#include "CutChoice.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace veltrane
{
namespace
{

std::array<double, 3> extentsOf(const Box& box)
{
    std::array<double, 3> extents{};
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        extents[axis] = double{box.max[axis]} - double{box.min[axis]};
    }
    return extents;
}

std::size_t shortestAxis(const std::array<double, 3>& extents)
{
    return static_cast<std::size_t>(std::ranges::min_element(extents) - extents.begin());
}

/// Through a place, but beside the faces of elements, where a cut is neither here nor there: towards another place.
CutPlane planeAt(std::size_t axis, double place, double towards, const Box& box)
{
    const double min = double{box.min[axis]};
    const double max = double{box.max[axis]};
    const double offset = 1e-5 * (max - min);
    return {axis, std::clamp(towards < place ? place - offset : place + offset, min + offset, max - offset)};
}

/// The mean of the nodes of the elements around a node, on whose side there is the most of the mesh.
std::array<double, 3> middleAround(const Mesh& mesh, int node)
{
    std::array<double, 3> sum{};
    double count = 0;
    for (int element = 0; element < mesh.elementCount(); ++element)
    {
        const auto nodes = mesh.nodesOf(element);
        if (std::ranges::find(nodes, node) == nodes.end())
        {
            continue;
        }
        for (const int other : nodes)
        {
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                sum[axis] += double{mesh.nodePosition(other)[axis]};
            }
            ++count;
        }
    }
    std::ranges::for_each(sum, [&](double& part) { part /= std::max(1.0, count); });
    return sum;
}

bool meets(const CutPlane& plane, const Mesh& mesh)
{
    for (int element = 0; element < mesh.elementCount(); ++element)
    {
        const auto nodes = mesh.nodesOf(element);
        const auto isBelow = [&](int node) { return double{mesh.nodePosition(node)[plane.axis]} < plane.position; };
        const auto below = std::ranges::count_if(nodes, isBelow);
        if (below > 0 && below < std::ssize(nodes))
        {
            return true;
        }
    }
    return false;
}

/// Across the longest edge of its box, so that it meets the element in any case.
CutPlane planeThroughFirstElement(const Mesh& mesh)
{
    Box box;
    std::ranges::for_each(mesh.nodesOf(0), [&](int node) { box.add(mesh.nodePosition(node)); });
    const auto extents = extentsOf(box);
    const auto axis = static_cast<std::size_t>(std::ranges::max_element(extents) - extents.begin());
    return {axis, (double{box.min[axis]} + double{box.max[axis]}) / 2};
}

} // namespace

std::size_t peakOf(std::span<const double> values)
{
    std::size_t peak = 0;
    for (std::size_t i = 1; i < values.size(); ++i)
    {
        if (!(std::abs(values[peak]) >= std::abs(values[i])) && !std::isnan(values[i]))
        {
            peak = i;
        }
    }
    return peak;
}

std::vector<CutPlane> planesThroughPeak(const Mesh& mesh, std::span<const double> values)
{
    const Box box = mesh.boundingBox();
    const auto peakNode = static_cast<int>(peakOf(values));
    const std::span<const float, 3> peak = mesh.nodePosition(peakNode);
    const std::array<double, 3> middle = middleAround(mesh, peakNode);
    const std::size_t first = shortestAxis(extentsOf(box));
    std::vector<CutPlane> planes;
    for (const std::size_t axis : {first, (first + 1) % 3, (first + 2) % 3})
    {
        const CutPlane plane = planeAt(axis, double{peak[axis]}, middle[axis], box);
        if (meets(plane, mesh))
        {
            planes.push_back(plane);
        }
    }
    if (planes.empty())
    {
        planes.push_back(planeThroughFirstElement(mesh));
    }
    return planes;
}

CutPlane planeThroughPeak(const Mesh& mesh, std::span<const double> values)
{
    return planesThroughPeak(mesh, values).front();
}

CutPlane planeThroughPeak(const Mesh& source, const PointCloud& points, std::span<const double> pointValues)
{
    const std::size_t peak = peakOf(pointValues);
    const std::size_t axis = shortestAxis(extentsOf(points.boundingBox()));
    const Box box = source.boundingBox();
    const CutPlane plane = planeAt(axis, double{points.coordinates()[3 * peak + axis]},
                                   (double{box.min[axis]} + double{box.max[axis]}) / 2, box);
    return meets(plane, source) ? plane : planeThroughFirstElement(source);
}

} // namespace veltrane
