// The C++ interface to the library: what can be asked for beside the plain transfer.
#include "Errors.h"
#include "Materials.h"
#include "TestMeshes.h"
#include "Transfer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace
{

using namespace veltrane;
using testing::Each;
using testing::ElementsAre;
using testing::FloatEq;

/// A field of this value everywhere.
Field constant(const Mesh& mesh, float value, const std::string& name = "constant")
{
    return Field(name, Location::nodes, 1, std::vector<float>(static_cast<std::size_t>(mesh.nodeCount()), value));
}

const std::vector<float>& floatsOf(const Field& field)
{
    return std::get<std::vector<float>>(field.values());
}

/// Cubes of edge 1 along the x axis and along the y axis up to 10: an angle, in the box of which there is much room.
Mesh angle()
{
    std::vector<Corner> corners;
    for (int i = 0; i < 10; ++i)
    {
        corners.push_back({static_cast<float>(i), 0, 0});
        corners.push_back({0, static_cast<float>(i), 0});
    }
    return cubes(corners, 1);
}

/// One small cube in the angle, and one in its box but far from it: 8 nodes each.
Mesh nearAndFar()
{
    return cubes({{0.25F, 0.25F, 0.25F}, {8.25F, 8.25F, 0.25F}}, 0.5F);
}

/// Cubes of one node after another that reach from the angle's corner to places far from it, and a node in no element.
Mesh chain()
{
    MeshData data{.offsets = {0}, .materials = {{"steel", 1}}};
    for (int i = 0; i < 18; ++i)
    {
        const float corner = 0.25F + 0.5F * static_cast<float>(i);
        const Mesh cube = cubes({{corner, corner, 0.25F}}, 0.5F);
        const int first = static_cast<int>(data.coordinates.size() / 3);
        data.coordinates.insert(data.coordinates.end(), cube.coordinates().begin(), cube.coordinates().end());
        for (const int node : cube.nodesOf(0))
        {
            data.connectivity.push_back(first + node);
        }
        // The cube's first lower and upper nodes are the third and the seventh one of the cube before.
        if (i > 0)
        {
            *(data.connectivity.end() - 8) = *(data.connectivity.end() - 14);
            *(data.connectivity.end() - 4) = *(data.connectivity.end() - 10);
        }
        data.kinds.push_back(ElementKind::hexahedron);
        data.offsets.push_back(data.connectivity.size());
        data.materialPerElement.push_back(0);
    }
    data.coordinates.insert(data.coordinates.end(), {0.5F, 0.5F, 0.5F});
    return Mesh(std::move(data));
}

TEST(TransferOptions, EachFieldMayHaveADefaultValueOfItsOwn)
{
    const Mesh source = angle();
    const std::vector<Field> fields{constant(source, 4, "first"), constant(source, 5, "second")};
    const TransferResult result = transfer(
        source, fields, nearAndFar(),
        {.mode = OutsideMode::defaultValue, .defaultValue = -1, .fieldOptions = {{}, {.defaultValue = -2.5F}}});
    for (int node = 0; node < 16; ++node)
    {
        const auto index = static_cast<std::size_t>(node);
        EXPECT_FLOAT_EQ(floatsOf(result.fields[0])[index], node < 8 ? 4 : -1);
        EXPECT_FLOAT_EQ(floatsOf(result.fields[1])[index], node < 8 ? 5 : -2.5F);
    }
}

TEST(TransferOptions, ThereMustBeOptionsForAllFieldsOrNone)
{
    const Mesh source = angle();
    const std::vector<Field> fields{constant(source, 4, "first"), constant(source, 5, "second")};
    EXPECT_THAT([&] { transfer(source, fields, nearAndFar(), {.fieldOptions = {{}}}); },
                testing::ThrowsMessage<InvalidOption>("there are options for 1 fields, but 2 source fields"));
}

TEST(TransferOptions, FieldsOfClassOneLeaveOtherMaterialsAlone)
{
    Mesh source = cubes({{0, 0, 0}, {2, 0, 0}}, 1);
    MeshData data{.coordinates = source.coordinates(),
                  .kinds = source.kinds(),
                  .offsets = {0, 8, 16},
                  .materialPerElement = {0, 1},
                  .materials = {{"solid", 1}, {"fluid", 4}}};
    for (const int element : {0, 1})
    {
        const auto nodes = source.nodesOf(element);
        data.connectivity.insert(data.connectivity.end(), nodes.begin(), nodes.end());
    }
    const Mesh mesh(data);
    const std::vector<Field> fields{constant(mesh, 4, "strain"), constant(mesh, 5, "pressure")};
    const TransferResult result =
        transfer(mesh, fields, mesh, {.defaultValue = -1, .fieldOptions = {{.isClassOneOnly = true}, {}}});
    EXPECT_THAT(std::vector(floatsOf(result.fields[0]).begin(), floatsOf(result.fields[0]).begin() + 8),
                Each(FloatEq(4)));
    EXPECT_THAT(std::vector(floatsOf(result.fields[0]).begin() + 8, floatsOf(result.fields[0]).end()), Each(-1));
    EXPECT_THAT(floatsOf(result.fields[1]), Each(FloatEq(5)));
}

TEST(TransferOptions, OriginsAreTheElementOrTheDefaultValue)
{
    const Mesh source = angle();
    const std::vector<Field> fields{constant(source, 4)};
    const TransferResult result =
        transfer(source, fields, nearAndFar(), {.mode = OutsideMode::defaultValue, .tellsOrigins = true});
    ASSERT_EQ(result.fields.size(), 1U);
    ASSERT_EQ(result.origins.size(), 16U);
    for (std::size_t node = 0; node < 16; ++node)
    {
        EXPECT_EQ(result.origins[node], node < 8 ? ValueOrigin::element : ValueOrigin::defaultValue);
    }
}

TEST(TransferOptions, OriginsTellPropagatedValuesFromInterpolatedOnes)
{
    const Mesh source = angle();
    const std::vector<Field> fields{constant(source, 4)};
    const Mesh target = chain();
    int calls = 0;
    const TransferResult result = transfer(source, fields, target,
                                           {.mode = OutsideMode::propagate,
                                            .tellsOrigins = true,
                                            .progress = [&](const Progress&)
                                            {
                                                ++calls;
                                                return true;
                                            }});
    EXPECT_EQ(result.outcome, Outcome::done);
    EXPECT_GT(calls, 0);
    const auto count = [&](ValueOrigin origin) { return std::ranges::count(result.origins, origin); };
    EXPECT_EQ(count(ValueOrigin::neighbours), result.statistics.nodes->far);
    EXPECT_EQ(count(ValueOrigin::defaultValue), 0);
    // The cube of the angle's corner is within it, the last one far away.
    EXPECT_EQ(result.origins[static_cast<std::size_t>(target.nodesOf(0)[0])], ValueOrigin::element);
    EXPECT_EQ(result.origins[static_cast<std::size_t>(target.nodesOf(17)[6])], ValueOrigin::neighbours);
    EXPECT_EQ(result.origins.back(), ValueOrigin::none); // the node in no element
}

TEST(TransferOptions, NodesOutOfReachOfPropagationHaveNoOrigin)
{
    const Mesh source = angle();
    const std::vector<Field> fields{constant(source, 4)};
    const TransferResult result =
        transfer(source, fields, nearAndFar(), {.mode = OutsideMode::propagate, .tellsOrigins = true});
    EXPECT_EQ(result.outcome, Outcome::propagationWarning);
    for (std::size_t node = 0; node < 16; ++node)
    {
        EXPECT_EQ(result.origins[node], node < 8 ? ValueOrigin::element : ValueOrigin::none);
    }
}

TEST(TransferOptions, OriginsOfPoints)
{
    const Mesh source = angle();
    const std::vector<Field> fields{constant(source, 4)};
    const PointCloud points({0.5F, 0.5F, 0.5F, 8, 8, 0.5F, 0.5F, 7, 0.5F}, {0, 0, 1}, {{"steel", 1}, {"copper", 1}});
    const TransferResult result =
        sample(source, fields, points,
               {.mode = OutsideMode::defaultValue, .targetMapping = {true, false}, .tellsOrigins = true});
    EXPECT_THAT(result.origins, ElementsAre(ValueOrigin::element, ValueOrigin::defaultValue, ValueOrigin::none));
}

TEST(TransferOptions, ThereAreNoOriginsUnasked)
{
    const Mesh source = angle();
    const std::vector<Field> fields{constant(source, 4)};
    EXPECT_THAT(transfer(source, fields, source).origins, testing::IsEmpty());
}

TEST(Materials, OfTheSameNameGetTheGivenCodeOrOneOfTheirOwn)
{
    Mesh source = cubes({{0, 0, 0}}, 1);
    Mesh target = source;
    PointCloud points({0, 0, 0}, {0}, {{"steel", 0}, {"copper", 0}});
    EXPECT_THAT(matchMaterialsByName(source, target, {{"steel", 3}}), testing::IsEmpty());
    EXPECT_EQ(source.materials()[0].stateCode, 3);
    EXPECT_EQ(target.materials()[0].stateCode, 3);
    EXPECT_THAT(matchMaterialsByName(source, points, {{"steel", 3}}), ElementsAre("copper"));
    EXPECT_NE(points.materials()[1].stateCode, 3);
    EXPECT_THAT(matchMaterialsByName(source, points, {{"steel", 3}, {"copper", 3}}), testing::IsEmpty());
    EXPECT_THROW(matchMaterialsByName(source, target, {{"steel", -1}}), InvalidData);
}

} // namespace
