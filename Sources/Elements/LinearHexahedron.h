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
    static constexpr std::string_view name = "hexahedron";
    static constexpr std::string_view plural = "hexahedra";
    static constexpr int dimension = 3;
    static constexpr int nbNodes = 8;
    static constexpr int nbCorners = 8;
    static constexpr int nbGaussPoints = 8;
    static constexpr Vector3 initialGuess{0.0F, 0.0F, 0.0F};

    static constexpr std::array<Vector3, nbNodes> nodes{
        {{-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1}, {-1, -1, 1}, {1, -1, 1}, {1, 1, 1}, {-1, 1, 1}}};
    static constexpr std::array faces{faceOf(4, 0, 3, 2, 1), faceOf(4, 4, 5, 6, 7), faceOf(4, 0, 1, 5, 4),
                                      faceOf(4, 1, 2, 6, 5), faceOf(4, 2, 3, 7, 6), faceOf(4, 3, 0, 4, 7)};
    /// The second is the voxel, which counts its nodes row by row.
    static constexpr std::array<VtkCell<nbNodes>, 2> vtkCells{
        {{12, inOrder<nbNodes>()}, {11, {0, 1, 3, 2, 4, 5, 7, 6}}}};

    static constexpr double a = gaussAbscissa;
    static constexpr GaussRule<nbGaussPoints> gaussRule{
        {{{-a, -a, -a}, {a, -a, -a}, {a, a, -a}, {-a, a, -a}, {-a, -a, a}, {a, -a, a}, {a, a, a}, {-a, a, a}}},
        {1, 1, 1, 1, 1, 1, 1, 1}};
    static constexpr auto gaussPoints = rounded(gaussRule.points);

    template <class Number>
    static constexpr void shapeFunctions(const std::array<Number, 3>& point, NodeValues<nbNodes, Number>& values)
    {
        const auto xi = wide(point[0]);
        const auto eta = wide(point[1]);
        const auto zeta = wide(point[2]);
        values[0] = stored<Number>(0.125 * (1.0 - xi) * (1.0 - eta) * (1.0 - zeta));
        values[1] = stored<Number>(0.125 * (1.0 + xi) * (1.0 - eta) * (1.0 - zeta));
        values[2] = stored<Number>(0.125 * (1.0 + xi) * (1.0 + eta) * (1.0 - zeta));
        values[3] = stored<Number>(0.125 * (1.0 - xi) * (1.0 + eta) * (1.0 - zeta));
        values[4] = stored<Number>(0.125 * (1.0 - xi) * (1.0 - eta) * (1.0 + zeta));
        values[5] = stored<Number>(0.125 * (1.0 + xi) * (1.0 - eta) * (1.0 + zeta));
        values[6] = stored<Number>(0.125 * (1.0 + xi) * (1.0 + eta) * (1.0 + zeta));
        values[7] = stored<Number>(0.125 * (1.0 - xi) * (1.0 + eta) * (1.0 + zeta));
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
    template <class Number>
    static constexpr void gaussPointsToNodes(const NodeValues<nbGaussPoints, Number>& gaussPointValues,
                                             NodeValues<nbNodes, Number>& nodeValues)
    {
        nodeValues = gaussPointValues;
    }
};

#endif
