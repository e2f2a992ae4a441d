/// Type 1, the 8-node hexahedron on the cube [-1, 1]^3.
///
/// Nodes: 1 (-1,-1,-1), 2 (1,-1,-1), 3 (1,1,-1), 4 (-1,1,-1), 5 to 8 the same at zeta = 1. Gauss points: 2 x 2 x 2, in
/// the order of the nodes.
#ifndef VELTRANE_LINEAR_HEXAHEDRON_H
#define VELTRANE_LINEAR_HEXAHEDRON_H

#include "ReferenceElement.h"

struct LinearHexahedron
{
    static constexpr int typeCode = 1;
    static constexpr int nbNodes = 8;
    static constexpr int nbGaussPoints = 8;
    static constexpr Vector3 initialGuess{0.0F, 0.0F, 0.0F};

    static constexpr float a = gaussAbscissa;
    static constexpr std::array<Vector3, nbGaussPoints> gaussPoints{
        {{-a, -a, -a}, {a, -a, -a}, {a, a, -a}, {-a, a, -a}, {-a, -a, a}, {a, -a, a}, {a, a, a}, {-a, a, a}}};

    template <class Number>
    static constexpr void shapeFunctions(const std::array<Number, 3>& point, NodeValues<nbNodes, Number>& values)
    {
        const auto xi = wide(point[0]);
        const auto eta = wide(point[1]);
        const auto zeta = wide(point[2]);
        values[0] = single(0.125 * (1.0 - xi) * (1.0 - eta) * (1.0 - zeta));
        values[1] = single(0.125 * (1.0 + xi) * (1.0 - eta) * (1.0 - zeta));
        values[2] = single(0.125 * (1.0 + xi) * (1.0 + eta) * (1.0 - zeta));
        values[3] = single(0.125 * (1.0 - xi) * (1.0 + eta) * (1.0 - zeta));
        values[4] = single(0.125 * (1.0 - xi) * (1.0 - eta) * (1.0 + zeta));
        values[5] = single(0.125 * (1.0 + xi) * (1.0 - eta) * (1.0 + zeta));
        values[6] = single(0.125 * (1.0 + xi) * (1.0 + eta) * (1.0 + zeta));
        values[7] = single(0.125 * (1.0 - xi) * (1.0 + eta) * (1.0 + zeta));
    }

    template <class Number>
    static constexpr void shapeFunctionDerivatives(const std::array<Number, 3>& point,
                                                   NodeGradients<nbNodes, Number>& derivatives)
    {
        const auto xi = wide(point[0]);
        const auto eta = wide(point[1]);
        const auto zeta = wide(point[2]);
        for (std::size_t face = 0; face < 2; ++face)
        {
            const double sign = face == 0 ? -1.0 : 1.0;
            const auto alongZeta = 1.0 + sign * zeta;
            std::array<Number, 3>* corner = &derivatives[4 * face];
            setGradient(corner[0], -0.125 * (1.0 - eta) * alongZeta, -0.125 * (1.0 - xi) * alongZeta,
                        0.125 * sign * (1.0 - xi) * (1.0 - eta));
            setGradient(corner[1], 0.125 * (1.0 - eta) * alongZeta, -0.125 * (1.0 + xi) * alongZeta,
                        0.125 * sign * (1.0 + xi) * (1.0 - eta));
            setGradient(corner[2], 0.125 * (1.0 + eta) * alongZeta, 0.125 * (1.0 + xi) * alongZeta,
                        0.125 * sign * (1.0 + xi) * (1.0 + eta));
            setGradient(corner[3], -0.125 * (1.0 + eta) * alongZeta, 0.125 * (1.0 - xi) * alongZeta,
                        0.125 * sign * (1.0 - xi) * (1.0 + eta));
        }
    }

    static constexpr bool isConstantAlong(std::size_t, std::size_t) { return false; }

    static constexpr void shapeFunctionsAtGaussPoint(std::size_t gaussPoint, NodeValues<nbNodes>& values)
    {
        shapeFunctions(gaussPoints[gaussPoint], values);
    }

    template <class Number = float> static constexpr auto contains(const std::array<Number, 3>& point, double margin)
    {
        const auto xi = wide(point[0]);
        const auto eta = wide(point[1]);
        const auto zeta = wide(point[2]);
        return allOf(xi >= -1.0 - margin, xi <= 1.0 + margin, eta >= -1.0 - margin, eta <= 1.0 + margin,
                     zeta >= -1.0 - margin, zeta <= 1.0 + margin);
    }

    /// Every node takes the Gauss point next to it.
    static constexpr void gaussPointsToNodes(const NodeValues<nbGaussPoints>& gaussPointValues,
                                             NodeValues<nbNodes>& nodeValues)
    {
        nodeValues = gaussPointValues;
    }
};

#endif
