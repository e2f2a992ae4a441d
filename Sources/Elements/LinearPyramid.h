/// Type 12, the 5-node pyramid: base -1 <= xi, eta <= 1 at zeta = 0, apex at zeta = 1.
///
/// Nodes: 1 (-1,-1,0), 2 (1,-1,0), 3 (1,1,0), 4 (-1,1,0), 5 the apex. Its shape functions are polynomials, not the
/// usual rational ones: on a face they do not match a tetrahedron's exactly, but they have no singular apex.
#ifndef VELTRANE_LINEAR_PYRAMID_H
#define VELTRANE_LINEAR_PYRAMID_H

#include "ReferenceElement.h"

struct LinearPyramid
{
    static constexpr int typeCode = 12;
    static constexpr std::string_view name = "pyramid";
    static constexpr std::string_view plural = "pyramids";
    static constexpr int dimension = 3;
    static constexpr int nbNodes = 5;
    static constexpr int nbCorners = 5;
    static constexpr int nbGaussPoints = 8;
    static constexpr Vector3 initialGuess{0.0F, 0.0F, single(0.2)};

    static constexpr std::array<Vector3, nbNodes> nodes{{{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}, {0, 0, 1}}};
    static constexpr std::array faces{faceOf(4, 0, 3, 2, 1), faceOf(3, 0, 1, 4), faceOf(3, 1, 2, 4), faceOf(3, 2, 3, 4),
                                      faceOf(3, 3, 0, 4)};
    static constexpr std::array<VtkCell<nbNodes>, 1> vtkCells{{{14, inOrder<nbNodes>()}}};

    /// Two layers of 2 x 2 points: the upper one, then the lower one, each in the order of the base nodes. Along the
    /// axis it is the rule of two points for the square of the section.
    static constexpr GaussRule<nbGaussPoints> gaussRule = []
    {
        constexpr std::array<double, 2> sections{0.455848155988775, 0.877485177344559};
        constexpr std::array<double, 2> weights{0.100785882079825, 0.232547451253508};
        GaussRule<nbGaussPoints> rule{};
        for (std::size_t i = 0; i < nbGaussPoints; ++i)
        {
            const double section = sections[i / 4];
            const auto& corner = nodes[i % 4];
            rule.points[i] = {section * gaussAbscissa * wide(corner[0]), section * gaussAbscissa * wide(corner[1]),
                              1.0 - section};
            rule.weights[i] = weights[i / 4];
        }
        return rule;
    }();
    static constexpr auto gaussPoints = rounded(gaussRule.points);

    template <class Number>
    static constexpr void shapeFunctions(const std::array<Number, 3>& point, NodeValues<nbNodes, Number>& values)
    {
        const auto xi = wide(point[0]);
        const auto eta = wide(point[1]);
        const auto zeta = wide(point[2]);
        values[0] = stored<Number>(((1.0 - xi) * (1.0 - eta) - zeta) / 4.0);
        values[1] = stored<Number>(((1.0 + xi) * (1.0 - eta) - zeta) / 4.0);
        values[2] = stored<Number>(((1.0 + xi) * (1.0 + eta) - zeta) / 4.0);
        values[3] = stored<Number>(((1.0 - xi) * (1.0 + eta) - zeta) / 4.0);
        values[4] = point[2];
    }

    template <class Number>
    static constexpr void shapeFunctionDerivatives(const std::array<Number, 3>& point,
                                                   NodeGradients<nbNodes, Number>& derivatives)
    {
        const auto xi = wide(point[0]);
        const auto eta = wide(point[1]);
        setGradient(derivatives[0], -0.25 * (1.0 - eta), -0.25 * (1.0 - xi), -0.25);
        setGradient(derivatives[1], 0.25 * (1.0 - eta), -0.25 * (1.0 + xi), -0.25);
        setGradient(derivatives[2], 0.25 * (1.0 + eta), 0.25 * (1.0 + xi), -0.25);
        setGradient(derivatives[3], -0.25 * (1.0 + eta), 0.25 * (1.0 - xi), -0.25);
        setGradient(derivatives[4], 0.0, 0.0, 1.0);
    }

    static constexpr bool isConstantAlong(std::size_t node, std::size_t axis) { return node == 4 && axis < 2; }

    static constexpr void shapeFunctionsAtGaussPoint(std::size_t gaussPoint, NodeValues<nbNodes>& values)
    {
        shapeFunctions(gaussPoints[gaussPoint], values);
    }

    template <class Number = float> static constexpr auto contains(const std::array<Number, 3>& point, double margin)
    {
        const auto xi = wide(point[0]);
        const auto eta = wide(point[1]);
        const auto zeta = wide(point[2]);
        return allOf(zeta >= -margin, 1.0 + eta - zeta >= -margin, 1.0 - xi - zeta >= -margin,
                     1.0 - eta - zeta >= -margin, 1.0 + xi - zeta >= -margin);
    }

    /// A base node takes the lower Gauss point next to it, the apex the mean of the four upper ones.
    template <class Number>
    static constexpr void gaussPointsToNodes(const NodeValues<nbGaussPoints, Number>& gaussPointValues,
                                             NodeValues<nbNodes, Number>& nodeValues)
    {
        const auto& g = gaussPointValues;
        for (std::size_t i = 0; i < 4; ++i)
        {
            nodeValues[i] = g[i + 4];
        }
        nodeValues[4] = stored<Number>(0.25 * (g[0] + g[1] + g[2] + g[3]));
    }
};

#endif
