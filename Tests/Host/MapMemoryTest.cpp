// What an application asks for, and what a map holds.
#include "HostMeshes.h"
#include "Map.h"

#include "AllocationFailure.h"

#include <gtest/gtest.h>

namespace
{
using namespace host_meshes;
using veltrane::FieldView;
using veltrane::Location;
using veltrane::Map;

TEST(MapMemory, AnApplicationToTheCallersArraysAsksForNone)
{
    const veltrane::Mesh source = block({4, 4, 4}, {0, 0, 0}, {1, 1, 1});
    const veltrane::Mesh target = block({5, 5, 5}, {0.1F, 0.1F, 0.1F}, {0.9F, 0.9F, 3.0F});
    const Map map(source, target,
                  {.mode = veltrane::OutsideMode::propagate, .toGaussPoints = true, .fromGaussPoints = true});
    const std::vector<float> atNodes(9 * map.sourceNodeCount(), 1.0F);
    const std::vector<double> atGaussPoints(map.sourceGaussPointCount(), 1.0);
    std::vector<double> nodeResult(9 * map.locationCount(Location::nodes), 0.0);
    std::vector<float> gaussResult(map.locationCount(Location::gaussPoints), -1.0F);
    std::vector<FieldView> fields;
    for (int i = 0; i < 6; ++i) // more than go together, twice over
    {
        fields.push_back({.source = std::span(atNodes), .target = std::span(nodeResult), .componentCount = 9});
        fields.push_back({.source = std::span(atGaussPoints),
                          .target = std::span(gaussResult),
                          .sourceLocation = Location::gaussPoints,
                          .targetLocation = Location::gaussPoints});
    }
    std::vector<std::byte> workspace(map.workspaceSize(fields));
    const std::int64_t before = nbAllocationRequests();
    map.apply(fields, workspace);
    EXPECT_EQ(nbAllocationRequests(), before);
    EXPECT_NEAR(nodeResult.back(), 1.0, 1e-6);
    EXPECT_NEAR(gaussResult.front(), 1.0F, 1e-6F);
}

TEST(MapMemory, EverythingIsGivenBackAfterMapsExceptionsAndCancellation)
{
    const veltrane::Mesh source = block({4, 4, 4}, {0, 0, 0}, {1, 1, 1});
    const veltrane::Mesh outside = block({5, 5, 5}, {0.1F, 0.1F, 0.1F}, {0.9F, 0.9F, 9.0F});
    const auto build = [&](bool isCancelled)
    {
        veltrane::MapOptions options{.toGaussPoints = true, .fromGaussPoints = true};
        options.progress = [&](const veltrane::Progress& progress) { return !isCancelled || progress.percent < 50; };
        try
        {
            const Map map(source, outside, options);
            ADD_FAILURE() << "built";
        }
        catch (const std::exception&)
        {
        }
        const Map map(source, source);
        const Map copy = Map::fromBytes(map.bytes());
    };
    build(false); // whatever is made once is made now
    const std::int64_t before = nbLiveAllocations();
    build(false);
    build(true);
    EXPECT_EQ(nbLiveAllocations(), before);
}
} // namespace
