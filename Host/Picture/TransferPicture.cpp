#include "TransferPicture.h"

#include "CutChoice.h"
#include "Errors.h"
#include "Text.h"

#include <array>
#include <cstdio>
#include <optional>
#include <utility>
#include <vector>

namespace veltrane
{
namespace
{

/// Of what is seen of the source, and of the target where it lies within the source.
std::optional<ColourScale> scaleOfSeen(const Raster& source, const Raster& target)
{
    std::vector<double> seen;
    for (std::size_t i = 0; i < source.values.size(); ++i)
    {
        if (source.isCovered[i])
        {
            seen.push_back(source.values[i]);
            seen.push_back(target.values[i]);
        }
    }
    return scaleOf(std::move(seen));
}

void drawFoot(PicturePage& page, double outside)
{
    constexpr double size = 24;
    const auto [x, y] = page.footSign(1);
    const Loop square{{x - size / 2, y - size / 2},
                      {x - size / 2, y + size / 2},
                      {x + size / 2, y + size / 2},
                      {x + size / 2, y - size / 2}};
    page.drawing().hatch({square}, {}, outsideColour);
    std::array<char, 16> percent{};
    std::snprintf(percent.data(), percent.size(), "%.1f", 100 * outside);
    page.drawFoot(1, text("target outside the source: ", percent.data(), " % of its area in this cut"), size + 12);
}

bool isEmpty(const Cut& cut)
{
    return cut.triangles.empty() && cut.lines.empty();
}

} // namespace

std::string titleOf(const PictureSide& side)
{
    return text(side.name, ", ", side.mesh.nodeCount(), " nodes");
}

Drawing drawTransfer(DrawingFormat format, const PictureSide& source, const PictureSide& target,
                     std::span<const double> differences, const PictureChoice& choice)
{
    const std::vector<double> targetValues = shownValues(target.field, choice.component);
    const CutPlane plane = choice.plane ? *choice.plane : planeThroughPeak(target.mesh, targetValues);
    const CutView sourceView(cutThrough(source.mesh, shownValues(source.field, choice.component), plane));
    const CutView targetView(cutThrough(target.mesh, targetValues, plane));
    if (isEmpty(sourceView.cut) && isEmpty(targetView.cut))
    {
        throw InvalidOption(
            text("the plane ", "xyz"[plane.axis], " = ", plane.position, " meets neither the source nor the target"));
    }
    const PlaneBox box = boxAround(sourceView.cut.points, targetView.cut.points);
    const Raster sourceRaster = sampled(sourceView.cut, box);
    const Raster targetRaster = sampled(targetView.cut, box);
    const std::optional<ColourScale> scale = choice.range
                                                 ? std::optional(ColourScale((*choice.range)[0], (*choice.range)[1]))
                                                 : scaleOfSeen(sourceRaster, targetRaster);

    PicturePage page(format, differences.empty() ? 2 : 3, shownName(source.field, choice.component), plane, box);
    page.drawTitle(page.panel(0), "source", titleOf(source));
    page.drawCut(page.panel(0), sourceView, scale);
    page.drawTitle(page.panel(1), "target", titleOf(target));
    page.drawCut(page.panel(1), targetView, scale);
    page.drawScale(0, 1, scale);
    constexpr double least = 0.0005; // less is the width of a line
    if (const double outside = partOutside(sourceRaster, targetRaster); outside < least)
    {
        page.drawFoot(1, "The target lies within the source in this cut.");
    }
    else
    {
        page.hatchOutside(page.panel(1), targetView, sourceView);
        drawFoot(page, outside);
    }
    if (!differences.empty())
    {
        const CutView view(cutThrough(source.mesh, differences, plane));
        const std::optional<ColourScale> ownScale = scaleOf(sampled(view.cut, box).values);
        page.drawTitle(page.panel(2), "difference", "mapped back, on the source's mesh");
        page.drawCut(page.panel(2), view, ownScale);
        page.drawScale(2, 2, ownScale);
    }
    return std::move(page.drawing());
}

} // namespace veltrane
