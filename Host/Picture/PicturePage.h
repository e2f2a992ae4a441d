/// What pictures of transfers have in common.
#ifndef VELTRANE_HOST_PICTURE_PAGE_H
#define VELTRANE_HOST_PICTURE_PAGE_H

#include "Cut.h"
#include "Drawing.h"
#include "Field.h"
#include "Raster.h"
#include "Regions.h"

#include <optional>
#include <string>
#include <vector>

namespace veltrane
{

constexpr Colour outsideColour{0.85, 0.10, 0.10};
constexpr Colour withoutValue{0.80, 0.80, 0.80};

/// What is drawn, where something is said about it.
struct PictureChoice
{
    std::optional<CutPlane> plane{};
    std::optional<int> component{};               ///< of the field, from 0; otherwise its magnitude
    std::optional<std::array<double, 2>> range{}; ///< of the colour scale
};

/// The values of a component of a field or, without one, its only component or its magnitudes; not a number where there
/// is no usable one.
std::vector<double> shownValues(const Field& field, std::optional<int> component = {});

/// "stress, magnitude", "stress xy"
std::string shownName(const Field& field, std::optional<int> component);

/// Of a value in a scale, if it is usable and there is one.
Colour colourOf(const std::optional<ColourScale>& scale, double value);

/// In three digits.
std::string shortNumber(double number);

/// "z = 16", without the digits that only keep the cut beside the faces of elements.
std::string planeText(const CutPlane& plane, double size);

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
    PlanePoint operator()(const PlanePoint& point) const { return {x(point), y(point)}; }
};

/// A cut with what follows from it.
struct CutView
{
    explicit CutView(Cut given) : cut(std::move(given)), regions(cut) {}
    CutView(const CutView&) = delete;
    CutView& operator=(const CutView&) = delete;

    Cut cut;
    CutRegions regions; ///< of the cut
};

/// Coarse pixels of a cut, for what need not be exact: shares of areas and ranges of values.
Raster sampled(const Cut& cut, const PlaneBox& box);

/// Side by side panels of the same part of a plane; beneath them colour scales, and at the foot the axes and a line of
/// text.
class PicturePage
{
public:
    PicturePage(DrawingFormat format, std::size_t panelCount, const std::string& title, const CutPlane& plane,
                const PlaneBox& box);

    Drawing& drawing() { return drawing_; }
    const Panel& panel(std::size_t index) const { return panels_[index]; }

    void drawTitle(const Panel& panel, const std::string& title, const std::string& content);

    /// Colours what is covered in bands of values, and draws the outline of the cut and the edges of its elements, the
    /// paler the denser they are.
    void drawCut(const Panel& panel, const CutView& view, const std::optional<ColourScale>& scale);
    /// Colours what is covered, whatever the values.
    void drawArea(const Panel& panel, const CutView& view, const Colour& colour);
    void drawOutline(const Panel& panel, const CutView& view);

    /// Hatches what of one cut is outside of another.
    void hatchOutside(const Panel& panel, const CutView& within, const CutView& without);

    /// A bar with numbers beneath these panels, or that there are no values.
    void drawScale(std::size_t firstPanel, std::size_t lastPanel, const std::optional<ColourScale>& scale);

    /// Beneath a panel.
    ///
    /// \param indent  what is left free for a sign before it
    void drawFoot(std::size_t panel, const std::string& sentence, double indent = 0);

    /// The middle of the sign before the line at the foot.
    PlanePoint footSign(std::size_t panel) const;

private:
    Loops placed(const Panel& panel, const Loops& loops) const;
    void drawEdges(const Panel& panel, const Cut& cut);
    void drawAxes(const CutPlane& plane);

    DrawingFormat format_;
    std::vector<Panel> panels_;
    double columnWidth_;
    double bottom_; ///< of the panels
    Drawing drawing_;
};

} // namespace veltrane

#endif
