/// What pictures of transfers have in common.
#ifndef VELTRANE_HOST_PICTURE_PAGE_H
#define VELTRANE_HOST_PICTURE_PAGE_H

#include "Cut.h"
#include "Drawing.h"
#include "Field.h"
#include "Raster.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace veltrane
{

constexpr Colour ink{0.1, 0.1, 0.1};
constexpr Colour outsideColour{0.85, 0.10, 0.10};
constexpr Colour withoutValue{0.80, 0.80, 0.80};

/// The values of a field, or their magnitudes if it has several components; not a number where there is no usable one.
std::vector<double> shownValues(const Field& field);

/// Of a value in a scale, if it is usable and there is one.
Colour colourOf(const std::optional<ColourScale>& scale, double value);

/// In three digits.
std::string shortNumber(double number);

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

/// Side by side a panel for the source and one for the target, of the same part of the plane; to the right of them the
/// colour scale, and at the foot the axes and a line of text.
class PicturePage
{
public:
    /// \param field  what is shown
    PicturePage(const Field& field, const CutPlane& plane, const PlaneBox& box);

    Drawing& drawing() { return drawing_; }
    const Panel& sourcePanel() const { return sourcePanel_; }
    const Panel& targetPanel() const { return targetPanel_; }

    /// A cut as it is seen in a panel.
    Raster rasterize(const Cut& cut) const;

    void drawTitle(const Panel& panel, const std::string& title, const std::string& content);

    /// Colours what is covered, and draws the outline of the cut and the edges of its elements.
    ///
    /// \param surrounding  what is hatched is outside of it
    void drawCut(const Panel& panel, const Cut& cut, const Raster& raster, const Raster& surrounding,
                 const std::optional<ColourScale>& scale);
    void drawOutline(const Panel& panel, const Cut& cut);

    /// A bar with numbers, or that there are no values.
    void drawScale(const std::optional<ColourScale>& scale);

    /// \param indent  what is left free for a sign before it
    void drawFoot(const std::string& sentence, double indent = 0);

    /// The middle of the sign before the line at the foot.
    PlanePoint footSign() const;

    void write(const std::filesystem::path& path) const { drawing_.write(path); }

private:
    void drawEdges(const Panel& panel, const Cut& cut, const std::vector<PlaneEdge>& edges, double width,
                   double opacity);
    void drawAxes(const CutPlane& plane);

    Panel sourcePanel_;
    Panel targetPanel_;
    double bottom_; ///< of the panels
    Drawing drawing_;
};

} // namespace veltrane

#endif
