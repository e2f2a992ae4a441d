/// Kind 115, the 15-node wedge on the triangle xi, eta >= 0, xi + eta <= 1 times -1 <= zeta <= 1: the serendipity
/// element, in the node order of VTK.
///
/// Corners: as the 6-node wedge's. Mid-edge nodes: 7 to 9 on 1-2, 2-3, 3-1, 10 to 12 above them, 13 to 15 on 1-4, 2-5,
/// 3-6. Gauss points: three within the triangle at each of the three places along zeta, from below.
#ifndef VELTRANE_QUADRATIC_WEDGE_H
#define VELTRANE_QUADRATIC_WEDGE_H

#include "AxisFactors.h"
#include "GaussPointShares.h"
#include "LinearWedge.h"

#include <algorithm>

/// A point of the wedge near to one outside: the nearest one of the triangle in its plane, and along zeta.
template <class Number> constexpr std::array<Number, 3> clampedToWedge(const std::array<Number, 3>& point)
{
    constexpr Number zero{0};
    constexpr Number one{1};
    const Number excess = std::max(zero, (point[0] + point[1] - one) / Number{2});
    const Number xi = std::clamp(point[0] - excess, zero, one);
    const Number eta = std::clamp(point[1] - excess, zero, one - xi);
    return {xi, eta, std::clamp(point[2], -one, one)};
}

/// The rule of 9 points on the wedge.
constexpr GaussRule<9> wedgeRuleOf9()
{
    constexpr double sixth = 1.0 / 6.0;
    constexpr std::array<std::array<double, 2>, 3> triangle{{{sixth, sixth}, {4 * sixth, sixth}, {sixth, 4 * sixth}}};
    constexpr std::array<double, 3> abscissas{-gaussAbscissaOf3, 0.0, gaussAbscissaOf3};
    GaussRule<9> rule{};
    for (std::size_t i = 0; i < 9; ++i)
    {
        rule.points[i] = {triangle[i % 3][0], triangle[i % 3][1], abscissas[i / 3]};
        rule.weights[i] = sixth * gaussWeightsOf3[i / 3];
    }
    return rule;
}

/// The area coordinates of the wedge's triangle, and their derivatives by xi and eta.
template <class Wide> constexpr std::array<Wide, 3> areaCoordinates(const Wide& xi, const Wide& eta)
{
    return {1.0 - xi - eta, xi, eta};
}
inline constexpr std::array<std::array<double, 2>, 3> areaDerivatives{{{-1, -1}, {1, 0}, {0, 1}}};

/// The triangle's edges by its corners, in the order of the mid-edge nodes.
inline constexpr std::array<std::array<std::size_t, 2>, 3> triangleEdges{{{0, 1}, {1, 2}, {2, 0}}};

struct QuadraticWedge
{
    static constexpr int typeCode = 115;
    static constexpr std::string_view name = "quadratic wedge";
    static constexpr std::string_view plural = "quadratic wedges";
    static constexpr int dimension = 3;
    static constexpr int nbNodes = 15;
    static constexpr int nbCorners = 6;
    static constexpr int nbGaussPoints = 9;
    static constexpr Vector3 initialGuess = LinearWedge::initialGuess;
    static constexpr ControlGrid controlGrid = ControlGrid::wedge;

    static constexpr std::array<Vector3, nbNodes> nodes{{{0, 0, -1},
                                                         {1, 0, -1},
                                                         {0, 1, -1},
                                                         {0, 0, 1},
                                                         {1, 0, 1},
                                                         {0, 1, 1},
                                                         {0.5F, 0, -1},
                                                         {0.5F, 0.5F, -1},
                                                         {0, 0.5F, -1},
                                                         {0.5F, 0, 1},
                                                         {0.5F, 0.5F, 1},
                                                         {0, 0.5F, 1},
                                                         {0, 0, 0},
                                                         {1, 0, 0},
                                                         {0, 1, 0}}};
    static constexpr std::array faces{faceOf(3, 0, 2, 1, 8, 7, 6), faceOf(3, 3, 4, 5, 9, 10, 11),
                                      faceOf(4, 0, 1, 4, 3, 6, 13, 9, 12), faceOf(4, 1, 2, 5, 4, 7, 14, 10, 13),
                                      faceOf(4, 2, 0, 3, 5, 8, 12, 11, 14)};
    static constexpr std::array<VtkCell<nbNodes>, 1> vtkCells{{{26, inOrder<nbNodes>()}}};

    static constexpr GaussRule<nbGaussPoints> gaussRule = wedgeRuleOf9();
    static constexpr auto gaussPoints = rounded(gaussRule.points);

    template <class Number>
    static constexpr void shapeFunctions(const std::array<Number, 3>& point, NodeValues<nbNodes, Number>& values)
    {
        const auto area = areaCoordinates(wide(point[0]), wide(point[1]));
        const auto zeta = serendipityFactors(wide(point[2]));
        for (std::size_t i = 0; i < 3; ++i)
        {
            const auto bubble = area[i] * zeta.values[1];
            const auto corner = area[i] * (2.0 * area[i] - 1.0);
            const auto [a, b] = triangleEdges[i];
            const auto edge = 2.0 * area[a] * area[b];
            values[i] = stored<Number>(0.5 * (corner * zeta.values[0] - bubble));
            values[i + 3] = stored<Number>(0.5 * (corner * zeta.values[2] - bubble));
            values[i + 6] = stored<Number>(edge * zeta.values[0]);
            values[i + 9] = stored<Number>(edge * zeta.values[2]);
            values[i + 12] = stored<Number>(bubble);
        }
    }

    template <class Number>
    static constexpr void shapeFunctionDerivatives(const std::array<Number, 3>& point,
                                                   NodeGradients<nbNodes, Number>& derivatives)
    {
        const auto area = areaCoordinates(wide(point[0]), wide(point[1]));
        const auto zeta = serendipityFactors(wide(point[2]));
        for (std::size_t i = 0; i < 3; ++i)
        {
            const auto [dXi, dEta] = areaDerivatives[i];
            const auto slope = 4.0 * area[i] - 1.0;
            const auto corner = area[i] * (2.0 * area[i] - 1.0);
            const auto [a, b] = triangleEdges[i];
            const auto edge = 2.0 * area[a] * area[b];
            const auto edgeByXi = 2.0 * (areaDerivatives[a][0] * area[b] + areaDerivatives[b][0] * area[a]);
            const auto edgeByEta = 2.0 * (areaDerivatives[a][1] * area[b] + areaDerivatives[b][1] * area[a]);
            for (std::size_t layer = 0; layer < 2; ++layer)
            {
                const auto& along = zeta.values[2 * layer];
                const auto& byZeta = zeta.derivatives[2 * layer];
                const auto cornerFactor = 0.5 * (slope * along - zeta.values[1]);
                setGradient(derivatives[i + 3 * layer], dXi * cornerFactor, dEta * cornerFactor,
                            0.5 * (corner * byZeta - area[i] * zeta.derivatives[1]));
                setGradient(derivatives[i + 6 + 3 * layer], edgeByXi * along, edgeByEta * along, edge * byZeta);
            }
            setGradient(derivatives[i + 12], dXi * zeta.values[1], dEta * zeta.values[1],
                        area[i] * zeta.derivatives[1]);
        }
    }

    static constexpr bool isConstantAlong(std::size_t node, std::size_t axis)
    {
        const bool isOnEdgeOfTriangle = node >= nbCorners && node < 12;
        return !isOnEdgeOfTriangle && node % 3 > 0 && axis < 2 && axis != node % 3 - 1;
    }

    static constexpr void shapeFunctionsAtGaussPoint(std::size_t gaussPoint, NodeValues<nbNodes>& values)
    {
        shapeFunctions(gaussPoints[gaussPoint], values);
    }

    template <class Number = float> static constexpr auto contains(const std::array<Number, 3>& point, double margin)
    {
        return LinearWedge::contains(point, margin);
    }

    template <class Number> static constexpr std::array<Number, 3> clamped(const std::array<Number, 3>& point)
    {
        return clampedToWedge(point);
    }

    /// By least squares.
    template <class Number>
    static constexpr void gaussPointsToNodes(const NodeValues<nbGaussPoints, Number>& gaussPointValues,
                                             NodeValues<nbNodes, Number>& nodeValues)
    {
        constexpr auto shares = leastSquaresShares(gaussRule.points, nodes);
        shareOut(shares, gaussPointValues, nodeValues);
    }
};

#endif
