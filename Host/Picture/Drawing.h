/// Drawing into a picture file, or into a part of a page.
#ifndef VELTRANE_HOST_DRAWING_H
#define VELTRANE_HOST_DRAWING_H

#include "ColourScale.h"
#include "Regions.h"

#include <cairo.h>

#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace veltrane
{

enum class Align
{
    left,
    centre,
    right
};

/// A line from one place to another.
using Segment = std::array<PlanePoint, 2>;

enum class DrawingFormat
{
    pixels, ///< on white
    vectors ///< on whatever is beneath
};

/// What is drawn in this colour is of the page's own colour of text in vector graphics, for light and dark pages.
inline constexpr Colour ink{0.1, 0.1, 0.1};

/// A canvas; places are in pixels from its upper left corner.
class Drawing
{
public:
    Drawing(DrawingFormat format, int width, int height);

    /// \param colour  of pixels; words of vector graphics are ink
    void text(double x, double y, const std::string& words, double size, Align align = Align::left, bool isBold = false,
              const Colour& colour = ink);
    void line(double x1, double y1, double x2, double y2, double width, const Colour& colour, double opacity = 1);
    void lines(std::span<const Segment> segments, double width, const Colour& colour, double opacity = 1);
    void disc(double x, double y, double radius, const Colour& colour);
    void circle(double x, double y, double radius, double width, const Colour& colour);
    void rectangle(double x, double y, double width, double height, const Colour& colour);
    void fill(const Loops& loops, const Colour& colour);

    void outline(const Loops& loops, double width, const Colour& colour);

    /// Diagonal stripes over what is within some loops and outside of others.
    void hatch(const Loops& within, const Loops& without, const Colour& colour);

    /// As a PNG or an SVG file. Throws CannotWrite with nothing but the reason.
    void write(const std::filesystem::path& path);

    /// Vector graphics as an element of an HTML page. There must be no other one with the same name on the page.
    ///
    /// \param description  for those who do not see it
    std::string svg(const std::string& name, const std::string& description);

private:
    struct Free
    {
        void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
        void operator()(cairo_t* context) const { cairo_destroy(context); }
    };

    void setColour(const Colour& colour, double opacity = 1);
    void addPath(const Loops& loops);
    std::string finishedSvg();

    DrawingFormat format_;
    int width_;
    int height_;
    std::unique_ptr<std::string> written_; ///< of vector graphics; stays where it is when the drawing is moved
    std::string words_;                    ///< of vector graphics, which have them as text
    std::unique_ptr<cairo_surface_t, Free> surface_;
    std::unique_ptr<cairo_t, Free> context_;
};

} // namespace veltrane

#endif
