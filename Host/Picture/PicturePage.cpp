#include "PicturePage.h"

#include "Text.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <iterator>
#include <limits>

namespace veltrane
{
namespace
{

constexpr double pictureWidth = 1600;
constexpr double margin = 40;
constexpr double gap = 48;
constexpr double headHeight = 120;
constexpr double scaleHeight = 76; ///< of the bar with its numbers
constexpr double footHeight = 80;
constexpr double barHeight = 22;
constexpr double mostPanelHeight = 1000;

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

/// Fewer where every byte counts.
int bandCount(DrawingFormat format)
{
    return format == DrawingFormat::pixels ? 32 : 16;
}

double bandEdge(const ColourScale& scale, int band, int count)
{
    return scale.min() + (scale.max() - scale.min()) * band / count;
}

Colour bandColour(const ColourScale& scale, int band, int count)
{
    return scale.of(bandEdge(scale, band, count) + (scale.max() - scale.min()) / (2 * count));
}

Panel panelAt(std::size_t index, double columnWidth, const PlaneBox& box)
{
    return {margin + static_cast<double>(index) * (columnWidth + gap), headHeight,
            std::min(columnWidth / box.width(), mostPanelHeight / box.height()), box};
}

std::vector<Panel> panelsFor(std::size_t count, double columnWidth, const PlaneBox& box)
{
    std::vector<Panel> panels;
    for (std::size_t i = 0; i < count; ++i)
    {
        panels.push_back(panelAt(i, columnWidth, box));
    }
    return panels;
}

double columnWidthFor(std::size_t panelCount)
{
    const auto count = static_cast<double>(panelCount);
    return (pictureWidth - 2 * margin - (count - 1) * gap) / count;
}

} // namespace

std::vector<double> shownValues(const Field& field, std::optional<int> component)
{
    const auto count = static_cast<std::size_t>(field.componentCount());
    std::vector<double> result;
    const auto take = [&](const auto& values)
    {
        for (std::size_t first = 0; first < values.size(); first += count)
        {
            result.push_back(component ? magnitude(values, first + static_cast<std::size_t>(*component), 1)
                                       : magnitude(values, first, count));
        }
    };
    std::visit(take, field.values());
    return result;
}

std::string shownName(const Field& field, std::optional<int> component)
{
    if (field.componentCount() == 1)
    {
        return field.name();
    }
    if (!component)
    {
        return text(field.name(), ", magnitude");
    }
    return field.componentCount() == 3 ? text(field.name(), " ", "xyz"[*component])
                                       : text(field.name(), " ", *component + 1);
}

Colour colourOf(const std::optional<ColourScale>& scale, double value)
{
    return scale && std::isfinite(value) ? scale->of(value) : withoutValue;
}

std::string shortNumber(double number)
{
    return text(std::setprecision(3), number);
}

std::string planeText(const CutPlane& plane, double size)
{
    const double unit = std::pow(10, std::floor(std::log10(size)) - 3);
    const double rounded = std::round(plane.position / unit) * unit;
    return text("xyz"[plane.axis], " = ", std::abs(rounded) < unit / 2 ? 0 : static_cast<float>(rounded));
}

Raster sampled(const Cut& cut, const PlaneBox& box)
{
    constexpr double longerSide = 400;
    const double scale = longerSide / std::max(box.width(), box.height());
    const auto pixels = [&](double length) { return std::max(1, static_cast<int>(std::ceil(length * scale))); };
    return rasterize(cut, box, pixels(box.width()), pixels(box.height()));
}

PicturePage::PicturePage(DrawingFormat format, std::size_t panelCount, const std::string& title, const CutPlane& plane,
                         const PlaneBox& box)
    : format_(format), panels_(panelsFor(panelCount, columnWidthFor(panelCount), box)),
      columnWidth_(columnWidthFor(panelCount)), bottom_(headHeight + panels_.front().height()),
      drawing_(format, static_cast<int>(pictureWidth), static_cast<int>(bottom_ + scaleHeight + footHeight))
{
    drawing_.text(margin, 40, text(title, ", cut at ", planeText(plane, std::max(box.width(), box.height()))), 26,
                  Align::left, true);
    drawAxes(plane);
}

void PicturePage::drawTitle(const Panel& panel, const std::string& title, const std::string& content)
{
    drawing_.text(panel.left, headHeight - 42, title, 24, Align::left, true);
    drawing_.text(panel.left, headHeight - 14, content, 18);
}

Loops PicturePage::placed(const Panel& panel, const Loops& loops) const
{
    Loops result;
    for (const Loop& loop : loops)
    {
        Loop moved;
        std::ranges::transform(loop, std::back_inserter(moved), panel);
        result.push_back(std::move(moved));
    }
    constexpr double invisible = 0.2;
    return format_ == DrawingFormat::pixels ? result : simplified(result, invisible);
}

void PicturePage::drawEdges(const Panel& panel, const Cut& cut)
{
    // From the length at which a mesh blackens the picture to the one at which its edges stand apart, in pixels.
    const double shortest = format_ == DrawingFormat::pixels ? 5 : 9; // fewer where every byte counts
    constexpr double longest = 25;
    constexpr double mostOpaque = 0.4;
    constexpr std::size_t classCount = 4;
    std::array<std::vector<Segment>, classCount> classes;
    for (const auto& [a, b] : cut.elementEdges)
    {
        const Segment segment{panel(cut.points[a]), panel(cut.points[b])};
        const double length = std::hypot(segment[1][0] - segment[0][0], segment[1][1] - segment[0][1]);
        if (length > shortest)
        {
            const double part = std::min(0.999, (length - shortest) / (longest - shortest));
            classes[static_cast<std::size_t>(part * classCount)].push_back(segment);
        }
    }
    for (std::size_t i = 0; i < classCount; ++i)
    {
        if (!classes[i].empty())
        {
            drawing_.lines(classes[i], 0.7, ink, mostOpaque * static_cast<double>(i + 1) / classCount);
        }
    }
}

void PicturePage::drawArea(const Panel& panel, const CutView& view, const Colour& colour)
{
    drawing_.fill(placed(panel, view.regions.covered()), colour);
}

void PicturePage::drawOutline(const Panel& panel, const CutView& view)
{
    drawing_.outline(placed(panel, view.regions.covered()), 1.8, ink);
}

void PicturePage::drawCut(const Panel& panel, const CutView& view, const std::optional<ColourScale>& scale)
{
    const Cut& cut = view.cut;
    const CutRegions& regions = view.regions;
    drawing_.fill(placed(panel, regions.covered()), withoutValue);
    if (scale)
    {
        // Each band lies upon the one before, so that nothing shines through between them.
        const int count = scale->max() > scale->min() ? bandCount(format_) : 1;
        drawing_.fill(placed(panel, regions.withValues()), bandColour(*scale, 0, count));
        for (int band = 1; band < count; ++band)
        {
            drawing_.fill(placed(panel, regions.above(bandEdge(*scale, band, count))), bandColour(*scale, band, count));
        }
    }
    drawEdges(panel, cut);
    drawOutline(panel, view);
    for (const auto& [a, b] : cut.lines)
    {
        const Segment segment{panel(cut.points[a]), panel(cut.points[b])};
        drawing_.lines(std::span(&segment, 1), 5, colourOf(scale, (cut.values[a] + cut.values[b]) / 2));
    }
}

void PicturePage::hatchOutside(const Panel& panel, const CutView& within, const CutView& without)
{
    drawing_.hatch(placed(panel, within.regions.covered()), placed(panel, without.regions.covered()), outsideColour);
}

void PicturePage::drawScale(std::size_t firstPanel, std::size_t lastPanel, const std::optional<ColourScale>& scale)
{
    const double left = panels_[firstPanel].left;
    const double width = panels_[lastPanel].left + columnWidth_ - left;
    const double top = bottom_ + 24;
    if (!scale)
    {
        drawing_.text(left, top + 18, "no values", 20);
        return;
    }
    const bool isRange = scale->max() > scale->min();
    const int count = isRange ? bandCount(format_) : 1;
    for (int band = 0; band < count; ++band)
    {
        // Each reaches to the end, so that nothing shines through between them.
        const double x = left + width * band / count;
        drawing_.rectangle(x, top, left + width - x, barHeight, bandColour(*scale, band, count));
    }
    const std::vector<double> ticks = scale->ticks(std::max(2, static_cast<int>(width / 130)));
    const std::vector<std::string> texts = tickTexts(ticks);
    for (std::size_t i = 0; i < ticks.size(); ++i)
    {
        const double x = left + width * (isRange ? (ticks[i] - scale->min()) / (scale->max() - scale->min()) : 0.5);
        drawing_.line(x, top + barHeight, x, top + barHeight + 6, 1.5, ink);
        drawing_.text(x, top + barHeight + 25, texts[i], 20, Align::centre);
    }
    if (scale->seenMax() > scale->max())
    {
        drawing_.text(left + width, top - 6, text("up to ", shortNumber(scale->seenMax())), 18, Align::right);
    }
    if (scale->seenMin() < scale->min())
    {
        drawing_.text(left, top - 6, text("down to ", shortNumber(scale->seenMin())), 18);
    }
}

/// Two arrows with the names of the axes.
void PicturePage::drawAxes(const CutPlane& plane)
{
    const double x = margin + 8;
    const double y = bottom_ + scaleHeight + footHeight - 18;
    constexpr double length = 38;
    constexpr double head = 6;
    const std::vector<Segment> arrows{{{{x, y}, {x + length, y}}},
                                      {{{x + length, y}, {x + length - head, y - head}}},
                                      {{{x + length, y}, {x + length - head, y + head}}},
                                      {{{x, y}, {x, y - length}}},
                                      {{{x, y - length}, {x - head, y - length + head}}},
                                      {{{x, y - length}, {x + head, y - length + head}}}};
    drawing_.lines(arrows, 2, ink);
    drawing_.text(x + length + 8, y + 6, text("xyz"[plane.right()]), 20);
    drawing_.text(x + 10, y - length + 6, text("xyz"[plane.up()]), 20);
}

void PicturePage::drawFoot(std::size_t panel, const std::string& sentence, double indent)
{
    drawing_.text(panels_[panel].left + indent, bottom_ + scaleHeight + footHeight - 28, sentence, 18);
}

PlanePoint PicturePage::footSign(std::size_t panel) const
{
    return {panels_[panel].left + 12, bottom_ + scaleHeight + footHeight - 35};
}

} // namespace veltrane
