#include "DenseMatrix.h"

#include "Allocation.h"
#include "MappingStringUtilities.h"

#include <algorithm>

namespace
{
/// A text of its own allocation, tagged with the routine that reports it.
char* newText(const char* routine, const char* text)
{
    MessageBuffer buffer(routine);
    formatMessage(buffer.text(), "%s", text);
    return buffer.release();
}

template <class Real> char* inversionWithText(const Real (&a)[3][3], Real (&b)[3][3])
{
    if (invertMatrix33(a, b))
    {
        return nullptr;
    }
    return newText("invMatrix33()", "A 3*3 Matrix is not inversable in invMatrix33() function.\n");
}

/// The row, from `column` on, with the largest magnitude in that column; among equals the upper one.
int pivotRow(const float* work, int n, int column)
{
    const int width = 2 * n;
    int pivot = column;
    for (int row = column + 1; row < n; ++row)
    {
        if (absoluteValue(work[row * width + column]) > absoluteValue(work[pivot * width + column]))
        {
            pivot = row;
        }
    }
    return pivot;
}

/// One step of the elimination, on a pivot that is not 0.
void eliminateColumn(float* work, int n, int column)
{
    const int width = 2 * n;
    float* pivotValues = work + column * width;
    const auto reciprocal = static_cast<float>(1.0 / pivotValues[column]);
    pivotValues[column] = 1.0F;
    for (int j = column + 1; j < width; ++j)
    {
        pivotValues[j] *= reciprocal;
    }
    for (int row = 0; row < n; ++row)
    {
        float* values = work + row * width;
        if (row != column)
        {
            for (int j = column + 1; j < width; ++j)
            {
                values[j] -= values[column] * pivotValues[j];
            }
        }
        values[column] = row == column ? 1.0F : 0.0F;
    }
}
} // namespace

char* invMatrix33(const float (&a)[3][3], float (&b)[3][3])
{
    return inversionWithText(a, b);
}

char* invMatrix33(const double (&a)[3][3], double (&b)[3][3])
{
    return inversionWithText(a, b);
}

char* invMatrix(float* matrix, int n)
{
    const int width = 2 * n;
    OwnedArray<float> work;
    if (!work.allocate(static_cast<std::int64_t>(n) * width))
    {
        return newText("invMatrix()", "An allocation is not possible in invMatrix() function.\n");
    }
    for (int row = 0; row < n; ++row)
    {
        float* values = work.get() + row * width;
        std::copy_n(matrix + row * n, n, values);
        std::fill_n(values + n, n, 0.0F);
        values[n + row] = 1.0F;
    }
    for (int column = 0; column < n; ++column)
    {
        const int pivot = pivotRow(work.get(), n, column);
        if (pivot != column)
        {
            std::swap_ranges(work.get() + column * width, work.get() + (column + 1) * width,
                             work.get() + pivot * width);
        }
        if (work[column * width + column] == 0.0F)
        {
            return newText("invMatrix()", "A matrix is not inversable in invMatrix() function.\n");
        }
        eliminateColumn(work.get(), n, column);
    }
    for (int row = 0; row < n; ++row)
    {
        std::copy_n(work.get() + row * width + n, n, matrix + row * n);
    }
    return nullptr;
}
