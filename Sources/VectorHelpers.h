/// Small single-precision vector and matrix operations of the geometry.
#ifndef VELTRANE_VECTOR_HELPERS_H
#define VELTRANE_VECTOR_HELPERS_H

#include <array>
#include <cmath>
#include <cstddef>

using Vector3 = std::array<float, 3>;

/// Rounds to single precision: constants are double, and so is the expression that one stands in, until it is stored.
constexpr float single(double value)
{
    return static_cast<float>(value);
}

/// What single-precision values are computed in.
constexpr double wide(double value)
{
    return value;
}

/// |a - b|^2, summed x, y, z; for any two triples that can be indexed.
template <class A, class B> constexpr auto squaredDistance(const A& a, const B& b)
{
    const auto dx = a[0] - b[0];
    const auto dy = a[1] - b[1];
    const auto dz = a[2] - b[2];
    return dx * dx + dy * dy + dz * dz;
}

/// Whether two points are at most `tolerance` apart; the axes alone reject most that are not.
inline bool isWithin(const Vector3& a, const Vector3& b, float tolerance)
{
    return std::fabs(a[0] - b[0]) <= tolerance && std::fabs(a[1] - b[1]) <= tolerance &&
           std::fabs(a[2] - b[2]) <= tolerance && squaredDistance(a, b) <= tolerance * tolerance;
}

/// Row-major 3 x 3 matrix times vector.
template <class Number>
constexpr std::array<Number, 3> matrixTimesVector(const Number (&matrix)[3][3], const std::array<Number, 3>& vector)
{
    std::array<Number, 3> result{};
    for (std::size_t i = 0; i < 3; ++i)
    {
        result[i] = matrix[i][0] * vector[0] + matrix[i][1] * vector[1] + matrix[i][2] * vector[2];
    }
    return result;
}

/// Row-major m x n matrix times a vector of n values, into `result`; returns m.
constexpr int matrixTimesVector(const float* matrix, int m, int n, const float* vector, float* result)
{
    for (int i = 0; i < m; ++i)
    {
        float sum = 0.0F;
        for (int j = 0; j < n; ++j)
        {
            sum += matrix[i * n + j] * vector[j];
        }
        result[i] = sum;
    }
    return m;
}

constexpr float dotProduct(const Vector3& a, const Vector3& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

constexpr Vector3 crossProduct(const Vector3& a, const Vector3& b)
{
    Vector3 result{};
    for (std::size_t i = 0; i < 3; ++i)
    {
        const std::size_t j = (i + 1) % 3;
        const std::size_t k = (i + 2) % 3;
        result[i] = a[j] * b[k] - a[k] * b[j];
    }
    return result;
}

inline float power(float base, int exponent)
{
    return exponent == 2 ? base * base : std::pow(base, static_cast<float>(exponent));
}

#endif
