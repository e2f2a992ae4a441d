// Checks of meshes, point clouds and fields when they are built.
#include "Errors.h"
#include "Field.h"
#include "Materials.h"
#include "Mesh.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <set>

namespace
{

using namespace veltrane;
using testing::ElementsAre;
using testing::Property;
using testing::StrEq;

/// A tetrahedron and, on its face at x = 0, a wedge.
MeshData twoElements()
{
    return {.coordinates = {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, -1, 0, 0, -1, 1, 0, -1, 0, 1},
            .kinds = {ElementKind::tetrahedron, ElementKind::wedge},
            .offsets = {0, 4, 10},
            .connectivity = {0, 1, 2, 3, 0, 3, 2, 4, 6, 5},
            .materialPerElement = {0, 1},
            .materials = {{"steel", 1}, {"die", 4}}};
}

void expectRefused(const std::function<void(MeshData&)>& spoil, const char* sentence)
{
    MeshData data = twoElements();
    spoil(data);
    EXPECT_THAT([&] { Mesh{data}; }, testing::Throws<InvalidData>(Property(&InvalidData::what, StrEq(sentence))));
}

TEST(Mesh, ReportsWhatItWasBuiltFrom)
{
    const Mesh mesh(twoElements());
    EXPECT_EQ(mesh.nodeCount(), 7);
    EXPECT_EQ(mesh.elementCount(), 2);
    EXPECT_THAT(mesh.nodesOf(1), ElementsAre(0, 3, 2, 4, 6, 5));
    EXPECT_EQ(mesh.kindOf(1).name, "wedge");
    EXPECT_THAT(mesh.nodePosition(5), ElementsAre(-1, 1, 0));
    EXPECT_EQ(mesh.gaussPointCount(), 1U + 6U);
}

TEST(Mesh, BoxHoldsTheNodesOfElementsOnly)
{
    MeshData data = twoElements();
    data.coordinates.insert(data.coordinates.end(), {50, 50, 50});
    const Box box = Mesh(data).boundingBox();
    EXPECT_THAT(box.min, ElementsAre(-1, 0, 0));
    EXPECT_THAT(box.max, ElementsAre(1, 1, 1));
}

TEST(Mesh, CoordinatesMustBeWholeRowsOfFiniteNumbers)
{
    expectRefused([](MeshData& data) { data.coordinates.pop_back(); },
                  "20 coordinates do not make whole nodes of three");
    expectRefused([](MeshData& data) { data.coordinates[7] = std::numeric_limits<float>::quiet_NaN(); },
                  "coordinate y of node 2 is not a finite single-precision number");
    expectRefused([](MeshData& data) { data.coordinates[20] = std::numeric_limits<float>::infinity(); },
                  "coordinate z of node 6 is not a finite single-precision number");
}

TEST(Mesh, NodeNumbersMustExist)
{
    expectRefused([](MeshData& data) { data.connectivity[9] = 7; },
                  "element 1 refers to node 7, but there are 7 nodes, counted from 0");
    expectRefused([](MeshData& data) { data.connectivity[2] = -1; },
                  "element 0 refers to node -1, but there are 7 nodes, counted from 0");
}

TEST(Mesh, KindsMustBeKnown)
{
    expectRefused([](MeshData& data) { data.kinds[1] = static_cast<ElementKind>(4); },
                  "element 1 has the unknown type code 4");
}

TEST(Mesh, ElementsMustHaveTheNodesOfTheirKind)
{
    expectRefused([](MeshData& data) { data.kinds[0] = ElementKind::pyramid; },
                  "element 0 is a pyramid of 4 nodes instead of 5");
    expectRefused([](MeshData& data) { data.offsets[1] = 11; },
                  "the offsets 0 and 11 of element 0 do not delimit a part of the connectivity, which has 10 entries");
    expectRefused(
        [](MeshData& data) {
            data.offsets = {0, 4, 3};
        },
        "the offsets 4 and 3 of element 1 do not delimit a part of the connectivity, which has 10 entries");
    expectRefused([](MeshData& data) { data.offsets[0] = 1; }, "the offsets begin with 1 instead of 0");
    expectRefused([](MeshData& data) { data.offsets.pop_back(); },
                  "there are 2 elements, but 2 offsets instead of one more than elements");
    expectRefused([](MeshData& data) { data.connectivity.push_back(0); },
                  "the elements have 10 nodes in all, but the connectivity has 11 entries");
}

TEST(Mesh, NeedsElements)
{
    expectRefused([](MeshData& data)
                  { data = {.coordinates = data.coordinates, .offsets = {0}, .materials = data.materials}; },
                  "there is no element");
}

TEST(Mesh, MaterialsMustExist)
{
    expectRefused([](MeshData& data) { data.materials.clear(); }, "there is no material");
    expectRefused([](MeshData& data) { data.materialPerElement[1] = 2; },
                  "element 1 has material number 2, but there are 2 materials, counted from 0");
    expectRefused([](MeshData& data) { data.materialPerElement[0] = -1; },
                  "element 0 has material number -1, but there are 2 materials, counted from 0");
    expectRefused([](MeshData& data) { data.materialPerElement.push_back(0); },
                  "there are 2 elements, but 3 material numbers for them");
    expectRefused([](MeshData& data) { data.materials[1].stateCode = -1; },
                  "material die has the state code -1, which stands for no material");
}

TEST(PointCloud, IsCheckedLikeAMesh)
{
    EXPECT_EQ(PointCloud({0, 0, 0, 1, 1, 1}, {0, 0}, {{"steel", 1}}).pointCount(), 2);
    EXPECT_THROW(PointCloud({}, {}, {{"steel", 1}}), InvalidData);
    EXPECT_THROW(PointCloud({0, 0}, {0}, {{"steel", 1}}), InvalidData);
    EXPECT_THROW(PointCloud({0, 0, 0}, {0}, {}), InvalidData);
    EXPECT_THROW(PointCloud({0, 0, 0}, {1}, {{"steel", 1}}), InvalidData);
    EXPECT_THROW(PointCloud({0, 0, std::numeric_limits<float>::infinity()}, {0}, {{"steel", 1}}), InvalidData);
}

TEST(Materials, OfTheSameNameGetTheSameCode)
{
    MeshData data = twoElements();
    Mesh source(data);
    data.materials = {{"die", 0}, {"oil", 0}};
    Mesh target(data);
    EXPECT_THAT(matchMaterialsByName(source, target), ElementsAre("oil"));
    EXPECT_EQ(target.materials()[0].stateCode, source.materials()[1].stateCode);
    EXPECT_NE(source.materials()[0].stateCode, source.materials()[1].stateCode);
    EXPECT_NE(target.materials()[1].stateCode, source.materials()[0].stateCode);
    EXPECT_NE(target.materials()[1].stateCode, source.materials()[1].stateCode);
}

TEST(Materials, WithoutAGivenCodeGetCodesThatNoneOfThoseHas)
{
    MeshData data = twoElements();
    data.materials = {{"die", 0}, {"oil", 0}};
    Mesh source(data);
    data.materials = {{"air", 0}, {"gas", 0}};
    Mesh target(data);
    matchMaterialsByName(source, target, {{"air", 11}, {"zinc", 9}}); // the highest does not come last
    EXPECT_EQ(target.materials()[0].stateCode, 11);
    std::set<int> codes{11};
    codes.insert({source.materials()[0].stateCode, source.materials()[1].stateCode, target.materials()[1].stateCode});
    EXPECT_EQ(codes.size(), 4U);
    EXPECT_GT(*codes.begin(), 8); // the codes up to there have meanings of their own
}

TEST(Field, KeepsItsPrecision)
{
    const Field field("T", Location::nodes, 1, std::vector<double>{1, 2});
    EXPECT_FALSE(field.isSinglePrecision());
    EXPECT_EQ(field.locationCount(), 2U);
    EXPECT_TRUE(Field("T", Location::nodes, 2, std::vector<float>{1, 2}).isSinglePrecision());
}

TEST(Field, MustHaveANameUpToNineComponentsAndWholeRows)
{
    const FieldValues six = std::vector<float>(6);
    EXPECT_THROW(Field("", Location::nodes, 1, six), InvalidData);
    EXPECT_THROW(Field("T", Location::nodes, 0, six), InvalidData);
    EXPECT_THROW(Field("T", Location::nodes, 4, six), InvalidData);
    EXPECT_THROW(Field("T", Location::nodes, 10, std::vector<float>(10)), InvalidData);
    EXPECT_THROW(Field("T", static_cast<Location>(3), 1, six), InvalidData);
    EXPECT_EQ(Field("T", Location::nodes, 9, std::vector<float>(9)).componentCount(), 9);
}

} // namespace
