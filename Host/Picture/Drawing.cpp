#include "Drawing.h"

#include "FileErrors.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <numbers>

namespace veltrane
{

Drawing::Drawing(int width, int height)
    : surface_(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height)), context_(cairo_create(surface_.get()))
{
    cairo_set_source_rgb(context_.get(), 1, 1, 1);
    cairo_paint(context_.get());
    cairo_set_line_cap(context_.get(), CAIRO_LINE_CAP_ROUND);
}

void Drawing::text(double x, double y, const std::string& words, double size, Align align, bool isBold,
                   const Colour& colour)
{
    cairo_t* context = context_.get();
    cairo_select_font_face(context, "sans-serif", CAIRO_FONT_SLANT_NORMAL,
                           isBold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(context, size);
    cairo_text_extents_t extents;
    cairo_text_extents(context, words.c_str(), &extents);
    const double part = align == Align::left ? 0 : align == Align::centre ? 0.5 : 1;
    cairo_move_to(context, std::round(x - part * extents.x_advance), y);
    cairo_set_source_rgb(context, colour[0], colour[1], colour[2]);
    cairo_show_text(context, words.c_str());
}

void Drawing::line(double x1, double y1, double x2, double y2, double width, const Colour& colour, double opacity)
{
    cairo_t* context = context_.get();
    cairo_set_line_width(context, width);
    cairo_set_source_rgba(context, colour[0], colour[1], colour[2], opacity);
    cairo_move_to(context, x1, y1);
    cairo_line_to(context, x2, y2);
    cairo_stroke(context);
}

void Drawing::disc(double x, double y, double radius, const Colour& colour)
{
    cairo_t* context = context_.get();
    cairo_set_source_rgb(context, colour[0], colour[1], colour[2]);
    cairo_new_path(context);
    cairo_arc(context, x, y, radius, 0, 2 * std::numbers::pi);
    cairo_fill(context);
}

void Drawing::circle(double x, double y, double radius, double width, const Colour& colour)
{
    cairo_t* context = context_.get();
    cairo_set_line_width(context, width);
    cairo_set_source_rgb(context, colour[0], colour[1], colour[2]);
    cairo_new_sub_path(context); // without a line from where the last one ended
    cairo_arc(context, x, y, radius, 0, 2 * std::numbers::pi);
    cairo_stroke(context);
}

void Drawing::rectangle(double x, double y, double width, double height, const Colour& colour)
{
    cairo_t* context = context_.get();
    cairo_set_source_rgb(context, colour[0], colour[1], colour[2]);
    cairo_rectangle(context, x, y, width, height);
    cairo_fill(context);
}

void Drawing::image(double x, double y, double width, double height, int columns, int rows,
                    const std::function<Pixel(int column, int row)>& pixel)
{
    const std::unique_ptr<cairo_surface_t, Free> surface(
        cairo_image_surface_create(CAIRO_FORMAT_ARGB32, columns, rows));
    unsigned char* data = cairo_image_surface_get_data(surface.get());
    const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(surface.get()));
    for (int row = 0; row < rows; ++row)
    {
        for (int column = 0; column < columns; ++column)
        {
            // 32 bits: opacity, and the colours multiplied by it.
            const Pixel shown = pixel(column, row);
            const auto part = [](double value) { return static_cast<std::uint32_t>(std::lround(255 * value)); };
            const auto colour = [&](std::size_t i) { return part(shown.colour[i] * shown.opacity); };
            const std::uint32_t bits = part(shown.opacity) << 24 | colour(0) << 16 | colour(1) << 8 | colour(2);
            std::memcpy(data + static_cast<std::size_t>(row) * stride + static_cast<std::size_t>(column) * sizeof bits,
                        &bits, sizeof bits);
        }
    }
    cairo_surface_mark_dirty(surface.get());

    cairo_t* context = context_.get();
    cairo_save(context);
    cairo_translate(context, x, y);
    cairo_scale(context, width / columns, height / rows);
    cairo_set_source_surface(context, surface.get(), 0, 0);
    cairo_pattern_set_filter(cairo_get_source(context), CAIRO_FILTER_BEST);
    cairo_paint(context);
    cairo_restore(context);
}

void Drawing::write(const std::filesystem::path& path) const
{
    const cairo_status_t status = cairo_surface_write_to_png(surface_.get(), path.c_str());
    if (status != CAIRO_STATUS_SUCCESS)
    {
        throw CannotWrite(cairo_status_to_string(status));
    }
}

} // namespace veltrane
