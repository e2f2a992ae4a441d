/// Kind 113, the 13-node pyramid: base -1 <= xi, eta <= 1 at zeta = 0, apex at zeta = 1; in the node order of VTK.
///
/// Corners: as the 5-node pyramid's. Mid-edge nodes: 6 to 9 on 1-2, 2-3, 3-4, 4-1, 10 to 13 on 1-5, 2-5, 3-5, 4-5. Its
/// shape functions are the rational ones of Bedrosian (Int. J. Numer. Meth. Engng 35, 1992), which match those of
/// 20-node hexahedra and 10-node tetrahedra on its faces. Gauss points as the 5-node pyramid's.
#ifndef VELTRANE_QUADRATIC_PYRAMID_H
#define VELTRANE_QUADRATIC_PYRAMID_H

#include "GaussPointShares.h"
#include "LinearPyramid.h"

#include <algorithm>

/// A point in the section of the pyramid at its height.
template <class Wide> struct PyramidSection
{
    Wide xi;
    Wide eta;
    Wide zeta;
    Wide width; ///< half the side of the section
    Wide a;     ///< xi and eta as parts of the width, 0 at the height of the apex
    Wide b;

    constexpr PyramidSection(const Wide& x, const Wide& y, const Wide& z)
        : xi(x), eta(y), zeta(z), width(1.0 - z), a(x * inverse(width)), b(y * inverse(width))
    {
    }

    /// The function that falls from the corner of the section with these signs to 0 on the two sides across.
    constexpr Wide corner(double s, double t) const { return width + s * xi + t * eta + s * t * (xi * b); }

private:
    static constexpr Wide inverse(const Wide& width)
    {
        constexpr double tiny = 1e-300;
        return width / (width * width + Wide(tiny));
    }
};

struct QuadraticPyramid
{
    static constexpr int typeCode = 113;
    static constexpr std::string_view name = "quadratic pyramid";
    static constexpr std::string_view plural = "quadratic pyramids";
    static constexpr int dimension = 3;
    static constexpr int nbNodes = 13;
    static constexpr int nbCorners = 5;
    static constexpr int nbGaussPoints = 8;
    static constexpr Vector3 initialGuess = LinearPyramid::initialGuess;
    static constexpr ControlGrid controlGrid = ControlGrid::pyramid;

    static constexpr std::array<Vector3, nbNodes> nodes{{{-1, -1, 0},
                                                         {1, -1, 0},
                                                         {1, 1, 0},
                                                         {-1, 1, 0},
                                                         {0, 0, 1},
                                                         {0, -1, 0},
                                                         {1, 0, 0},
                                                         {0, 1, 0},
                                                         {-1, 0, 0},
                                                         {-0.5F, -0.5F, 0.5F},
                                                         {0.5F, -0.5F, 0.5F},
                                                         {0.5F, 0.5F, 0.5F},
                                                         {-0.5F, 0.5F, 0.5F}}};
    static constexpr std::array faces{faceOf(4, 0, 3, 2, 1, 8, 7, 6, 5), faceOf(3, 0, 1, 4, 5, 10, 9),
                                      faceOf(3, 1, 2, 4, 6, 11, 10), faceOf(3, 2, 3, 4, 7, 12, 11),
                                      faceOf(3, 3, 0, 4, 8, 9, 12)};
    static constexpr std::array<VtkCell<nbNodes>, 1> vtkCells{{{27, inOrder<nbNodes>()}}};

    static constexpr GaussRule<nbGaussPoints> gaussRule = LinearPyramid::gaussRule;
    static constexpr auto gaussPoints = rounded(gaussRule.points);

    template <class Number>
    static constexpr void shapeFunctions(const std::array<Number, 3>& point, NodeValues<nbNodes, Number>& values)
    {
        const PyramidSection section(wide(point[0]), wide(point[1]), wide(point[2]));
        const auto& [xi, eta, zeta, width, a, b] = section;
        for (std::size_t i = 0; i < 4; ++i)
        {
            const auto [s, t] = signs[i];
            const auto corner = section.corner(s, t);
            values[i] = stored<Number>(0.25 * (s * xi + t * eta - 1.0) * corner);
            values[i + 9] = stored<Number>(zeta * corner);
        }
        values[4] = stored<Number>(zeta * (2.0 * zeta - 1.0));
        for (std::size_t i = 0; i < 2; ++i)
        {
            const double sign = i == 0 ? -1.0 : 1.0;
            values[5 + 2 * i] = stored<Number>(0.5 * (width * width - xi * xi + sign * eta * (width - xi * a)));
            values[8 - 2 * i] = stored<Number>(0.5 * (width * width - eta * eta + sign * xi * (width - eta * b)));
        }
    }

    template <class Number>
    static constexpr void shapeFunctionDerivatives(const std::array<Number, 3>& point,
                                                   NodeGradients<nbNodes, Number>& derivatives)
    {
        const PyramidSection section(wide(point[0]), wide(point[1]), wide(point[2]));
        const auto& [xi, eta, zeta, width, a, b] = section;
        for (std::size_t i = 0; i < 4; ++i)
        {
            const auto [s, t] = signs[i];
            const auto corner = section.corner(s, t);
            const auto byXi = s * (1.0 + t * b);
            const auto byEta = t * (1.0 + s * a);
            const auto byZeta = s * t * a * b - 1.0;
            const auto factor = s * xi + t * eta - 1.0;
            setGradient(derivatives[i], 0.25 * (s * corner + factor * byXi), 0.25 * (t * corner + factor * byEta),
                        0.25 * factor * byZeta);
            setGradient(derivatives[i + 9], zeta * byXi, zeta * byEta, corner + zeta * byZeta);
        }
        setGradient(derivatives[4], 0.0, 0.0, 4.0 * zeta - 1.0);
        for (std::size_t i = 0; i < 2; ++i)
        {
            const double sign = i == 0 ? -1.0 : 1.0;
            setGradient(derivatives[5 + 2 * i], -xi - sign * eta * a, 0.5 * sign * (width - xi * a),
                        -width - 0.5 * sign * eta * (1.0 + a * a));
            setGradient(derivatives[8 - 2 * i], 0.5 * sign * (width - eta * b), -eta - sign * xi * b,
                        -width - 0.5 * sign * xi * (1.0 + b * b));
        }
    }

    static constexpr bool isConstantAlong(std::size_t node, std::size_t axis) { return node == 4 && axis < 2; }

    static constexpr void shapeFunctionsAtGaussPoint(std::size_t gaussPoint, NodeValues<nbNodes>& values)
    {
        shapeFunctions(gaussPoints[gaussPoint], values);
    }

    template <class Number = float> static constexpr auto contains(const std::array<Number, 3>& point, double margin)
    {
        return LinearPyramid::contains(point, margin);
    }

    template <class Number> static constexpr std::array<Number, 3> clamped(const std::array<Number, 3>& point)
    {
        constexpr Number zero{0};
        constexpr Number one{1};
        const Number zeta = std::clamp(point[2], zero, one);
        const Number width = one - zeta;
        return {std::clamp(point[0], -width, width), std::clamp(point[1], -width, width), zeta};
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
    static constexpr std::array<std::array<double, 2>, 4> signs{{{-1, -1}, {1, -1}, {1, 1}, {-1, 1}}};
};

#endif
