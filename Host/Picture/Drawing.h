/// Drawing into a picture file.
#ifndef VELTRANE_HOST_DRAWING_H
#define VELTRANE_HOST_DRAWING_H

#include "ColourScale.h"

#include <cairo.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace veltrane
{

/// Pixels with red, green, blue and opacity.
struct Pixel
{
    Colour colour;
    double opacity;
};

enum class Align
{
    left,
    centre,
    right
};

/// A white canvas; places are in pixels from its upper left corner.
class Drawing
{
public:
    Drawing(int width, int height);

    void text(double x, double y, const std::string& words, double size, Align align = Align::left, bool isBold = false,
              const Colour& colour = {0.1, 0.1, 0.1});
    void line(double x1, double y1, double x2, double y2, double width, const Colour& colour, double opacity = 1);
    void disc(double x, double y, double radius, const Colour& colour);
    void circle(double x, double y, double radius, double width, const Colour& colour);
    void rectangle(double x, double y, double width, double height, const Colour& colour);

    /// Puts an image of so many columns and rows into a rectangle; its pixels are asked for by column and row.
    void image(double x, double y, double width, double height, int columns, int rows,
               const std::function<Pixel(int column, int row)>& pixel);

    /// Throws CannotWrite with nothing but the reason.
    void write(const std::filesystem::path& path) const;

private:
    struct Free
    {
        void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
        void operator()(cairo_t* context) const { cairo_destroy(context); }
    };

    std::unique_ptr<cairo_surface_t, Free> surface_;
    std::unique_ptr<cairo_t, Free> context_;
};

} // namespace veltrane

#endif
