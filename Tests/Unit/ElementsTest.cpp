// Shape functions, their derivatives, the inside test and the initial guess of every element kind.
#include "Elements/ElementKinds.h"
#include "TestModels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <random>
#include <type_traits>

namespace
{
template <class Kind> NodeValues<Kind::nbNodes> shapeAt(const Vector3& point)
{
    NodeValues<Kind::nbNodes> values;
    Kind::shapeFunctions(point, values);
    return values;
}

template <class Kind> NodeGradients<Kind::nbNodes> gradientsAt(const Vector3& point)
{
    NodeGradients<Kind::nbNodes> gradients;
    Kind::shapeFunctionDerivatives(point, gradients);
    return gradients;
}

/// Multiples of 1/8, at which every shape function of every kind is exact in single precision.
const std::vector<Vector3> exactPoints{
    {0, 0, 0}, {0.125F, 0.25F, 0.5F}, {-0.5F, 0.25F, 0.375F}, {0.75F, -0.125F, -0.25F}, {1, -1, 0.625F}, {-1, 0.5F, 1}};

/// Whether shape functions are polynomials, at most quadratic along each axis.
template <class Kind> constexpr bool arePolynomials = !std::is_same_v<Kind, QuadraticPyramid>;

/// The single next to a value, further from 0.
float further(float value)
{
    return std::nextafter(value, value < 0.0F ? -INFINITY : INFINITY);
}

/// A point that lies on the limit of an inside test with a margin of 1/4, and the axis along which it leaves.
struct LimitPoint
{
    Vector3 point;
    std::size_t axis;
    float sign;
};

template <class Kind> void expectLimits(const std::vector<LimitPoint>& limits)
{
    for (const LimitPoint& limit : limits)
    {
        Vector3 point = limit.point;
        EXPECT_TRUE(Kind::contains(point, 0.25)) << point[0] << ' ' << point[1] << ' ' << point[2];
        point[limit.axis] = std::nextafter(point[limit.axis], limit.sign * INFINITY);
        EXPECT_FALSE(Kind::contains(point, 0.25)) << "axis " << limit.axis << ", sign " << limit.sign;
    }
}

template <class Kind> class EveryElementKind : public testing::Test
{
};

using Kinds = VolumeElementKinds::Into<testing::Types>;
TYPED_TEST_SUITE(EveryElementKind, Kinds);
} // namespace

TYPED_TEST(EveryElementKind, HasShapeFunctionsThatSumToOneEverywhere)
{
    std::vector<Vector3> points = exactPoints;
    points.push_back({0.1F, 0.2F, 0.3F});
    points.push_back({-3.7F, 2.9F, 5.3F});
    for (const Vector3& point : points)
    {
        double sum = 0.0;
        double largest = 1.0;
        for (const float value : shapeAt<TypeParam>(point))
        {
            sum += static_cast<double>(value);
            largest = std::max(largest, std::abs(static_cast<double>(value)));
        }
        EXPECT_NEAR(sum, 1.0, 1e-6 * largest) << point[0] << ' ' << point[1] << ' ' << point[2];
    }
}

TYPED_TEST(EveryElementKind, HasShapeFunctionsThatAreOneAtTheirNodeAndZeroAtTheOthers)
{
    const std::vector<Vector3> nodes = referenceNodes(TypeParam::typeCode);
    ASSERT_EQ(nodes.size(), TypeParam::nbNodes);
    for (std::size_t node = 0; node < nodes.size(); ++node)
    {
        const auto values = shapeAt<TypeParam>(nodes[node]);
        for (std::size_t i = 0; i < nodes.size(); ++i)
        {
            EXPECT_EQ(values[i], i == node ? 1.0F : 0.0F) << "function " << i << " at node " << node;
        }
    }
}

TYPED_TEST(EveryElementKind, ReproducesPositionsInTheReferenceDomain)
{
    const std::vector<Vector3> nodes = referenceNodes(TypeParam::typeCode);
    for (const Vector3& point : exactPoints)
    {
        const auto values = shapeAt<TypeParam>(point);
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            double position = 0.0;
            for (std::size_t i = 0; i < nodes.size(); ++i)
            {
                position += static_cast<double>(values[i]) * static_cast<double>(nodes[i][axis]);
            }
            EXPECT_NEAR(position, static_cast<double>(point[axis]), arePolynomials<TypeParam> ? 0.0 : 1e-6);
        }
    }
}

TYPED_TEST(EveryElementKind, HasDerivativesOfZeroWhereItSaysThatAFunctionIsConstantAndNowhereElse)
{
    for (std::size_t node = 0; node < TypeParam::nbNodes; ++node)
    {
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            const bool isZeroEverywhere = std::ranges::all_of(
                exactPoints, [&](const Vector3& point) { return gradientsAt<TypeParam>(point)[node][axis] == 0.0F; });
            EXPECT_EQ(TypeParam::isConstantAlong(node, axis), isZeroEverywhere) << "node " << node << ", axis " << axis;
        }
    }
}

TYPED_TEST(EveryElementKind, HasTheDerivativesOfItsShapeFunctions)
{
    if (!arePolynomials<TypeParam>)
    {
        GTEST_SKIP() << "differences are no derivatives";
    }
    // At most quadratic along an axis, so that central differences are the derivatives, here without any rounding.
    constexpr float step = 0.125F;
    for (const Vector3& point : exactPoints)
    {
        const auto gradients = gradientsAt<TypeParam>(point);
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            Vector3 before = point;
            Vector3 after = point;
            before[axis] -= step;
            after[axis] += step;
            const auto valuesBefore = shapeAt<TypeParam>(before);
            const auto valuesAfter = shapeAt<TypeParam>(after);
            for (std::size_t i = 0; i < TypeParam::nbNodes; ++i)
            {
                const double difference =
                    (static_cast<double>(valuesAfter[i]) - static_cast<double>(valuesBefore[i])) / (2.0 * step);
                EXPECT_EQ(static_cast<double>(gradients[i][axis]), difference) << "function " << i << ", axis " << axis;
            }
        }
    }
}

TYPED_TEST(EveryElementKind, HasDerivativesThatSumToZero)
{
    const Vector3 point{0.3F, 0.1F, 0.45F};
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        double sum = 0.0;
        for (const Vector3& gradient : gradientsAt<TypeParam>(point))
        {
            sum += static_cast<double>(gradient[axis]);
        }
        EXPECT_NEAR(sum, 0.0, 1e-6);
    }
}

TYPED_TEST(EveryElementKind, HoldsItsNodesAndItsInitialGuessWithoutMargin)
{
    for (const Vector3& node : referenceNodes(TypeParam::typeCode))
    {
        EXPECT_TRUE(TypeParam::contains(node, 0.0));
    }
    EXPECT_TRUE(TypeParam::contains(TypeParam::initialGuess, 0.0));
}

TEST(ElementKinds, AreFoundByTheirCode)
{
    for (int typeCode = -1; typeCode <= 15; ++typeCode)
    {
        int found = -1;
        const bool known = visitElementKind(typeCode, [&](auto kind) { found = kind.typeCode; });
        const bool expected = std::find(typesWithShapeFunctions.begin(), typesWithShapeFunctions.end(), typeCode) !=
                              typesWithShapeFunctions.end();
        EXPECT_EQ(known, expected) << typeCode;
        EXPECT_EQ(hasShapeFunctions(typeCode), expected) << typeCode;
        EXPECT_EQ(found, expected ? typeCode : -1);
    }
}

TEST(ElementKinds, StartTheirSearchAtAPointOfTheirOwn)
{
    EXPECT_EQ(LinearHexahedron::initialGuess, (Vector3{0, 0, 0}));
    EXPECT_EQ(LinearTetrahedron::initialGuess, (Vector3{0.25F, 0.25F, 0.25F}));
    EXPECT_EQ(LinearWedge::initialGuess, (Vector3{0.333333343F, 0.333333343F, 0}));
    EXPECT_EQ(QuadraticTetrahedron::initialGuess, (Vector3{0.25F, 0.25F, 0.25F}));
    EXPECT_EQ(LinearPyramid::initialGuess, (Vector3{0, 0, 0.2F}));
}

TEST(ElementKinds, RoundShapeFunctionsOnceFromDoublePrecision)
{
    // Three times a quarter of the step below 1: rounded on the way, each would vanish.
    const float tiny = 0x1p-26F;
    EXPECT_EQ(shapeAt<LinearTetrahedron>({tiny, tiny, tiny})[0], std::nextafter(1.0F, 0.0F));
    // (1 + 2^-12)^3 has 37 bits; its square rounded on the way would lose 2^-24.
    const float small = 0x1p-12F;
    EXPECT_EQ(shapeAt<LinearHexahedron>({small, small, small})[6],
              static_cast<float>((1.0 + 3 * 0x1p-12 + 3 * 0x1p-24 + 0x1p-36) / 8.0));
}

TEST(LinearHexahedron, TheFirstNodesDerivativesAreMinusTheOtherFactors)
{
    // -1/8 (1 - eta)(1 - zeta) and so on at (0.5, -0.5, 0.25).
    const auto gradients = gradientsAt<LinearHexahedron>({0.5F, -0.5F, 0.25F});
    EXPECT_EQ(gradients[0], (Vector3{-0.125F * 1.5F * 0.75F, -0.125F * 0.5F * 0.75F, -0.125F * 0.5F * 1.5F}));
}

TEST(LinearTetrahedron, ItsDerivativesAreConstant)
{
    const auto gradients = gradientsAt<LinearTetrahedron>({0.7F, -3, 11});
    EXPECT_EQ(gradients[0], (Vector3{-1, -1, -1}));
    EXPECT_EQ(gradients[1], (Vector3{1, 0, 0}));
    EXPECT_EQ(gradients[2], (Vector3{0, 1, 0}));
    EXPECT_EQ(gradients[3], (Vector3{0, 0, 1}));
}

TEST(LinearPyramid, ItsDerivativesAlongTheAxisAreConstant)
{
    const auto gradients = gradientsAt<LinearPyramid>({0.3F, -0.2F, 0.9F});
    for (std::size_t i = 0; i < 4; ++i)
    {
        EXPECT_EQ(gradients[i][2], -0.25F);
    }
    EXPECT_EQ(gradients[4], (Vector3{0, 0, 1}));
}

TEST(LinearPyramid, ItsShapeFunctionsArePolynomials)
{
    // Rational functions would be 0 for the first node on the edge between the third one and the apex.
    const auto values = shapeAt<LinearPyramid>({0.5F, 0.5F, 0.5F});
    EXPECT_EQ(values[0], (0.25F - 0.5F) / 4.0F);
    EXPECT_EQ(values[1], (0.75F - 0.5F) / 4.0F);
    EXPECT_EQ(values[2], (2.25F - 0.5F) / 4.0F);
    EXPECT_EQ(values[4], 0.5F);
}

TEST(QuadraticTetrahedron, ItsMidEdgeNodesLieBetweenTheirCorners)
{
    const std::vector<Vector3> nodes = referenceNodes(10);
    const int corners[6][2] = {{0, 1}, {1, 2}, {0, 2}, {0, 3}, {1, 3}, {2, 3}};
    for (std::size_t edge = 0; edge < 6; ++edge)
    {
        Vector3 middle;
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            middle[axis] = 0.5F * (nodes[static_cast<std::size_t>(corners[edge][0])][axis] +
                                   nodes[static_cast<std::size_t>(corners[edge][1])][axis]);
        }
        EXPECT_EQ(shapeAt<QuadraticTetrahedron>(middle)[4 + edge], 1.0F);
    }
}

TEST(InsideTest, OfTheHexahedronEndsAMarginBehindEachFace)
{
    expectLimits<LinearHexahedron>({{{-1.25F, 0, 0}, 0, -1},
                                    {{1.25F, 0, 0}, 0, 1},
                                    {{0, -1.25F, 0}, 1, -1},
                                    {{0, 1.25F, 0}, 1, 1},
                                    {{0, 0, -1.25F}, 2, -1},
                                    {{0, 0, 1.25F}, 2, 1},
                                    {{1.25F, 1.25F, -1.25F}, 2, -1}});
}

TEST(InsideTest, OfTheTetrahedraEndsAMarginBehindEachFace)
{
    const std::vector<LimitPoint> limits{{{-0.25F, 0.5F, 0.25F}, 0, -1}, {{0.5F, -0.25F, 0.25F}, 1, -1},
                                         {{0.25F, 0.5F, -0.25F}, 2, -1}, {{0.5F, 0.25F, 0.5F}, 0, 1},
                                         {{0.5F, 0.25F, 0.5F}, 1, 1},    {{0.5F, 0.25F, 0.5F}, 2, 1}};
    expectLimits<LinearTetrahedron>(limits);
    expectLimits<QuadraticTetrahedron>(limits);
}

TEST(InsideTest, OfTheWedgeEndsAMarginBehindEachFace)
{
    expectLimits<LinearWedge>({{{-0.25F, 0.5F, 0}, 0, -1},
                               {{0.5F, -0.25F, 0}, 1, -1},
                               {{0.5F, 0.75F, 0}, 0, 1},
                               {{0.5F, 0.75F, 0}, 1, 1},
                               {{0.25F, 0.25F, -1.25F}, 2, -1},
                               {{0.25F, 0.25F, 1.25F}, 2, 1}});
}

TEST(InsideTest, OfThePyramidEndsAMarginBehindEachFace)
{
    expectLimits<LinearPyramid>({{{0, 0, -0.25F}, 2, -1},
                                 {{0, -1, 0.25F}, 1, -1},
                                 {{1, 0, 0.25F}, 0, 1},
                                 {{0, 1, 0.25F}, 1, 1},
                                 {{-1, 0, 0.25F}, 0, -1},
                                 {{0, 0, 1.25F}, 2, 1}});
}

TEST(InsideTest, ComparesInDoublePrecision)
{
    // In single precision 1 - 2^-26 - 1 would be 0.
    EXPECT_FALSE(LinearTetrahedron::contains({0x1p-26F, 1, 0}, 0.0));
    EXPECT_FALSE(LinearWedge::contains({0x1p-26F, 1, 0}, 0.0));
    EXPECT_FALSE(LinearPyramid::contains({0x1p-26F, 0, 1}, 0.0));
    EXPECT_FALSE(LinearHexahedron::contains({further(1.0F), 0, 0}, 0.0));
    EXPECT_TRUE(LinearHexahedron::contains({further(1.0F), 0, 0}, 1e-6));
}

TEST(InsideTest, NotANumberIsOutside)
{
    const Vector3 point{NAN, 0.25F, 0.25F};
    EXPECT_FALSE(LinearHexahedron::contains(point, 0.002));
    EXPECT_FALSE(LinearTetrahedron::contains(point, 0.002));
    EXPECT_FALSE(LinearWedge::contains(point, 0.002));
    EXPECT_FALSE(LinearPyramid::contains(point, 0.002));
}

TEST(QuadraticTetrahedronDerivatives, AreThoseOfDoublePrecisionRoundedOnce)
{
    std::mt19937 generator(1);
    for (int i = 0; i < 1000000; ++i)
    {
        const auto xi = std::bit_cast<float>(static_cast<std::uint32_t>(generator()));
        const double wideXi = static_cast<double>(xi);
        const auto derivatives = gradientsAt<QuadraticTetrahedron>({xi, 0.0F, 0.0F});
        if (std::isnan(xi))
        {
            EXPECT_TRUE(std::isnan(derivatives[0][0]));
            continue;
        }
        ASSERT_EQ(derivatives[0][0], single(4.0 * wideXi - 1.0)) << xi;
        ASSERT_EQ(derivatives[4][1], single(4.0 * wideXi)) << xi;
        ASSERT_EQ(derivatives[6][1], single(-4.0 * wideXi)) << xi;
    }
}
