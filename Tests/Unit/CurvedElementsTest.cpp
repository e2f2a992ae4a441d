// The kinds that only the engine and the C++ interface know: quadratic fields, derivatives, boxes, the way back into
// the element, and what Gauss points give the nodes.
#include "Elements/ControlPoints.h"
#include "Elements/ElementKinds.h"
#include "Search/ElementBoxes.h"
#include "TestModels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

namespace
{
using Curved =
    testing::Types<QuadraticHexahedron, TriquadraticHexahedron, QuadraticWedge, BiquadraticWedge, QuadraticPyramid>;

template <class Kind> class EveryCurvedKind : public testing::Test
{
protected:
    double uniform(double low, double high)
    {
        return low + (high - low) * static_cast<double>(itsRandom() >> 11) * 0x1p-53;
    }

    /// Anywhere in the reference domain.
    ReferencePoint pointWithin()
    {
        return Kind::clamped(ReferencePoint{uniform(-1.5, 1.5), uniform(-1.5, 1.5), uniform(-1.5, 1.5)});
    }

    /// An element of twice the size or so, whose nodes are all displaced.
    TestMesh distortedElement(double amount)
    {
        TestMesh mesh(meshes::referenceElement(Kind::typeCode, 2.0F, {3.0F, -1.0F, 0.5F}));
        for (auto& node : mesh.nodes)
        {
            for (float& coordinate : node)
            {
                coordinate += static_cast<float>(uniform(-amount, amount));
            }
        }
        return mesh;
    }

    void load(TestMesh& mesh, ModelClass& model)
    {
        mesh.loadInto(model);
        model.itsAdmitsAllKinds = true;
    }

private:
    std::mt19937_64 itsRandom{1};
};
TYPED_TEST_SUITE(EveryCurvedKind, Curved);

double quadraticAt(const ReferencePoint& p)
{
    const auto& [x, y, z] = p;
    return 1.0 + 2.0 * x - y + 3.0 * z + x * x - 2.0 * x * y + 3.0 * y * y + z * x - 0.5 * z * y + 0.7 * z * z;
}

double linearAt(const ReferencePoint& p)
{
    return 3.0 - 2.0 * p[0] + p[1] + 0.5 * p[2];
}

template <class Kind> ReferencePoint nodeOf(std::size_t node)
{
    return {Kind::nodes[node][0], Kind::nodes[node][1], Kind::nodes[node][2]};
}

template <class Kind> double interpolated(double (*function)(const ReferencePoint&), const ReferencePoint& point)
{
    const auto values = shapeFunctionsAt<Kind>(point);
    double sum = 0.0;
    for (std::size_t node = 0; node < Kind::nbNodes; ++node)
    {
        sum += values[node] * function(nodeOf<Kind>(node));
    }
    return sum;
}

/// Values of a linear function at the points of a rule come to the nodes as they are.
template <class Kind, std::size_t nbPoints> void expectLinearAtNodes(const GaussRule<nbPoints>& rule)
{
    std::array<double, nbPoints> atPoints{};
    std::ranges::transform(rule.points, atPoints.begin(), linearAt);
    NodeValues<Kind::nbNodes, double> atNodes{};
    Kind::gaussPointsToNodes(atPoints, atNodes);
    for (std::size_t node = 0; node < Kind::nbNodes; ++node)
    {
        EXPECT_NEAR(atNodes[node], linearAt(nodeOf<Kind>(node)), 1e-13) << nbPoints << " points, node " << node;
    }
}

/// Of x^i y^j z^k over the reference domain.
template <std::size_t nbPoints> double integral(const GaussRule<nbPoints>& rule, int i, int j, int k)
{
    double sum = 0.0;
    for (std::size_t point = 0; point < nbPoints; ++point)
    {
        const auto& [x, y, z] = rule.points[point];
        sum += rule.weights[point] * std::pow(x, i) * std::pow(y, j) * std::pow(z, k);
    }
    return sum;
}
} // namespace

TYPED_TEST(EveryCurvedKind, ReproducesQuadraticFunctions)
{
    for (int i = 0; i < 1000; ++i)
    {
        const ReferencePoint point = this->pointWithin();
        EXPECT_NEAR(interpolated<TypeParam>(quadraticAt, point), quadraticAt(point), 1e-13);
    }
}

TYPED_TEST(EveryCurvedKind, HasTheDerivativesOfItsShapeFunctions)
{
    for (int i = 0; i < 100; ++i)
    {
        ReferencePoint point = this->pointWithin();
        point[2] = std::min(point[2], 0.95); // the slopes of the pyramid jump at its apex
        const auto gradients = derivativesAt<TypeParam>(point);
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            constexpr double step = 1e-5;
            ReferencePoint before = point;
            ReferencePoint after = point;
            before[axis] -= step;
            after[axis] += step;
            const auto valuesBefore = shapeFunctionsAt<TypeParam>(before);
            const auto valuesAfter = shapeFunctionsAt<TypeParam>(after);
            for (std::size_t node = 0; node < TypeParam::nbNodes; ++node)
            {
                EXPECT_NEAR(gradients[node][axis], (valuesAfter[node] - valuesBefore[node]) / (2.0 * step), 1e-6)
                    << "node " << node << ", axis " << axis;
            }
        }
    }
}

TYPED_TEST(EveryCurvedKind, IsWithinItsBoxHoweverItIsCurved)
{
    bool isBeyondNodes = false;
    for (int i = 0; i < 50; ++i)
    {
        TestMesh mesh = this->distortedElement(1.0);
        ModelClass model;
        this->load(mesh, model);
        const Box box = boxOf(boxLanesOfElt(model, 0));
        for (int j = 0; j < 2000; ++j)
        {
            const auto shape = shapeFunctionsAt<TypeParam>(this->pointWithin());
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                double position = 0.0;
                for (std::size_t node = 0; node < TypeParam::nbNodes; ++node)
                {
                    position += shape[node] * static_cast<double>(mesh.nodes[node][axis]);
                }
                constexpr double rounding = 1e-5;
                EXPECT_GE(position, static_cast<double>(box.low[axis]) - rounding);
                EXPECT_LE(position, static_cast<double>(box.high[axis]) + rounding);
                const auto [least, most] =
                    std::ranges::minmax(mesh.nodes, {}, [axis](const auto& node) { return node[axis]; });
                isBeyondNodes = isBeyondNodes || position < static_cast<double>(least[axis]) - 0.01 ||
                                position > static_cast<double>(most[axis]) + 0.01;
            }
        }
    }
    EXPECT_TRUE(isBeyondNodes) << "the nodes' boxes would have done";
}

TYPED_TEST(EveryCurvedKind, HasTheBoxOfItsCornersIfItIsStraight)
{
    TestMesh mesh(meshes::referenceElement(TypeParam::typeCode, 2.0F, {3.0F, -1.0F, 0.5F}));
    ModelClass model;
    this->load(mesh, model);
    const Box box = boxOf(boxLanesOfElt(model, 0));
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        const auto [least, most] = std::ranges::minmax(mesh.nodes, {}, [axis](const auto& node) { return node[axis]; });
        EXPECT_FLOAT_EQ(box.low[axis], least[axis]);
        EXPECT_FLOAT_EQ(box.high[axis], most[axis]);
    }
}

TYPED_TEST(EveryCurvedKind, FindsThePlaceOfAPointThatItIsAt)
{
    for (int i = 0; i < 200; ++i)
    {
        TestMesh mesh = this->distortedElement(0.1);
        ModelClass model;
        this->load(mesh, model);
        const Box box = boxOf(boxLanesOfElt(model, 0));
        const float values[6] = {box.low[0], box.low[1], box.low[2], box.high[0], box.high[1], box.high[2]};
        const ReferencePoint place = this->pointWithin();
        const Vector3 xi{single(place[0]), single(place[1]), single(place[2])};
        ElementNodes<TypeParam> nodes;
        std::ranges::copy(mesh.nodes, nodes.begin());
        const Inversion inversion = model.inversionIn(0, values, physicalPosition<TypeParam>(nodes, xi), 0.001F);
        ASSERT_EQ(inversion.result, Inversion::inside) << i << ": " << xi[0] << ' ' << xi[1] << ' ' << xi[2];
        const Vector3 found = physicalPosition<TypeParam>(nodes, inversion.referenceCoords);
        EXPECT_LT(squaredDistance(found, physicalPosition<TypeParam>(nodes, xi)), 1e-4F);
    }
}

TYPED_TEST(EveryCurvedKind, IsClampedOntoPointsOfTheDomainAndLeavesTheseAlone)
{
    for (int i = 0; i < 1000; ++i)
    {
        const ReferencePoint point{this->uniform(-3, 3), this->uniform(-3, 3), this->uniform(-3, 3)};
        const ReferencePoint within = TypeParam::clamped(point);
        EXPECT_TRUE(TypeParam::contains(within, 1e-15));
        const ReferencePoint again = TypeParam::clamped(within);
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            EXPECT_NEAR(again[axis], within[axis], 1e-15);
        }
    }
}

TYPED_TEST(EveryCurvedKind, GivesNodesWhatALinearFunctionIsThereFromItsGaussPoints)
{
    expectLinearAtNodes<TypeParam>(gaussRuleOfKind<TypeParam, GaussRuleChoice::full>());
    expectLinearAtNodes<TypeParam>(gaussRuleOfKind<TypeParam, GaussRuleChoice::reduced>());
}

TYPED_TEST(EveryCurvedKind, GivesNodesTheNearestLinearFunctionOfOtherValues)
{
    // What a fit leaves over has no linear part: the sums of the differences times 1, x, y and z vanish.
    const auto& rule = TypeParam::gaussRule;
    std::array<double, TypeParam::nbGaussPoints> values{};
    std::ranges::generate(values, [&] { return this->uniform(-1, 1); });
    NodeValues<TypeParam::nbNodes, double> atNodes{};
    TypeParam::gaussPointsToNodes(values, atNodes);
    std::array<double, 4> sums{};
    for (std::size_t point = 0; point < values.size(); ++point)
    {
        const auto shape = shapeFunctionsAt<TypeParam>(rule.points[point]);
        const double left = values[point] - std::inner_product(shape.begin(), shape.end(), atNodes.begin(), 0.0);
        const std::array<double, 4> terms{1.0, rule.points[point][0], rule.points[point][1], rule.points[point][2]};
        for (std::size_t i = 0; i < 4; ++i)
        {
            sums[i] += left * terms[i];
        }
    }
    for (const double sum : sums)
    {
        EXPECT_NEAR(sum, 0.0, 1e-13);
    }
}

TYPED_TEST(EveryCurvedKind, CountsNoNodesInAModelOfTypeCodes)
{
    TestMesh mesh(meshes::referenceElement(TypeParam::typeCode));
    ModelClass model;
    mesh.loadInto(model);
    EXPECT_EQ(model.nbNodesOfElt(0), 0);
    EXPECT_EQ(model.nbGaussPointsOfElt(0), 0);
    EXPECT_FALSE(model.hasShapeFunctionsOfElt(0));
    model.itsAdmitsAllKinds = true;
    EXPECT_EQ(model.nbNodesOfElt(0), TypeParam::nbNodes);
    EXPECT_EQ(model.nbGaussPointsOfElt(0), TypeParam::nbGaussPoints);
    EXPECT_TRUE(model.hasShapeFunctionsOfElt(0));
}

TEST(GaussRules, OfCurvedKindsIntegrateWhatTheyShould)
{
    for (int i = 0; i < 6; ++i)
    {
        const auto ofPower = [](int power) { return power % 2 == 0 ? 2.0 / (power + 1) : 0.0; };
        EXPECT_NEAR(integral(QuadraticHexahedron::gaussRule, i, 5 - i, 4), ofPower(i) * ofPower(5 - i) * ofPower(4),
                    1e-14);
        EXPECT_NEAR(integral(QuadraticHexahedron::gaussRule, i, 4, 4), ofPower(i) * ofPower(4) * ofPower(4), 1e-14);
    }
    EXPECT_NEAR(integral(QuadraticHexahedron::reducedGaussRule, 2, 2, 3), 0.0, 1e-14);
    EXPECT_NEAR(integral(QuadraticHexahedron::reducedGaussRule, 2, 2, 2), 8.0 / 27.0, 1e-14);
    // Of x y and x^2 over the triangle 1/24 and 1/12, of z^4 over [-1, 1] 2/5.
    EXPECT_NEAR(integral(QuadraticWedge::gaussRule, 1, 1, 4), 1.0 / 24.0 * 0.4, 1e-15);
    EXPECT_NEAR(integral(QuadraticWedge::gaussRule, 2, 0, 0), 1.0 / 6.0, 1e-15);
    // The base of half the side 1 - z: of x^2 the integral of 4/3 (1 - z)^4.
    EXPECT_NEAR(integral(QuadraticPyramid::gaussRule, 2, 0, 0), 4.0 / 15.0, 1e-12);
}

TEST(QuadraticPyramid, MeetsHexahedraAndTetrahedraWithoutAGap)
{
    for (const auto& [u, v] : {std::pair{0.2, 0.3}, {-0.7, 0.1}, {0.45, -0.85}})
    {
        // Its base is the upper face of a hexahedron.
        const auto onBase = shapeFunctionsAt<QuadraticPyramid>(ReferencePoint{u, v, 0.0});
        const auto onFace = shapeFunctionsAt<QuadraticHexahedron>(ReferencePoint{u, v, 1.0});
        for (std::size_t i = 0; i < 4; ++i)
        {
            EXPECT_NEAR(onBase[i], onFace[i + 4], 1e-15);
            EXPECT_NEAR(onBase[i + 5], onFace[i + 12], 1e-15);
        }
        // Its side at eta = zeta - 1 is a triangle, with area coordinates that are linear in xi and zeta.
        const double height = 0.5 * (v + 1.0);
        const double along = u * (1.0 - height);
        const auto onSide = shapeFunctionsAt<QuadraticPyramid>(ReferencePoint{along, height - 1.0, height});
        const double left = 0.5 * (1.0 - height - along);
        const double right = 0.5 * (1.0 - height + along);
        EXPECT_NEAR(onSide[0], left * (2.0 * left - 1.0), 1e-15);
        EXPECT_NEAR(onSide[1], right * (2.0 * right - 1.0), 1e-15);
        EXPECT_NEAR(onSide[4], height * (2.0 * height - 1.0), 1e-15);
        EXPECT_NEAR(onSide[5], 4.0 * left * right, 1e-15);
        EXPECT_NEAR(onSide[9], 4.0 * left * height, 1e-15);
        EXPECT_NEAR(onSide[10], 4.0 * right * height, 1e-15);
    }
}

TEST(QuadraticPyramid, HasFiniteDerivativesAtItsApex)
{
    const auto gradients = derivativesAt<QuadraticPyramid>(ReferencePoint{0.0, 0.0, 1.0});
    std::array<double, 3> height{};
    for (std::size_t node = 0; node < QuadraticPyramid::nbNodes; ++node)
    {
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            height[axis] += gradients[node][axis] * static_cast<double>(QuadraticPyramid::nodes[node][2]);
        }
    }
    EXPECT_EQ(height, (std::array<double, 3>{0.0, 0.0, 1.0}));
}
