#include "PicturePage.h"

#include "Text.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <limits>

namespace veltrane
{
namespace
{

constexpr double pictureWidth = 1600;
constexpr double margin = 40;
constexpr double gap = 48;
constexpr double headHeight = 120;
constexpr double footHeight = 80;
constexpr double barWidth = 28;
constexpr double barSpace = 170; ///< the bar with its numbers
constexpr double panelWidth = (pictureWidth - 2 * margin - gap - barSpace) / 2;
constexpr double mostPanelHeight = 1000;
constexpr int raisedResolution = 2; ///< of images, so that they have smooth edges

double magnitude(const auto& values, std::size_t first, std::size_t count)
{
    double sum = 0;
    for (std::size_t i = first; i < first + count; ++i)
    {
        const auto value = static_cast<double>(values[i]);
        if (value <= double{undefinedBound})
        {
            return std::numeric_limits<double>::quiet_NaN();
        }
        sum += value * value;
    }
    return count == 1 ? static_cast<double>(values[first]) : std::sqrt(sum);
}

double meanLength(const Cut& cut, const std::vector<PlaneEdge>& edges)
{
    double sum = 0;
    for (const auto& [a, b] : edges)
    {
        sum += std::hypot(cut.points[a][0] - cut.points[b][0], cut.points[a][1] - cut.points[b][1]);
    }
    return edges.empty() ? 0 : sum / static_cast<double>(edges.size());
}

void drawBar(Drawing& drawing, double left, double top, double height, const ColourScale& scale)
{
    constexpr int steps = 256;
    drawing.image(left, top, barWidth, height, 1, steps,
                  [&](int, int row)
                  {
                      const double part = 1 - (row + 0.5) / steps;
                      return Pixel{scale.of(scale.min() + part * (scale.max() - scale.min())), 1};
                  });
    const std::vector<double> ticks = scale.ticks(std::max(2, static_cast<int>(height / 90)));
    const std::vector<std::string> texts = tickTexts(ticks);
    for (std::size_t i = 0; i < ticks.size(); ++i)
    {
        const double range = scale.max() - scale.min();
        const double y = top + height * (range > 0 ? 1 - (ticks[i] - scale.min()) / range : 0.5);
        drawing.line(left + barWidth, y, left + barWidth + 7, y, 1.5, ink);
        drawing.text(left + barWidth + 14, y + 7, texts[i], 20);
    }
    if (scale.seenMax() > scale.max())
    {
        drawing.text(left, top - 12, text("up to ", shortNumber(scale.seenMax())), 18);
    }
    if (scale.seenMin() < scale.min())
    {
        drawing.text(left, top + height + 26, text("down to ", shortNumber(scale.seenMin())), 18);
    }
}

/// Without the digits that only keep the cut beside the faces of elements.
std::string positionText(const CutPlane& plane, const PlaneBox& box)
{
    const double unit = std::pow(10, std::floor(std::log10(std::max(box.width(), box.height()))) - 3);
    const double rounded = std::round(plane.position / unit) * unit;
    return text("xyz"[plane.axis], " = ", std::abs(rounded) < unit / 2 ? 0 : static_cast<float>(rounded));
}

Panel firstPanel(const PlaneBox& box)
{
    return {margin, headHeight, std::min(panelWidth / box.width(), mostPanelHeight / box.height()), box};
}

Panel secondPanel(Panel first)
{
    first.left += panelWidth + gap;
    return first;
}

} // namespace

std::vector<double> shownValues(const Field& field)
{
    const auto count = static_cast<std::size_t>(field.componentCount());
    std::vector<double> result;
    const auto take = [&](const auto& values)
    {
        for (std::size_t first = 0; first < values.size(); first += count)
        {
            result.push_back(magnitude(values, first, count));
        }
    };
    std::visit(take, field.values());
    return result;
}

Colour colourOf(const std::optional<ColourScale>& scale, double value)
{
    return scale && std::isfinite(value) ? scale->of(value) : withoutValue;
}

std::string shortNumber(double number)
{
    return text(std::setprecision(3), number);
}

PicturePage::PicturePage(const Field& field, const CutPlane& plane, const PlaneBox& box)
    : sourcePanel_(firstPanel(box)), targetPanel_(secondPanel(sourcePanel_)),
      bottom_(headHeight + sourcePanel_.height()),
      drawing_(static_cast<int>(pictureWidth), static_cast<int>(bottom_ + footHeight))
{
    drawing_.text(
        margin, 40,
        text(field.name(), field.componentCount() == 1 ? "" : ", magnitude", ", cut at ", positionText(plane, box)), 26,
        Align::left, true);
    drawAxes(plane);
}

Raster PicturePage::rasterize(const Cut& cut) const
{
    const auto pixels = [](double size) { return static_cast<int>(std::ceil(raisedResolution * size)); };
    return veltrane::rasterize(cut, sourcePanel_.box, pixels(sourcePanel_.width()), pixels(sourcePanel_.height()));
}

void PicturePage::drawTitle(const Panel& panel, const std::string& title, const std::string& content)
{
    drawing_.text(panel.left, headHeight - 42, title, 24, Align::left, true);
    drawing_.text(panel.left, headHeight - 14, content, 18);
}

void PicturePage::drawEdges(const Panel& panel, const Cut& cut, const std::vector<PlaneEdge>& edges, double width,
                            double opacity)
{
    for (const auto& [a, b] : edges)
    {
        drawing_.line(panel.x(cut.points[a]), panel.y(cut.points[a]), panel.x(cut.points[b]), panel.y(cut.points[b]),
                      width, ink, opacity);
    }
}

void PicturePage::drawOutline(const Panel& panel, const Cut& cut)
{
    drawEdges(panel, cut, cut.outline, 1.8, 1);
}

void PicturePage::drawCut(const Panel& panel, const Cut& cut, const Raster& raster, const Raster& surrounding,
                          const std::optional<ColourScale>& scale)
{
    const auto pixel = [&](int column, int row)
    {
        constexpr int stripe = 10;
        const std::size_t index = raster.index(column, row);
        if (!raster.isCovered[index])
        {
            return Pixel{{1, 1, 1}, 0};
        }
        if (!surrounding.isCovered[index] && (column + row) / stripe % 2 == 0)
        {
            return Pixel{outsideColour, 1};
        }
        return Pixel{colourOf(scale, raster.values[index]), 1};
    };
    drawing_.image(panel.left, panel.top, panel.width(), panel.height(), raster.width, raster.height, pixel);

    constexpr double leastSpacing = 4; // of lines that do not blacken the picture, in pixels
    if (meanLength(cut, cut.elementEdges) * panel.scale > leastSpacing)
    {
        drawEdges(panel, cut, cut.elementEdges, 0.7, 0.35);
    }
    drawOutline(panel, cut);
    for (const auto& [a, b] : cut.lines)
    {
        drawing_.line(panel.x(cut.points[a]), panel.y(cut.points[a]), panel.x(cut.points[b]), panel.y(cut.points[b]), 5,
                      colourOf(scale, (cut.values[a] + cut.values[b]) / 2));
    }
}

void PicturePage::drawScale(const std::optional<ColourScale>& scale)
{
    const double left = pictureWidth - margin - barSpace + gap;
    if (scale)
    {
        drawBar(drawing_, left, headHeight, sourcePanel_.height(), *scale);
    }
    else
    {
        drawing_.text(left, headHeight + 20, "no values", 20);
    }
}

/// Two arrows with the names of the axes.
void PicturePage::drawAxes(const CutPlane& plane)
{
    const double x = margin + 8;
    const double y = bottom_ + footHeight - 18;
    constexpr double length = 38;
    constexpr double head = 6;
    drawing_.line(x, y, x + length, y, 2, ink);
    drawing_.line(x + length, y, x + length - head, y - head, 2, ink);
    drawing_.line(x + length, y, x + length - head, y + head, 2, ink);
    drawing_.line(x, y, x, y - length, 2, ink);
    drawing_.line(x, y - length, x - head, y - length + head, 2, ink);
    drawing_.line(x, y - length, x + head, y - length + head, 2, ink);
    drawing_.text(x + length + 8, y + 6, text("xyz"[plane.right()]), 20);
    drawing_.text(x + 10, y - length + 6, text("xyz"[plane.up()]), 20);
}

void PicturePage::drawFoot(const std::string& sentence, double indent)
{
    drawing_.text(targetPanel_.left + indent, bottom_ + footHeight - 28, sentence, 18);
}

PlanePoint PicturePage::footSign() const
{
    return {targetPanel_.left + 12, bottom_ + footHeight - 35};
}

} // namespace veltrane
