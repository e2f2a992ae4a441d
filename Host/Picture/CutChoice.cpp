#include "CutChoice.h"

#include "Raster.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

namespace veltrane
{
namespace
{

constexpr int rasterSize = 200; // of cuts that are compared

/// Sums over the usable ones of some values.
class Spread
{
public:
    void add(double value)
    {
        if (std::isfinite(value))
        {
            sum_ += value;
            squares_ += value * value;
            ++count_;
        }
    }

    double mean() const { return sum_ / std::max(1.0, count_); }
    double standardDeviation() const
    {
        return std::sqrt(std::max(0.0, squares_ / std::max(1.0, count_) - mean() * mean()));
    }

private:
    double sum_ = 0;
    double squares_ = 0;
    double count_ = 0;
};

Spread spreadOf(std::span<const double> values)
{
    Spread spread;
    std::ranges::for_each(values, [&](double value) { spread.add(value); });
    return spread;
}

std::size_t largestOf(std::span<const double> values)
{
    std::size_t largest = 0;
    for (std::size_t i = 1; i < values.size(); ++i)
    {
        if (!(values[largest] >= values[i])) // takes the other one if one is not a number
        {
            largest = i;
        }
    }
    return largest;
}

std::vector<CutPlane> candidates(const Mesh& target, std::span<const double> values)
{
    const Box box = target.boundingBox();
    const std::span<const float, 3> peak = target.nodePosition(static_cast<int>(largestOf(values)));
    std::vector<CutPlane> planes;
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        const double min = double{box.min[axis]};
        const double extent = double{box.max[axis]} - min;
        // Beside the faces of elements, where a cut is neither here nor there.
        const double offset = 1e-5 * extent;
        for (const double part : {0.5, 0.25, 0.75})
        {
            planes.push_back({axis, min + part * extent + offset});
        }
        planes.push_back({axis, std::clamp(double{peak[axis]}, min + offset, min + extent - offset)});
    }
    return planes;
}

double lengthOfLines(const Cut& cut)
{
    double length = 0;
    for (const auto& [a, b] : cut.lines)
    {
        length += std::hypot(cut.points[a][0] - cut.points[b][0], cut.points[a][1] - cut.points[b][1]);
    }
    return length;
}

/// How much the values vary over the area of a cut, as part of their variation in all of the mesh.
double variation(const Raster& raster, double overall)
{
    constexpr double mostDeviations = 2; // a small spot with a peak does not make a picture
    const Spread spread = spreadOf(raster.values);
    Spread deviations;
    for (const double value : raster.values)
    {
        deviations.add(std::min(mostDeviations * overall, std::abs(value - spread.mean())));
    }
    return overall > 0 ? deviations.mean() / overall : 0;
}

/// What there is to see, times the size of what the cut reaches over.
double interestOf(const CutPair& pair, double overallDeviation)
{
    if (pair.target.triangles.empty())
    {
        return lengthOfLines(pair.target); // a target of surfaces has no area
    }
    const PlaneBox box = boxAround(pair.source.points, pair.target.points);
    const Raster source = rasterize(pair.source, box, rasterSize, rasterSize);
    const Raster target = rasterize(pair.target, box, rasterSize, rasterSize);
    const double outside = partOutside(source, target);
    // A cut along the border tells more than one with all of the target on one side.
    constexpr double outsideWeight = 10;
    const double interest = 0.1 + variation(target, overallDeviation) + outsideWeight * outside * (1 - outside);
    return interest * std::sqrt(box.width() * box.height());
}

float coordinate(const PointCloud& points, std::size_t point, std::size_t axis)
{
    return points.coordinates()[3 * point + axis];
}

/// Through points in the order of their coordinates: the middle one, those at the quarters, the one of the largest
/// value.
std::vector<CutPlane> candidates(const Box& source, const PointCloud& points, std::span<const double> pointValues)
{
    std::vector<CutPlane> planes;
    std::vector<float> sorted(pointValues.size());
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        for (std::size_t point = 0; point < sorted.size(); ++point)
        {
            sorted[point] = coordinate(points, point, axis);
        }
        std::ranges::sort(sorted);
        const double min = double{source.min[axis]};
        const double max = double{source.max[axis]};
        const double offset = 1e-5 * (max - min); // beside the faces of elements, as the points often are not
        for (const float place : {sorted[sorted.size() / 2], sorted[sorted.size() / 4], sorted[3 * sorted.size() / 4],
                                  coordinate(points, largestOf(pointValues), axis)})
        {
            planes.push_back({axis, std::clamp(double{place} + offset, min + offset, max - offset)});
        }
    }
    return planes;
}

/// How near the points are to the plane: 1 if all are in it, almost 0 if none is near.
double nearness(const PointCloud& points, const CutPlane& plane, double sourceSize)
{
    const double unit = 0.02 * sourceSize;
    double sum = 0;
    for (std::size_t point = 0; point < points.coordinates().size() / 3; ++point)
    {
        const double way = (double{coordinate(points, point, plane.axis)} - plane.position) / unit;
        sum += 1 / (1 + way * way);
    }
    return sum / points.pointCount();
}

/// What there is to see, times the size of the cut, and how many of the points are where it is.
double interestOf(const SourceCut& source, double overallDeviation, double nearness)
{
    const PlaneBox box = boxAround(source.cut.points, {});
    const Raster raster = rasterize(source.cut, box, rasterSize, rasterSize);
    return (0.1 + variation(raster, overallDeviation)) * std::sqrt(box.width() * box.height()) *
           (0.05 + nearness * nearness);
}

bool isEmpty(const Cut& cut)
{
    return cut.triangles.empty() && cut.lines.empty();
}

/// Across the longest edge of its box, so that it meets the element in any case.
CutPlane planeThroughFirstElement(const Mesh& mesh)
{
    Box box;
    std::ranges::for_each(mesh.nodesOf(0), [&](int node) { box.add(mesh.nodePosition(node)); });
    std::size_t axis = 0;
    while (axis < 2 && box.max[axis] - box.min[axis] < box.size())
    {
        ++axis;
    }
    return {axis, (double{box.min[axis]} + double{box.max[axis]}) / 2};
}

/// The cut by one of these planes that is of most interest, or by another plane if none is of any.
template <typename CutAt, typename InterestOf>
auto bestCut(const std::vector<CutPlane>& planes, const CutPlane& otherwise, const CutAt& cutAt,
             const InterestOf& interestIn)
{
    constexpr double clearly = 1.01; // the earlier one, nearer the middle, wins a tie
    std::optional<decltype(cutAt(otherwise))> best;
    double bestInterest = 0;
    for (const CutPlane& plane : planes)
    {
        auto cut = cutAt(plane);
        const double interest = interestIn(cut);
        if (interest > clearly * bestInterest)
        {
            best = std::move(cut);
            bestInterest = interest;
        }
    }
    return best ? std::move(*best) : cutAt(otherwise);
}

} // namespace

CutPair mostTellingCut(const CutMesh& source, const CutMesh& target, const Mesh& targetMesh,
                       std::span<const double> targetValues)
{
    const double overallDeviation = spreadOf(targetValues).standardDeviation();
    const auto cutAt = [&](const CutPlane& plane) { return CutPair{plane, source.cut(plane), target.cut(plane)}; };
    const auto interest = [&](const CutPair& pair)
    { return isEmpty(pair.target) ? 0 : interestOf(pair, overallDeviation); };
    return bestCut(candidates(targetMesh, targetValues), planeThroughFirstElement(targetMesh), cutAt, interest);
}

SourceCut mostTellingCut(const CutMesh& source, const Mesh& sourceMesh, std::span<const double> sourceValues,
                         const PointCloud& points, std::span<const double> pointValues)
{
    const Box box = sourceMesh.boundingBox();
    const double overallDeviation = spreadOf(sourceValues).standardDeviation();
    const auto cutAt = [&](const CutPlane& plane) { return SourceCut{plane, source.cut(plane)}; };
    const auto interest = [&](const SourceCut& cut) {
        return isEmpty(cut.cut) ? 0
                                : interestOf(cut, overallDeviation, nearness(points, cut.plane, double{box.size()}));
    };
    return bestCut(candidates(box, points, pointValues), planeThroughFirstElement(sourceMesh), cutAt, interest);
}

} // namespace veltrane
