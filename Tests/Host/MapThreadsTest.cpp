// Maps on many threads: progress, cancellation and faults on the way, and many maps at once.
#include "Errors.h"
#include "HostMeshes.h"
#include "Map.h"
#include "OutputFile.h"

#include "TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <set>
#include <stdexcept>
#include <thread>

namespace
{
using namespace host_meshes;
using veltrane::Field;
using veltrane::Location;
using veltrane::Map;
using veltrane::MapOptions;
using veltrane::OutsideMode;
using veltrane::Progress;

/// Large enough to be cut into pieces at every stage, with near, far and reached nodes.
class MapOnThreads : public testing::Test
{
protected:
    const veltrane::Mesh source = block({16, 16, 16}, {0, 0, 0}, {1, 1, 1});
    const veltrane::Mesh target = block({20, 20, 20}, {0.01F, 0.01F, 0.01F}, {0.99F, 1.02F, 1.2F});
    const MapOptions everything{.mode = OutsideMode::propagate, .toGaussPoints = true, .fromGaussPoints = true};

    MapOptions with(int threads, veltrane::ProgressCallback progress) const
    {
        MapOptions options = everything;
        options.threads = threads;
        options.progress = std::move(progress);
        return options;
    }
};

std::size_t threadCount()
{
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return static_cast<std::size_t>(std::distance(begin(tasks), end(tasks)));
}

TEST_F(MapOnThreads, TellsProgressOnTheCallersThreadAndNeverFallsBack)
{
    for (const int threads : {1, 2, 3, 8})
    {
        int last = 0;
        std::set<std::string> stages;
        const auto caller = std::this_thread::get_id();
        const auto progress = [&](const Progress& told)
        {
            EXPECT_EQ(std::this_thread::get_id(), caller);
            EXPECT_GE(told.percent, last);
            EXPECT_LE(told.percent, 100);
            EXPECT_EQ(told.title, "FE 3D mesh to FE 3D mesh interpolation");
            stages.emplace(told.stage);
            last = told.percent;
            return true;
        };
        const Map map(source, target, with(threads, progress));
        EXPECT_EQ(last, 100);
        EXPECT_EQ(stages,
                  (std::set<std::string>{"Pretreatment", "Computation", "Interpolation terminated successfully."}));
    }
}

TEST_F(MapOnThreads, EndAtAnyCallOfTheCallbackThatCancels)
{
    std::thread([] {}).join(); // with the first thread ThreadSanitizer starts one of its own
    const std::size_t threadsBefore = threadCount();
    for (const int threads : {1, 3})
    {
        bool isFinished = false;
        for (int allowed = 0; !isFinished; allowed += allowed < 12 ? 1 : 7)
        {
            int calls = 0;
            const auto progress = [&](const Progress&) { return ++calls <= allowed; };
            try
            {
                const Map map(source, target, with(threads, progress));
                isFinished = true;
                EXPECT_LE(calls, allowed);
            }
            catch (const veltrane::Cancelled& cancelled)
            {
                EXPECT_STREQ(cancelled.what(), "Interpolation cancelled.");
                EXPECT_EQ(calls, allowed + 1) << "was called again";
            }
            // A thread that has ended may be listed for a moment longer.
            for (int i = 0; i < 1000 && threadCount() > threadsBefore; ++i)
            {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
            ASSERT_EQ(threadCount(), threadsBefore) << "workers are left";
        }
    }
}

TEST_F(MapOnThreads, LetOutWhatTheCallbackThrows)
{
    for (const int threads : {1, 3})
    {
        for (const int allowed : {0, 1, 2, 3, 5, 20})
        {
            int calls = 0;
            const auto progress = [&](const Progress&) -> bool
            {
                if (++calls > allowed)
                {
                    throw std::out_of_range("thrown by the callback");
                }
                return true;
            };
            try
            {
                const Map map(source, target, with(threads, progress));
                EXPECT_LE(calls, allowed);
                EXPECT_GE(calls, 4);
            }
            catch (const std::out_of_range& thrown)
            {
                EXPECT_STREQ(thrown.what(), "thrown by the callback");
                EXPECT_EQ(calls, allowed + 1);
            }
        }
    }
}

TEST_F(MapOnThreads, MayBeBuiltFromWithinACallback)
{
    int inner = 0;
    const auto progress = [&](const Progress& told)
    {
        if (told.percent >= 50 && inner == 0)
        {
            ++inner;
            EXPECT_EQ(Map(source, target, with(2, nullptr)).locationCount(Location::nodes), 9261U);
        }
        return true;
    };
    const Map map(source, target, with(3, progress));
    EXPECT_EQ(inner, 1);
}

TEST(ThreadCounts, OutOfTheirRangeAreRefused)
{
    const veltrane::Mesh mesh = block({1, 1, 1}, {0, 0, 0}, {1, 1, 1});
    EXPECT_THROW(Map(mesh, mesh, {.threads = -1}), veltrane::InvalidOption);
    EXPECT_THROW(Map(mesh, mesh, {.threads = 1025}), veltrane::InvalidOption);
    EXPECT_NO_THROW(Map(mesh, mesh, {.threads = 0}));
    EXPECT_NO_THROW(Map(mesh, mesh, {.threads = 1024}));
}

/// A cube of hexahedra, and before them two flat ones in the plane z = 1/4: element 0 in a corner, element 1 in the
/// middle. Points come upon the second one first, late among many others.
class SingularElements : public testing::Test
{
protected:
    static constexpr int pointCount = 60'000;

    static veltrane::Mesh meshWithFlatElements()
    {
        const veltrane::Mesh cube = block({4, 4, 4}, {0, 0, 0}, {1, 1, 1});
        veltrane::MeshData data{.coordinates = cube.coordinates(),
                                .kinds = {2, veltrane::ElementKind::hexahedron},
                                .offsets = {0, 8},
                                .connectivity = {},
                                .materialPerElement = std::vector<int>(66, 0),
                                .materials = cube.materials()};
        for (const float low : {0.0F, 0.5F})
        {
            const auto first = static_cast<int>(data.coordinates.size() / 3);
            for (const auto& [x, y] : {std::pair(0.0F, 0.0F), {0.1F, 0.0F}, {0.1F, 0.1F}, {0.0F, 0.1F}})
            {
                data.coordinates.insert(data.coordinates.end(), {low + x, low + y, 0.25F});
            }
            for (int i = 0; i < 8; ++i) // the upper face is the lower one
            {
                data.connectivity.push_back(first + i % 4);
            }
        }
        for (int element = 0; element < cube.elementCount(); ++element)
        {
            const auto nodes = cube.nodesOf(element);
            data.kinds.push_back(veltrane::ElementKind::hexahedron);
            data.offsets.push_back(data.connectivity.size());
            data.connectivity.insert(data.connectivity.end(), nodes.begin(), nodes.end());
        }
        data.offsets.push_back(data.connectivity.size());
        return veltrane::Mesh(std::move(data));
    }

    static veltrane::PointCloud points()
    {
        std::vector<float> coordinates = scattered(pointCount, {0, 0, 0.5F}, {1, 1, 1});
        const auto put = [&](std::size_t point, float x)
        {
            coordinates[3 * point] = coordinates[3 * point + 1] = x;
            coordinates[3 * point + 2] = 0.25F;
        };
        put(25'000, 0.55F);
        put(40'000, 0.05F);
        put(59'000, 0.56F);
        return cloud(std::move(coordinates));
    }

    const veltrane::Mesh source = meshWithFlatElements();
    const veltrane::PointCloud target = points();
};

TEST_F(SingularElements, EndTheBuildingAtTheFirstOneInTheOrderOfThePoints)
{
    for (const int threads : {1, 2, 3, 8})
    {
        MapOptions options{.threads = threads};
        options.rules.leavesOutSingularElements = false;
        try
        {
            const Map map(source, target, options);
            FAIL() << "built";
        }
        catch (const veltrane::SingularElement& singular)
        {
            EXPECT_EQ(singular.element(), 1) << threads << " threads";
        }
    }
}

TEST_F(SingularElements, AreLeftOutAndCounted)
{
    for (const int threads : {1, 3})
    {
        const Map map(source, target, {.threads = threads});
        EXPECT_EQ(map.statistics().singularElementCount, 2);
        EXPECT_EQ(map.singularElements(), (std::vector<int>{0, 1}));
        const auto places = map.places();
        for (const std::size_t point : {25'000U, 40'000U, 59'000U})
        {
            EXPECT_EQ(places.findings[point], veltrane::Finding::inside);
            EXPECT_GE(places.elements[point], 2);
        }
    }
}

TEST(ManyMaps, LiveAtOnceWhileTheDirectoryChangesAndOutputIsWritten)
{
    const veltrane::Mesh source = block({8, 8, 8}, {0, 0, 0}, {1, 1, 1});
    const veltrane::Mesh target = block({12, 12, 12}, {0.01F, 0.01F, 0.01F}, {0.99F, 1.02F, 1.2F});
    const Field field = fieldOf(nodePositions(source), Location::nodes, 3, linear);
    const MapOptions options{.mode = OutsideMode::propagate, .toGaussPoints = true};
    const Map shared(source, target, options);
    const std::vector<std::byte> expectedBytes = shared.bytes();
    const auto expected = shared.apply(std::span(&field, 1));

    const TemporaryDirectory directory;
    std::filesystem::create_directories(directory / "first");
    std::filesystem::create_directories(directory / "second");
    const WorkingDirectory own;
    std::atomic<int> running = 4;
    std::atomic<int> differences = 0;
    std::string written;
    {
        const OutputFile output(STDOUT_FILENO, directory / "output");
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i)
        {
            threads.emplace_back(
                [&, i]
                {
                    for (int round = 0; round < 4; ++round)
                    {
                        MapOptions mine = options;
                        mine.threads = 1 + (i + round) % 3;
                        const Map map(source, target, mine);
                        const Map copy = round % 2 == 0 ? map : Map::fromBytes(map.bytes());
                        differences += map.bytes() == expectedBytes ? 0 : 1;
                        for (const Map* each : {&copy, &shared})
                        {
                            const auto result = each->apply(std::span(&field, 1), {.threads = mine.threads});
                            differences += result[0].values() == expected[0].values() ? 0 : 1;
                        }
                    }
                    --running;
                });
        }
        for (int i = 0; running > 0; ++i)
        {
            std::filesystem::current_path(directory / (i % 2 == 0 ? "first" : "second"));
            const std::string line = "line " + std::to_string(i) + "\n";
            std::fputs(line.c_str(), stdout);
            written += line;
            std::this_thread::yield();
        }
    }
    EXPECT_EQ(differences, 0);
    EXPECT_EQ(contentsOf(directory / "output"), written);
    EXPECT_EQ(directory.files().size(), 1U) << "files were left";
}
} // namespace
