/// Kind 127, the 27-node hexahedron on the cube [-1, 1]^3, in the node order of VTK.
///
/// Nodes 1 to 20: as the 20-node hexahedron's. Nodes 21 to 26: the centres of the faces at xi = -1, xi = 1, eta = -1,
/// eta = 1, zeta = -1, zeta = 1. Node 27: the centre. Gauss points as the 20-node hexahedron's.
#ifndef VELTRANE_TRIQUADRATIC_HEXAHEDRON_H
#define VELTRANE_TRIQUADRATIC_HEXAHEDRON_H

#include "QuadraticHexahedron.h"

struct TriquadraticHexahedron
{
    static constexpr int typeCode = 127;
    static constexpr std::string_view name = "triquadratic hexahedron";
    static constexpr std::string_view plural = "triquadratic hexahedra";
    static constexpr int dimension = 3;
    static constexpr int nbNodes = 27;
    static constexpr int nbCorners = 8;
    static constexpr int nbGaussPoints = 27;
    static constexpr Vector3 initialGuess{0.0F, 0.0F, 0.0F};
    static constexpr ControlGrid controlGrid = ControlGrid::cube;

    static constexpr std::array<Vector3, nbNodes> nodes = []
    {
        constexpr std::array<Vector3, 7> centres{
            {{-1, 0, 0}, {1, 0, 0}, {0, -1, 0}, {0, 1, 0}, {0, 0, -1}, {0, 0, 1}, {0, 0, 0}}};
        std::array<Vector3, nbNodes> all{};
        std::copy(QuadraticHexahedron::nodes.begin(), QuadraticHexahedron::nodes.end(), all.begin());
        std::copy(centres.begin(), centres.end(), all.begin() + QuadraticHexahedron::nbNodes);
        return all;
    }();
    static constexpr std::array faces{
        faceOf(4, 0, 3, 2, 1, 11, 10, 9, 8, 24),   faceOf(4, 4, 5, 6, 7, 12, 13, 14, 15, 25),
        faceOf(4, 0, 1, 5, 4, 8, 17, 12, 16, 22),  faceOf(4, 1, 2, 6, 5, 9, 18, 13, 17, 21),
        faceOf(4, 2, 3, 7, 6, 10, 19, 14, 18, 23), faceOf(4, 3, 0, 4, 7, 11, 16, 15, 19, 20)};
    static constexpr std::array<VtkCell<nbNodes>, 1> vtkCells{{{29, inOrder<nbNodes>()}}};

    static constexpr GaussRule<nbGaussPoints> gaussRule = cubeRuleOf27();
    static constexpr GaussRule<LinearHexahedron::nbGaussPoints> reducedGaussRule = LinearHexahedron::gaussRule;
    static constexpr auto gaussPoints = rounded(gaussRule.points);

    template <class Number>
    static constexpr void shapeFunctions(const std::array<Number, 3>& point, NodeValues<nbNodes, Number>& values)
    {
        const auto xi = quadraticFactors(wide(point[0]));
        const auto eta = quadraticFactors(wide(point[1]));
        const auto zeta = quadraticFactors(wide(point[2]));
        for (std::size_t node = 0; node < nbNodes; ++node)
        {
            const auto [i, j, k] = places[node];
            values[node] = stored<Number>(xi.values[i] * eta.values[j] * zeta.values[k]);
        }
    }

    template <class Number>
    static constexpr void shapeFunctionDerivatives(const std::array<Number, 3>& point,
                                                   NodeGradients<nbNodes, Number>& derivatives)
    {
        const auto xi = quadraticFactors(wide(point[0]));
        const auto eta = quadraticFactors(wide(point[1]));
        const auto zeta = quadraticFactors(wide(point[2]));
        for (std::size_t node = 0; node < nbNodes; ++node)
        {
            const auto [i, j, k] = places[node];
            setGradient(derivatives[node], xi.derivatives[i] * eta.values[j] * zeta.values[k],
                        xi.values[i] * eta.derivatives[j] * zeta.values[k],
                        xi.values[i] * eta.values[j] * zeta.derivatives[k]);
        }
    }

    static constexpr bool isConstantAlong(std::size_t, std::size_t) { return false; }

    static constexpr void shapeFunctionsAtGaussPoint(std::size_t gaussPoint, NodeValues<nbNodes>& values)
    {
        shapeFunctions(gaussPoints[gaussPoint], values);
    }

    template <class Number = float> static constexpr auto contains(const std::array<Number, 3>& point, double margin)
    {
        return LinearHexahedron::contains(point, margin);
    }

    template <class Number> static constexpr std::array<Number, 3> clamped(const std::array<Number, 3>& point)
    {
        return clampedToCube(point);
    }

    /// By least squares, from the points of either rule.
    template <class Number, std::size_t nbPoints>
    static constexpr void gaussPointsToNodes(const std::array<Number, nbPoints>& gaussPointValues,
                                             NodeValues<nbNodes, Number>& nodeValues)
    {
        constexpr auto shares = []
        {
            if constexpr (nbPoints == nbGaussPoints)
            {
                return leastSquaresShares(gaussRule.points, nodes);
            }
            else
            {
                return leastSquaresShares(reducedGaussRule.points, nodes);
            }
        }();
        shareOut(shares, gaussPointValues, nodeValues);
    }

private:
    static constexpr auto places = placesOf(nodes);
};

#endif
