/// Inversion of small dense matrices. A failure comes back as a text of MappingStringUtilities' allocation, which the
/// caller prints and releases; null is success. Only an exactly zero determinant or pivot fails.
#ifndef VELTRANE_DENSE_MATRIX_H
#define VELTRANE_DENSE_MATRIX_H

#include "VectorHelpers.h"

/// Inverts the row-major 3 x 3 matrix a into b. A zero determinant leaves the adjugate in b.
char* invMatrix33(const float (&a)[3][3], float (&b)[3][3]);

/// The same in double precision, except that the reciprocal of the determinant is rounded to single.
char* invMatrix33(const double (&a)[3][3], double (&b)[3][3]);

/// Replaces the row-major n x n matrix by its inverse (Gauss-Jordan elimination with partial pivoting); a matrix that
/// cannot be inverted is left as it was.
char* invMatrix(float* matrix, int n);

/// The adjugate of a; returns its determinant.
template <class Number> Number adjugate33(const Number (&a)[3][3], Number (&b)[3][3])
{
    b[0][0] = a[1][1] * a[2][2] - a[1][2] * a[2][1];
    b[1][0] = -a[1][0] * a[2][2] + a[1][2] * a[2][0];
    b[2][0] = a[1][0] * a[2][1] - a[1][1] * a[2][0];
    b[0][1] = -a[0][1] * a[2][2] + a[0][2] * a[2][1];
    b[1][1] = a[0][0] * a[2][2] - a[0][2] * a[2][0];
    b[2][1] = -a[0][0] * a[2][1] + a[0][1] * a[2][0];
    b[0][2] = a[0][1] * a[1][2] - a[0][2] * a[1][1];
    b[1][2] = -a[0][0] * a[1][2] + a[0][2] * a[1][0];
    b[2][2] = a[0][0] * a[1][1] - a[0][1] * a[1][0];
    return a[0][0] * b[0][0] + a[0][1] * b[1][0] + a[0][2] * b[2][0];
}

/// 1 / x, computed in double precision and rounded to single.
inline double reciprocal(double x)
{
    return single(1.0 / x);
}

/// The same of a single, or of a pack of them, without the way through double precision: no reciprocal of a single is
/// so close to the middle between two singles that rounding it twice could differ from rounding it once.
template <class Number> Number reciprocal(const Number& x)
{
    return Number(1.0F) / x;
}

/// Divides an adjugate by its determinant, whose reciprocal is rounded to single.
template <class Number> void divideAdjugate33(Number (&b)[3][3], const Number& determinant)
{
    const Number factor = reciprocal(determinant);
    for (auto& row : b)
    {
        for (Number& value : row)
        {
            value *= factor;
        }
    }
}

/// What both invMatrix33 do, without a text: false if the determinant is exactly 0.
template <class Real> bool invertMatrix33(const Real (&a)[3][3], Real (&b)[3][3])
{
    const Real determinant = adjugate33(a, b);
    if (determinant == Real{0})
    {
        return false;
    }
    divideAdjugate33(b, determinant);
    return true;
}

#endif
