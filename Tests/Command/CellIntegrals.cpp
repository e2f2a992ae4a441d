#include "CellIntegrals.h"

#include <vtkCell.h>
#include <vtkCellType.h>
#include <vtkIdList.h>
#include <vtkNew.h>
#include <vtkPoints.h>
#include <vtkUnstructuredGrid.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace
{

using Place = std::array<double, 3>;

enum class Shape
{
    hexahedron,
    wedge,
    tetrahedron,
    pyramid
};

Shape shapeOf(int cellType)
{
    switch (cellType)
    {
    case VTK_TETRA:
    case VTK_QUADRATIC_TETRA: return Shape::tetrahedron;
    case VTK_WEDGE:
    case VTK_QUADRATIC_WEDGE:
    case VTK_BIQUADRATIC_QUADRATIC_WEDGE: return Shape::wedge;
    case VTK_PYRAMID:
    case VTK_QUADRATIC_PYRAMID:
    case VTK_LAGRANGE_PYRAMID: return Shape::pyramid;
    default: return Shape::hexahedron;
    }
}

/// Places in a cell's own coordinates, within it.
std::vector<Place> placesIn(Shape shape)
{
    std::vector<Place> places;
    for (const double r : {0.1, 0.3, 0.6})
    {
        for (const double s : {0.15, 0.25, 0.7})
        {
            for (const double t : {0.05, 0.2, 0.4})
            {
                const double sum = shape == Shape::tetrahedron ? r + s + t : shape == Shape::wedge ? r + s : 0;
                if (sum <= 1)
                {
                    places.push_back({r, s, t});
                }
            }
        }
    }
    return places;
}

double quadratic(const Place& x)
{
    return 1 + 2 * x[0] - x[1] + 3 * x[0] * x[0] - 2 * x[1] * x[1] + x[2] * x[2] + x[0] * x[1] - 4 * x[1] * x[2] +
           2 * x[2] * x[0];
}

/// Six times the volume of a tetrahedron.
double determinant(const Place& a, const Place& b, const Place& c, const Place& d)
{
    const auto edge = [&](const Place& to, std::size_t i) { return to[i] - a[i]; };
    double sum = 0;
    for (std::size_t i = 0; i < 3; ++i)
    {
        const std::size_t j = (i + 1) % 3;
        const std::size_t k = (i + 2) % 3;
        sum += edge(b, i) * (edge(c, j) * edge(d, k) - edge(c, k) * edge(d, j));
    }
    return sum;
}

} // namespace

double volumeOf(vtkUnstructuredGrid& grid, long long cell)
{
    vtkNew<vtkIdList> nodes; // VTK has no cell for some types
    grid.GetCellPoints(cell, nodes);
    const auto at = [&](vtkIdType i)
    {
        Place place;
        grid.GetPoint(nodes->GetId(i), place.data());
        return place;
    };
    // Corners come first in every cell. Each is cut into tetrahedra, whose sum is exact for plane sides.
    using Corners = std::array<int, 4>;
    static const std::vector<Corners> tetrahedron{{0, 1, 2, 3}};
    static const std::vector<Corners> pyramid{{0, 1, 2, 4}, {0, 2, 3, 4}};
    static const std::vector<Corners> wedge{{0, 1, 2, 3}, {1, 2, 3, 4}, {2, 4, 5, 3}};
    static const std::vector<Corners> hexahedron{{0, 1, 3, 4}, {1, 2, 3, 6}, {1, 3, 4, 6}, {3, 4, 6, 7}, {1, 4, 5, 6}};
    const Shape shape = shapeOf(grid.GetCellType(cell));
    const std::vector<Corners>& parts = shape == Shape::tetrahedron ? tetrahedron
                                        : shape == Shape::pyramid   ? pyramid
                                        : shape == Shape::wedge     ? wedge
                                                                    : hexahedron;
    double volume = 0;
    for (const Corners& corners : parts)
    {
        volume += std::abs(determinant(at(corners[0]), at(corners[1]), at(corners[2]), at(corners[3]))) / 6;
    }
    return volume;
}

double middleErrorOf(vtkUnstructuredGrid& grid, long long cell)
{
    using Edge = std::array<int, 2>;
    static const std::vector<Edge> tetrahedron{{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 3}, {2, 3}};
    static const std::vector<Edge> pyramid{{0, 1}, {1, 2}, {2, 3}, {3, 0}, {0, 4}, {1, 4}, {2, 4}, {3, 4}};
    static const std::vector<Edge> wedge{{0, 1}, {1, 2}, {2, 0}, {3, 4}, {4, 5}, {5, 3}, {0, 3}, {1, 4}, {2, 5}};
    static const std::vector<Edge> hexahedron{{0, 1}, {1, 2}, {2, 3}, {3, 0}, {4, 5}, {5, 6},
                                              {6, 7}, {7, 4}, {0, 4}, {1, 5}, {2, 6}, {3, 7}};
    const Shape shape = shapeOf(grid.GetCellType(cell));
    const std::vector<Edge>& edges = shape == Shape::tetrahedron ? tetrahedron
                                     : shape == Shape::pyramid   ? pyramid
                                     : shape == Shape::wedge     ? wedge
                                                                 : hexahedron;
    const std::size_t cornerCount = shape == Shape::tetrahedron ? 4
                                    : shape == Shape::pyramid   ? 5
                                    : shape == Shape::wedge     ? 6
                                                                : 8;
    vtkNew<vtkIdList> nodes;
    grid.GetCellPoints(cell, nodes);
    double error = 0;
    for (std::size_t edge = 0; edge < edges.size() && nodes->GetNumberOfIds() > static_cast<vtkIdType>(cornerCount);
         ++edge)
    {
        Place first;
        Place second;
        Place middle;
        grid.GetPoint(nodes->GetId(edges[edge][0]), first.data());
        grid.GetPoint(nodes->GetId(edges[edge][1]), second.data());
        grid.GetPoint(nodes->GetId(static_cast<vtkIdType>(cornerCount + edge)), middle.data());
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            error = std::max(error, std::abs(middle[axis] - (first[axis] + second[axis]) / 2));
        }
    }
    return error;
}

double quadraticErrorOf(vtkUnstructuredGrid& grid, long long cell)
{
    vtkCell& whole = *grid.GetCell(cell);
    const auto nodeCount = static_cast<std::size_t>(whole.GetNumberOfPoints());
    std::vector<double> weights(nodeCount);
    double error = 0;
    for (Place& place : placesIn(shapeOf(grid.GetCellType(cell))))
    {
        Place position{};
        int part = 0;
        whole.EvaluateLocation(part, place.data(), position.data(), weights.data());
        double value = 0;
        for (std::size_t node = 0; node < nodeCount; ++node)
        {
            Place corner;
            whole.GetPoints()->GetPoint(static_cast<vtkIdType>(node), corner.data());
            value += weights[node] * quadratic(corner);
        }
        error = std::max(error, std::abs(value - quadratic(position)));
    }
    return error;
}
