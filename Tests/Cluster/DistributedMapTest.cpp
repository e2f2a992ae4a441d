// Maps over the ranks that the program is started with, beside the map of one process: the same bits.
#include "Errors.h"
#include "MeshParts.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>

namespace
{
using namespace mesh_parts;
using veltrane::DistributedMap;
using veltrane::Field;
using veltrane::Location;
using veltrane::Map;
using veltrane::MapOptions;
using veltrane::Mesh;
using veltrane::OutsideMode;

int rankOf()
{
    int rank = 0;
    MPI_Comm_rank(MPI_COMM_WORLD, &rank);
    return rank;
}

int rankCount()
{
    int count = 0;
    MPI_Comm_size(MPI_COMM_WORLD, &count);
    return count;
}

/// Values without a pattern, so that no two sums are equal by chance.
template <class Value> Field fieldOn(const Mesh& mesh, Location location, int components, int step)
{
    const std::size_t count =
        location == Location::nodes ? static_cast<std::size_t>(mesh.nodeCount()) : mesh.gaussPointCount();
    std::vector<Value> values;
    for (std::size_t i = 0; i < count * static_cast<std::size_t>(components); ++i)
    {
        values.push_back(static_cast<Value>(std::sin(0.7 * static_cast<double>(i) + step) * 1000.0 / 3.0));
    }
    return Field(std::to_string(step), location, components, std::move(values));
}

template <class Value> bool areSameBits(const std::vector<Value>& first, const std::vector<Value>& second)
{
    return first.size() == second.size() && std::memcmp(first.data(), second.data(), first.size() * sizeof(Value)) == 0;
}

bool areSameBits(const Field& first, const Field& second)
{
    return first.location() == second.location() && first.isSinglePrecision() == second.isSinglePrecision() &&
           std::visit([&](const auto& values)
                      { return areSameBits(values, std::get<std::decay_t<decltype(values)>>(second.values())); },
                      first.values());
}

/// A source, a target, and what is done between them.
struct Situation
{
    const char* name = "";
    Body source{};
    Body target{};
    MapOptions options{};
    veltrane::ApplyOptions application{};
    bool fromGaussPoints = false;
    Location to = Location::nodes;
};

/// A target of other cells in the same materials.
Body within(double margin)
{
    return {.cells = {9, 7, 6},
            .low = {margin, margin, margin},
            .high = {6 - margin, 5 - margin, 5 - margin},
            .kinds = {10, 1, 12, 3, 2}};
}

std::vector<Situation> situations()
{
    std::vector<Situation> all;
    const auto add = [&](const char* name, double margin) -> Situation&
    {
        Situation& situation = all.emplace_back();
        situation.name = name;
        situation.target = within(margin);
        situation.options.mode = OutsideMode::defaultValue;
        return situation;
    };
    add("all kinds inside", 0.05);
    add("near misses", -0.15);
    {
        Situation& propagation = add("propagation", -2.5);
        propagation.options.mode = OutsideMode::propagate;
        propagation.application.fieldOptions = {{}, {.defaultValue = 7, .isClassOneOnly = true}};
    }
    {
        Situation& defaults = add("default values", -2);
        defaults.options.targetMapping = {true, false, true};
        defaults.application.defaultValue = -5;
    }
    {
        Situation& gauss = add("Gauss points of both", -0.1);
        gauss.fromGaussPoints = true;
        gauss.to = Location::gaussPoints;
    }
    {
        Situation& bent = add("bent elements, whose Gauss points lie beyond their boxes", -0.1);
        bent.target.kinds = {10};
        bent.target.bend = 0.45;
        bent.to = Location::gaussPoints;
    }
    {
        Situation& exported = add("rules of the exported functions", 0.05);
        exported.fromGaussPoints = true;
        exported.options.rules = veltrane::asExported();
        exported.options.mode = OutsideMode::propagate;
    }
    {
        Situation& away = add("far from the origin", -0.15);
        away.source.offset = away.target.offset = 123456.7;
    }
    {
        Situation& few = add("fewer elements than ranks", -0.2);
        few.source.cells = few.target.cells = {3, 1, 1};
        few.source.kinds = few.target.kinds = {1};
        few.options.mode = OutsideMode::propagate;
    }
    return all;
}

void compare(const Situation& situation, Cutting sourceCutting, Cutting targetCutting)
{
    SCOPED_TRACE(std::string(situation.name) + ", cut " + std::to_string(static_cast<int>(sourceCutting)) + " and " +
                 std::to_string(static_cast<int>(targetCutting)));
    const Mesh source = meshOf(situation.source);
    const Mesh target = meshOf(situation.target);
    MapOptions options = situation.options;
    options.toNodes = situation.to == Location::nodes;
    options.toGaussPoints = !options.toNodes;
    options.fromGaussPoints = situation.fromGaussPoints;
    const Map whole(source, target, options);
    const Part sourcePart = partOf(source, sourceCutting, rankOf(), rankCount());
    const Part targetPart = partOf(target, targetCutting, rankOf(), rankCount());
    const DistributedMap map(MPI_COMM_WORLD, sourcePart.view(), targetPart.view(), options);
    const auto& figures = whole.statistics();
    // So that there is something to compare.
    EXPECT_TRUE(figures.interpolatedPointCount > 0 &&
                (figures.nodes->near > 0 || figures.gaussPoints->near > 0 || situation.target.low[0] > 0));
    EXPECT_TRUE(options.mode != OutsideMode::propagate || figures.nodes->far > 0 || situation.target.low[0] > -1);
    EXPECT_EQ(map.statistics().bucketCount, figures.bucketCount);
    EXPECT_EQ(map.statistics().interpolatedPointCount, figures.interpolatedPointCount);
    EXPECT_EQ(map.statistics().nearNodeCount, figures.nodes->near);
    EXPECT_EQ(map.statistics().farNodeCount, figures.nodes->far);
    EXPECT_EQ(map.statistics().farGaussPointCount, figures.gaussPoints->far);
    EXPECT_EQ(map.statistics().origin, figures.origin);
    EXPECT_EQ(map.hasUnreachedNodes(), whole.hasUnreachedNodes());
    for (int step = 0; step < 2; ++step)
    {
        const Location from = situation.fromGaussPoints ? Location::gaussPoints : Location::nodes;
        const std::vector<Field> fields{fieldOn<double>(source, from, 1, step),
                                        fieldOn<float>(source, from, 3, step + 5)};
        std::vector<Field> parts;
        for (const Field& field : fields)
        {
            parts.push_back(restricted(field, source, sourcePart));
        }
        veltrane::ApplyOptions application = situation.application;
        application.targetLocations.assign(2, situation.to);
        const std::vector<Field> expected = whole.apply(fields, application);
        const std::vector<Field> found = map.apply(parts, application);
        for (std::size_t i = 0; i < fields.size(); ++i)
        {
            EXPECT_TRUE(areSameBits(found[i], restricted(expected[i], target, targetPart))) << "step " << step;
        }
    }
}

TEST(DistributedMaps, GiveTheBitsOfTheWhole)
{
    std::size_t cutting = 0;
    for (const Situation& situation : situations())
    {
        // Each way of cutting comes on both sides, but not with every situation.
        compare(situation, allCuttings[cutting % 4], allCuttings[(cutting + 1) % 4]);
        compare(situation, allCuttings[(cutting + 2) % 4], allCuttings[cutting % 4]);
        ++cutting;
    }
}

TEST(DistributedMaps, GivePointsTheBitsOfTheWhole)
{
    const Mesh source = meshOf({});
    const Part part = partOf(source, Cutting::halves, rankOf(), rankCount());
    std::vector<float> all;
    std::vector<float> own;
    std::vector<int> ownRows;
    for (int i = 0; i < 500; ++i)
    {
        const auto x = static_cast<float>(i);
        const std::array<float, 3> point{std::fmod(x * 0.37F, 6.5F), std::fmod(x * 0.73F, 5.2F),
                                         std::fmod(x * 0.11F, 5.2F)};
        all.insert(all.end(), point.begin(), point.end());
        if (i % rankCount() == rankOf())
        {
            own.insert(own.end(), point.begin(), point.end());
            ownRows.push_back(i);
        }
    }
    const auto cloud = [](const std::vector<float>& points) {
        return veltrane::PointCloud(points, {}, std::vector<int>(points.size() / 3, 0), {{"", 1}},
                                    veltrane::Extent::part);
    };
    for (const bool mayBeNear : {false, true})
    {
        MapOptions options{.mode = OutsideMode::defaultValue};
        options.rules.pointsMayBeNear = mayBeNear;
        const Map whole(source, cloud(all), options);
        const DistributedMap map(MPI_COMM_WORLD, part.view(), cloud(own), options);
        const Field field = fieldOn<double>(source, Location::nodes, 2, 1);
        const Field ofPart = restricted(field, source, part);
        const auto expected = std::get<std::vector<double>>(whole.apply({&field, 1})[0].values());
        const std::vector<Field> results = map.apply({&ofPart, 1});
        const auto found = std::get<std::vector<double>>(results[0].values());
        std::vector<double> expectedHere;
        for (const int row : ownRows)
        {
            expectedHere.push_back(expected[2 * static_cast<std::size_t>(row)]);
            expectedHere.push_back(expected[2 * static_cast<std::size_t>(row) + 1]);
        }
        EXPECT_TRUE(areSameBits(found, expectedHere));
    }
}

TEST(DistributedMaps, TakeTheRanksInOrderWithoutNumbers)
{
    const Mesh source = meshOf({});
    const Mesh target = meshOf(within(-0.15));
    const Part sourcePart = partOf(source, Cutting::inOrder, rankOf(), rankCount());
    const Part targetPart = partOf(target, Cutting::inOrder, rankOf(), rankCount());
    const Map whole(source, target, {.mode = OutsideMode::defaultValue});
    const DistributedMap map(MPI_COMM_WORLD, {sourcePart.mesh}, {targetPart.mesh}, {.mode = OutsideMode::defaultValue});
    const auto expected = whole.places().findings;
    const auto found = map.findings();
    // At an interface a node's material is that of its first element, which may be on another rank: so only those of
    // the first rank must agree.
    for (std::size_t node = 0; rankOf() == 0 && node < found.size(); ++node)
    {
        EXPECT_EQ(found[node], expected[static_cast<std::size_t>(targetPart.nodeNumbers[node])]) << node;
    }
    EXPECT_EQ(map.statistics().bucketCount, whole.statistics().bucketCount);
}

/// The sentence of what a function throws on this rank.
template <class Exception, class Function> std::string sentenceOf(const Function& function)
{
    try
    {
        function();
    }
    catch (const Exception& error)
    {
        return error.what();
    }
    return "nothing thrown";
}

TEST(DistributedMaps, FailOnAllRanksAlike)
{
    const Mesh source = meshOf({});
    const Part part = partOf(source, Cutting::halves, rankOf(), rankCount());
    const Mesh target = meshOf(within(-2));
    const Part targetPart = partOf(target, Cutting::halves, rankOf(), rankCount());
    EXPECT_EQ(
        sentenceOf<veltrane::TargetOutside>([&] { DistributedMap(MPI_COMM_WORLD, part.view(), targetPart.view()); }),
        "Some regions of the target model are outside the source model.");

    const int last = rankCount() - 1;
    std::vector<std::int64_t> numbers = part.elementNumbers;
    if (rankOf() == last)
    {
        numbers.pop_back();
    }
    EXPECT_NE(sentenceOf<veltrane::InvalidData>(
                  [&] {
                      DistributedMap(MPI_COMM_WORLD, {part.mesh, numbers}, part.view());
                  })
                  .find("global numbers of elements"),
              std::string::npos);

    numbers = part.elementNumbers;
    if (rankOf() == last)
    {
        numbers[1] = numbers[0];
    }
    EXPECT_NE(sentenceOf<veltrane::InvalidData>(
                  [&] {
                      DistributedMap(MPI_COMM_WORLD, {part.mesh, numbers}, part.view());
                  })
                  .find("is there twice"),
              std::string::npos);

    const DistributedMap map(MPI_COMM_WORLD, part.view(), part.view());
    const Field field = fieldOn<double>(part.mesh, Location::nodes, rankOf() == last && last > 0 ? 2 : 1, 0);
    const auto apply = [&] { map.apply({&field, 1}); };
    EXPECT_EQ(sentenceOf<veltrane::InvalidOption>(apply),
              last > 0 ? "rank " + std::to_string(last) + " gives other fields than rank 0" : "nothing thrown");
}

TEST(DistributedMaps, HoldAWindowOfTheSource)
{
    Body body;
    body.cells = {16, 4, 4};
    body.high = {16, 4, 4};
    body.kinds = {1};
    body.materialCount = 1;
    const Mesh source = meshOf(body);
    body.cells = {12, 4, 4};
    const Mesh target = meshOf(body);
    const Part sourcePart = partOf(source, Cutting::halves, rankOf(), rankCount());
    const Part targetPart = partOf(target, Cutting::halves, rankOf(), rankCount());
    const DistributedMap map(MPI_COMM_WORLD, sourcePart.view(), targetPart.view());
    // Its share, and a few layers of 16 elements on either side.
    EXPECT_LE(map.statistics().windowElementCount, 256 / rankCount() + 8 * 16);
    EXPECT_EQ(map.statistics().messageCount > 0, rankCount() > 1);
}

} // namespace

int main(int argc, char** argv)
{
    MPI_Init(&argc, &argv);
    testing::InitGoogleTest(&argc, argv);
    if (rankOf() != 0)
    {
        auto& listeners = testing::UnitTest::GetInstance()->listeners();
        delete listeners.Release(listeners.default_result_printer());
        struct FailurePrinter : testing::EmptyTestEventListener
        {
            void OnTestPartResult(const testing::TestPartResult& result) override
            {
                if (result.failed())
                {
                    std::fprintf(stderr, "rank %d: %s:%d %s\n", rankOf(), result.file_name(), result.line_number(),
                                 result.message());
                }
            }
        };
        listeners.Append(new FailurePrinter);
    }
    const int status = RUN_ALL_TESTS();
    MPI_Finalize();
    return status;
}
