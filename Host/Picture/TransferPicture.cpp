#include "TransferPicture.h"

#include "CutChoice.h"
#include "PicturePage.h"
#include "Raster.h"
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
    constexpr double least = 0.0005; // less is the width of a line
    if (outside < least)
    {
        page.drawFoot("The target lies within the source in this cut.");
        return;
    }
    constexpr int size = 24;
    const auto [x, y] = page.footSign();
    page.drawing().image(x - size / 2, y - size / 2, size, size, size, size,
                         [](int column, int row) {
                             return Pixel{(column + row) / 5 % 2 == 0 ? outsideColour : Colour{0.128, 0.567, 0.551}, 1};
                         });
    std::array<char, 16> percent{};
    std::snprintf(percent.data(), percent.size(), "%.1f", 100 * outside);
    page.drawFoot(text("target outside the source: ", percent.data(), " % of its area in this cut"), size + 12);
}

} // namespace

std::string titleOf(const PictureSide& side)
{
    return text(side.name, ", ", side.mesh.nodeCount(), " nodes");
}

void writePicture(const PictureSide& source, const PictureSide& target, const std::filesystem::path& path)
{
    const std::vector<double> sourceValues = shownValues(source.field);
    const std::vector<double> targetValues = shownValues(target.field);
    const CutPair pair = mostTellingCut(CutMesh(source.mesh, sourceValues), CutMesh(target.mesh, targetValues),
                                        target.mesh, targetValues);

    PicturePage page(source.field, pair.plane, boxAround(pair.source.points, pair.target.points));
    const Raster sourceRaster = page.rasterize(pair.source);
    const Raster targetRaster = page.rasterize(pair.target);
    const std::optional<ColourScale> scale = scaleOfSeen(sourceRaster, targetRaster);
    page.drawTitle(page.sourcePanel(), "source", titleOf(source));
    page.drawCut(page.sourcePanel(), pair.source, sourceRaster, sourceRaster, scale);
    page.drawTitle(page.targetPanel(), "target", titleOf(target));
    page.drawCut(page.targetPanel(), pair.target, targetRaster, sourceRaster, scale);
    page.drawScale(scale);
    drawFoot(page, partOutside(sourceRaster, targetRaster));
    page.write(path);
}

} // namespace veltrane
