#include "RepeatedNodes.h"

#include <vtkCellType.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <set>
#include <utility>

namespace veltrane
{
namespace
{

using Face = std::vector<vtkIdType>;

/// Seen from outside anticlockwise.
constexpr std::array<std::array<std::size_t, 4>, 6> facesOfHexahedron{
    {{0, 4, 7, 3}, {1, 2, 6, 5}, {0, 1, 5, 4}, {3, 7, 6, 2}, {0, 3, 2, 1}, {4, 5, 6, 7}}};

bool contains(const Face& face, vtkIdType point)
{
    return std::ranges::find(face, point) != face.end();
}

/// Its corners, each once, from where they begin.
Face faceOf(std::span<const vtkIdType> hexahedron, const std::array<std::size_t, 4>& corners)
{
    Face face;
    for (const std::size_t corner : corners)
    {
        if (!contains(face, hexahedron[corner]))
        {
            face.push_back(hexahedron[corner]);
        }
    }
    return face;
}

Face reversed(Face face)
{
    std::ranges::reverse(face);
    return face;
}

PlainCell joined(int cellType, Face first, const Face& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return {cellType, std::move(first)};
}

/// The node that a face does not have.
Face nodeBeside(const Face& face, const std::set<vtkIdType>& points)
{
    const auto found = std::ranges::find_if(points, [&](vtkIdType point) { return !contains(face, point); });
    return {*found};
}

/// The node of the other triangle that an edge leads to from this one; nothing if there is not exactly one.
std::optional<vtkIdType> partnerOf(vtkIdType point, const Face& other, const std::vector<Face>& quadrilaterals)
{
    std::set<vtkIdType> partners;
    for (const Face& face : quadrilaterals)
    {
        for (std::size_t i = 0; i < face.size(); ++i)
        {
            const vtkIdType first = face[i];
            const vtkIdType second = face[(i + 1) % face.size()];
            if (first == point && contains(other, second))
            {
                partners.insert(second);
            }
            if (second == point && contains(other, first))
            {
                partners.insert(first);
            }
        }
    }
    return partners.size() == 1 ? std::optional(*partners.begin()) : std::nullopt;
}

std::optional<PlainCell> wedgeOf(const std::vector<Face>& triangles, const std::vector<Face>& quadrilaterals)
{
    const Face base = reversed(triangles[0]);
    Face top;
    for (const vtkIdType point : base)
    {
        const std::optional<vtkIdType> partner = partnerOf(point, triangles[1], quadrilaterals);
        if (!partner || contains(top, *partner))
        {
            return std::nullopt;
        }
        top.push_back(*partner);
    }
    return joined(VTK_WEDGE, base, top);
}

} // namespace

std::optional<PlainCell> withoutRepeatedNodes(std::span<const vtkIdType> hexahedron)
{
    if (!hasRepeatedNodes(hexahedron))
    {
        return std::nullopt;
    }
    const std::set<vtkIdType> points(hexahedron.begin(), hexahedron.end());
    std::vector<Face> triangles;
    std::vector<Face> quadrilaterals;
    for (const auto& corners : facesOfHexahedron)
    {
        Face face = faceOf(hexahedron, corners);
        if (face.size() > 2)
        {
            (face.size() == 3 ? triangles : quadrilaterals).push_back(std::move(face));
        }
    }
    const std::array shape{points.size(), triangles.size(), quadrilaterals.size()};
    if (shape == std::array<std::size_t, 3>{4, 4, 0})
    {
        return joined(VTK_TETRA, reversed(triangles[0]), nodeBeside(triangles[0], points));
    }
    if (shape == std::array<std::size_t, 3>{5, 4, 1})
    {
        return joined(VTK_PYRAMID, reversed(quadrilaterals[0]), nodeBeside(quadrilaterals[0], points));
    }
    if (shape == std::array<std::size_t, 3>{6, 2, 3})
    {
        return wedgeOf(triangles, quadrilaterals);
    }
    return std::nullopt;
}

} // namespace veltrane
