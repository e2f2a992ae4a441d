// What the headers of the element kinds say beside shape functions: nodes, faces, cells, integration rules, the list.
#include "Elements/ElementKinds.h"
#include "TestModels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <numeric>
#include <set>

namespace
{
using Edge = std::pair<std::size_t, std::size_t>;

template <class Kind> ReferencePoint nodeOf(std::size_t node)
{
    return {Kind::nodes[node][0], Kind::nodes[node][1], Kind::nodes[node][2]};
}

/// Six times the volume of the tetrahedron of the origin and three points.
double determinant(const ReferencePoint& a, const ReferencePoint& b, const ReferencePoint& c)
{
    return a[0] * (b[1] * c[2] - b[2] * c[1]) - a[1] * (b[0] * c[2] - b[2] * c[0]) + a[2] * (b[0] * c[1] - b[1] * c[0]);
}

/// Of the space between the faces, positive if they look outward. All faces are plane.
template <class Kind> double volumeWithinFaces()
{
    double volume = 0.0;
    for (const ElementFace& face : Kind::faces)
    {
        for (std::size_t i = 2; i < face.nbCorners; ++i)
        {
            volume +=
                determinant(nodeOf<Kind>(face.nodes[0]), nodeOf<Kind>(face.nodes[i - 1]), nodeOf<Kind>(face.nodes[i])) /
                6.0;
        }
    }
    return volume;
}

template <class Kind> class EveryVolumeKind : public testing::Test
{
};
using Volumes = VolumeElementKinds::Into<testing::Types>;
TYPED_TEST_SUITE(EveryVolumeKind, Volumes);

template <class Kind> class EveryKind : public testing::Test
{
};
using Kinds = ElementKinds::Into<testing::Types>;
TYPED_TEST_SUITE(EveryKind, Kinds);
} // namespace

TYPED_TEST(EveryVolumeKind, HasItsNodesWhereTheyAreKnownToBe)
{
    EXPECT_TRUE(std::ranges::equal(TypeParam::nodes, referenceNodes(TypeParam::typeCode)));
}

TYPED_TEST(EveryVolumeKind, HasFacesThatMeetInEveryEdgeAndRunAlongItInBothDirections)
{
    std::map<Edge, int> edges;
    for (const ElementFace& face : TypeParam::faces)
    {
        for (std::size_t i = 0; i < face.nbCorners; ++i)
        {
            ++edges[{face.nodes[i], face.nodes[(i + 1) % face.nbCorners]}];
        }
    }
    for (const auto& [edge, count] : edges)
    {
        EXPECT_EQ(count, 1) << edge.first << ' ' << edge.second;
        EXPECT_EQ(edges.count({edge.second, edge.first}), 1U) << edge.first << ' ' << edge.second;
    }
    // Euler: as many corners and faces as edges and two more; each edge was counted twice.
    EXPECT_EQ(TypeParam::nbCorners + TypeParam::faces.size(), edges.size() / 2 + 2);
}

TYPED_TEST(EveryVolumeKind, HasARuleThatIntegratesLinearFunctionsOverTheSpaceWithinItsFaces)
{
    const auto& rule = TypeParam::gaussRule;
    const double volume = volumeWithinFaces<TypeParam>();
    EXPECT_NEAR(std::accumulate(rule.weights.begin(), rule.weights.end(), 0.0), volume, 1e-12);
    // The domains are a cube, a tetrahedron, a wedge and a pyramid: their centroids are known.
    const std::map<double, ReferencePoint> centroids{
        {8.0, {0, 0, 0}}, {1.0 / 6.0, {0.25, 0.25, 0.25}}, {1.0, {1.0 / 3.0, 1.0 / 3.0, 0}}, {4.0 / 3.0, {0, 0, 0.25}}};
    const auto known =
        std::ranges::find_if(centroids, [&](const auto& entry) { return std::abs(entry.first - volume) < 1e-12; });
    ASSERT_NE(known, centroids.end());
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        double integral = 0.0;
        for (std::size_t i = 0; i < rule.points.size(); ++i)
        {
            integral += rule.weights[i] * rule.points[i][axis];
        }
        EXPECT_NEAR(integral, volume * known->second[axis], 1e-12) << "axis " << axis;
    }
}

TYPED_TEST(EveryVolumeKind, HasTheSameShapeFunctionsInDoublePrecisionWithoutRounding)
{
    const Vector3 point{0.3F, 0.2F, 0.45F};
    const ReferencePoint same{point[0], point[1], point[2]};
    const auto values = shapeFunctionsAt<TypeParam>(same);
    const auto gradients = derivativesAt<TypeParam>(same);
    const auto roundedValues = shapeFunctionsAt<TypeParam>(point);
    const auto roundedGradients = derivativesAt<TypeParam>(point);
    for (std::size_t node = 0; node < TypeParam::nbNodes; ++node)
    {
        EXPECT_EQ(static_cast<float>(values[node]), roundedValues[node]) << node;
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            EXPECT_EQ(static_cast<float>(gradients[node][axis]), roundedGradients[node][axis]) << node;
        }
    }
}

TYPED_TEST(EveryKind, HasFacesThatNameCornersThenTheMiddlesOfTheirEdgesThenTheirCentre)
{
    for (const ElementFace& face : TypeParam::faces)
    {
        for (std::size_t i = face.nbCorners; i < face.nbNodes; ++i)
        {
            const std::size_t edge = i - face.nbCorners;
            const bool isCentre = edge == face.nbCorners;
            const auto a = nodeOf<TypeParam>(face.nodes[isCentre ? 0 : edge]);
            const auto b = nodeOf<TypeParam>(face.nodes[isCentre ? 2 : (edge + 1) % face.nbCorners]);
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                EXPECT_EQ(nodeOf<TypeParam>(face.nodes[i])[axis], (a[axis] + b[axis]) / 2) << face.nodes[i];
            }
        }
    }
}

TYPED_TEST(EveryKind, HasCellOrdersThatNameEveryNodeOnce)
{
    for (const auto& cell : TypeParam::vtkCells)
    {
        const std::set<int> nodes(cell.nodeOrder.begin(), cell.nodeOrder.end());
        EXPECT_EQ(nodes.size(), TypeParam::nbNodes);
        EXPECT_EQ(*nodes.begin(), 0);
        EXPECT_EQ(*nodes.rbegin(), TypeParam::nbNodes - 1);
    }
}

TEST(ElementKindList, HasEveryCodeNameAndCellOnce)
{
    std::set<int> typeCodes;
    std::set<int> cellTypes;
    std::set<std::string_view> names;
    std::size_t nbCellTypes = 0;
    ElementKinds::visitAll(
        [&]<class Kind>(Kind)
        {
            typeCodes.insert(Kind::typeCode);
            names.insert(Kind::name);
            names.insert(Kind::plural);
            nbCellTypes += Kind::vtkCells.size();
            for (const auto& cell : Kind::vtkCells)
            {
                cellTypes.insert(cell.cellType);
            }
        });
    EXPECT_EQ(typeCodes.size(), ElementKinds::size);
    EXPECT_EQ(names.size(), 2 * ElementKinds::size);
    EXPECT_EQ(cellTypes.size(), nbCellTypes);
}

TEST(ElementKindList, VisitsAKindByItsCodeAndTellsWhetherThereIsOne)
{
    int nbNodes = 0;
    EXPECT_TRUE(ElementKinds::visit(7, [&](auto kind) { nbNodes = kind.nbNodes; }));
    EXPECT_EQ(nbNodes, 3);
    EXPECT_FALSE(VolumeElementKinds::visit(7, [&](auto) { ADD_FAILURE(); }));
    EXPECT_FALSE(ElementKinds::visit(0, [&](auto) { ADD_FAILURE(); }));
}
