/// Kind 120, the 20-node hexahedron on the cube [-1, 1]^3: the serendipity element, in the node order of VTK.
///
/// Corners: as the 8-node hexahedron's. Mid-edge nodes: 9 to 12 on 1-2, 2-3, 3-4, 4-1, 13 to 16 above them, 17 to 20 on
/// 1-5, 2-6, 3-7, 4-8. Gauss points: 3 x 3 x 3, xi running fastest, then eta; reduced 2 x 2 x 2, in the order of the
/// corners.
#ifndef VELTRANE_QUADRATIC_HEXAHEDRON_H
#define VELTRANE_QUADRATIC_HEXAHEDRON_H

#include "AxisFactors.h"
#include "GaussPointShares.h"
#include "LinearHexahedron.h"
#include "ReferenceElement.h"

#include <algorithm>

/// The point of the cube that is nearest to one outside.
template <class Number> constexpr std::array<Number, 3> clampedToCube(const std::array<Number, 3>& point)
{
    constexpr Number one{1};
    return {std::clamp(point[0], -one, one), std::clamp(point[1], -one, one), std::clamp(point[2], -one, one)};
}

/// The rule of 27 points on the cube.
constexpr GaussRule<27> cubeRuleOf27()
{
    constexpr std::array<double, 3> abscissas{-gaussAbscissaOf3, 0.0, gaussAbscissaOf3};
    GaussRule<27> rule{};
    for (std::size_t i = 0; i < 27; ++i)
    {
        rule.points[i] = {abscissas[i % 3], abscissas[i / 3 % 3], abscissas[i / 9]};
        rule.weights[i] = gaussWeightsOf3[i % 3] * gaussWeightsOf3[i / 3 % 3] * gaussWeightsOf3[i / 9];
    }
    return rule;
}

/// What the function of a corner has beside its factors: 0 at the mid-edge nodes next to the corner.
template <class Number> constexpr auto serendipitySum(const Vector3& corner, const std::array<Number, 3>& point)
{
    const auto& [s, t, u] = corner;
    return wide(s) * wide(point[0]) + wide(t) * wide(point[1]) + wide(u) * wide(point[2]) - 2.0;
}

struct QuadraticHexahedron
{
    static constexpr int typeCode = 120;
    static constexpr std::string_view name = "quadratic hexahedron";
    static constexpr std::string_view plural = "quadratic hexahedra";
    static constexpr int dimension = 3;
    static constexpr int nbNodes = 20;
    static constexpr int nbCorners = 8;
    static constexpr int nbGaussPoints = 27;
    static constexpr Vector3 initialGuess{0.0F, 0.0F, 0.0F};
    static constexpr ControlGrid controlGrid = ControlGrid::cube;

    static constexpr std::array<Vector3, nbNodes> nodes{
        {{-1, -1, -1}, {1, -1, -1}, {1, 1, -1},  {-1, 1, -1}, {-1, -1, 1}, {1, -1, 1}, {1, 1, 1},
         {-1, 1, 1},   {0, -1, -1}, {1, 0, -1},  {0, 1, -1},  {-1, 0, -1}, {0, -1, 1}, {1, 0, 1},
         {0, 1, 1},    {-1, 0, 1},  {-1, -1, 0}, {1, -1, 0},  {1, 1, 0},   {-1, 1, 0}}};
    static constexpr std::array faces{faceOf(4, 0, 3, 2, 1, 11, 10, 9, 8),   faceOf(4, 4, 5, 6, 7, 12, 13, 14, 15),
                                      faceOf(4, 0, 1, 5, 4, 8, 17, 12, 16),  faceOf(4, 1, 2, 6, 5, 9, 18, 13, 17),
                                      faceOf(4, 2, 3, 7, 6, 10, 19, 14, 18), faceOf(4, 3, 0, 4, 7, 11, 16, 15, 19)};
    static constexpr std::array<VtkCell<nbNodes>, 1> vtkCells{{{25, inOrder<nbNodes>()}}};

    static constexpr GaussRule<nbGaussPoints> gaussRule = cubeRuleOf27();
    static constexpr GaussRule<LinearHexahedron::nbGaussPoints> reducedGaussRule = LinearHexahedron::gaussRule;
    static constexpr auto gaussPoints = rounded(gaussRule.points);

    template <class Number>
    static constexpr void shapeFunctions(const std::array<Number, 3>& point, NodeValues<nbNodes, Number>& values)
    {
        const auto xi = serendipityFactors(wide(point[0]));
        const auto eta = serendipityFactors(wide(point[1]));
        const auto zeta = serendipityFactors(wide(point[2]));
        for (std::size_t node = 0; node < nbNodes; ++node)
        {
            const auto [i, j, k] = places[node];
            const auto product = xi.values[i] * eta.values[j] * zeta.values[k];
            values[node] = stored<Number>(node < nbCorners ? 0.125 * product * serendipitySum(nodes[node], point)
                                                           : 0.25 * product);
        }
    }

    template <class Number>
    static constexpr void shapeFunctionDerivatives(const std::array<Number, 3>& point,
                                                   NodeGradients<nbNodes, Number>& derivatives)
    {
        const auto xi = serendipityFactors(wide(point[0]));
        const auto eta = serendipityFactors(wide(point[1]));
        const auto zeta = serendipityFactors(wide(point[2]));
        for (std::size_t node = 0; node < nbNodes; ++node)
        {
            const auto [i, j, k] = places[node];
            const auto besideXi = eta.values[j] * zeta.values[k];
            const auto besideEta = xi.values[i] * zeta.values[k];
            const auto besideZeta = xi.values[i] * eta.values[j];
            if (node < nbCorners)
            {
                // The derivative of a factor and that of the sum are both the sign of the corner.
                const auto sum = serendipitySum(nodes[node], point);
                setGradient(derivatives[node], 0.125 * xi.derivatives[i] * besideXi * (sum + xi.values[i]),
                            0.125 * eta.derivatives[j] * besideEta * (sum + eta.values[j]),
                            0.125 * zeta.derivatives[k] * besideZeta * (sum + zeta.values[k]));
            }
            else
            {
                setGradient(derivatives[node], 0.25 * xi.derivatives[i] * besideXi,
                            0.25 * eta.derivatives[j] * besideEta, 0.25 * zeta.derivatives[k] * besideZeta);
            }
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
