/// Type 10, the 10-node tetrahedron on xi, eta, zeta >= 0, xi + eta + zeta <= 1.
///
/// Corners: 1 (1,0,0), 2 (0,1,0), 3 (0,0,0), 4 (0,0,1): the third corner is the origin, unlike the linear
/// tetrahedron's. Mid-edge nodes: 5 on 1-2, 6 on 2-3, 7 on 1-3, 8 on 1-4, 9 on 2-4, 10 on 3-4.
#ifndef VELTRANE_QUADRATIC_TETRAHEDRON_H
#define VELTRANE_QUADRATIC_TETRAHEDRON_H

#include "LinearTetrahedron.h"
#include "ReferenceElement.h"

struct QuadraticTetrahedron
{
    static constexpr int typeCode = 10;
    static constexpr std::string_view name = "quadratic tetrahedron";
    static constexpr std::string_view plural = "quadratic tetrahedra";
    static constexpr int dimension = 3;
    static constexpr int nbNodes = 10;
    static constexpr int nbCorners = 4;
    static constexpr int nbGaussPoints = 5;
    static constexpr Vector3 initialGuess{0.25F, 0.25F, 0.25F};

    static constexpr std::array<Vector3, nbNodes> nodes{{{1, 0, 0},
                                                         {0, 1, 0},
                                                         {0, 0, 0},
                                                         {0, 0, 1},
                                                         {0.5F, 0.5F, 0},
                                                         {0, 0.5F, 0},
                                                         {0.5F, 0, 0},
                                                         {0.5F, 0, 0.5F},
                                                         {0, 0.5F, 0.5F},
                                                         {0, 0, 0.5F}}};
    static constexpr std::array faces{faceOf(3, 0, 2, 1, 6, 5, 4), faceOf(3, 0, 1, 3, 4, 8, 7),
                                      faceOf(3, 1, 2, 3, 5, 9, 8), faceOf(3, 2, 0, 3, 6, 7, 9)};
    /// The origin of the reference tetrahedron is VTK's first corner and the third one here.
    static constexpr std::array<VtkCell<nbNodes>, 1> vtkCells{{{24, {1, 2, 0, 3, 5, 6, 4, 8, 9, 7}}}};

    static constexpr double sixth = 1.0 / 6.0;
    static constexpr double nearCorner = 3.0 / 40.0;
    static constexpr GaussRule<nbGaussPoints> gaussRule{
        {{{0.25, 0.25, 0.25}, {0.5, sixth, sixth}, {sixth, 0.5, sixth}, {sixth, sixth, 0.5}, {sixth, sixth, sixth}}},
        {-2.0 / 15.0, nearCorner, nearCorner, nearCorner, nearCorner}};
    /// Volume coordinates (xi, eta, zeta, 1 - xi - eta - zeta). The fourth is stored, not one minus the others.
    static constexpr std::array<std::array<float, 4>, nbGaussPoints> gaussPointVolumeCoords = []
    {
        std::array<std::array<float, 4>, nbGaussPoints> coords{};
        for (std::size_t i = 0; i < nbGaussPoints; ++i)
        {
            const auto& [xi, eta, zeta] = gaussRule.points[i];
            coords[i] = {single(xi), single(eta), single(zeta), single(1.0 - xi - eta - zeta)};
        }
        return coords;
    }();

    template <class Number>
    static constexpr void shapeFunctions(const std::array<Number, 3>& point, NodeValues<nbNodes, Number>& values)
    {
        const auto xi = wide(point[0]);
        const auto eta = wide(point[1]);
        const auto zeta = wide(point[2]);
        shapeFunctionsInVolumeCoords(xi, eta, zeta, 1.0 - xi - eta - zeta, values);
    }

    template <class Number>
    static constexpr void shapeFunctionDerivatives(const std::array<Number, 3>& point,
                                                   NodeGradients<nbNodes, Number>& derivatives)
    {
        // Four times a single is exact, and to take 1 from it rounds alike in single and in double precision.
        const Number fourXi = Number(4.0F) * point[0];
        const Number fourEta = Number(4.0F) * point[1];
        const Number fourZeta = Number(4.0F) * point[2];
        const auto xi = wide(point[0]);
        const auto eta = wide(point[1]);
        const auto zeta = wide(point[2]);
        const auto l = 1.0 - xi - eta - zeta;
        const auto origin = stored<Number>(1.0 - 4.0 * l);
        const Number zero{};
        const Number one(1.0F);
        derivatives[0] = {fourXi - one, zero, zero};
        derivatives[1] = {zero, fourEta - one, zero};
        derivatives[2] = {origin, origin, origin};
        derivatives[3] = {zero, zero, fourZeta - one};
        derivatives[4] = {fourEta, fourXi, zero};
        derivatives[5] = {-fourEta, stored<Number>(4.0 * (l - eta)), -fourEta};
        derivatives[6] = {stored<Number>(4.0 * (l - xi)), -fourXi, -fourXi};
        derivatives[7] = {fourZeta, zero, fourXi};
        derivatives[8] = {zero, fourZeta, fourEta};
        derivatives[9] = {-fourZeta, -fourZeta, stored<Number>(4.0 * (l - zeta))};
    }

    static constexpr bool isConstantAlong(std::size_t node, std::size_t axis)
    {
        switch (node)
        {
        case 0: return axis != 0;
        case 1: return axis != 1;
        case 3: return axis != 2;
        case 4: return axis == 2;
        case 7: return axis == 1;
        case 8: return axis == 0;
        default: return false;
        }
    }

    static constexpr void shapeFunctionsAtGaussPoint(std::size_t gaussPoint, NodeValues<nbNodes>& values)
    {
        const auto& coords = gaussPointVolumeCoords[gaussPoint];
        shapeFunctionsInVolumeCoords(coords[0], coords[1], coords[2], coords[3], values);
    }

    template <class Number = float> static constexpr auto contains(const std::array<Number, 3>& point, double margin)
    {
        return LinearTetrahedron::contains(point, margin);
    }

    /// By number: corner k takes Gauss point k + 1, a mid-edge node the mean of its two corners' points and the centre.
    /// Gauss point 4 lies next to corner 4 and Gauss point 5 next to corner 3, so these two corners, and the mid-edge
    /// nodes between them and corners 1 and 2, take each other's point. Hosts rely on the rule as it is.
    template <class Number>
    static constexpr void gaussPointsToNodes(const NodeValues<nbGaussPoints, Number>& gaussPointValues,
                                             NodeValues<nbNodes, Number>& nodeValues)
    {
        const auto& g = gaussPointValues;
        nodeValues[0] = g[1];
        nodeValues[1] = g[2];
        nodeValues[2] = g[3];
        nodeValues[3] = g[4];
        nodeValues[4] = stored<Number>((g[1] + g[2] + g[0]) / 3.0);
        nodeValues[5] = stored<Number>((g[2] + g[3] + g[0]) / 3.0);
        nodeValues[6] = stored<Number>((g[3] + g[1] + g[0]) / 3.0);
        nodeValues[7] = stored<Number>((g[1] + g[4] + g[0]) / 3.0);
        nodeValues[8] = stored<Number>((g[2] + g[4] + g[0]) / 3.0);
        nodeValues[9] = stored<Number>((g[3] + g[4] + g[0]) / 3.0);
    }

private:
    template <class Wide, class Number>
    static constexpr void shapeFunctionsInVolumeCoords(const Wide& xi, const Wide& eta, const Wide& zeta, const Wide& l,
                                                       NodeValues<nbNodes, Number>& values)
    {
        values[0] = stored<Number>((2.0 * xi - 1.0) * xi);
        values[1] = stored<Number>((2.0 * eta - 1.0) * eta);
        values[2] = stored<Number>((2.0 * l - 1.0) * l);
        values[3] = stored<Number>((2.0 * zeta - 1.0) * zeta);
        values[4] = stored<Number>(4.0 * xi * eta);
        values[5] = stored<Number>(4.0 * eta * l);
        values[6] = stored<Number>(4.0 * xi * l);
        values[7] = stored<Number>(4.0 * xi * zeta);
        values[8] = stored<Number>(4.0 * eta * zeta);
        values[9] = stored<Number>(4.0 * zeta * l);
    }
};

#endif
