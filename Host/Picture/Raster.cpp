#include "Raster.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace veltrane
{
namespace
{

/// Twice the area of a triangle, positive if its corners run counter-clockwise.
double doubleArea(const PlanePoint& a, const PlanePoint& b, const PlanePoint& c)
{
    return (b[0] - a[0]) * (c[1] - a[1]) - (c[0] - a[0]) * (b[1] - a[1]);
}

void paint(const std::array<PlanePoint, 3>& corners, const std::array<double, 3>& values, Raster& raster)
{
    const double area = doubleArea(corners[0], corners[1], corners[2]);
    if (area == 0)
    {
        return;
    }
    const auto [left, right] = std::minmax({corners[0][0], corners[1][0], corners[2][0]});
    const auto [top, bottom] = std::minmax({corners[0][1], corners[1][1], corners[2][1]});
    const int firstColumn = std::max(0, static_cast<int>(std::floor(left - 0.5)));
    const int lastColumn = std::min(raster.width - 1, static_cast<int>(std::ceil(right - 0.5)));
    const int firstRow = std::max(0, static_cast<int>(std::floor(top - 0.5)));
    const int lastRow = std::min(raster.height - 1, static_cast<int>(std::ceil(bottom - 0.5)));
    for (int row = firstRow; row <= lastRow; ++row)
    {
        for (int column = firstColumn; column <= lastColumn; ++column)
        {
            const PlanePoint centre{column + 0.5, row + 0.5};
            const double first = doubleArea(centre, corners[1], corners[2]) / area;
            const double second = doubleArea(corners[0], centre, corners[2]) / area;
            const double third = 1 - first - second;
            constexpr double rounding = -1e-9; // pixels on an edge belong to both sides
            if (std::min({first, second, third}) >= rounding)
            {
                const std::size_t pixel = raster.index(column, row);
                raster.isCovered[pixel] = true;
                raster.values[pixel] = first * values[0] + second * values[1] + third * values[2];
            }
        }
    }
}

} // namespace

PlaneBox boxAround(std::span<const PlanePoint> first, std::span<const PlanePoint> second)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    PlaneBox box{{infinity, infinity}, {-infinity, -infinity}};
    for (const std::span<const PlanePoint>& points : {first, second})
    {
        for (const PlanePoint& point : points)
        {
            for (std::size_t i = 0; i < 2; ++i)
            {
                box.min[i] = std::min(box.min[i], point[i]);
                box.max[i] = std::max(box.max[i], point[i]);
            }
        }
    }
    if (first.empty() && second.empty())
    {
        return {{0, 0}, {1, 1}};
    }
    // Never without any width or height.
    const double extent = std::max({box.width(), box.height(), std::numeric_limits<double>::min()});
    for (std::size_t i = 0; i < 2; ++i)
    {
        const double missing = std::max(0.0, 0.05 * extent - (box.max[i] - box.min[i]));
        box.min[i] -= missing / 2;
        box.max[i] += missing / 2;
    }
    return box;
}

Raster rasterize(const Cut& cut, const PlaneBox& box, int width, int height)
{
    const std::size_t pixelCount = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    Raster raster{width, height, std::vector<double>(pixelCount, std::numeric_limits<double>::quiet_NaN()),
                  std::vector<bool>(pixelCount, false)};
    const auto toPixels = [&](const PlanePoint& point) {
        return PlanePoint{(point[0] - box.min[0]) / box.width() * width,
                          (box.max[1] - point[1]) / box.height() * height};
    };
    for (const auto& triangle : cut.triangles)
    {
        std::array<PlanePoint, 3> corners;
        std::array<double, 3> values;
        for (std::size_t i = 0; i < 3; ++i)
        {
            corners[i] = toPixels(cut.points[triangle[i]]);
            values[i] = cut.values[triangle[i]];
        }
        paint(corners, values, raster);
    }
    return raster;
}

double partOutside(const Raster& source, const Raster& target)
{
    double all = 0;
    double outside = 0;
    for (std::size_t i = 0; i < target.isCovered.size(); ++i)
    {
        all += target.isCovered[i] ? 1 : 0;
        outside += target.isCovered[i] && !source.isCovered[i] ? 1 : 0;
    }
    return all == 0 ? 0 : outside / all;
}

} // namespace veltrane
