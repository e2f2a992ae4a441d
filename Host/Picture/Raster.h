/// Cuts in pixels.
#ifndef VELTRANE_HOST_RASTER_H
#define VELTRANE_HOST_RASTER_H

#include "Cut.h"

#include <span>
#include <vector>

namespace veltrane
{

/// The part of a plane that is shown.
struct PlaneBox
{
    PlanePoint min;
    PlanePoint max;

    double width() const { return max[0] - min[0]; }
    double height() const { return max[1] - min[1]; }
};

/// Around all of these points.
PlaneBox boxAround(std::span<const PlanePoint> first, std::span<const PlanePoint> second);

/// What of a cut is seen through each pixel's centre.
struct Raster
{
    int width;
    int height;
    std::vector<double> values;  ///< line by line from the top; NaN without a usable value
    std::vector<bool> isCovered; ///< by the cut

    std::size_t index(int column, int row) const
    {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(width) + static_cast<std::size_t>(column);
    }
};

/// Values vary linearly over each triangle.
Raster rasterize(const Cut& cut, const PlaneBox& box, int width, int height);

/// The part of the target's area that is outside the source, of rasters of the same box and size.
double partOutside(const Raster& source, const Raster& target);

} // namespace veltrane

#endif
