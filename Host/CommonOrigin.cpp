#include "CommonOrigin.h"

#include "EngineTuning.h"
#include "ThreadWorkers.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>

namespace veltrane
{
namespace
{

float spacingAt(float coordinate)
{
    return std::nextafter(coordinate, Box::infinity) - coordinate;
}

/// The smallest side of the element's box.
float smallestSide(const Mesh& mesh, int element)
{
    Box box;
    for (const int node : mesh.nodesOf(element))
    {
        box.add(mesh.nodePosition(node));
    }
    return std::min({box.max[0] - box.min[0], box.max[1] - box.min[1], box.max[2] - box.min[2]});
}

double exactCoordinate(std::span<const float> coordinates, std::span<const double> exact, std::size_t i)
{
    return exact.empty() ? double{coordinates[i]} : exact[i];
}

} // namespace

float farthestCoordinate(std::span<const float> coordinates)
{
    float farthest = 0;
    for (const float coordinate : coordinates)
    {
        farthest = std::max(farthest, std::abs(coordinate));
    }
    return farthest;
}

float smallestTellableSide(float farthestCoordinate, float tolerance)
{
    constexpr float share = 0.1F;
    return spacingAt(farthestCoordinate) / (share * tolerance);
}

bool hasVolumeElementBelow(const Mesh& mesh, float side, int threads)
{
    std::atomic<bool> hasOne = false;
    const auto look = [&](std::int64_t number)
    {
        const auto element = static_cast<int>(number);
        if (smallestSide(mesh, element) < side && mesh.kindOf(element).isVolume)
        {
            hasOne = true;
        }
    };
    ThreadWorkers workers(threads);
    forEachItem(workers, {"checking", 0, 100}, mesh.elementCount(), look);
    return hasOne;
}

Origin middleOf(const Box& box)
{
    Origin origin{};
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        origin[axis] = 0.5 * (double{box.min[axis]} + double{box.max[axis]});
    }
    return origin;
}

Origin commonOrigin(const Mesh& source, std::span<const float> targetCoordinates, float tolerance, int threads)
{
    const float farthest = std::max(farthestCoordinate(source.coordinates()), farthestCoordinate(targetCoordinates));
    const bool isNeeded = hasVolumeElementBelow(source, smallestTellableSide(farthest, tolerance), threads);
    return isNeeded ? middleOf(source.boundingBox()) : noOrigin;
}

std::vector<float> coordinatesFrom(const Origin& origin, std::span<const float> coordinates,
                                   std::span<const double> exact)
{
    std::vector<float> moved(coordinates.size());
    for (std::size_t i = 0; i < moved.size(); ++i)
    {
        moved[i] = static_cast<float>(exactCoordinate(coordinates, exact, i) - origin[i % 3]);
    }
    return moved;
}

PositionsInMesh::PositionsInMesh(const Mesh& mesh, int threads)
    : PositionsInMesh(mesh, commonOrigin(mesh, {}, engineTuning({}).refCoordTolerance, threads))
{
}

PositionsInMesh::PositionsInMesh(const Mesh& mesh, const Origin& origin) : coordinates_(mesh.coordinates())
{
    if (origin != noOrigin)
    {
        moved_ = coordinatesFrom(origin, mesh.coordinates(), mesh.exactCoordinates());
        coordinates_ = moved_;
    }
}

} // namespace veltrane
