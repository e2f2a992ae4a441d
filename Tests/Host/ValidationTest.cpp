// Transfers there and back, between meshes whose overlap is known.
#include "Validation.h"
#include "Errors.h"
#include "HostMeshes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace
{
using namespace host_meshes;
using veltrane::Field;
using veltrane::Location;
using veltrane::Map;
using veltrane::Mesh;
using veltrane::OutsideMode;
using veltrane::Validation;
using veltrane::ValidationOptions;

/// Enough for all the near nodes that there are by rounding.
constexpr veltrane::Rules withoutNearNodes{.nearLimit = 0.01F};

ValidationOptions optionsWithoutNearNodes()
{
    ValidationOptions options;
    options.rules = withoutNearNodes;
    return options;
}

/// Values at the nodes along x, the same across.
Field alongX(const Mesh& mesh, const std::function<double(double)>& function)
{
    return fieldOf(nodePositions(mesh), Location::nodes, 1,
                   [&](const Point& p) { return function(static_cast<double>(p[0])); });
}

TEST(Validation, OfALinearFieldIsExact)
{
    const Mesh source = cubesOfAllKinds();
    const Mesh target = block({9, 2, 3}, {0, 0, 0}, {5, 1, 1});
    for (const bool toGaussPoints : {false, true})
    {
        const Map map(source, target, {.toGaussPoints = toGaussPoints});
        const std::vector<Field> fields{fieldOf(nodePositions(source), Location::nodes, 1, linear),
                                        fieldOf(nodePositions(source), Location::nodes, 3, linear)};
        const Validation validation = map.validate(source, target, fields);
        ASSERT_EQ(validation.fields.size(), 2U);
        for (const veltrane::FieldRoundTrip& field : validation.fields)
        {
            EXPECT_EQ(field.comparison.comparedNodeCount, static_cast<std::size_t>(source.nodeCount()));
            EXPECT_LT(field.comparison.relativeDifference, 1e-6);
            EXPECT_LT(field.comparison.largestDifference, linearTolerance);
            EXPECT_LT(field.integralDifference(), 1e-6);
        }
        EXPECT_LT(validation.largestDifference(), 1e-6);
        for (const veltrane::Coverage& coverage : {validation.source, validation.target})
        {
            EXPECT_EQ(coverage.nodeShare(), 1);
            EXPECT_EQ(coverage.elementShare(), 1);
            EXPECT_NEAR(coverage.volumeShare(), 1, 1e-9);
            EXPECT_NEAR(coverage.volume, 5, 1e-5);
        }
        EXPECT_EQ(validation.target.nodes, static_cast<std::size_t>(target.nodeCount()));
        EXPECT_EQ(validation.source.elements, static_cast<std::size_t>(source.elementCount()));
    }
}

/// Ten elements from 0 to 5, of which five lie in the target: 6 of 11 rows of nodes.
TEST(Validation, TellsWhatIsMappedOnBothSides)
{
    const Mesh source = block({10, 1, 1}, {0, 0, 0}, {5, 1, 1});
    const Mesh target = block({5, 1, 1}, {0, 0, 0}, {2.5F, 1, 1});
    const Map map(source, target);
    const Field field = alongX(source, [](double x) { return 1 + x; });
    const Validation validation = map.validate(source, target, std::span(&field, 1), optionsWithoutNearNodes());
    EXPECT_EQ(validation.target.nodeShare(), 1);
    EXPECT_EQ(validation.target.volumeShare(), 1);
    EXPECT_EQ(validation.source.nodes, 44U);
    EXPECT_EQ(validation.source.mappedNodes, 24U);
    EXPECT_EQ(validation.source.elementShare(), 0.5);
    EXPECT_NEAR(validation.source.volumeShare(), 0.5, 1e-6);
    const veltrane::FieldRoundTrip& there = validation.fields.front();
    EXPECT_EQ(there.comparison.comparedNodeCount, 24U);
    EXPECT_EQ(there.comparison.unusableInField, 20U);
    EXPECT_LT(there.comparison.relativeDifference, 1e-6);
    EXPECT_NEAR(there.atSource.all.components[0], 5 + 12.5, 1e-5);
    EXPECT_NEAR(there.atTarget.all.components[0], 2.5 + 3.125, 1e-5);
}

/// A hat of height 1 at one of three rows of nodes; the target has nodes at the other two only.
TEST(Validation, ShowsAPeakThatTheTargetIsTooCoarseFor)
{
    const Mesh source = block({2, 1, 1}, {0, 0, 0}, {2, 1, 1});
    const Mesh target = block({1, 1, 1}, {0, 0, 0}, {2, 1, 1});
    const Map map(source, target);
    const Field field = alongX(source, [](double x) { return 1 - std::abs(x - 1); });
    const Validation validation = map.validate(source, target, std::span(&field, 1));
    const veltrane::FieldComparison& comparison = validation.fields.front().comparison;
    EXPECT_NEAR(comparison.relativeDifference, 1, 1e-6);
    EXPECT_NEAR(comparison.largestDifference, 1, 1e-6);
    EXPECT_EQ(source.nodePosition(comparison.largestDifferenceNode)[0], 1);
    EXPECT_NEAR(validation.fields.front().integralDifference(), 1, 1e-6);
}

/// One row of far nodes of the target holds a default value, which is none of the source's.
TEST(Validation, DoesNotTakeDefaultValuesForValuesOfTheSource)
{
    const Mesh source = block({4, 1, 1}, {0, 0, 0}, {4, 1, 1});
    const Mesh target = block({5, 1, 1}, {0, 0, 0}, {5, 1, 1});
    const Map map(source, target, {.mode = OutsideMode::defaultValue, .rules = withoutNearNodes});
    const Field field = alongX(source, [](double x) { return 1 + x; });
    ValidationOptions options = optionsWithoutNearNodes();
    options.apply.defaultValue = 1000;
    const Validation validation = map.validate(source, target, std::span(&field, 1), options);
    EXPECT_LT(validation.largestDifference(), 1e-6);
    EXPECT_EQ(validation.target.mappedNodes, 20U);
    EXPECT_EQ(validation.target.mappedElements, 4U);
    EXPECT_NEAR(validation.target.volumeShare(), 0.8, 1e-6);
    EXPECT_NEAR(validation.fields.front().atTarget.all.volume, 4, 1e-5);
}

/// Moved by 0.1 of elements of length 1: nodes at one end are near, and a tenth of one element is beside the other
/// mesh.
TEST(Validation, TellsHowFarNearNodesAre)
{
    const Mesh source = block({20, 1, 1}, {0, 0, 0}, {1, 0.05F, 0.05F});
    const Mesh target = block({20, 1, 1}, {0.02F, 0, 0}, {1.02F, 0.05F, 0.05F});
    const Map map(source, target);
    const Validation validation = map.validate(source, target, {});
    EXPECT_EQ(validation.target.nearNodes, 4U);
    EXPECT_NEAR(validation.target.largestNearDistance, 0.02, 1e-5);
    EXPECT_NEAR(validation.target.meanNearDistance, 0.02, 1e-5);
    EXPECT_EQ(validation.source.nearNodes, 4U);
    EXPECT_EQ(validation.target.nodeShare(), 1);
    EXPECT_LT(validation.target.volumeShare(), 1);
}

TEST(Validation, LeavesOutWhatIsNotToReceiveValues)
{
    Mesh target = block({4, 1, 1}, {0, 0, 0}, {4, 1, 1});
    target.setMaterials({{"first", 1}, {"second", 1}}, {0, 0, 1, 1});
    const Mesh source = block({4, 1, 1}, {0, 0, 0}, {4, 1, 1});
    const std::vector<bool> selection{true, false};
    const Map map(source, target, {.targetMapping = selection});
    const Field field = alongX(source, [](double x) { return x; });
    ValidationOptions options = optionsWithoutNearNodes();
    options.targetMapping = selection;
    const Validation validation = map.validate(source, target, std::span(&field, 1), options);
    EXPECT_EQ(validation.target.nodes, 12U);
    EXPECT_EQ(validation.target.elements, 2U);
    EXPECT_NEAR(validation.target.volume, 2, 1e-5);
    EXPECT_EQ(validation.target.volumeShare(), 1);
    EXPECT_EQ(validation.fields.front().comparison.comparedNodeCount, 12U);
}

TEST(Validation, GoesBackFromTheVolumesOfATarget)
{
    const Mesh source = block({2, 1, 1}, {0, 0, 0}, {2, 1, 1});
    veltrane::MeshData plate{.coordinates = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0},
                             .kinds = {veltrane::ElementKind::quadrilateral},
                             .offsets = {0, 4},
                             .connectivity = {0, 1, 2, 3},
                             .materialPerElement = {0},
                             .materials = {{"all", 1}}};
    const Mesh surface(plate);
    const Field field = alongX(source, [](double x) { return x; });
    EXPECT_THROW(Map(source, surface).validate(source, surface, std::span(&field, 1)), veltrane::InvalidData);
}

TEST(Validation, RefusesMeshesThatAreNotThoseOfTheMap)
{
    const Mesh source = block({2, 1, 1}, {0, 0, 0}, {2, 1, 1});
    const Mesh target = block({3, 1, 1}, {0, 0, 0}, {2, 1, 1});
    const Map map(source, target);
    const Field field = alongX(source, [](double x) { return x; });
    EXPECT_THROW(map.validate(target, target, std::span(&field, 1)), veltrane::InvalidData);
    EXPECT_THROW(map.validate(source, source, std::span(&field, 1)), veltrane::InvalidData);
}

} // namespace
