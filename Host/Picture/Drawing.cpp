#include "Drawing.h"

#include "FileErrors.h"
#include "Markup.h"
#include "Text.h"

#include <cairo-svg.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>
#include <numbers>
#include <utility>

namespace veltrane
{
namespace
{

cairo_status_t append(void* written, const unsigned char* data, unsigned int length)
{
    static_cast<std::string*>(written)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

cairo_surface_t* makeSurface(DrawingFormat format, int width, int height, std::string& written)
{
    return format == DrawingFormat::pixels ? cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height)
                                           : cairo_svg_surface_create_for_stream(append, &written, width, height);
}

std::string anchorOf(Align align)
{
    return align == Align::left ? "" : align == Align::centre ? " text-anchor=\"middle\"" : " text-anchor=\"end\"";
}

} // namespace

Drawing::Drawing(DrawingFormat format, int width, int height)
    : format_(format), width_(width), height_(height), written_(std::make_unique<std::string>()),
      surface_(makeSurface(format, width, height, *written_)), context_(cairo_create(surface_.get()))
{
    if (format == DrawingFormat::pixels)
    {
        cairo_set_source_rgb(context_.get(), 1, 1, 1);
        cairo_paint(context_.get());
    }
    cairo_set_line_cap(context_.get(), CAIRO_LINE_CAP_ROUND);
}

void Drawing::setColour(const Colour& colour, double opacity)
{
    cairo_set_source_rgba(context_.get(), colour[0], colour[1], colour[2], opacity);
}

void Drawing::text(double x, double y, const std::string& words, double size, Align align, bool isBold,
                   const Colour& colour)
{
    if (format_ == DrawingFormat::vectors)
    {
        words_ +=
            veltrane::text("<text x=\"", std::round(x), "\" y=\"", std::round(y), "\" font-size=\"", size, "\"",
                           anchorOf(align), isBold ? " font-weight=\"bold\"" : "", ">", escaped(words), "</text>\n");
        return;
    }
    cairo_t* context = context_.get();
    cairo_select_font_face(context, "sans-serif", CAIRO_FONT_SLANT_NORMAL,
                           isBold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(context, size);
    cairo_text_extents_t extents;
    cairo_text_extents(context, words.c_str(), &extents);
    const double part = align == Align::left ? 0 : align == Align::centre ? 0.5 : 1;
    cairo_move_to(context, std::round(x - part * extents.x_advance), y);
    setColour(colour);
    cairo_show_text(context, words.c_str());
}

void Drawing::line(double x1, double y1, double x2, double y2, double width, const Colour& colour, double opacity)
{
    const Segment segment{{{x1, y1}, {x2, y2}}};
    lines(std::span(&segment, 1), width, colour, opacity);
}

void Drawing::lines(std::span<const Segment> segments, double width, const Colour& colour, double opacity)
{
    cairo_t* context = context_.get();
    cairo_set_line_width(context, width);
    setColour(colour, opacity);
    cairo_new_path(context);
    for (const auto& [from, to] : segments)
    {
        cairo_move_to(context, from[0], from[1]);
        cairo_line_to(context, to[0], to[1]);
    }
    cairo_stroke(context);
}

void Drawing::disc(double x, double y, double radius, const Colour& colour)
{
    setColour(colour);
    cairo_new_path(context_.get());
    cairo_arc(context_.get(), x, y, radius, 0, 2 * std::numbers::pi);
    cairo_fill(context_.get());
}

void Drawing::circle(double x, double y, double radius, double width, const Colour& colour)
{
    cairo_t* context = context_.get();
    cairo_set_line_width(context, width);
    setColour(colour);
    cairo_new_sub_path(context); // without a line from where the last one ended
    cairo_arc(context, x, y, radius, 0, 2 * std::numbers::pi);
    cairo_stroke(context);
}

void Drawing::rectangle(double x, double y, double width, double height, const Colour& colour)
{
    setColour(colour);
    cairo_rectangle(context_.get(), x, y, width, height);
    cairo_fill(context_.get());
}

void Drawing::addPath(const Loops& loops)
{
    cairo_new_path(context_.get());
    for (const Loop& loop : loops)
    {
        cairo_new_sub_path(context_.get());
        std::ranges::for_each(loop,
                              [&](const PlanePoint& point) { cairo_line_to(context_.get(), point[0], point[1]); });
        cairo_close_path(context_.get());
    }
}

void Drawing::fill(const Loops& loops, const Colour& colour)
{
    if (!loops.empty())
    {
        setColour(colour);
        addPath(loops);
        cairo_fill(context_.get());
    }
}

void Drawing::outline(const Loops& loops, double width, const Colour& colour)
{
    cairo_set_line_width(context_.get(), width);
    setColour(colour);
    addPath(loops);
    cairo_stroke(context_.get());
}

void Drawing::hatch(const Loops& within, const Loops& without, const Colour& colour)
{
    constexpr double spacing = 14;
    cairo_t* context = context_.get();
    cairo_save(context);
    addPath(within);
    cairo_clip(context);
    addPath(without);
    cairo_rectangle(context, 0, 0, width_, height_);
    cairo_set_fill_rule(context, CAIRO_FILL_RULE_EVEN_ODD);
    cairo_clip(context);
    double left = std::numeric_limits<double>::infinity();
    double top = left;
    double right = -left;
    double bottom = -left;
    for (const Loop& loop : within)
    {
        for (const auto& [x, y] : loop)
        {
            left = std::min(left, x);
            right = std::max(right, x);
            top = std::min(top, y);
            bottom = std::max(bottom, y);
        }
    }
    std::vector<Segment> stripes;
    for (double x = left - (bottom - top); x < right; x += spacing)
    {
        stripes.push_back({{{x, bottom}, {x + bottom - top, top}}});
    }
    lines(stripes, spacing / 2 * std::numbers::sqrt2 / 2, colour);
    cairo_restore(context);
}

std::string Drawing::finishedSvg()
{
    context_.reset();
    cairo_surface_finish(surface_.get());
    return std::exchange(*written_, {});
}

std::string Drawing::svg(const std::string& name, const std::string& description)
{
    return veltrane::text("<svg role=\"img\" viewBox=\"0 0 ", width_, " ", height_, "\" aria-label=\"",
                          escaped(description), "\">\n", embedded(finishedSvg(), name),
                          "<g fill=\"currentColor\" font-family=\"sans-serif\">\n", words_, "</g>\n</svg>\n");
}

void Drawing::write(const std::filesystem::path& path)
{
    const cairo_status_t status = cairo_surface_write_to_png(surface_.get(), path.c_str());
    if (status != CAIRO_STATUS_SUCCESS)
    {
        throw CannotWrite(cairo_status_to_string(status));
    }
}

} // namespace veltrane
