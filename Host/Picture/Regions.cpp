#include "Regions.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <unordered_map>
#include <utility>

namespace veltrane
{
namespace
{

/// A point of the cut, or where a border crosses the side between two of them.
struct BorderPoint
{
    std::size_t first;
    std::size_t second; ///< the same for a point of the cut

    std::uint64_t key() const { return std::uint64_t{first} << 32U | second; }
};

BorderPoint pointOf(std::size_t point)
{
    return {point, point};
}

BorderPoint crossingOf(std::size_t a, std::size_t b)
{
    return {std::min(a, b), std::max(a, b)};
}

PlanePoint placeOf(const Cut& cut, const BorderPoint& point, double level)
{
    const PlanePoint& a = cut.points[point.first];
    const PlanePoint& b = cut.points[point.second];
    if (point.first == point.second)
    {
        return a;
    }
    const double part = (level - cut.values[point.first]) / (cut.values[point.second] - cut.values[point.first]);
    return {a[0] + part * (b[0] - a[0]), a[1] + part * (b[1] - a[1])};
}

double doubleArea(const PlanePoint& a, const PlanePoint& b, const PlanePoint& c)
{
    return (b[0] - a[0]) * (c[1] - a[1]) - (c[0] - a[0]) * (b[1] - a[1]);
}

/// Pieces of borders, to be put together to loops.
class Pieces
{
public:
    void add(const BorderPoint& from, const BorderPoint& to)
    {
        byStart_.emplace(from.key(), pieces_.size());
        pieces_.emplace_back(from, to);
    }

    Loops loops(const Cut& cut, double level)
    {
        Loops loops;
        for (std::size_t first = 0; first < pieces_.size(); ++first)
        {
            if (!take(first))
            {
                continue;
            }
            Loop loop;
            std::optional<std::size_t> piece = first;
            while (piece)
            {
                const auto& [from, to] = pieces_[*piece];
                loop.push_back(placeOf(cut, from, level));
                piece = next(to);
            }
            loops.push_back(std::move(loop));
        }
        return loops;
    }

private:
    /// Whether nobody has had it before.
    bool take(std::size_t piece)
    {
        const auto [begin, end] = byStart_.equal_range(pieces_[piece].first.key());
        const auto found = std::find_if(begin, end, [&](const auto& entry) { return entry.second == piece; });
        if (found == end)
        {
            return false;
        }
        byStart_.erase(found);
        return true;
    }

    std::optional<std::size_t> next(const BorderPoint& from)
    {
        const auto found = byStart_.find(from.key());
        if (found == byStart_.end())
        {
            return std::nullopt;
        }
        const std::size_t piece = found->second;
        byStart_.erase(found);
        return piece;
    }

    std::vector<std::pair<BorderPoint, BorderPoint>> pieces_;
    std::unordered_multimap<std::uint64_t, std::size_t> byStart_;
};

double distanceFromLine(const PlanePoint& point, const PlanePoint& a, const PlanePoint& b)
{
    const double length = std::hypot(b[0] - a[0], b[1] - a[1]);
    return length > 0 ? std::abs(doubleArea(a, b, point)) / length : std::hypot(point[0] - a[0], point[1] - a[1]);
}

} // namespace

CutRegions::CutRegions(const Cut& cut) : cut_(cut)
{
    for (auto points : cut.triangles)
    {
        const double area = doubleArea(cut.points[points[0]], cut.points[points[1]], cut.points[points[2]]);
        if (area < 0)
        {
            std::swap(points[1], points[2]);
        }
        if (area != 0)
        {
            const bool hasValues =
                std::ranges::all_of(points, [&](std::size_t point) { return std::isfinite(cut.values[point]); });
            triangles_.push_back({points, {}, hasValues});
        }
    }
    connect();
}

void CutRegions::connect()
{
    // A neighbour runs along the common side the other way.
    std::unordered_map<std::uint64_t, std::pair<std::size_t, std::size_t>> open;
    open.reserve(2 * triangles_.size());
    for (std::size_t triangle = 0; triangle < triangles_.size(); ++triangle)
    {
        const auto& points = triangles_[triangle].points;
        for (std::size_t side = 0; side < 3; ++side)
        {
            const std::size_t from = points[side];
            const std::size_t to = points[(side + 1) % 3];
            const auto partner = open.find(BorderPoint{to, from}.key());
            if (partner == open.end())
            {
                open.emplace(BorderPoint{from, to}.key(), std::pair(triangle, side));
                continue;
            }
            const auto [other, otherSide] = partner->second;
            triangles_[triangle].neighbours[side] = other;
            triangles_[other].neighbours[otherSide] = triangle;
            open.erase(partner);
        }
    }
}

Loops CutRegions::trace(Part part, double level) const
{
    const auto belongs = [&](const Triangle& triangle) { return part == Part::all || triangle.hasValues; };
    const auto isIn = [&](std::size_t point) { return part != Part::above || cut_.values[point] >= level; };
    Pieces pieces;
    for (const Triangle& triangle : triangles_)
    {
        if (!belongs(triangle))
        {
            continue;
        }
        std::optional<BorderPoint> entry;
        std::optional<BorderPoint> exit;
        for (std::size_t side = 0; side < 3; ++side)
        {
            const std::size_t from = triangle.points[side];
            const std::size_t to = triangle.points[(side + 1) % 3];
            if (!isIn(from) && !isIn(to))
            {
                continue;
            }
            const BorderPoint begin = isIn(from) ? pointOf(from) : crossingOf(from, to);
            const BorderPoint end = isIn(to) ? pointOf(to) : crossingOf(from, to);
            if (!isIn(from))
            {
                entry = begin;
            }
            if (!isIn(to))
            {
                exit = end;
            }
            if (!triangle.neighbours[side] || !belongs(triangles_[*triangle.neighbours[side]]))
            {
                pieces.add(begin, end);
            }
        }
        if (entry && exit)
        {
            pieces.add(*exit, *entry);
        }
    }
    return pieces.loops(cut_, level);
}

Loops simplified(const Loops& loops, double tolerance)
{
    Loops result;
    for (const Loop& loop : loops)
    {
        Loop kept;
        for (std::size_t i = 0; i < loop.size(); ++i)
        {
            const PlanePoint& next = loop[(i + 1) % loop.size()];
            if (kept.empty() || distanceFromLine(loop[i], kept.back(), next) > tolerance)
            {
                kept.push_back(loop[i]);
            }
        }
        if (kept.size() > 2)
        {
            result.push_back(std::move(kept));
        }
    }
    return result;
}

} // namespace veltrane
