/// Points whose box holds a curved element: the control points of its Bernstein form. Every place in the element is a
/// mean of them, with weights from 0 to 1, which is not so of its nodes.
#ifndef VELTRANE_CONTROL_POINTS_H
#define VELTRANE_CONTROL_POINTS_H

#include "ReferenceElement.h"

namespace control
{
/// A grid of points through which a function that is quadratic along each of its lines is known. Lines in the triangle
/// of a wedge lie within a layer.
template <std::size_t nbPoints, std::size_t nbLines> struct Grid
{
    std::array<ReferencePoint, nbPoints> points;
    /// The beginning, middle and end of lines, in the order in which they are to be worked on.
    std::array<std::array<std::size_t, 3>, nbLines> lines;
};

/// 3 x 3 x 3 points of the cube, or of the pyramid, whose sections shrink to its apex.
constexpr Grid<27, 27> gridOf27(bool isPyramid)
{
    Grid<27, 27> grid{};
    for (std::size_t i = 0; i < 27; ++i)
    {
        const std::size_t layer = i / 9;
        const ReferencePoint place{static_cast<double>(i % 3) - 1.0, static_cast<double>(i / 3 % 3) - 1.0,
                                   static_cast<double>(layer) - 1.0};
        const double height = 0.5 * (1.0 + place[2]);
        const double width = 1.0 - height;
        grid.points[i] = isPyramid ? ReferencePoint{width * place[0], width * place[1], height} : place;
    }
    constexpr std::array<std::size_t, 3> strides{1, 3, 9};
    std::size_t count = 0;
    for (const std::size_t stride : strides)
    {
        for (std::size_t i = 0; i < 27; ++i)
        {
            if (i / stride % 3 == 0)
            {
                grid.lines[count++] = {i, i + stride, i + 2 * stride};
            }
        }
    }
    return grid;
}

/// The corners of the triangle and the middles of its edges, in three layers.
constexpr Grid<18, 15> gridOfWedge()
{
    constexpr std::array<std::array<double, 2>, 6> triangle{{{0, 0}, {1, 0}, {0, 1}, {0.5, 0}, {0.5, 0.5}, {0, 0.5}}};
    Grid<18, 15> grid{};
    std::size_t count = 0;
    for (std::size_t layer = 0; layer < 3; ++layer)
    {
        for (std::size_t i = 0; i < 6; ++i)
        {
            grid.points[6 * layer + i] = {triangle[i][0], triangle[i][1], static_cast<double>(layer) - 1.0};
        }
        for (std::size_t edge = 0; edge < 3; ++edge)
        {
            grid.lines[count++] = {6 * layer + edge, 6 * layer + edge + 3, 6 * layer + (edge + 1) % 3};
        }
    }
    for (std::size_t i = 0; i < 6; ++i)
    {
        grid.lines[count++] = {i, i + 6, i + 12};
    }
    return grid;
}

template <ControlGrid which> constexpr auto gridOf()
{
    if constexpr (which == ControlGrid::wedge)
    {
        return gridOfWedge();
    }
    else
    {
        return gridOf27(which == ControlGrid::pyramid);
    }
}

/// The weights of the nodes at each control point.
template <class Kind> constexpr auto weightsOf()
{
    constexpr auto grid = gridOf<Kind::controlGrid>();
    std::array<std::array<double, Kind::nbNodes>, grid.points.size()> weights{};
    for (std::size_t i = 0; i < grid.points.size(); ++i)
    {
        weights[i] = shapeFunctionsAt<Kind>(grid.points[i]);
    }
    // The control point in the middle of a line is where the tangents at its ends meet.
    for (const auto& [begin, middle, end] : grid.lines)
    {
        for (std::size_t node = 0; node < Kind::nbNodes; ++node)
        {
            weights[middle][node] = 2.0 * weights[middle][node] - 0.5 * (weights[begin][node] + weights[end][node]);
        }
    }
    return weights;
}

/// A node's part in a control point.
struct Share
{
    std::size_t node;
    float weight;
};

constexpr bool counts(double weight)
{
    constexpr double rounding = 1e-12;
    return weight > rounding || weight < -rounding;
}

template <class Kind> constexpr std::size_t nbSharesOf()
{
    std::size_t count = 0;
    for (const auto& row : weightsOf<Kind>())
    {
        for (const double weight : row)
        {
            count += counts(weight) ? 1 : 0;
        }
    }
    return count;
}

/// Weights that are not 0, control point after control point.
template <std::size_t nbPoints, std::size_t nbShares> struct Shares
{
    std::array<Share, nbShares> shares;
    std::array<std::size_t, nbPoints + 1> first;
};

template <class Kind> constexpr auto sharesOf()
{
    constexpr auto weights = weightsOf<Kind>();
    Shares<weights.size(), nbSharesOf<Kind>()> result{};
    std::size_t count = 0;
    for (std::size_t point = 0; point < weights.size(); ++point)
    {
        result.first[point] = count;
        for (std::size_t node = 0; node < Kind::nbNodes; ++node)
        {
            if (counts(weights[point][node]))
            {
                result.shares[count++] = {node, single(weights[point][node])};
            }
        }
    }
    result.first[weights.size()] = count;
    return result;
}
} // namespace control

template <CurvedElementKind Kind> inline constexpr auto controlShares = control::sharesOf<Kind>();

/// Calls visit(position) with the control points of an element, as sums of node(i) for the numbers of its nodes. A
/// position is a pack, or anything else that can be multiplied with Weight(number) and summed up.
template <CurvedElementKind Kind, class Weight, class NodeAt, class Visit>
void forEachControlPoint(NodeAt node, Visit visit)
{
    constexpr const auto& table = controlShares<Kind>;
    for (std::size_t point = 0; point + 1 < table.first.size(); ++point)
    {
        const auto& front = table.shares[table.first[point]];
        auto sum = Weight(front.weight) * node(front.node);
        for (std::size_t i = table.first[point] + 1; i < table.first[point + 1]; ++i)
        {
            sum += Weight(table.shares[i].weight) * node(table.shares[i].node);
        }
        visit(sum);
    }
}

#endif
