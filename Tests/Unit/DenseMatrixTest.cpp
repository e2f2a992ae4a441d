#include "DenseMatrix.h"
#include "AllocationFailure.h"
#include "MappingStringUtilities.h"
#include "TestModels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace
{
constexpr const char* singularText33 = "A 3*3 Matrix is not inversable in invMatrix33() function.\n";
constexpr const char* singularText = "A matrix is not inversable in invMatrix() function.\n";

template <class Real> class MatrixInversion33 : public testing::Test
{
protected:
    using Matrix = Real[3][3];

    static void expectInverse(const Matrix& matrix, const Matrix& expected)
    {
        Matrix inverse{};
        EXPECT_EQ(takeText(invMatrix33(matrix, inverse)), "(null)");
        expectEqual(inverse, expected);
    }

    static void expectEqual(const Matrix& matrix, const Matrix& expected)
    {
        for (int i = 0; i < 3; ++i)
        {
            for (int j = 0; j < 3; ++j)
            {
                EXPECT_EQ(matrix[i][j], expected[i][j]) << "at " << i << ", " << j;
            }
        }
    }
};

using Precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(MatrixInversion33, Precisions);
} // namespace

TYPED_TEST(MatrixInversion33, TheIdentityIsItsOwnInverse)
{
    this->expectInverse({{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
}

TYPED_TEST(MatrixInversion33, AMatrixOfDeterminantOneHasItsAdjugateAsInverse)
{
    this->expectInverse({{1, 2, 3}, {0, 1, 4}, {5, 6, 0}}, {{-24, 18, 5}, {20, -15, -4}, {-5, 4, 1}});
}

TYPED_TEST(MatrixInversion33, TheAdjugateIsDividedByTheDeterminant)
{
    // Determinant 8.
    this->expectInverse({{2, 1, 0}, {1, 3, 1}, {0, 1, 2}}, {{TypeParam(0.625), TypeParam(-0.25), TypeParam(0.125)},
                                                            {TypeParam(-0.25), TypeParam(0.5), TypeParam(-0.25)},
                                                            {TypeParam(0.125), TypeParam(-0.25), TypeParam(0.625)}});
}

TYPED_TEST(MatrixInversion33, AZeroRowFailsAndLeavesTheAdjugate)
{
    const TypeParam matrix[3][3] = {{1, 2, 3}, {0, 0, 0}, {4, 5, 6}};
    TypeParam result[3][3];
    std::fill_n(&result[0][0], 9, TypeParam(99));
    EXPECT_EQ(takeText(invMatrix33(matrix, result)), singularText33);
    this->expectEqual(result, {{0, 3, 0}, {0, -6, 0}, {0, 3, 0}});
}

TYPED_TEST(MatrixInversion33, ATinyDeterminantIsNoFailure)
{
    constexpr auto tiny = TypeParam(0x1p-40);
    constexpr auto huge = TypeParam(0x1p40);
    this->expectInverse({{tiny, 0, 0}, {0, tiny, 0}, {0, 0, tiny}}, {{huge, 0, 0}, {0, huge, 0}, {0, 0, huge}});
}

TYPED_TEST(MatrixInversion33, EqualRowsFail)
{
    const TypeParam matrix[3][3] = {{1, 2, 3}, {1, 2, 3}, {4, 5, 7}};
    TypeParam result[3][3];
    EXPECT_EQ(takeText(invMatrix33(matrix, result)), singularText33);
}

TEST(MatrixInversion33InDouble, TheReciprocalOfTheDeterminantIsRoundedToSingle)
{
    // The single nearest to 1/3 is 11184811 / 2^25.
    const double third = 11184811.0 / 33554432.0;
    const double matrix[3][3] = {{3, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    double inverse[3][3];
    EXPECT_EQ(takeText(invMatrix33(matrix, inverse)), "(null)");
    EXPECT_EQ(inverse[0][0], third);
    EXPECT_EQ(inverse[1][1], 3.0 * third);
    EXPECT_GT(inverse[1][1], 1.0);
}

TEST(MatrixInversion33InSingle, TheReciprocalOfTheDeterminantIsRoundedBeforeItMultiplies)
{
    // 1/41 as a single times 41 is one step below 1; 41 divided by 41 would be 1.
    const float matrix[3][3] = {{41, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    float inverse[3][3];
    EXPECT_EQ(takeText(invMatrix33(matrix, inverse)), "(null)");
    EXPECT_EQ(inverse[1][1], 0.99999994F);
    EXPECT_EQ(inverse[0][0], static_cast<float>(1.0 / 41.0));
}

TEST(ReciprocalOfASingle, IsTheOneOfDoublePrecisionRounded)
{
    const auto expectSame = [](float x)
    { ASSERT_EQ(std::bit_cast<std::uint32_t>(reciprocal(x)), std::bit_cast<std::uint32_t>(single(1.0 / x))) << x; };
    std::mt19937 generator(1);
    for (int i = 0; i < 1000000; ++i)
    {
        expectSame(std::bit_cast<float>(static_cast<std::uint32_t>(generator())));
    }
    // Where the reciprocal overflows, or is so small that it has fewer bits.
    for (const float limit : {0x1p-128F, 0x1p126F, 0x1p127F, std::numeric_limits<float>::max(), 0.0F})
    {
        float x = limit;
        for (int i = 0; i < 100000; ++i)
        {
            expectSame(x);
            expectSame(-x);
            x = std::nextafter(x, limit == 0.0F ? 1.0F : 0.0F);
        }
    }
}

TEST(MatrixInversion33, SucceedsWithoutAText)
{
    const std::int64_t before = nbLiveAllocations();
    const float matrix[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    float inverse[3][3];
    EXPECT_EQ(invMatrix33(matrix, inverse), nullptr);
    EXPECT_EQ(nbLiveAllocations(), before);
}

namespace
{
void expectInverse(std::vector<float> matrix, int n, const std::vector<float>& expected)
{
    const std::int64_t before = nbLiveAllocations();
    EXPECT_EQ(takeText(invMatrix(matrix.data(), n)), "(null)");
    EXPECT_EQ(matrix, expected);
    EXPECT_EQ(nbLiveAllocations(), before);
}

void expectSingular(const std::vector<float>& matrix, int n)
{
    std::vector<float> work = matrix;
    EXPECT_EQ(takeText(invMatrix(work.data(), n)), singularText);
    EXPECT_EQ(work, matrix);
}
} // namespace

TEST(MatrixInversion, OfOneValueIsItsReciprocal)
{
    expectInverse({4}, 1, {0.25F});
}

TEST(MatrixInversion, AZeroOnTheDiagonalIsSwappedAway)
{
    expectInverse({0, 1, 1, 0}, 2, {0, 1, 1, 0});
}

TEST(MatrixInversion, APermutationOfThreeRowsBecomesItsTranspose)
{
    expectInverse({0, 1, 0, 0, 0, 1, 1, 0, 0}, 3, {0, 0, 1, 1, 0, 0, 0, 1, 0});
}

TEST(MatrixInversion, ATriangleOfOnesBecomesABidiagonalMatrix)
{
    expectInverse({1, 1, 1, 1, 0, 1, 1, 1, 0, 0, 1, 1, 0, 0, 0, 1}, 4,
                  {1, -1, 0, 0, 0, 1, -1, 0, 0, 0, 1, -1, 0, 0, 0, 1});
}

TEST(MatrixInversion, EliminatesAboveAndBelowThePivot)
{
    // Determinant 4; every intermediate value is a multiple of 1/8.
    expectInverse({2, 1, 1, 0, 2, 1, 0, 0, 1}, 3, {0.5F, -0.25F, -0.25F, 0, 0.5F, -0.5F, 0, 0, 1});
    expectInverse({1, 0, 0, 0.5F, 1, 0, 0.5F, 0.5F, 1}, 3, {1, 0, 0, -0.5F, 1, 0, -0.25F, -0.5F, 1});
}

TEST(MatrixInversion, ThePivotIsTheLargestMagnitudeOfTheColumn)
{
    // On the pivot 1e-10 the 1 of the other row would be lost.
    std::vector<float> matrix{1e-10F, 1, -1, 1};
    EXPECT_EQ(takeText(invMatrix(matrix.data(), 2)), "(null)");
    const std::vector<float> expected{1, -1, 1, 0};
    for (std::size_t i = 0; i < 4; ++i)
    {
        EXPECT_NEAR(matrix[i], expected[i], 1e-6F);
    }
}

TEST(MatrixInversion, AmongEqualPivotsTheUpperRowIsTaken)
{
    // Row 2 minus row 1 leaves 3, whose reciprocal r = 0.333333343 is rounded, and the upper right value becomes -r.
    // The lower row as pivot would make it 1 - 4r = -0.333333373.
    std::vector<float> matrix{1, 1, 1, 4};
    EXPECT_EQ(takeText(invMatrix(matrix.data(), 2)), "(null)");
    EXPECT_EQ(matrix[1], -0.333333343F);
    EXPECT_EQ(matrix[3], 0.333333343F);
}

TEST(MatrixInversion, AZeroColumnFailsAndLeavesTheMatrix)
{
    expectSingular({1, 0, 2, 3, 0, 4, 5, 0, 6}, 3);
}

TEST(MatrixInversion, APivotThatVanishesOnTheWayFailsAndLeavesTheMatrix)
{
    expectSingular({1, 2, 2, 4}, 2);
}

TEST(MatrixInversion, AWorkArrayThatCannotBeAllocatedFailsAndLeavesTheMatrix)
{
    std::vector<float> matrix{2, 0, 0, 2};
    const std::vector<std::string> outcomes = outcomesOfFailedTables(
        [&matrix]
        {
            char* text = invMatrix(matrix.data(), 2);
            std::printf("%s%g %g %g %g", text != nullptr ? text : "", matrix[0], matrix[1], matrix[2], matrix[3]);
            releaseString(text);
        });
    EXPECT_EQ(outcomes, std::vector<std::string>{"An allocation is not possible in invMatrix() function.\n2 0 0 2"});
}
