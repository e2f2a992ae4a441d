#include "VectorHelpers.h"

#include <gtest/gtest.h>

#include <cmath>

TEST(VectorHelpers, SquaredDistanceSumsTheSquaresOfTheDifferences)
{
    EXPECT_EQ(squaredDistance(Vector3{1, 2, 3}, Vector3{3, -1, 9}), 4.0F + 9.0F + 36.0F);
    EXPECT_EQ(squaredDistance(Vector3{1, 2, 3}, Vector3{1, 2, 3}), 0.0F);
    const float raw[3] = {4, 2, 3};
    EXPECT_EQ(squaredDistance(Vector3{1, 2, 3}, raw), 9.0F);
}

TEST(VectorHelpers, APointIsWithinATolerancesBallNotItsCube)
{
    EXPECT_TRUE(isWithin({0, 0, 0}, {0.5F, 0, 0}, 0.5F));
    EXPECT_TRUE(isWithin({0, 0, 0}, {0, -0.5F, 0}, 0.5F));
    EXPECT_TRUE(isWithin({1, 1, 1}, {1, 1, 1}, 0.0F));
    EXPECT_FALSE(isWithin({0, 0, 0}, {0, 0, std::nextafter(0.5F, 1.0F)}, 0.5F));
    EXPECT_FALSE(isWithin({0, 0, 0}, {0.5F, 0.5F, 0}, 0.5F));
}

TEST(VectorHelpers, AMatrixTakesAVectorRowByRow)
{
    const float matrix[3][3] = {{1, 2, 3}, {4, 5, 6}, {7, 8, 10}};
    EXPECT_EQ(matrixTimesVector(matrix, {1, 10, 100}), (Vector3{321, 654, 1087}));
}

TEST(VectorHelpers, ARectangularMatrixGivesAsManyValuesAsItHasRows)
{
    const float matrix[] = {1, 2, 3, 4, 5, 6, 7, 8};
    const float vector[] = {1, 10, 100, 1000};
    float result[3] = {0, 0, -1};
    EXPECT_EQ(matrixTimesVector(matrix, 2, 4, vector, result), 2);
    EXPECT_EQ(result[0], 4321.0F);
    EXPECT_EQ(result[1], 8765.0F);
    EXPECT_EQ(result[2], -1.0F);
}

TEST(VectorHelpers, TheDotProductSumsTheProducts)
{
    EXPECT_EQ(dotProduct({1, 2, 3}, {4, -5, 6}), 12.0F);
}

TEST(VectorHelpers, TheCrossProductIsRightHanded)
{
    EXPECT_EQ(crossProduct({1, 0, 0}, {0, 1, 0}), (Vector3{0, 0, 1}));
    EXPECT_EQ(crossProduct({0, 1, 0}, {0, 0, 1}), (Vector3{1, 0, 0}));
    EXPECT_EQ(crossProduct({0, 0, 1}, {1, 0, 0}), (Vector3{0, 1, 0}));
    EXPECT_EQ(crossProduct({1, 2, 3}, {4, 5, 6}), (Vector3{-3, 6, -3}));
}

TEST(VectorHelpers, APowerMayHaveAnyWholeExponent)
{
    EXPECT_EQ(power(-3.0F, 2), 9.0F);
    EXPECT_EQ(power(-2.0F, 3), -8.0F);
    EXPECT_EQ(power(5.0F, 1), 5.0F);
    EXPECT_EQ(power(5.0F, 0), 1.0F);
    EXPECT_EQ(power(4.0F, -1), 0.25F);
}

TEST(VectorHelpers, ADoubleIsRoundedToTheNearestSingle)
{
    EXPECT_EQ(single(0.1), 0.1F);
    EXPECT_EQ(single(16777217.0), 16777216.0F);
    EXPECT_EQ(single(1.0 / 3.0), 0.333333343F);
}
