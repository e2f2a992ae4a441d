/// What the header of an element kind provides, and what the kinds share.
///
/// Every kind:
///     typeCode, name, plural, dimension (3 for volumes, 2 for surfaces), nbNodes, nbGaussPoints
///     nodes                 their reference coordinates; the first nbCorners are the corners
///     faces                 of a volume, corners first; of a surface, itself
///     vtkCells              the cell types of VTK that hold such an element; the first is the one that is written
/// Volumes, which can be a source, besides:
///     initialGuess          where the search for a point's reference coordinates starts
///     gaussRule             points and weights of the integration over the reference element
///     shapeFunctions(point, values)
///     shapeFunctionDerivatives(point, derivatives)      d/dxi, d/deta, d/dzeta per node
///     isConstantAlong(node, axis)    whether that derivative of the node's function is 0 everywhere
///     shapeFunctionsAtGaussPoint(gaussPoint, values)
///     contains(point, margin)        inside the reference domain, `margin` reference units tolerated; a bool, or a
///                                    mask of the points of a pack
///     gaussPointsToNodes(gaussPointValues, nodeValues)  what the element gives to the average at each node
/// Curved volumes, with numbers from 100 on that are no type codes of the exported functions, besides:
///     clamped(point)        a point of the reference domain near to one outside it
///     controlGrid           where control points that hold the element within their box come from
/// and those with a second integration rule
///     reducedGaussRule      of fewer points, from which gaussPointsToNodes takes values, too
///
/// Values are those computed in double precision from the reference point and stored as the Number that the point is
/// made of: float, or a pack of them for points that are worked on at once, or double and packs of it, which round
/// nothing.
#ifndef VELTRANE_REFERENCE_ELEMENT_H
#define VELTRANE_REFERENCE_ELEMENT_H

#include "../VectorHelpers.h"

#include <array>
#include <concepts>
#include <cstddef>
#include <string_view>
#include <type_traits>

template <int nbNodes, class Number = float> using NodeValues = std::array<Number, nbNodes>;
template <int nbNodes, class Number = float> using NodeGradients = std::array<std::array<Number, 3>, nbNodes>;

using ReferencePoint = std::array<double, 3>;

/// A face by the numbers of its nodes: its corners, counter-clockwise when seen from outside, then the middles of its
/// edges, the first of which follows the first corner, then its centre.
struct ElementFace
{
    static constexpr std::size_t maxNbNodes = 9;

    std::size_t nbCorners;
    std::size_t nbNodes;
    std::array<std::size_t, maxNbNodes> nodes;
};

template <class... Numbers> constexpr ElementFace faceOf(std::size_t nbCorners, Numbers... nodes)
{
    return {nbCorners, sizeof...(nodes), {static_cast<std::size_t>(nodes)...}};
}

/// A cell type of VTK, by its number. Element node i is cell node nodeOrder[i]: nodes of the same place in the
/// reference cell and the reference element correspond, so that orientation is kept.
template <std::size_t nbNodes> struct VtkCell
{
    int cellType;
    std::array<int, nbNodes> nodeOrder;
};

template <std::size_t nbPoints> struct GaussRule
{
    std::array<ReferencePoint, nbPoints> points;
    std::array<double, nbPoints> weights;
};

/// 1/sqrt(3), the abscissa of the Gauss-Legendre rule of two points on [-1, 1], whose weights are 1.
inline constexpr double gaussAbscissa = 0.57735026918962576451;

/// sqrt(3/5), the outer abscissa of the rule of three points, and its weights.
inline constexpr double gaussAbscissaOf3 = 0.77459666924148337704;
inline constexpr std::array<double, 3> gaussWeightsOf3{5.0 / 9.0, 8.0 / 9.0, 5.0 / 9.0};

/// The grids of points of the reference domains through which quadratic functions are known; see ControlPoints.h.
enum class ControlGrid
{
    cube,
    wedge,
    pyramid
};

/// Points as they are stored, each coordinate rounded once.
template <std::size_t nbPoints>
constexpr std::array<Vector3, nbPoints> rounded(const std::array<ReferencePoint, nbPoints>& points)
{
    std::array<Vector3, nbPoints> result{};
    for (std::size_t i = 0; i < nbPoints; ++i)
    {
        result[i] = {single(points[i][0]), single(points[i][1]), single(points[i][2])};
    }
    return result;
}

/// The numbers 0, 1, 2 ...
template <std::size_t size> constexpr std::array<int, size> inOrder()
{
    std::array<int, size> numbers{};
    for (std::size_t i = 0; i < size; ++i)
    {
        numbers[i] = static_cast<int>(i);
    }
    return numbers;
}

constexpr bool allOf(std::same_as<bool> auto... conditions)
{
    return (conditions && ...);
}

/// Numbers that hold what is computed in double precision without rounding it: doubles and packs of them.
template <class Number>
concept WideNumber = requires(const Number& number)
{
    {
        wide(number)
        } -> std::convertible_to<Number>;
    requires std::same_as<std::remove_cvref_t<decltype(wide(number))>, Number>;
};

/// A value computed in double precision, as it is stored; a constant stands for all points of a pack.
template <class Number, class Value> constexpr Number stored(const Value& value)
{
    if constexpr (std::same_as<Number, Value>)
    {
        return value;
    }
    else if constexpr (WideNumber<Number>)
    {
        return Number(value);
    }
    else
    {
        return Number(single(value));
    }
}

/// Stores a gradient computed in double precision; constant components are plain numbers.
template <class Number, class DXi, class DEta, class DZeta>
constexpr void setGradient(std::array<Number, 3>& gradient, const DXi& dXi, const DEta& dEta, const DZeta& dZeta)
{
    gradient[0] = stored<Number>(dXi);
    gradient[1] = stored<Number>(dEta);
    gradient[2] = stored<Number>(dZeta);
}

/// Kinds that may reach beyond their nodes.
template <class Kind>
concept CurvedElementKind = requires
{
    Kind::controlGrid;
};

template <class Kind, class Number>
constexpr NodeValues<Kind::nbNodes, Number> shapeFunctionsAt(const std::array<Number, 3>& referenceCoords)
{
    NodeValues<Kind::nbNodes, Number> values{};
    Kind::shapeFunctions(referenceCoords, values);
    return values;
}

template <class Kind, class Number>
constexpr NodeGradients<Kind::nbNodes, Number> derivativesAt(const std::array<Number, 3>& referenceCoords)
{
    NodeGradients<Kind::nbNodes, Number> derivatives{};
    Kind::shapeFunctionDerivatives(referenceCoords, derivatives);
    return derivatives;
}

#endif
