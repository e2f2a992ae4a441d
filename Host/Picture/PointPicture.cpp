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
std::vector<double> sampledValues(const PicturePoints& target, std::optional<int> component)
{
    std::vector<double> values = shownValues(target.field, component);
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
    const Panel& panel = page.panel(1);
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
    const Panel& panel = page.panel(1);
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

/// Points away from the cut are smaller.
void drawTarget(PicturePage& page, std::span<const Dot> dots, const CutView& view,
                const std::optional<ColourScale>& scale)
{
    const auto nearCount = static_cast<std::size_t>(std::ranges::count(dots, true, &Dot::isNearCut));
    const std::size_t awayCount = dots.size() - nearCount;
    page.drawArea(page.panel(1), view, material);
    drawDots(page, dots.first(awayCount), 0.6 * dotRadius(page.panel(1), dots.size()), scale);
    page.drawOutline(page.panel(1), view);
    drawDots(page, dots.last(nearCount), dotRadius(page.panel(1), nearCount), scale);
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
        const auto [x, y] = page.footSign(1);
        drawRing(page.drawing(), x, y, radius);
    }
    const bool isOneAway = !std::ranges::all_of(dots, &Dot::isNearCut);
    page.drawFoot(1, text(countText(target), isOneAway ? "; small ones are away from the cut" : ""),
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

Drawing drawSampling(DrawingFormat format, const PictureSide& source, const PicturePoints& target,
                     const PictureChoice& choice)
{
    const std::vector<double> pointValues = sampledValues(target, choice.component);
    const CutPlane plane = choice.plane ? *choice.plane : planeThroughPeak(source.mesh, target.points, pointValues);
    const CutView view(cutThrough(source.mesh, shownValues(source.field, choice.component), plane));

    const std::vector<Dot> dots = dotsOf(target, pointValues, plane, double{source.mesh.boundingBox().size()});
    std::vector<PlanePoint> places;
    std::ranges::transform(dots, std::back_inserter(places), &Dot::place);

    const PlaneBox box = widened(boxAround(view.cut.points, places));
    PicturePage page(format, 2, shownName(source.field, choice.component), plane, box);
    // The points may lie away from the cut.
    const std::optional<ColourScale> scale = choice.range
                                                 ? std::optional(ColourScale((*choice.range)[0], (*choice.range)[1]))
                                                 : united(scaleOf(sampled(view.cut, box).values), scaleOf(pointValues));
    page.drawTitle(page.panel(0), "source", titleOf(source));
    page.drawCut(page.panel(0), view, scale);
    page.drawTitle(page.panel(1), "points",
                   text(target.name, ", ", target.points.pointCount(),
                        target.points.pointCount() == 1 ? " point" : " points", " seen along ", "xyz"[plane.axis]));
    drawTarget(page, dots, view, scale);
    page.drawScale(0, 1, scale);
    drawFoot(page, target, dots);
    return std::move(page.drawing());
}

} // namespace veltrane
