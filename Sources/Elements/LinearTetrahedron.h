/// Type 2, the 4-node tetrahedron on xi, eta, zeta >= 0, xi + eta + zeta <= 1.
///
/// Nodes: 1 (0,0,0), 2 (1,0,0), 3 (0,1,0), 4 (0,0,1). The first corner is the origin, unlike the quadratic
/// tetrahedron's. One Gauss point, the centre.
#ifndef VELTRANE_LINEAR_TETRAHEDRON_H
#define VELTRANE_LINEAR_TETRAHEDRON_H

#include "ReferenceElement.h"

struct LinearTetrahedron
{
    static constexpr int typeCode = 2;
    static constexpr std::string_view name = "tetrahedron";
    static constexpr std::string_view plural = "tetrahedra";
    static constexpr int dimension = 3;
    static constexpr int nbNodes = 4;
    static constexpr int nbCorners = 4;
    static constexpr int nbGaussPoints = 1;
    static constexpr Vector3 initialGuess{0.25F, 0.25F, 0.25F};

    static constexpr std::array<Vector3, nbNodes> nodes{{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    static constexpr std::array faces{faceOf(3, 0, 2, 1), faceOf(3, 0, 1, 3), faceOf(3, 1, 2, 3), faceOf(3, 2, 0, 3)};
    static constexpr std::array<VtkCell<nbNodes>, 1> vtkCells{{{10, inOrder<nbNodes>()}}};

    static constexpr GaussRule<nbGaussPoints> gaussRule{{{{0.25, 0.25, 0.25}}}, {1.0 / 6.0}};
    static constexpr auto gaussPoints = rounded(gaussRule.points);

    template <class Number>
    static constexpr void shapeFunctions(const std::array<Number, 3>& point, NodeValues<nbNodes, Number>& values)
    {
        const auto xi = wide(point[0]);
        const auto eta = wide(point[1]);
        const auto zeta = wide(point[2]);
        values[0] = stored<Number>(1.0 - xi - eta - zeta);
        values[1] = point[0];
        values[2] = point[1];
        values[3] = point[2];
    }

    template <class Number>
    static constexpr void shapeFunctionDerivatives(const std::array<Number, 3>&,
                                                   NodeGradients<nbNodes, Number>& derivatives)
    {
        setGradient(derivatives[0], -1.0, -1.0, -1.0);
        setGradient(derivatives[1], 1.0, 0.0, 0.0);
        setGradient(derivatives[2], 0.0, 1.0, 0.0);
        setGradient(derivatives[3], 0.0, 0.0, 1.0);
    }

    static constexpr bool isConstantAlong(std::size_t node, std::size_t axis) { return node > 0 && node != axis + 1; }

    static constexpr void shapeFunctionsAtGaussPoint(std::size_t gaussPoint, NodeValues<nbNodes>& values)
    {
        shapeFunctions(gaussPoints[gaussPoint], values);
    }

    template <class Number = float> static constexpr auto contains(const std::array<Number, 3>& point, double margin)
    {
        const auto xi = wide(point[0]);
        const auto eta = wide(point[1]);
        const auto zeta = wide(point[2]);
        return allOf(xi >= -margin, eta >= -margin, zeta >= -margin, 1.0 - xi - eta - zeta >= -margin);
    }

    /// Every node takes the one Gauss point.
    template <class Number>
    static constexpr void gaussPointsToNodes(const NodeValues<nbGaussPoints, Number>& gaussPointValues,
                                             NodeValues<nbNodes, Number>& nodeValues)
    {
        nodeValues.fill(gaussPointValues[0]);
    }
};

#endif
