#include "PointPicture.h"

#include "CutChoice.h"
#include "PicturePage.h"
#include "Raster.h"
#include "Text.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <optional>
#include <tuple>
#include <vector>

namespace veltrane
{
namespace
{

constexpr Colour material{0.93, 0.93, 0.93};

bool hasValue(const PicturePoints& target, std::size_t point)
{
    return target.origins[point] == ValueOrigin::element;
}

/// Those that elements of the source have given.
std::vector<double> sampledValues(const PicturePoints& target)
{
    std::vector<double> values = shownValues(target.field);
    for (std::size_t point = 0; point < values.size(); ++point)
    {
        if (!hasValue(target, point))
        {
            values[point] = std::numeric_limits<double>::quiet_NaN();
        }
    }
    return values;
}

/// How a point is shown.
struct Dot
{
    PlanePoint place;
    double distance; ///< from the cut
    bool isNearCut;
    bool hasValue;
    double value;
};

/// In the order in which they are drawn: what is near the cut comes upon what is away from it, and of values and the
/// lack of them what is rarer upon what there is more of.
std::vector<Dot> dotsOf(const PicturePoints& target, std::span<const double> values, const CutPlane& plane,
                        double sourceSize)
{
    constexpr double near = 0.02; // of the source's size
    std::vector<Dot> dots;
    for (std::size_t point = 0; point < values.size(); ++point)
    {
        const float* place = target.points.coordinates().data() + 3 * point;
        const double distance = std::abs(double{place[plane.axis]} - plane.position);
        dots.push_back({{double{place[plane.right()]}, double{place[plane.up()]}},
                        distance,
                        distance <= near * sourceSize,
                        hasValue(target, point),
                        values[point]});
    }
    const bool isValueRare = 2 * std::ranges::count(dots, true, &Dot::hasValue) < std::ssize(dots);
    std::ranges::stable_sort(dots, {},
                             [&](const Dot& dot)
                             { return std::tuple(dot.isNearCut, dot.hasValue == isValueRare, -dot.distance); });
    return dots;
}

/// As large as leaves room for so many of them, in pixels.
double dotRadius(const Panel& panel, std::size_t count)
{
    constexpr double smallest = 1.2;
    constexpr double largest = 8;
    const double room = panel.width() * panel.height() / static_cast<double>(std::max(std::size_t{1}, count));
    return std::clamp(0.3 * std::sqrt(room), smallest, largest);
}

void drawRing(Drawing& drawing, double x, double y, double radius)
{
    drawing.circle(x, y, radius, std::max(0.6, radius / 3), outsideColour);
}

void drawDot(Drawing& drawing, double x, double y, double radius, const Colour& colour)
{
    constexpr double leastWithBorder = 3;
    drawing.disc(x, y, radius, colour);
    if (radius >= leastWithBorder)
    {
        drawing.circle(x, y, radius, 1, ink);
    }
}

void drawDots(PicturePage& page, std::span<const Dot> dots, double radius, const std::optional<ColourScale>& scale)
{
    const Panel& panel = page.targetPanel();
    for (const Dot& dot : dots)
    {
        const double x = panel.x(dot.place);
        const double y = panel.y(dot.place);
        if (dot.hasValue)
        {
            drawDot(page.drawing(), x, y, radius, colourOf(scale, dot.value));
        }
        else
        {
            drawRing(page.drawing(), x, y, radius);
        }
    }
}

/// The values beside the dots, where there is room for them.
void drawLabels(PicturePage& page, std::span<const Dot> dots)
{
    constexpr double size = 18;
    constexpr double spacing = 16;   // of a dot's middle and its label
    constexpr double mostWidth = 70; // of a label
    const Panel& panel = page.targetPanel();
    const auto isFree = [&](const Dot& dot)
    {
        return std::ranges::none_of(dots,
                                    [&](const Dot& other)
                                    {
                                        const double right = panel.x(other.place) - panel.x(dot.place);
                                        return &other != &dot && right > -mostWidth && right < mostWidth + spacing &&
                                               std::abs(panel.y(other.place) - panel.y(dot.place)) < size;
                                    });
    };
    for (const Dot& dot : dots)
    {
        if (std::isfinite(dot.value) && isFree(dot))
        {
            const double x = panel.x(dot.place);
            const bool isAtTheRight = x + spacing + mostWidth > panel.left + panel.width();
            page.drawing().text(isAtTheRight ? x - spacing : x + spacing, panel.y(dot.place) + size / 3,
                                shortNumber(dot.value), size, isAtTheRight ? Align::right : Align::left);
        }
    }
}

/// The place of the source's material in the cut, without values.
void drawMaterial(PicturePage& page, const Raster& raster)
{
    const Panel& panel = page.targetPanel();
    page.drawing().image(panel.left, panel.top, panel.width(), panel.height(), raster.width, raster.height,
                         [&](int column, int row) {
                             return Pixel{material, raster.isCovered[raster.index(column, row)] ? 1.0 : 0.0};
                         });
}

/// Points away from the cut are smaller.
void drawTarget(PicturePage& page, std::span<const Dot> dots, const Cut& cut, const Raster& raster,
                const std::optional<ColourScale>& scale)
{
    const auto nearCount = static_cast<std::size_t>(std::ranges::count(dots, true, &Dot::isNearCut));
    const std::size_t awayCount = dots.size() - nearCount;
    drawMaterial(page, raster);
    drawDots(page, dots.first(awayCount), 0.6 * dotRadius(page.targetPanel(), dots.size()), scale);
    page.drawOutline(page.targetPanel(), cut);
    drawDots(page, dots.last(nearCount), dotRadius(page.targetPanel(), nearCount), scale);
    constexpr std::size_t mostLabels = 12;
    if (dots.size() <= mostLabels)
    {
        drawLabels(page, dots);
    }
}

std::string countText(const PicturePoints& target)
{
    const auto outside = std::ranges::count(target.origins, ValueOrigin::defaultValue);
    const auto notMapped = std::ranges::count(target.origins, ValueOrigin::none);
    const int all = target.points.pointCount();
    if (all == 1 && notMapped == 0)
    {
        return text("the point lies ", outside > 0 ? "outside" : "within", " the source");
    }
    if (outside + notMapped > 0)
    {
        return text(outside, " of ", all, all == 1 ? " point" : " points", " outside the source",
                    notMapped > 0 ? text(", ", notMapped, " not mapped") : "");
    }
    return text("all ", all, " points lie within the source");
}

void drawFoot(PicturePage& page, const PicturePoints& target, std::span<const Dot> dots)
{
    constexpr double radius = 8;
    const bool haveAllValues = std::ranges::all_of(dots, &Dot::hasValue);
    if (!haveAllValues)
    {
        const auto [x, y] = page.footSign();
        drawRing(page.drawing(), x, y, radius);
    }
    const bool isOneAway = !std::ranges::all_of(dots, &Dot::isNearCut);
    page.drawFoot(text(countText(target), isOneAway ? "; small ones are away from the cut" : ""),
                  haveAllValues ? 0 : 36);
}

/// With room for dots at its border.
PlaneBox widened(PlaneBox box)
{
    const double room = 0.02 * std::max(box.width(), box.height());
    for (std::size_t i = 0; i < 2; ++i)
    {
        box.min[i] -= room;
        box.max[i] += room;
    }
    return box;
}

} // namespace

void writePicture(const PictureSide& source, const PicturePoints& target, const std::filesystem::path& path)
{
    const std::vector<double> sourceValues = shownValues(source.field);
    const std::vector<double> pointValues = sampledValues(target);
    const auto [plane, cut] =
        mostTellingCut(CutMesh(source.mesh, sourceValues), source.mesh, sourceValues, target.points, pointValues);

    const std::vector<Dot> dots = dotsOf(target, pointValues, plane, double{source.mesh.boundingBox().size()});
    std::vector<PlanePoint> places;
    std::ranges::transform(dots, std::back_inserter(places), &Dot::place);

    PicturePage page(source.field, plane, widened(boxAround(cut.points, places)));
    const Raster raster = page.rasterize(cut);
    // The points may lie away from the cut.
    const std::optional<ColourScale> scale = united(scaleOf(raster.values), scaleOf(pointValues));
    page.drawTitle(page.sourcePanel(), "source", titleOf(source));
    page.drawCut(page.sourcePanel(), cut, raster, raster, scale);
    page.drawTitle(page.targetPanel(), "points",
                   text(target.name, ", ", target.points.pointCount(),
                        target.points.pointCount() == 1 ? " point" : " points", " seen along ", "xyz"[plane.axis]));
    drawTarget(page, dots, cut, raster, scale);
    page.drawScale(scale);
    drawFoot(page, target, dots);
    page.write(path);
}

} // namespace veltrane
