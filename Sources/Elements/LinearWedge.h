/// Type 3, the 6-node wedge on the triangle xi, eta >= 0, xi + eta <= 1 times -1 <= zeta <= 1.
///
/// Nodes: 1 (0,0,-1), 2 (1,0,-1), 3 (0,1,-1), 4 to 6 the same at zeta = 1. Gauss points: the three mid-edge points of
/// the triangle at -1/sqrt(3), then the three above them.
#ifndef VELTRANE_LINEAR_WEDGE_H
#define VELTRANE_LINEAR_WEDGE_H

#include "ReferenceElement.h"

struct LinearWedge
{
    static constexpr int typeCode = 3;
    static constexpr std::string_view name = "wedge";
    static constexpr std::string_view plural = "wedges";
    static constexpr int dimension = 3;
    static constexpr int nbNodes = 6;
    static constexpr int nbCorners = 6;
    static constexpr int nbGaussPoints = 6;
    static constexpr Vector3 initialGuess{single(1.0 / 3.0), single(1.0 / 3.0), 0.0F};

    static constexpr std::array<Vector3, nbNodes> nodes{
        {{0, 0, -1}, {1, 0, -1}, {0, 1, -1}, {0, 0, 1}, {1, 0, 1}, {0, 1, 1}}};
    static constexpr std::array faces{faceOf(3, 0, 2, 1), faceOf(3, 3, 4, 5), faceOf(4, 0, 1, 4, 3),
                                      faceOf(4, 1, 2, 5, 4), faceOf(4, 2, 0, 3, 5)};
    static constexpr std::array<VtkCell<nbNodes>, 1> vtkCells{{{13, inOrder<nbNodes>()}}};

    static constexpr double a = gaussAbscissa;
    static constexpr double weight = 1.0 / 6.0;
    static constexpr GaussRule<nbGaussPoints> gaussRule{
        {{{0.5, 0, -a}, {0.5, 0.5, -a}, {0, 0.5, -a}, {0.5, 0, a}, {0.5, 0.5, a}, {0, 0.5, a}}},
        {weight, weight, weight, weight, weight, weight}};
    static constexpr auto gaussPoints = rounded(gaussRule.points);

    template <class Number>
    static constexpr void shapeFunctions(const std::array<Number, 3>& point, NodeValues<nbNodes, Number>& values)
    {
        const auto xi = wide(point[0]);
        const auto eta = wide(point[1]);
        const auto zeta = wide(point[2]);
        values[0] = stored<Number>(0.5 * (1.0 - xi - eta) * (1.0 - zeta));
        values[1] = stored<Number>(0.5 * xi * (1.0 - zeta));
        values[2] = stored<Number>(0.5 * eta * (1.0 - zeta));
        values[3] = stored<Number>(0.5 * (1.0 - xi - eta) * (1.0 + zeta));
        values[4] = stored<Number>(0.5 * xi * (1.0 + zeta));
        values[5] = stored<Number>(0.5 * eta * (1.0 + zeta));
    }

    template <class Number>
    static constexpr void shapeFunctionDerivatives(const std::array<Number, 3>& point,
                                                   NodeGradients<nbNodes, Number>& derivatives)
    {
        const auto xi = wide(point[0]);
        const auto eta = wide(point[1]);
        const auto zeta = wide(point[2]);
        const auto below = 0.5 * (1.0 - zeta);
        const auto above = 0.5 * (1.0 + zeta);
        setGradient(derivatives[0], -below, -below, -0.5 * (1.0 - xi - eta));
        setGradient(derivatives[1], below, 0.0, -0.5 * xi);
        setGradient(derivatives[2], 0.0, below, -0.5 * eta);
        setGradient(derivatives[3], -above, -above, 0.5 * (1.0 - xi - eta));
        setGradient(derivatives[4], above, 0.0, 0.5 * xi);
        setGradient(derivatives[5], 0.0, above, 0.5 * eta);
    }

    static constexpr bool isConstantAlong(std::size_t node, std::size_t axis)
    {
        return node % 3 > 0 && axis < 2 && axis != node % 3 - 1;
    }

    static constexpr void shapeFunctionsAtGaussPoint(std::size_t gaussPoint, NodeValues<nbNodes>& values)
    {
        shapeFunctions(gaussPoints[gaussPoint], values);
    }

    template <class Number = float> static constexpr auto contains(const std::array<Number, 3>& point, double margin)
    {
        const auto xi = wide(point[0]);
        const auto eta = wide(point[1]);
        const auto zeta = wide(point[2]);
        return allOf(xi >= -margin, eta >= -margin, 1.0 - xi - eta >= -margin, zeta >= -1.0 - margin,
                     zeta <= 1.0 + margin);
    }

    /// Every node takes the mean of the Gauss points on the two triangle edges that meet in it.
    template <class Number>
    static constexpr void gaussPointsToNodes(const NodeValues<nbGaussPoints, Number>& gaussPointValues,
                                             NodeValues<nbNodes, Number>& nodeValues)
    {
        const auto& g = gaussPointValues;
        nodeValues[0] = stored<Number>((g[0] + g[2]) * 0.5);
        nodeValues[1] = stored<Number>((g[1] + g[0]) * 0.5);
        nodeValues[2] = stored<Number>((g[2] + g[1]) * 0.5);
        nodeValues[3] = stored<Number>((g[3] + g[5]) * 0.5);
        nodeValues[4] = stored<Number>((g[4] + g[3]) * 0.5);
        nodeValues[5] = stored<Number>((g[5] + g[4]) * 0.5);
    }
};

#endif
