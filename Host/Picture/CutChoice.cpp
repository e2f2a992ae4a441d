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

int nodeOfLargest(std::span<const double> values)
{
    std::size_t largest = 0;
    for (std::size_t i = 1; i < values.size(); ++i)
    {
        if (!(values[largest] >= values[i])) // takes the other one if one is not a number
        {
            largest = i;
        }
    }
    return static_cast<int>(largest);
}

std::vector<CutPlane> candidates(const Mesh& target, std::span<const double> values)
{
    const Box box = target.boundingBox();
    const std::span<const float, 3> peak = target.nodePosition(nodeOfLargest(values));
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

/// How much the values vary over the area of the target, as part of their variation in all of it.
double variation(const Raster& target, double overall)
{
    constexpr double mostDeviations = 2; // a small spot with a peak does not make a picture
    Spread spread;
    for (const double value : target.values)
    {
        spread.add(value);
    }
    Spread deviations;
    for (const double value : target.values)
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
    constexpr int size = 200;
    const PlaneBox box = boxAround(pair.source.points, pair.target.points);
    const Raster source = rasterize(pair.source, box, size, size);
    const Raster target = rasterize(pair.target, box, size, size);
    const double outside = partOutside(source, target);
    // A cut along the border tells more than one with all of the target on one side.
    constexpr double outsideWeight = 10;
    const double interest = 0.1 + variation(target, overallDeviation) + outsideWeight * outside * (1 - outside);
    return interest * std::sqrt(box.width() * box.height());
}

} // namespace

CutPair mostTellingCut(const CutMesh& source, const CutMesh& target, const Mesh& targetMesh,
                       std::span<const double> targetValues)
{
    constexpr double clearly = 1.01; // the earlier one, nearer the middle, wins a tie
    Spread spread;
    for (const double value : targetValues)
    {
        spread.add(value);
    }
    std::optional<CutPair> best;
    double bestInterest = 0;
    for (const CutPlane& plane : candidates(targetMesh, targetValues))
    {
        CutPair pair{plane, source.cut(plane), target.cut(plane)};
        const double interest = interestOf(pair, spread.standardDeviation());
        if (!best || interest > clearly * bestInterest)
        {
            best = std::move(pair);
            bestInterest = interest;
        }
    }
    return std::move(*best);
}

} // namespace veltrane
