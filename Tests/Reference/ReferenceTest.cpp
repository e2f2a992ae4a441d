/// The reference implementation on models small enough to be worked out by hand.
#include "RandomMeshes.h"
#include "RandomModels.h"
#include "ReferenceCorrespondence.h"
#include "ReferenceElements.h"
#include "ReferenceGrid.h"
#include "ReferenceTransfer.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace random_models;
using reference::CallbackCall;
using reference::index;
using reference::Outcome;
using reference::Vec3;

constexpr float untouched = 4711.0F;

/// A row of cubes of edge length 1 along x, beginning at the origin.
Mesh cubes(int count, const std::vector<int>& matls, const std::vector<int>& states, bool detached = false)
{
    Random random(1);
    Cutting cutting;
    cutting.size = {static_cast<double>(count), 1.0, 1.0};
    cutting.cells = {count, 1, 1};
    cutting.detached = detached;
    cutting.matl = [&matls](int i, int, int) { return matls[index(i)]; };
    Mesh mesh = cut(random, cutting);
    mesh.matlStates = states;
    return mesh;
}

FieldModel nodeField(const Mesh& mesh, float (*value)(const std::array<float, 3>&))
{
    FieldModel field;
    field.name = "field";
    for (const auto& node : mesh.nodes)
    {
        field.floats.push_back(value(node));
    }
    return field;
}

FieldModel targetField(int location, int count)
{
    FieldModel field;
    field.name = "target field";
    field.location = location;
    field.floats.assign(index(count), untouched);
    field.defaultValueFloat = 17.0F;
    return field;
}

/// One source field, one target field.
struct Case
{
    Mesh source;
    Mesh target;
    FieldModel refField;
    FieldModel target1;
    std::vector<int> flags = {1, 1, 1};
    int mode = 0;
    reference::HostCallback callback;

    Outcome run()
    {
        MeshPointers s(source);
        MeshPointers t(target);
        std::vector<FieldModel> ref = {refField};
        std::vector<FieldModel> out = {target1};
        FieldsSet refSet(ref, {});
        FieldsSet outSet(out, {});
        reference::TransferRequest request;
        request.interpoMode = mode;
        request.defaultValue = -5.0F;
        request.source = s.arrays();
        request.target = t.arrays();
        request.targetMatlMappingFlags = flags.data();
        request.refFields = refSet.record();
        request.targetFields = outSet.record();
        request.callback = callback;
        const Outcome outcome = target.types.empty() ? reference::transferMeshToPointCloud(request)
                                                     : reference::transferMeshToMesh(request);
        target1 = out[0];
        return outcome;
    }
};

Mesh points(const std::vector<std::array<float, 3>>& where, int state)
{
    Mesh cloud;
    cloud.nodes = where;
    cloud.matlIds.assign(where.size(), 0);
    cloud.matlStates = {state};
    return cloud;
}

TEST(ReferenceElements, shapeFunctionsAreOneAtTheirNodeAndZeroAtTheOthers)
{
    const std::vector<std::pair<int, std::vector<Vec3>>> kinds = {
        {1, {{-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1}, {-1, -1, 1}, {1, -1, 1}, {1, 1, 1}, {-1, 1, 1}}},
        {2, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}},
        {3, {{0, 0, -1}, {1, 0, -1}, {0, 1, -1}, {0, 0, 1}, {1, 0, 1}, {0, 1, 1}}},
        {10,
         {{1, 0, 0},
          {0, 1, 0},
          {0, 0, 0},
          {0, 0, 1},
          {0.5F, 0.5F, 0},
          {0, 0.5F, 0},
          {0.5F, 0, 0},
          {0.5F, 0, 0.5F},
          {0, 0.5F, 0.5F},
          {0, 0, 0.5F}}},
        {12, {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}, {0, 0, 1}}}};
    for (const auto& [type, nodes] : kinds)
    {
        for (std::size_t n = 0; n < nodes.size(); ++n)
        {
            const std::vector<float> shape = reference::shapeFunctions(type, nodes[n]);
            ASSERT_EQ(shape.size(), nodes.size());
            for (std::size_t m = 0; m < nodes.size(); ++m)
            {
                EXPECT_EQ(shape[m], m == n ? 1.0F : 0.0F) << "type " << type << ", node " << n << ", function " << m;
            }
        }
    }
}

TEST(ReferenceElements, derivativesAreThoseOfTheShapeFunctions)
{
    const Vec3 xi = {0.2F, 0.3F, 0.1F};
    const float h = 0.0625F;
    for (const int type : {1, 2, 3, 10, 12})
    {
        const std::vector<Vec3> derivatives = reference::shapeDerivatives(type, xi);
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            Vec3 above = xi;
            Vec3 below = xi;
            above[axis] += h;
            below[axis] -= h;
            const std::vector<float> up = reference::shapeFunctions(type, above);
            const std::vector<float> down = reference::shapeFunctions(type, below);
            // All functions are at most quadratic in one coordinate: the central difference is exact but for rounding.
            for (std::size_t n = 0; n < up.size(); ++n)
            {
                EXPECT_NEAR(derivatives[n][axis], (up[n] - down[n]) / (2.0F * h), 1e-5F)
                    << "type " << type << ", node " << n << ", axis " << axis;
            }
        }
    }
}

TEST(ReferenceElements, aFaceHasAMarginOfTwiceThePrecision)
{
    Mesh mesh;
    mesh.nodes = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    mesh.addElement(2, {0, 1, 2, 3}, 0);
    mesh.matlStates = {1};
    MeshPointers pointers(mesh);
    const auto result = [&](float x)
    {
        const auto arrays = pointers.arrays();
        return reference::invertPoint(arrays, 0, reference::elementBox(arrays, 0), {x, 0.25F, 0.25F}, 0.001F);
    };
    EXPECT_EQ(result(-0.001F).result, 1);
    EXPECT_EQ(result(-0.001F).iterations, 1);
    EXPECT_EQ(result(-0.003F).result, 0);
}

TEST(ReferenceElements, anElementWithoutExtentNeedsNoIteration)
{
    Mesh mesh;
    mesh.nodes = {{1, 1, 1}, {1, 1, 1}, {1, 1, 1}, {1, 1, 1}};
    mesh.addElement(2, {0, 1, 2, 3}, 0);
    mesh.matlStates = {1};
    MeshPointers pointers(mesh);
    const auto arrays = pointers.arrays();
    const auto inversion =
        reference::invertPoint(arrays, 0, reference::elementBox(arrays, 0), {1.0F, 1.0F, 1.0F}, 0.001F);
    EXPECT_EQ(inversion.result, 1);
    EXPECT_EQ(inversion.iterations, 0);
    EXPECT_EQ(inversion.xi, (Vec3{0.25F, 0.25F, 0.25F}));
}

/// A grid over one hexahedron-shaped target box with a given bucket size.
reference::Grid gridOver(float extent, float bucketSize, bool flat)
{
    Mesh source = cubes(1, {0}, {1});
    Mesh target = points({{0, 0, 0}, {extent, extent, flat ? 0.0F : extent}}, 1);
    MeshPointers s(source);
    MeshPointers t(target);
    const int flag = 1;
    const auto arrays = s.arrays();
    return reference::buildGrid(reference::GridItems::elements, reference::TargetKind::pointCloud, t.arrays(), arrays,
                                reference::elementBoxes(arrays), {}, &flag, bucketSize, reference::Tuning());
}

TEST(ReferenceGrid, countsBucketsAndDoublesTheirSizeAboveTheLimit)
{
    EXPECT_EQ(gridOver(1.0F, 0.25F, false).nbBuckets, (std::array<int, 3>{5, 5, 5}));
    EXPECT_EQ(gridOver(1.0F, 0.25F, true).nbBuckets, (std::array<int, 3>{5, 5, 1}));
    const reference::Grid doubled = gridOver(1000.0F, 1.0F, false);
    // The margin makes the box 1020 wide: 1020 / 4 gives 256 buckets (16.8 million), 1020 / 8 gives 128 (2.1 million).
    EXPECT_EQ(doubled.bucketSize, 8.0F);
    EXPECT_EQ(doubled.nbBuckets, (std::array<int, 3>{128, 128, 128}));
}

TEST(ReferenceTransfer, aLinearTetrahedronReproducesALinearField)
{
    Case c;
    c.source.nodes = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    c.source.addElement(2, {0, 1, 2, 3}, 0);
    c.source.matlStates = {1};
    c.target = points({{0.25F, 0.5F, 0.125F}, {0.5F, 0.0F, 0.0F}}, 1);
    c.refField = nodeField(c.source, [](const auto& p) { return 1.0F + 2.0F * p[0] - p[1] + 0.5F * p[2]; });
    c.target1 = targetField(1, 2);
    const Outcome outcome = c.run();
    EXPECT_EQ(outcome.errorCode, 0);
    EXPECT_EQ(outcome.message, "FE 3D Mesh to point cloud interpolation normal termination.");
    EXPECT_EQ(c.target1.floats, (std::vector<float>{1.0625F, 2.0F}));
    const std::vector<CallbackCall> expected = {
        {0, "FE 3D mesh to points cloud interpolation", "Pretreatment", 1},
        {5, "FE 3D mesh to points cloud interpolation", "Computation", 1},
        {50, "FE 3D mesh to points cloud interpolation", "Computation", 1},
        {100, "FE 3D mesh to points cloud interpolation", "Computation", 1},
        {100, "FE 3D mesh to points cloud interpolation", "Interpolation terminated successfully.", 1},
        {0, "FE 3D mesh to points cloud interpolation", "Mapping library exit.", 0}};
    EXPECT_EQ(outcome.transcript, expected);
    ASSERT_TRUE(outcome.log.has_value());
    EXPECT_NE(outcome.log->find("interpolation was done = 2\n\nAverage number of iterations for calculating reference "
                                "coordinates at each target point = 1.000000\n\n\nTotal number of used"),
              std::string::npos);
}

TEST(ReferenceTransfer, aNearMissIsClampedToTheNearestElement)
{
    Case c;
    c.source = cubes(1, {0}, {1});
    // One node lies 0.03 outside the face x = 1; the box of its mesh still fits into the source's, widened by 0.05.
    c.target.nodes = {{1.03F, 0.5F, 0.5F}, {0.5F, 0.5F, 0.25F}, {0.5F, 0.75F, 0.25F}, {0.5F, 0.5F, 0.75F}};
    c.target.addElement(2, {0, 1, 2, 3}, 0);
    c.target.matlStates = {1};
    c.refField = nodeField(c.source, [](const auto& p) { return 8.0F * p[0]; });
    c.target1 = targetField(1, 4);
    const Outcome outcome = c.run();
    EXPECT_EQ(outcome.errorCode, 0);
    EXPECT_EQ(outcome.seen.nodesOutside, 1);
    EXPECT_EQ(outcome.seen.nodesFar, 0);
    EXPECT_EQ(c.target1.floats, (std::vector<float>{8.0F, 4.0F, 4.0F, 4.0F}));
}

TEST(ReferenceTransfer, theQuadraticTetrahedronHandsItsGaussPointsOutByNumber)
{
    Case c;
    c.source.nodes = {{1, 0, 0},    {0, 1, 0},    {0, 0, 0},       {0, 0, 1},       {0.5F, 0.5F, 0},
                      {0, 0.5F, 0}, {0.5F, 0, 0}, {0.5F, 0, 0.5F}, {0, 0.5F, 0.5F}, {0, 0, 0.5F}};
    c.source.addElement(10, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, 0);
    c.source.matlStates = {1};
    c.target = points(c.source.nodes, 1);
    c.refField.location = 2;
    c.refField.floats = {3.0F, 30.0F, 300.0F, 3000.0F, 30000.0F};
    c.target1 = targetField(1, 10);
    EXPECT_EQ(c.run().errorCode, 0);
    const std::vector<float> expected = {30.0F,   300.0F,  3000.0F,  30000.0F, 111.0F,
                                         1101.0F, 1011.0F, 10011.0F, 10101.0F, 11001.0F};
    for (std::size_t n = 0; n < expected.size(); ++n)
    {
        EXPECT_NEAR(c.target1.floats[n], expected[n], 0.01F) << "node " << n;
    }
}

/// A target of two cubes; the second one's material has no partner in the source.
Case caseWithFarCube(int mode, bool detached)
{
    Case c;
    c.source = cubes(2, {0, 0}, {1});
    c.target = cubes(2, {0, 1}, {1, 2}, detached);
    c.refField = nodeField(c.source, [](const auto&) { return 3.0F; });
    c.target1 = targetField(1, c.target.nbNodes());
    c.mode = mode;
    return c;
}

TEST(ReferenceTransfer, farNodesEndAModeZeroTransferWithTheDefaultFill)
{
    Case c = caseWithFarCube(0, false);
    const Outcome outcome = c.run();
    EXPECT_EQ(outcome.errorCode, 2);
    EXPECT_EQ(outcome.message, "Some regions of the target model are outside the source model.");
    EXPECT_EQ(c.target1.floats, std::vector<float>(12, -5.0F));
    EXPECT_FALSE(outcome.log.has_value());
}

TEST(ReferenceTransfer, farNodesTakeTheFieldsDefaultInModeOne)
{
    Case c = caseWithFarCube(1, false);
    const Outcome outcome = c.run();
    EXPECT_EQ(outcome.errorCode, 0);
    for (std::size_t n = 0; n < 12; ++n)
    {
        // Nodes on the common face belong to the first cube.
        EXPECT_EQ(c.target1.floats[n], c.target.nodes[n][0] > 1.5F ? 17.0F : 3.0F);
    }
}

TEST(ReferenceTransfer, farNodesTakeTheirNeighboursValuesInModeTwo)
{
    Case c = caseWithFarCube(2, false);
    const Outcome outcome = c.run();
    EXPECT_EQ(outcome.errorCode, 0);
    EXPECT_EQ(outcome.seen.nodesFar, 4);
    EXPECT_EQ(c.target1.floats, std::vector<float>(12, 3.0F));
}

TEST(ReferenceTransfer, farNodesWithoutANeighbourBecomeZeroWithTheWarning)
{
    Case c = caseWithFarCube(2, true);
    const Outcome outcome = c.run();
    EXPECT_EQ(outcome.errorCode, -1);
    EXPECT_EQ(outcome.message, "Warning: propagation is not possible for nodes located in a region\nthat is not "
                               "connected to an already interpolated region.\nFields are set to zero in these "
                               "regions.\n");
    EXPECT_EQ(outcome.seen.nodesFar, 8);
    EXPECT_TRUE(outcome.log.has_value());
    EXPECT_EQ(outcome.transcript.back().stage, "Mapping library exit.");
    for (int node = 0; node < c.target.nbNodes(); ++node)
    {
        const auto& second = c.target.connectivity[1];
        const bool isFar = std::find(second.begin(), second.end(), node) != second.end();
        EXPECT_EQ(c.target1.floats[index(node)], isFar ? 0.0F : 3.0F);
    }
}

TEST(ReferenceTransfer, farGaussPointsBecomeZero)
{
    Case c = caseWithFarCube(1, false);
    c.target1 = targetField(2, 16);
    const Outcome outcome = c.run();
    EXPECT_EQ(outcome.errorCode, 0);
    EXPECT_EQ(outcome.seen.gaussPointsFar, 8);
    for (std::size_t g = 0; g < 16; ++g)
    {
        EXPECT_FLOAT_EQ(c.target1.floats[g], g < 8 ? 3.0F : 0.0F);
    }
}

TEST(ReferenceTransfer, theHostCancelsAtTheFirstCall)
{
    Case c = caseWithFarCube(1, false);
    c.callback.refusedCall = 0;
    const Outcome outcome = c.run();
    EXPECT_EQ(outcome.errorCode, -1);
    EXPECT_EQ(outcome.message, "Interpolation cancelled.\n");
    const std::string title = "FE 3D mesh to FE 3D mesh interpolation";
    const std::vector<CallbackCall> expected = {{0, title, "Pretreatment", 1},
                                                {0, title, "Interpolation cancelled.\n", 0},
                                                {0, title, "Mapping library exit.", 0}};
    EXPECT_EQ(outcome.transcript, expected);
    EXPECT_EQ(c.target1.floats, std::vector<float>(12, untouched));
}

TEST(ReferenceCorrespondence, aCopyCorrespondsNumberByNumber)
{
    Mesh source = cubes(3, {0, 1, 1}, {1, 9});
    Mesh target = source;
    MeshPointers s(source);
    MeshPointers t(target);
    const std::vector<int> flags = {1, 1};
    const reference::CorrespondenceRequest request = {s.arrays(), t.arrays(), flags.data(), {}, {}};

    std::vector<int> nodes(16, -7);
    EXPECT_EQ(reference::matchNodes(request, nodes.data()).errorCode, 0);
    for (int n = 0; n < 16; ++n)
    {
        EXPECT_EQ(nodes[index(n)], n + 1);
    }

    std::vector<std::vector<int>> a(3, std::vector<int>(8, -7));
    std::vector<std::vector<int>> b = a;
    std::vector<int*> rowsA = {a[0].data(), a[1].data(), a[2].data()};
    std::vector<int*> rowsB = {b[0].data(), b[1].data(), b[2].data()};
    EXPECT_EQ(reference::matchGaussPoints(request, rowsA.data(), rowsB.data()).errorCode, 0);
    for (int e = 0; e < 3; ++e)
    {
        for (int g = 0; g < 8; ++g)
        {
            EXPECT_EQ(a[index(e)][index(g)], e + 1);
            EXPECT_EQ(b[index(e)][index(g)], g + 1);
        }
    }
}

TEST(ReferenceCorrespondence, aTurnedElementTurnsItsGaussPoints)
{
    Mesh source = cubes(1, {0}, {1});
    Mesh target = source;
    const std::vector<int> c = source.connectivity[0];
    target.connectivity[0] = {c[1], c[2], c[3], c[0], c[5], c[6], c[7], c[4]};
    MeshPointers s(source);
    MeshPointers t(target);
    const int flag = 1;
    const reference::CorrespondenceRequest request = {s.arrays(), t.arrays(), &flag, {}, {}};
    std::vector<int> a(8, -7);
    std::vector<int> b(8, -7);
    int* rowA = a.data();
    int* rowB = b.data();
    EXPECT_EQ(reference::matchGaussPoints(request, &rowA, &rowB).errorCode, 0);
    EXPECT_EQ(b, (std::vector<int>{2, 3, 4, 1, 6, 7, 8, 5}));
}

TEST(ReferenceCorrespondence, aNodeInAMaterialOfAnotherCodeFailsTheExtract)
{
    Mesh source = cubes(1, {0}, {1});
    Mesh target = cubes(1, {0}, {2});
    MeshPointers s(source);
    MeshPointers t(target);
    const int flag = 1;
    const reference::CorrespondenceRequest request = {s.arrays(), t.arrays(), &flag, {}, {}};
    std::vector<int> nodes(8, -7);
    const Outcome outcome = reference::matchNodes(request, nodes.data());
    EXPECT_EQ(outcome.errorCode, 1);
    EXPECT_EQ(outcome.message.substr(0, 27), "Extract operation is failed");
    EXPECT_EQ(nodes, std::vector<int>(8, 0));
}

} // namespace
