/// From values at Gauss points to values at nodes by least squares: the linear function of the reference coordinates
/// that fits the values best, evaluated at the nodes.
#ifndef VELTRANE_GAUSS_POINT_SHARES_H
#define VELTRANE_GAUSS_POINT_SHARES_H

#include "ReferenceElement.h"

/// How much of the value at each Gauss point each node gets, [nodes][points].
template <std::size_t nbPoints, std::size_t nbNodes>
using GaussPointShares = std::array<std::array<double, nbPoints>, nbNodes>;

namespace least_squares
{
using Terms = std::array<double, 4>;
using Matrix = std::array<Terms, 4>;

/// The linear function's terms at a point.
template <class Coordinate> constexpr Terms termsAt(const std::array<Coordinate, 3>& point)
{
    return {1.0, double{point[0]}, double{point[1]}, double{point[2]}};
}

/// Of a matrix that is symmetric and positive definite, which needs no pivoting.
constexpr Matrix inverseOf(Matrix matrix)
{
    Matrix inverse{};
    for (std::size_t i = 0; i < 4; ++i)
    {
        inverse[i][i] = 1.0;
    }
    for (std::size_t pivot = 0; pivot < 4; ++pivot)
    {
        const double factor = 1.0 / matrix[pivot][pivot];
        for (std::size_t column = 0; column < 4; ++column)
        {
            matrix[pivot][column] *= factor;
            inverse[pivot][column] *= factor;
        }
        for (std::size_t row = 0; row < 4; ++row)
        {
            const double share = row == pivot ? 0.0 : matrix[row][pivot];
            for (std::size_t column = 0; column < 4; ++column)
            {
                matrix[row][column] -= share * matrix[pivot][column];
                inverse[row][column] -= share * inverse[pivot][column];
            }
        }
    }
    return inverse;
}
} // namespace least_squares

template <std::size_t nbPoints, std::size_t nbNodes>
constexpr GaussPointShares<nbPoints, nbNodes> leastSquaresShares(const std::array<ReferencePoint, nbPoints>& points,
                                                                 const std::array<Vector3, nbNodes>& nodes)
{
    using namespace least_squares;
    Matrix normal{};
    for (const ReferencePoint& point : points)
    {
        const Terms terms = termsAt(point);
        for (std::size_t i = 0; i < 4; ++i)
        {
            for (std::size_t j = 0; j < 4; ++j)
            {
                normal[i][j] += terms[i] * terms[j];
            }
        }
    }
    const Matrix inverse = inverseOf(normal);
    GaussPointShares<nbPoints, nbNodes> shares{};
    for (std::size_t node = 0; node < nbNodes; ++node)
    {
        const Terms atNode = termsAt(nodes[node]);
        for (std::size_t point = 0; point < nbPoints; ++point)
        {
            const Terms atPoint = termsAt(points[point]);
            for (std::size_t i = 0; i < 4; ++i)
            {
                for (std::size_t j = 0; j < 4; ++j)
                {
                    shares[node][point] += atNode[i] * inverse[i][j] * atPoint[j];
                }
            }
        }
    }
    return shares;
}

/// Sums in the order of the Gauss points, in double precision.
template <class Number, std::size_t nbPoints, std::size_t nbNodes>
constexpr void shareOut(const GaussPointShares<nbPoints, nbNodes>& shares,
                        const std::array<Number, nbPoints>& gaussPointValues, std::array<Number, nbNodes>& nodeValues)
{
    for (std::size_t node = 0; node < nbNodes; ++node)
    {
        auto sum = shares[node][0] * wide(gaussPointValues[0]);
        for (std::size_t point = 1; point < nbPoints; ++point)
        {
            sum += shares[node][point] * wide(gaussPointValues[point]);
        }
        nodeValues[node] = stored<Number>(sum);
    }
}

#endif
