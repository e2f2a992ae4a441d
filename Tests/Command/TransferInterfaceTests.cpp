// The C++ interface to the library.
#include "Errors.h"
#include "TemporaryDirectory.h"
#include "TestMeshes.h"
#include "Transfer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <vector>

namespace
{

using namespace veltrane;
using testing::Each;
using testing::FloatEq;
using testing::Property;
using testing::StrEq;
using testing::Throws;

/// Cubes of edge 1 along the x axis and along the y axis up to 10: an angle.
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

/// One small cube in the angle, and one in its box but far from it.
Mesh nearAndFar()
{
    return cubes({{0.25F, 0.25F, 0.25F}, {8.25F, 8.25F, 0.25F}}, 0.5F);
}

float linearAt(const float* position)
{
    return 1 + 2 * position[0] - 3 * position[1] + 5 * position[2];
}

template <typename Value> Field linearField(const Mesh& mesh)
{
    std::vector<Value> values;
    for (int node = 0; node < mesh.nodeCount(); ++node)
    {
        values.push_back(static_cast<Value>(linearAt(mesh.nodePosition(node).data())));
    }
    return Field("linear", Location::nodes, 1, std::move(values));
}

Field constantField(const Mesh& mesh, float value)
{
    return Field("constant", Location::nodes, 1, std::vector<float>(static_cast<std::size_t>(mesh.nodeCount()), value));
}

const std::vector<float>& floatsOf(const Field& field)
{
    return std::get<std::vector<float>>(field.values());
}

/// Sets an environment variable for some time.
class TemporarySetting
{
public:
    TemporarySetting(const char* name, const std::string& value) : name_(name)
    {
        if (const char* previous = std::getenv(name))
        {
            previous_ = previous;
        }
        ::setenv(name, value.c_str(), 1);
    }
    ~TemporarySetting() { previous_ ? ::setenv(name_, previous_->c_str(), 1) : ::unsetenv(name_); }

private:
    const char* name_;
    std::optional<std::string> previous_;
};

TEST(Transfer, ReproducesALinearFieldInItsPrecision)
{
    const Mesh source = cubeGrid(3);
    const Mesh target = cubeGrid(4, 0.1F, 0.8F);
    const std::vector<Field> fields{linearField<float>(source), linearField<double>(source)};
    const TransferResult result = transfer(source, fields, target);

    ASSERT_EQ(result.fields.size(), 2U);
    const auto& floats = floatsOf(result.fields[0]);
    const auto& doubles = std::get<std::vector<double>>(result.fields[1].values());
    ASSERT_EQ(floats.size(), static_cast<std::size_t>(target.nodeCount()));
    for (int node = 0; node < target.nodeCount(); ++node)
    {
        const float expected = linearAt(target.nodePosition(node).data());
        EXPECT_NEAR(floats[static_cast<std::size_t>(node)], expected, 1e-5F) << "node " << node;
        EXPECT_NEAR(doubles[static_cast<std::size_t>(node)], expected, 1e-5F) << "node " << node;
    }
    EXPECT_EQ(result.outcome, Outcome::done);
    EXPECT_EQ(result.fields[1].name(), "linear");
    EXPECT_EQ(result.message, "FE 3D Mesh to FE 3D Mesh interpolation normal termination.");
}

TEST(Transfer, CountsTargetPointsByWhereTheyAre)
{
    const Mesh source = cubeGrid(2);
    // Its upper sides stand 0.01 out of the source: of each of its cubes' 8 nodes, those with a coordinate of 1.01.
    const Mesh target = cubeGrid(2, 0.01F, 1);
    int outside = 0;
    for (int node = 0; node < target.nodeCount(); ++node)
    {
        const auto position = target.nodePosition(node);
        outside += *std::ranges::max_element(position) > 1.005F ? 1 : 0;
    }
    const TransferResult result = transfer(source, std::vector{constantField(source, 3)}, target);
    ASSERT_TRUE(result.statistics.nodes);
    EXPECT_EQ(result.statistics.nodes->near, outside);
    EXPECT_EQ(result.statistics.nodes->far, 0);
    EXPECT_EQ(result.statistics.interpolatedPointCount, target.nodeCount());
    EXPECT_EQ(result.statistics.bucketCount, result.statistics.usedBucketCount + result.statistics.unusedBucketCount);
    EXPECT_FLOAT_EQ(result.statistics.meanIterations, 1);
    EXPECT_THAT(statisticsText(result.statistics), testing::StartsWith("Total number of buckets = "));
}

TEST(Transfer, GaussPointFieldsGoToGaussPointsOrToNodes)
{
    const Mesh source = cubeGrid(2);
    const Mesh target = cubeGrid(3, 0.1F, 0.8F);
    const std::vector<Field> fields(
        2, Field("strain", Location::gaussPoints, 1, std::vector<float>(source.gaussPointCount(), 3.5F)));
    TransferOptions options;
    options.targetLocations = {Location::gaussPoints, Location::nodes};
    const TransferResult result = transfer(source, fields, target, options);
    EXPECT_EQ(floatsOf(result.fields[0]).size(), target.gaussPointCount());
    EXPECT_THAT(floatsOf(result.fields[0]), Each(FloatEq(3.5F)));
    EXPECT_EQ(floatsOf(result.fields[1]).size(), static_cast<std::size_t>(target.nodeCount()));
    EXPECT_THAT(floatsOf(result.fields[1]), Each(FloatEq(3.5F)));
}

TEST(Transfer, TargetFarFromTheSourceIsAnErrorUnlessAModeSaysOtherwise)
{
    const Mesh source = angle();
    const Mesh target = nearAndFar();
    EXPECT_THAT(
        [&] { transfer(source, std::vector{constantField(source, 4)}, target); },
        Throws<TargetOutside>(testing::AllOf(
            Property(&TargetOutside::code, 2),
            Property(&TargetOutside::what, StrEq("Some regions of the target model are outside the source model.")))));
}

TEST(Transfer, NodesFarFromTheSourceGetTheDefaultValue)
{
    const Mesh source = angle();
    const Mesh target = nearAndFar();
    TransferOptions options;
    options.mode = OutsideMode::defaultValue;
    options.defaultValue = -7;
    const TransferResult result = transfer(source, std::vector{constantField(source, 4)}, target, options);
    EXPECT_EQ(result.outcome, Outcome::done);
    for (std::size_t node = 0; node < 16; ++node)
    {
        EXPECT_FLOAT_EQ(floatsOf(result.fields[0])[node], node < 8 ? 4.0F : -7.0F) << "node " << node;
    }
    EXPECT_EQ(result.statistics.nodes->far, 8);
}

TEST(Transfer, RegionsOutOfReachOfPropagationAreZeroAndReported)
{
    const Mesh source = angle();
    const Mesh target = nearAndFar();
    TransferOptions options;
    options.mode = OutsideMode::propagate;
    options.defaultValue = -7;
    const TransferResult result = transfer(source, std::vector{constantField(source, 4)}, target, options);
    EXPECT_EQ(result.outcome, Outcome::propagationWarning);
    EXPECT_THAT(result.message, testing::StartsWith("Warning: propagation is not possible"));
    for (std::size_t node = 0; node < 16; ++node)
    {
        EXPECT_FLOAT_EQ(floatsOf(result.fields[0])[node], node < 8 ? 4.0F : 0.0F) << "node " << node;
    }
    // One iteration for each of the 8 nodes in the source.
    EXPECT_FLOAT_EQ(result.statistics.meanIterations, 1);
}

TEST(Transfer, OnlySelectedMaterialsReceiveValues)
{
    const Mesh source = cubeGrid(2);
    MeshData data{.coordinates = source.coordinates(),
                  .kinds = source.kinds(),
                  .offsets = {0},
                  .materialPerElement = {0, 0, 0, 0, 1, 1, 1, 1},
                  .materials = {{"lower", 1}, {"upper", 1}}};
    for (int node = 0; node < source.nodeCount(); ++node)
    {
        data.connectivity.push_back(node); // the cubes have nodes of their own
    }
    for (int element = 1; element <= source.elementCount(); ++element)
    {
        data.offsets.push_back(static_cast<std::size_t>(element) * 8);
    }
    const Mesh target(data);
    TransferOptions options;
    options.targetMapping = {false, true};
    options.defaultValue = -1;
    const TransferResult result = transfer(source, std::vector{constantField(source, 4)}, target, options);
    for (std::size_t node = 0; node < 64; ++node)
    {
        EXPECT_FLOAT_EQ(floatsOf(result.fields[0])[node], node < 32 ? -1.0F : 4.0F) << "node " << node;
    }
}

TEST(Sample, ReproducesALinearFieldAtPoints)
{
    const Mesh source = cubeGrid(3);
    const PointCloud points({0.5F, 0.25F, 0.75F, 0.125F, 0.9F, 0.3F}, {0, 0}, {{"steel", 1}});
    const TransferResult result = sample(source, std::vector{linearField<float>(source)}, points);
    EXPECT_NEAR(floatsOf(result.fields[0])[0], linearAt(&points.coordinates()[0]), 1e-5F);
    EXPECT_NEAR(floatsOf(result.fields[0])[1], linearAt(&points.coordinates()[3]), 1e-5F);
    EXPECT_FALSE(result.statistics.nodes);
    EXPECT_EQ(result.statistics.interpolatedPointCount, 2);
}

TEST(Sample, PointsOutsideFollowTheMode)
{
    const Mesh source = cubeGrid(2);
    const std::vector<Field> fields{constantField(source, 4)};
    const PointCloud points({0.5F, 0.5F, 0.5F, 3, 0.5F, 0.5F}, {0, 0}, {{"steel", 1}});
    TransferOptions options;
    EXPECT_THROW(sample(source, fields, points, options), TargetOutside);
    options.mode = OutsideMode::defaultValue;
    options.defaultValue = -7;
    EXPECT_THAT(floatsOf(sample(source, fields, points, options).fields[0]), testing::ElementsAre(4, -7));
    options.mode = OutsideMode::propagate;
    EXPECT_THROW(sample(source, fields, points, options), InvalidOption);
}

TEST(Transfer, TellsItsProgressUpToTheEnd)
{
    const Mesh source = cubeGrid(2);
    std::vector<int> percents;
    TransferOptions options;
    options.progress = [&](const Progress& progress)
    {
        EXPECT_EQ(progress.title, "FE 3D mesh to FE 3D mesh interpolation");
        percents.push_back(progress.percent);
        return true;
    };
    transfer(source, std::vector{constantField(source, 4)}, source, options);
    EXPECT_TRUE(std::ranges::is_sorted(percents));
    EXPECT_EQ(percents.front(), 0);
    EXPECT_EQ(percents.back(), 100);
}

TEST(Transfer, IsCancelledByTheProgressCallback)
{
    const Mesh source = cubeGrid(2);
    for (const int cancelAt : {0, 5, 50, 100})
    {
        TransferOptions options;
        options.progress = [&](const Progress& progress) { return progress.percent < cancelAt; };
        EXPECT_THAT([&] { transfer(source, std::vector{constantField(source, 4)}, source, options); },
                    Throws<Cancelled>(Property(&Cancelled::what, StrEq("Interpolation cancelled."))))
            << "at " << cancelAt;
    }
}

TEST(Transfer, IsEndedByWhatTheProgressCallbackThrows)
{
    const Mesh source = cubeGrid(2);
    const std::filesystem::path before = std::filesystem::current_path();
    TransferOptions options;
    options.progress = [](const Progress&) -> bool { throw std::out_of_range("enough"); };
    EXPECT_THAT([&] { transfer(source, std::vector{constantField(source, 4)}, source, options); },
                Throws<std::out_of_range>(Property(&std::out_of_range::what, StrEq("enough"))));
    EXPECT_EQ(std::filesystem::current_path(), before);
}

TEST(Transfer, LetsTheProgressCallbackWorkInTheUsersSurroundings)
{
    const Mesh source = cubeGrid(2);
    const std::filesystem::path before = std::filesystem::current_path();
    TransferOptions options;
    options.progress = [&](const Progress& progress)
    {
        EXPECT_EQ(std::filesystem::current_path(), before);
        if (progress.percent == 100)
        {
            std::cout << progress.stage << '\n';
        }
        return true;
    };
    testing::internal::CaptureStdout();
    const TransferResult result = transfer(source, std::vector{constantField(source, 4)}, source, options);
    EXPECT_THAT(testing::internal::GetCapturedStdout(), testing::HasSubstr("Interpolation terminated successfully.\n"));
}

TEST(Transfer, MayBeStartedFromAProgressCallback)
{
    const Mesh source = cubeGrid(2);
    const std::vector<Field> fields{constantField(source, 4)};
    int nbInner = 0;
    TransferOptions options;
    options.progress = [&](const Progress&)
    {
        nbInner += transfer(source, fields, source).outcome == Outcome::done ? 1 : 0;
        return true;
    };
    EXPECT_EQ(transfer(source, fields, source, options).outcome, Outcome::done);
    EXPECT_GT(nbInner, 0);
}

TEST(Transfer, TouchesNothingInTheCurrentDirectoryAndLeavesNothingBehind)
{
    const WorkingDirectory current({{"mappingInputs.txt", "0.1 0.001 1\n"}, {"interpoLog.txt", "of another run\n"}});
    const TemporaryDirectory temporary;
    const Mesh source = cubeGrid(3);
    const TemporarySetting place("TMPDIR", temporary.path().string());
    const TransferResult result = transfer(source, std::vector{constantField(source, 4)}, source);

    EXPECT_GT(result.statistics.bucketCount, 1); // the user's tuning file would have allowed one
    EXPECT_THAT(current.names(), testing::ElementsAre("interpoLog.txt", "mappingInputs.txt"));
    EXPECT_EQ(contentsOf(current / "interpoLog.txt"), "of another run\n");
    EXPECT_THAT(temporary.names(), testing::IsEmpty());
}

TEST(Transfer, NeedsNoPlaceForFiles)
{
    const Mesh source = cubeGrid(1);
    const TemporarySetting place("TMPDIR", "/nowhere");
    EXPECT_EQ(transfer(source, std::vector{constantField(source, 4)}, source).outcome, Outcome::done);
}

TEST(Transfer, IsTunedByItsOptions)
{
    const Mesh source = cubeGrid(3);
    TransferOptions options;
    options.tuning.maxBuckets = 1;
    const TransferResult result = transfer(source, std::vector{constantField(source, 4)}, source, options);
    EXPECT_EQ(result.statistics.bucketCount, 1);

    // Twice the tolerance counts as inside: 0.2 in the reference cube, a 20th of this one's edge.
    const Mesh cube = cubes({{0, 0, 0}}, 1);
    const PointCloud point({1.009F, 0.5F, 0.5F}, {0}, {{"steel", 1}});
    options.tuning = {};
    EXPECT_THROW(sample(cube, std::vector{constantField(cube, 4)}, point, options), TargetOutside);
    options.tuning.tolerance = 0.1F;
    EXPECT_EQ(sample(cube, std::vector{constantField(cube, 4)}, point, options).outcome, Outcome::done);
}

TEST(Transfer, TuningMustBeInRange)
{
    const Mesh source = cubeGrid(1);
    const std::vector<Field> fields{constantField(source, 4)};
    const auto with = [&](const Tuning& tuning)
    {
        TransferOptions options;
        options.tuning = tuning;
        transfer(source, fields, source, options);
    };
    EXPECT_THROW(with({.tolerance = 0.0F}), InvalidOption);
    EXPECT_THROW(with({.tolerance = NAN}), InvalidOption);
    EXPECT_THROW(with({.bucketFactor = -1.0F}), InvalidOption);
    EXPECT_THROW(with({.maxBuckets = 0}), InvalidOption);
}

TEST(Transfer, FieldsMustFitTheSource)
{
    const Mesh source = cubeGrid(1);
    EXPECT_THROW(transfer(source, {}, source), InvalidData);
    const std::vector<Field> tooShort{Field("T", Location::nodes, 1, std::vector<float>(7))};
    EXPECT_THAT([&] { transfer(source, tooShort, source); },
                Throws<InvalidData>(
                    Property(&InvalidData::what, StrEq("field 'T' has values at 7 nodes, but the source has 8"))));
    const std::vector<Field> atNodes{Field("T", Location::gaussPoints, 1, std::vector<float>(9))};
    EXPECT_THROW(transfer(source, atNodes, source), InvalidData);
}

TEST(Transfer, OptionsMustFitTheMeshes)
{
    const Mesh source = cubeGrid(1);
    const std::vector<Field> fields{constantField(source, 4)};
    TransferOptions options;
    options.targetMapping = {true, true};
    EXPECT_THROW(transfer(source, fields, source, options), InvalidOption);
    options = {};
    options.targetLocations = {Location::nodes, Location::nodes};
    EXPECT_THROW(transfer(source, fields, source, options), InvalidOption);
    options = {};
    options.mode = static_cast<OutsideMode>(3);
    EXPECT_THROW(transfer(source, fields, source, options), InvalidOption);
}

TEST(Transfer, SourceElementsMustHaveAVolume)
{
    const Mesh triangle = oneElement(ElementKind::triangle, {0, 0, 0, 1, 0, 0, 0, 1, 0});
    EXPECT_THAT(
        [&] { transfer(triangle, std::vector{constantField(triangle, 1)}, triangle); },
        Throws<InvalidData>(Property(&InvalidData::what,
                                     StrEq("source element 0 is a triangle; only volume elements can be a source"))));

    // Each kind, pressed flat.
    const std::vector<Mesh> flat{
        oneElement(ElementKind::tetrahedron, {0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0}),
        oneElement(ElementKind::hexahedron, {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0}),
        oneElement(ElementKind::wedge, {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 1, 0}),
        oneElement(ElementKind::pyramid, {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0.5F, 0.5F, 0}),
        oneElement(ElementKind::quadraticTetrahedron, {1, 0,    0, 0,    1, 0, 0, 0,    0, 1,    1, 0, 0.5F, 0.5F, 0,
                                                       0, 0.5F, 0, 0.5F, 0, 0, 1, 0.5F, 0, 0.5F, 1, 0, 0.5F, 0.5F, 0}),
    };
    for (const Mesh& mesh : flat)
    {
        TransferOptions options;
        options.rules = {.leavesOutSingularElements = false};
        EXPECT_THAT([&] { transfer(mesh, std::vector{constantField(mesh, 1)}, mesh, options); },
                    Throws<SingularElement>(Property(&SingularElement::element, 0)))
            << mesh.kindOf(0).name;
    }
}

TEST(Transfer, GaussPointFieldsNeedATargetOfVolumeElements)
{
    const Mesh source = cubeGrid(1);
    const Mesh triangle = oneElement(ElementKind::triangle, {0, 0, 0.5F, 1, 0, 0.5F, 0, 1, 0.5F});
    const std::vector<Field> fields{
        Field("strain", Location::gaussPoints, 1, std::vector<float>(source.gaussPointCount()))};
    EXPECT_THROW(transfer(source, fields, triangle), InvalidData);
}

/// A cube whose upper side is drawn together to one point: its Jacobian is regular but for that side. The first step of
/// the search for (0.01, 0, 1) leads exactly there, 0.01 away from the point.
TEST(Transfer, ASingularElementIsNamed)
{
    const Mesh source = oneElement(ElementKind::hexahedron,
                                   {-1, -1, -1, 1, -1, -1, 1, 1, -1, -1, 1, -1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1});
    const Mesh target =
        oneElement(ElementKind::tetrahedron, {0.01F, 0, 1, 0.1F, 0, 0, -0.1F, 0.1F, 0, 0, -0.1F, -0.5F});
    EXPECT_THAT(
        [&] { transfer(source, std::vector{constantField(source, 1)}, target, {.rules = veltrane::asExported()}); },
        Throws<SingularElement>(
            AllOf(Property(&SingularElement::element, 0),
                  Property(&SingularElement::what,
                           StrEq("the Jacobian of source element 0 becomes singular on the way to a target point")))));
}

TEST(TransferDeathTest, ACallbackMayEndTheProcess)
{
    const Mesh source = cubeGrid(1);
    TransferOptions options;
    options.progress = [](const Progress&) -> bool { std::exit(7); };
    EXPECT_EXIT(transfer(source, std::vector{constantField(source, 1)}, source, options), testing::ExitedWithCode(7),
                "^$");
}

} // namespace
