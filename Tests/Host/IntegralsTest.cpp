// Integrals over meshes whose volumes are known.
#include "Integrals.h"
#include "Errors.h"
#include "HostMeshes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>

namespace
{
using namespace host_meshes;
using veltrane::Field;
using veltrane::FieldIntegral;
using veltrane::FieldIntegrals;
using veltrane::Location;

constexpr double tolerance = 1e-5; // of coordinates in single precision

/// Over x from 0 to 5 and y and z from 0 to 1: the value at the middle times the volume.
constexpr double linearIntegral = 5 * (1 + 2 * 2.5 - 3 * 0.5 + 0.5 * 0.5);

TEST(Integrals, OfOneAreTheVolumesOfAllKinds)
{
    const veltrane::Mesh cubes = cubesOfAllKinds();
    const std::vector<double> volumes = veltrane::gaussPointVolumes(cubes);
    ASSERT_EQ(volumes.size(), cubes.gaussPointCount());
    EXPECT_NEAR(std::accumulate(volumes.begin(), volumes.end(), 0.0), 5, tolerance);
}

TEST(Integrals, OfLinearFieldsAreExactAtNodesAndAtGaussPoints)
{
    const veltrane::Mesh cubes = cubesOfAllKinds();
    const std::vector<double> volumes = veltrane::gaussPointVolumes(cubes);
    for (const Location location : {Location::nodes, Location::gaussPoints})
    {
        const auto places = location == Location::nodes ? nodePositions(cubes) : gaussPointPositions(cubes);
        const FieldIntegral all = integralsOf(fieldOf(places, location, 2, linear), cubes, volumes).all;
        EXPECT_NEAR(all.components[0], linearIntegral, 5 * tolerance);
        EXPECT_NEAR(all.components[1], 2 * linearIntegral, 10 * tolerance);
        EXPECT_NEAR(all.volume, 5, tolerance);
    }
}

/// Along x the first four cubes of ten are of the first material; the field is 3 and -4 there, and (0, 1) elsewhere.
TEST(Integrals, AreToldPerMaterial)
{
    veltrane::Mesh bar = block({10, 1, 1}, {0, 0, 0}, {10, 1, 1});
    std::vector<int> materials(10, 1);
    std::fill(materials.begin(), materials.begin() + 4, 0);
    bar.setMaterials({{"first", 1}, {"second", 2}}, materials);
    std::vector<double> values;
    for (int gaussPoint = 0; gaussPoint < 80; ++gaussPoint)
    {
        values.push_back(gaussPoint < 32 ? 3 : 0);
        values.push_back(gaussPoint < 32 ? -4 : 1);
    }
    const Field field("f", Location::gaussPoints, 2, values);
    const FieldIntegrals integrals = integralsOf(field, bar, veltrane::gaussPointVolumes(bar));
    ASSERT_EQ(integrals.materials.size(), 2U);
    EXPECT_NEAR(integrals.materials[0].components[0], 12, tolerance);
    EXPECT_NEAR(integrals.materials[0].components[1], -16, tolerance);
    EXPECT_NEAR(integrals.materials[0].magnitude, 20, tolerance);
    EXPECT_NEAR(integrals.materials[1].components[1], 6, tolerance);
    EXPECT_NEAR(integrals.materials[1].volume, 6, tolerance);
    EXPECT_NEAR(integrals.all.components[1], -10, tolerance);
    EXPECT_NEAR(integrals.all.magnitude, 26, tolerance);
}

TEST(Integrals, LeaveOutElementsWithANodeWithoutAValue)
{
    const veltrane::Mesh bar = block({10, 1, 1}, {0, 0, 0}, {10, 1, 1});
    std::vector<double> values(44, 2);
    values[0] = std::numeric_limits<double>::quiet_NaN(); // at one end
    const Field field("f", Location::nodes, 1, values);
    const FieldIntegral all = integralsOf(field, bar, veltrane::gaussPointVolumes(bar)).all;
    EXPECT_NEAR(all.volume, 9, tolerance);
    EXPECT_NEAR(all.components[0], 18, tolerance);
}

TEST(Integrals, RefuseFieldsOfOtherMeshes)
{
    const veltrane::Mesh cube = block({1, 1, 1}, {0, 0, 0}, {1, 1, 1});
    const Field field("f", Location::nodes, 1, std::vector<double>(7));
    EXPECT_THROW(integralsOf(field, cube, veltrane::gaussPointVolumes(cube)), veltrane::InvalidData);
}

TEST(Integrals, DifferByAPartOfTheMagnitudes)
{
    const FieldIntegral reference{.components = {3, 4}, .magnitude = 10, .volume = 1};
    const FieldIntegral other{.components = {0, 0}, .magnitude = 0, .volume = 1};
    EXPECT_EQ(relativeDifference(other, reference), 0.5);
    EXPECT_EQ(relativeDifference(other, other), 0);
    EXPECT_TRUE(std::isinf(relativeDifference(reference, other)));
}

} // namespace
