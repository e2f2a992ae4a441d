/// Kind 118, the 18-node wedge on the triangle xi, eta >= 0, xi + eta <= 1 times -1 <= zeta <= 1, in the node order of
/// VTK.
///
/// Nodes 1 to 15: as the 15-node wedge's. Nodes 16 to 18: the centres of the faces above the edges 1-2, 2-3, 3-1. Gauss
/// points as the 15-node wedge's.
#ifndef VELTRANE_BIQUADRATIC_WEDGE_H
#define VELTRANE_BIQUADRATIC_WEDGE_H

#include "QuadraticWedge.h"

struct BiquadraticWedge
{
    static constexpr int typeCode = 118;
    static constexpr std::string_view name = "biquadratic wedge";
    static constexpr std::string_view plural = "biquadratic wedges";
    static constexpr int dimension = 3;
    static constexpr int nbNodes = 18;
    static constexpr int nbCorners = 6;
    static constexpr int nbGaussPoints = 9;
    static constexpr Vector3 initialGuess = LinearWedge::initialGuess;
    static constexpr ControlGrid controlGrid = ControlGrid::wedge;

    static constexpr std::array<Vector3, nbNodes> nodes = []
    {
        constexpr std::array<Vector3, 3> centres{{{0.5F, 0, 0}, {0.5F, 0.5F, 0}, {0, 0.5F, 0}}};
        std::array<Vector3, nbNodes> all{};
        std::copy(QuadraticWedge::nodes.begin(), QuadraticWedge::nodes.end(), all.begin());
        std::copy(centres.begin(), centres.end(), all.begin() + QuadraticWedge::nbNodes);
        return all;
    }();
    static constexpr std::array faces{faceOf(3, 0, 2, 1, 8, 7, 6), faceOf(3, 3, 4, 5, 9, 10, 11),
                                      faceOf(4, 0, 1, 4, 3, 6, 13, 9, 12, 15), faceOf(4, 1, 2, 5, 4, 7, 14, 10, 13, 16),
                                      faceOf(4, 2, 0, 3, 5, 8, 12, 11, 14, 17)};
    static constexpr std::array<VtkCell<nbNodes>, 1> vtkCells{{{32, inOrder<nbNodes>()}}};

    static constexpr GaussRule<nbGaussPoints> gaussRule = wedgeRuleOf9();
    static constexpr auto gaussPoints = rounded(gaussRule.points);

    template <class Number>
    static constexpr void shapeFunctions(const std::array<Number, 3>& point, NodeValues<nbNodes, Number>& values)
    {
        const auto area = areaCoordinates(wide(point[0]), wide(point[1]));
        const auto zeta = quadraticFactors(wide(point[2]));
        for (std::size_t i = 0; i < 3; ++i)
        {
            const auto corner = area[i] * (2.0 * area[i] - 1.0);
            const auto [a, b] = triangleEdges[i];
            const auto edge = 4.0 * area[a] * area[b];
            for (std::size_t layer = 0; layer < 3; ++layer)
            {
                values[i + firstOfCorners[layer]] = stored<Number>(corner * zeta.values[layer]);
                values[i + firstOfEdges[layer]] = stored<Number>(edge * zeta.values[layer]);
            }
        }
    }

    template <class Number>
    static constexpr void shapeFunctionDerivatives(const std::array<Number, 3>& point,
                                                   NodeGradients<nbNodes, Number>& derivatives)
    {
        const auto area = areaCoordinates(wide(point[0]), wide(point[1]));
        const auto zeta = quadraticFactors(wide(point[2]));
        for (std::size_t i = 0; i < 3; ++i)
        {
            const auto [dXi, dEta] = areaDerivatives[i];
            const auto slope = 4.0 * area[i] - 1.0;
            const auto corner = area[i] * (2.0 * area[i] - 1.0);
            const auto [a, b] = triangleEdges[i];
            const auto edge = 4.0 * area[a] * area[b];
            const auto edgeByXi = 4.0 * (areaDerivatives[a][0] * area[b] + areaDerivatives[b][0] * area[a]);
            const auto edgeByEta = 4.0 * (areaDerivatives[a][1] * area[b] + areaDerivatives[b][1] * area[a]);
            for (std::size_t layer = 0; layer < 3; ++layer)
            {
                const auto& along = zeta.values[layer];
                const auto& byZeta = zeta.derivatives[layer];
                setGradient(derivatives[i + firstOfCorners[layer]], dXi * slope * along, dEta * slope * along,
                            corner * byZeta);
                setGradient(derivatives[i + firstOfEdges[layer]], edgeByXi * along, edgeByEta * along, edge * byZeta);
            }
        }
    }

    static constexpr bool isConstantAlong(std::size_t node, std::size_t axis)
    {
        return node < QuadraticWedge::nbNodes && QuadraticWedge::isConstantAlong(node, axis);
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

private:
    /// Where the nodes above the triangle's corners and edges begin, per layer from below.
    static constexpr std::array<std::size_t, 3> firstOfCorners{0, 12, 3};
    static constexpr std::array<std::size_t, 3> firstOfEdges{6, 15, 9};
};

#endif
