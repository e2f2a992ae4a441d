#include "Search/ReferenceCoordinates.h"
#include "ModelClass.h"
#include "ProcessEnd.h"
#include "TestModels.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace
{
/// Low corner, high corner.
using BoxCorners = std::array<float, 6>;

constexpr BoxCorners unitBox{0, 0, 0, 1, 1, 1};
constexpr float usualFactor = 0.001F;

BoxCorners boxCorners(const TestMesh& mesh)
{
    const Box box = mesh.boxes().front();
    return {box.low[0], box.low[1], box.low[2], box.high[0], box.high[1], box.high[2]};
}

/// Searches a point in the only element of a mesh.
Inversion invert(TestMesh& mesh, const BoxCorners& box, const Vector3& point, float factor = usualFactor)
{
    ModelClass model;
    mesh.loadInto(model);
    return model.referenceCoordinates(0, box.data(), point, factor);
}

Inversion invert(TestMesh& mesh, const Vector3& point, float factor = usualFactor)
{
    return invert(mesh, boxCorners(mesh), point, factor);
}

/// One element that is its own reference domain.
TestMesh referenceElement(int type)
{
    TestMesh mesh;
    mesh.addElement(type, referenceNodes(type));
    return mesh;
}

void expectNear(const Vector3& point, const Vector3& expected, float tolerance)
{
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        EXPECT_NEAR(point[axis], expected[axis], tolerance) << "axis " << axis;
    }
}

/// A quadratic tetrahedron whose map is position(xi, eta, zeta) at its nodes.
template <class Position> TestMesh quadraticTetrahedron(Position position)
{
    std::vector<Vector3> nodes;
    for (const Vector3& xi : referenceNodes(10))
    {
        nodes.push_back(position(xi));
    }
    TestMesh mesh;
    mesh.addElement(10, nodes);
    return mesh;
}

/// x = xi^2, y = eta, z = zeta: Newton's iteration towards x = 0 halves xi in every step, starting at 1/4, and every
/// value on the way is a power of 2.
TestMesh halvingTetrahedron()
{
    return quadraticTetrahedron([](const Vector3& xi) { return Vector3{xi[0] * xi[0], xi[1], xi[2]}; });
}

/// A point just outside the middle of a face of a reference element.
struct FacePoint
{
    int type;
    Vector3 onFace;
    Vector3 outward; ///< reaches one reference unit of the inside test
};

const std::vector<FacePoint> facePoints{{1, {1, 0, 0}, {1, 0, 0}},
                                        {1, {-1, 0.5F, 0}, {-1, 0, 0}},
                                        {1, {0, 1, 0}, {0, 1, 0}},
                                        {1, {0, -1, 0}, {0, -1, 0}},
                                        {1, {0, 0, 1}, {0, 0, 1}},
                                        {1, {0, 0, -1}, {0, 0, -1}},
                                        {2, {0, 0.25F, 0.25F}, {-1, 0, 0}},
                                        {2, {0.25F, 0, 0.25F}, {0, -1, 0}},
                                        {2, {0.25F, 0.25F, 0}, {0, 0, -1}},
                                        {2, {0.25F, 0.25F, 0.5F}, {0, 0, 1}},
                                        {3, {0, 0.25F, 0}, {-1, 0, 0}},
                                        {3, {0.25F, 0, 0}, {0, -1, 0}},
                                        {3, {0.5F, 0.5F, 0}, {1, 0, 0}},
                                        {3, {0.25F, 0.25F, 1}, {0, 0, 1}},
                                        {3, {0.25F, 0.25F, -1}, {0, 0, -1}},
                                        {10, {0, 0.25F, 0.25F}, {-1, 0, 0}},
                                        {10, {0.25F, 0, 0.25F}, {0, -1, 0}},
                                        {10, {0.25F, 0.25F, 0}, {0, 0, -1}},
                                        {10, {0.5F, 0.25F, 0.25F}, {1, 0, 0}},
                                        {12, {0, 0, 0}, {0, 0, -1}},
                                        {12, {0, -0.5F, 0.5F}, {0, -1, 0}},
                                        {12, {0.5F, 0, 0.5F}, {1, 0, 0}},
                                        {12, {0, 0.5F, 0.5F}, {0, 1, 0}},
                                        {12, {-0.5F, 0, 0.5F}, {-1, 0, 0}}};

Vector3 beyond(const FacePoint& face, float distance)
{
    return {face.onFace[0] + distance * face.outward[0], face.onFace[1] + distance * face.outward[1],
            face.onFace[2] + distance * face.outward[2]};
}
} // namespace

TEST(ReferenceCoordinates, OfAHexahedronsNodesAreItsCorners)
{
    TestMesh mesh;
    mesh.addBox({2, 3, 4}, {4, 7, 5});
    const std::vector<Vector3> corners = referenceNodes(1);
    for (std::size_t node = 0; node < 8; ++node)
    {
        const Inversion inversion = invert(mesh, mesh.nodes[node]);
        EXPECT_EQ(inversion.result, Inversion::inside) << node;
        expectNear(inversion.referenceCoords, corners[node], 1e-5F);
    }
}

TEST(ReferenceCoordinates, OfTheNodesOfEveryKindAreTheirReferencePositions)
{
    for (const int type : typesWithShapeFunctions)
    {
        // Stretched, sheared and moved.
        TestMesh mesh;
        std::vector<Vector3> nodes = referenceNodes(type);
        for (Vector3& node : nodes)
        {
            node = {5 + 2 * node[0] + 0.5F * node[1], -1 + 3 * node[1], 2 + node[2] + 0.25F * node[0]};
        }
        mesh.addElement(type, nodes);
        for (std::size_t node = 0; node < nodes.size(); ++node)
        {
            const Inversion inversion = invert(mesh, nodes[node]);
            EXPECT_EQ(inversion.result, Inversion::inside) << "type " << type << ", node " << node;
            expectNear(inversion.referenceCoords, referenceNodes(type)[node], 1e-5F);
        }
    }
}

TEST(ReferenceCoordinates, OfAPointInADistortedHexahedronLeadBackToThePoint)
{
    TestMesh mesh;
    mesh.addElement(1, {{0, 0, 0},
                        {2, 0.25F, 0},
                        {2.5F, 2, 0.5F},
                        {-0.25F, 1.5F, 0},
                        {0, 0, 1},
                        {2, 0, 1.5F},
                        {2, 2, 2},
                        {0, 2, 1.25F}});
    ModelClass model;
    mesh.loadInto(model);
    const Vector3 point{1.25F, 0.75F, 0.5F};
    const BoxCorners box = boxCorners(mesh);
    const Inversion inversion = model.referenceCoordinates(0, box.data(), point, 1e-4F);
    ASSERT_EQ(inversion.result, Inversion::inside);
    EXPECT_GT(inversion.nbIterations, 1);
    const auto nodes = gatherNodes<LinearHexahedron>(model.itsConnectivity[0], model.itsNodeCoords);
    const Vector3 position = physicalPosition<LinearHexahedron>(nodes, inversion.referenceCoords);
    // The smallest extent of the box is 2.
    EXPECT_LE(std::sqrt(squaredDistance(position, point)), 2e-4F);
}

TEST(ReferenceCoordinates, AnAffineTetrahedronTakesOneStep)
{
    TestMesh mesh;
    mesh.addElement(2, {{1, 1, 1}, {3, 1, 1}, {1, 5, 1}, {1, 1, 9}});
    const Inversion inversion = invert(mesh, {1.25F, 2, 3});
    EXPECT_EQ(inversion.result, Inversion::inside);
    EXPECT_EQ(inversion.nbIterations, 1);
    expectNear(inversion.referenceCoords, {0.125F, 0.25F, 0.25F}, 1e-6F);
}

TEST(ReferenceCoordinates, APointAtTheInitialGuessStillTakesAStep)
{
    // The error starts at twice the tolerance, not at the distance.
    TestMesh mesh = referenceElement(1);
    EXPECT_EQ(invert(mesh, {0, 0, 0}).nbIterations, 1);
}

TEST(ReferenceCoordinates, APointIsInsideWithinTwiceTheFactorBehindAFace)
{
    for (const FacePoint& face : facePoints)
    {
        TestMesh mesh = referenceElement(face.type);
        const Inversion nearPoint = invert(mesh, beyond(face, 0.001F));
        const Inversion farPoint = invert(mesh, beyond(face, 0.003F));
        EXPECT_EQ(nearPoint.result, Inversion::inside) << "type " << face.type << ", face " << &face - &facePoints[0];
        EXPECT_EQ(farPoint.result, Inversion::outside) << "type " << face.type << ", face " << &face - &facePoints[0];
        EXPECT_GT(farPoint.nbIterations, 0);
        expectNear(farPoint.referenceCoords, beyond(face, 0.003F), 1e-5F);
    }
}

TEST(ReferenceCoordinates, TheMarginGrowsWithTheFactor)
{
    TestMesh mesh = referenceElement(2);
    EXPECT_EQ(invert(mesh, {-0.015F, 0.25F, 0.25F}, 0.01F).result, Inversion::inside);
    EXPECT_EQ(invert(mesh, {-0.025F, 0.25F, 0.25F}, 0.01F).result, Inversion::outside);
}

TEST(ReferenceCoordinates, TheMarginIsInReferenceUnits)
{
    // 0.001 reference units are a tenth of a length unit here.
    TestMesh mesh;
    mesh.addBox({0, 0, 0}, {200, 200, 200});
    EXPECT_EQ(invert(mesh, {200.1F, 100, 100}).result, Inversion::inside);
    EXPECT_EQ(invert(mesh, {200.3F, 100, 100}).result, Inversion::outside);
}

TEST(ReferenceCoordinates, AFlatBoxAppliesTheInsideTestToTheInitialGuess)
{
    // No step is taken, so that not even the singular Jacobian of the flat element matters.
    const BoxCorners flatBox{0, 0, 5, 1, 1, 5};
    for (const int type : typesWithShapeFunctions)
    {
        TestMesh mesh;
        std::vector<Vector3> nodes = referenceNodes(type);
        for (Vector3& node : nodes)
        {
            node[2] = 5;
        }
        mesh.addElement(type, nodes);
        const Inversion inversion = invert(mesh, flatBox, {100, 200, 300});
        EXPECT_EQ(inversion.result, Inversion::inside) << type;
        EXPECT_EQ(inversion.nbIterations, 0) << type;
    }
    TestMesh mesh = referenceElement(12);
    EXPECT_EQ(invert(mesh, flatBox, {100, 200, 300}).referenceCoords, (Vector3{0, 0, 0.2F}));
}

TEST(ReferenceCoordinates, ElementMinusOneIsNoElement)
{
    const ModelClass model;
    const Inversion inversion = model.referenceCoordinates(-1, nullptr, {0, 0, 0}, usualFactor);
    EXPECT_EQ(inversion.result, -1);
    EXPECT_EQ(inversion.nbIterations, 0);
}

TEST(ReferenceCoordinates, TheIterationEndsAsSoonAsTheErrorIsTheTolerance)
{
    // Squared error xi^4 with xi = 2^-2, 2^-3, ...; squared tolerance 2^-48: ten halvings reach it exactly.
    TestMesh mesh = halvingTetrahedron();
    const Inversion inversion = invert(mesh, unitBox, {0, 0.25F, 0.25F}, 0x1p-24F);
    EXPECT_EQ(inversion.result, Inversion::inside);
    EXPECT_EQ(inversion.nbIterations, 10);
    EXPECT_EQ(inversion.referenceCoords, (Vector3{0x1p-12F, 0.25F, 0.25F}));
}

TEST(ReferenceCoordinates, TheToleranceIsAFractionOfTheSmallestExtentOfTheBox)
{
    TestMesh mesh = halvingTetrahedron();
    const Vector3 point{0, 0.25F, 0.25F};
    EXPECT_EQ(invert(mesh, {0, 0, 0, 4, 4, 4}, point, 0x1p-24F).nbIterations, 9);
    EXPECT_EQ(invert(mesh, {0, 0, 0, 1, 4, 4}, point, 0x1p-24F).nbIterations, 10);
    EXPECT_EQ(invert(mesh, {0, 0, 0, 4, 1, 4}, point, 0x1p-24F).nbIterations, 10);
    EXPECT_EQ(invert(mesh, {-1, -1, -1, 3, 3, 0}, point, 0x1p-24F).nbIterations, 10);
}

TEST(ReferenceCoordinates, ALongIterationIsNotGivenUp)
{
    // x = 2^120 xi eta and y = xi - eta: towards the origin both coordinates are halved in every step from 1/4 on. The
    // error 2^(116 - 2k) after k steps reaches 1.5 * 2^-24 with k = 70.
    constexpr float big = 0x1p120F;
    constexpr float small = 0x1p-60F;
    TestMesh mesh = quadraticTetrahedron(
        [](const Vector3& xi) {
            return Vector3{big * xi[0] * xi[1], small * (xi[0] - xi[1]), small * xi[2]};
        });
    const Inversion inversion = invert(mesh, unitBox, {0, 0, small / 4}, 1.5F * 0x1p-24F);
    EXPECT_EQ(inversion.result, Inversion::inside);
    EXPECT_EQ(inversion.nbIterations, 70);
}

TEST(ReferenceCoordinates, APointThatTheMapNeverReachesDoesNotConverge)
{
    // x = xi^2 is never negative.
    TestMesh mesh = halvingTetrahedron();
    const Inversion inversion = invert(mesh, unitBox, {-1, 0.25F, 0.25F});
    EXPECT_EQ(inversion.result, Inversion::notConverged);
    EXPECT_EQ(inversion.result, -1);
    EXPECT_EQ(inversion.nbIterations, 0);
}

TEST(ReferenceCoordinates, ASingularJacobianEndsTheProcess)
{
    TestMesh mesh;
    mesh.addElement(2, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}});
    EXPECT_PROCESS_END(invert(mesh, unitBox, {0.5F, 0.5F, 0.5F}),
                       "A 3*3 Matrix is not inversable in invMatrix33() function.\n");
}

TEST(ReferenceCoordinates, ATypeWithoutShapeFunctionsEndsTheProcess)
{
    TestMesh mesh;
    mesh.addElement(6, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}});
    EXPECT_PROCESS_END(invert(mesh, unitBox, {0.5F, 0.5F, 0.5F}),
                       "Error in FEutilities file at line 290: shape functions of elements different from linear or "
                       "quadratic tetrahedrons, linear wedges, linear hexahedrons, linear pyramids not implemented "
                       "yet.\n");
}

TEST(ReferenceCoordinates, TheElementIsFoundByItsNumber)
{
    TestMesh mesh;
    mesh.addBox({0, 0, 0}, {1, 1, 1});
    mesh.addElement(2, {{10, 0, 0}, {11, 0, 0}, {10, 1, 0}, {10, 0, 1}});
    ModelClass model;
    mesh.loadInto(model);
    const BoxCorners box{10, 0, 0, 11, 1, 1};
    const Inversion inversion = model.referenceCoordinates(1, box.data(), {10.5F, 0.125F, 0.25F}, usualFactor);
    EXPECT_EQ(inversion.result, Inversion::inside);
    expectNear(inversion.referenceCoords, {0.5F, 0.125F, 0.25F}, 1e-5F);
}

TEST(Jacobian, HasARowPerPhysicalAxisAndAColumnPerReferenceAxis)
{
    // x = 1 + 2 xi + 3 eta + 5 zeta, y = 7 xi + 11 eta + 13 zeta, z = 17 xi + 19 eta + 23 zeta.
    const ElementNodes<LinearTetrahedron> nodes{{{1, 0, 0}, {3, 7, 17}, {4, 11, 19}, {6, 13, 23}}};
    float jacobian[3][3];
    jacobianMatrix<LinearTetrahedron>(nodes, derivativesAt<LinearTetrahedron>(Vector3{0.25F, 0.25F, 0.25F}), jacobian);
    const float expected[3][3] = {{2, 3, 5}, {7, 11, 13}, {17, 19, 23}};
    for (int i = 0; i < 3; ++i)
    {
        for (int j = 0; j < 3; ++j)
        {
            EXPECT_EQ(jacobian[i][j], expected[i][j]) << i << ", " << j;
        }
    }
}

TEST(PhysicalPosition, IsTheSumOfTheNodesWeightedByTheShapeFunctions)
{
    const ElementNodes<LinearTetrahedron> nodes{{{1, 0, 0}, {3, 7, 17}, {4, 11, 19}, {6, 13, 23}}};
    EXPECT_EQ(physicalPosition<LinearTetrahedron>(nodes, {0.5F, 0.25F, 0.125F}),
              (Vector3{1 + 1 + 0.75F + 0.625F, 3.5F + 2.75F + 1.625F, 8.5F + 4.75F + 2.875F}));
}
