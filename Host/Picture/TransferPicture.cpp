#include "TransferPicture.h"

#include "CutChoice.h"
#include "Drawing.h"
#include "Raster.h"
#include "Text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iomanip>
#include <limits>
#include <vector>

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

constexpr Colour ink{0.1, 0.1, 0.1};
constexpr Colour hatch{0.85, 0.10, 0.10};
constexpr Colour withoutValue{0.80, 0.80, 0.80};

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

/// Of what is seen of the source, and of the target where it lies within the source; but for the smallest and the
/// largest values if they are of so little area that they would take the colours away from all others.
ColourScale scaleOf(const Raster& source, const Raster& target)
{
    std::vector<double> seen;
    for (std::size_t i = 0; i < source.values.size(); ++i)
    {
        for (const double value : {source.values[i], target.values[i]})
        {
            if (source.isCovered[i] && std::isfinite(value))
            {
                seen.push_back(value);
            }
        }
    }
    if (seen.empty())
    {
        return ColourScale(0, 0);
    }
    std::ranges::sort(seen);
    constexpr double leastArea = 0.005; // of all
    constexpr double worthwhile = 0.15; // of the range
    const auto skipped = static_cast<std::size_t>(leastArea * static_cast<double>(seen.size()));
    double min = seen[skipped];
    double max = seen[seen.size() - 1 - skipped];
    const double range = seen.back() - seen.front();
    if (min - seen.front() < worthwhile * range)
    {
        min = seen.front();
    }
    if (seen.back() - max < worthwhile * range)
    {
        max = seen.back();
    }
    return ColourScale(min, max, {seen.front(), seen.back()});
}

/// Where a cut is drawn.
struct Panel
{
    double left;
    double top;
    double scale; ///< pixels per unit of length
    PlaneBox box;

    double width() const { return box.width() * scale; }
    double height() const { return box.height() * scale; }
    double x(const PlanePoint& point) const { return left + (point[0] - box.min[0]) * scale; }
    double y(const PlanePoint& point) const { return top + (box.max[1] - point[1]) * scale; }
};

void drawEdges(Drawing& drawing, const Panel& panel, const Cut& cut, const std::vector<PlaneEdge>& edges, double width,
               double opacity)
{
    for (const auto& [a, b] : edges)
    {
        drawing.line(panel.x(cut.points[a]), panel.y(cut.points[a]), panel.x(cut.points[b]), panel.y(cut.points[b]),
                     width, ink, opacity);
    }
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

/// \param surrounding  what is hatched is outside of it
void drawCut(Drawing& drawing, const Panel& panel, const Cut& cut, const Raster& raster, const Raster& surrounding,
             const ColourScale& scale)
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
            return Pixel{hatch, 1};
        }
        const double value = raster.values[index];
        return Pixel{std::isfinite(value) ? scale.of(value) : withoutValue, 1};
    };
    drawing.image(panel.left, panel.top, panel.width(), panel.height(), raster.width, raster.height, pixel);

    constexpr double leastSpacing = 4; // of lines that do not blacken the picture, in pixels
    if (meanLength(cut, cut.elementEdges) * panel.scale > leastSpacing)
    {
        drawEdges(drawing, panel, cut, cut.elementEdges, 0.7, 0.35);
    }
    drawEdges(drawing, panel, cut, cut.outline, 1.8, 1);
    for (const auto& [a, b] : cut.lines)
    {
        const double value = (cut.values[a] + cut.values[b]) / 2;
        drawing.line(panel.x(cut.points[a]), panel.y(cut.points[a]), panel.x(cut.points[b]), panel.y(cut.points[b]), 5,
                     std::isfinite(value) ? scale.of(value) : withoutValue);
    }
}

void drawPanel(Drawing& drawing, const Panel& panel, const std::string& title, const PictureSide& side)
{
    drawing.text(panel.left, headHeight - 42, title, 24, Align::left, true);
    drawing.text(panel.left, headHeight - 14, text(side.name, ", ", side.mesh.nodeCount(), " nodes"), 18);
}

std::string shortNumber(double number)
{
    return text(std::setprecision(3), number);
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

/// Two arrows with the names of the axes.
void drawAxes(Drawing& drawing, double x, double y, const CutPlane& plane)
{
    constexpr double length = 38;
    constexpr double head = 6;
    drawing.line(x, y, x + length, y, 2, ink);
    drawing.line(x + length, y, x + length - head, y - head, 2, ink);
    drawing.line(x + length, y, x + length - head, y + head, 2, ink);
    drawing.line(x, y, x, y - length, 2, ink);
    drawing.line(x, y - length, x - head, y - length + head, 2, ink);
    drawing.line(x, y - length, x + head, y - length + head, 2, ink);
    drawing.text(x + length + 8, y + 6, text("xyz"[plane.right()]), 20);
    drawing.text(x + 10, y - length + 6, text("xyz"[plane.up()]), 20);
}

void drawFoot(Drawing& drawing, double left, double y, double outside)
{
    constexpr double least = 0.0005; // less is the width of a line
    if (outside < least)
    {
        drawing.text(left, y, "The target lies within the source in this cut.", 18);
        return;
    }
    constexpr int size = 24;
    drawing.image(left, y - 19, size, size, size, size,
                  [](int column, int row) {
                      return Pixel{(column + row) / 5 % 2 == 0 ? hatch : Colour{0.128, 0.567, 0.551}, 1};
                  });
    std::array<char, 16> percent{};
    std::snprintf(percent.data(), percent.size(), "%.1f", 100 * outside);
    drawing.text(left + size + 12, y, text("target outside the source: ", percent.data(), " % of its area in this cut"),
                 18);
}

/// Without the digits that only keep the cut beside the faces of elements.
std::string positionText(const CutPlane& plane, const PlaneBox& box)
{
    const double unit = std::pow(10, std::floor(std::log10(std::max(box.width(), box.height()))) - 3);
    const double rounded = std::round(plane.position / unit) * unit;
    return text("xyz"[plane.axis], " = ", std::abs(rounded) < unit / 2 ? 0 : static_cast<float>(rounded));
}

} // namespace

void writePicture(const PictureSide& source, const PictureSide& target, const std::filesystem::path& path)
{
    const std::vector<double> sourceValues = shownValues(source.field);
    const std::vector<double> targetValues = shownValues(target.field);
    const CutPair pair = mostTellingCut(CutMesh(source.mesh, sourceValues), CutMesh(target.mesh, targetValues),
                                        target.mesh, targetValues);

    const PlaneBox box = boxAround(pair.source, pair.target);
    const double scale = std::min(panelWidth / box.width(), mostPanelHeight / box.height());
    const Panel sourcePanel{margin, headHeight, scale, box};
    Panel targetPanel = sourcePanel;
    targetPanel.left += panelWidth + gap;
    const auto columns = static_cast<int>(std::ceil(raisedResolution * sourcePanel.width()));
    const auto rows = static_cast<int>(std::ceil(raisedResolution * sourcePanel.height()));
    const Raster sourceRaster = rasterize(pair.source, box, columns, rows);
    const Raster targetRaster = rasterize(pair.target, box, columns, rows);
    const ColourScale colours = scaleOf(sourceRaster, targetRaster);

    const double bottom = headHeight + sourcePanel.height();
    Drawing drawing(static_cast<int>(pictureWidth), static_cast<int>(bottom + footHeight));
    const bool isScalar = source.field.componentCount() == 1;
    drawing.text(margin, 40,
                 text(source.field.name(), isScalar ? "" : ", magnitude", ", cut at ", positionText(pair.plane, box)),
                 26, Align::left, true);
    drawPanel(drawing, sourcePanel, "source", source);
    drawCut(drawing, sourcePanel, pair.source, sourceRaster, sourceRaster, colours);
    drawPanel(drawing, targetPanel, "target", target);
    drawCut(drawing, targetPanel, pair.target, targetRaster, sourceRaster, colours);
    drawBar(drawing, pictureWidth - margin - barSpace + gap, headHeight, sourcePanel.height(), colours);
    drawAxes(drawing, margin + 8, bottom + footHeight - 18, pair.plane);
    drawFoot(drawing, targetPanel.left, bottom + footHeight - 28, partOutside(sourceRaster, targetRaster));
    drawing.write(path);
}

} // namespace veltrane
