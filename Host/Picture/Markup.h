/// Text and graphics within HTML and SVG.
#ifndef VELTRANE_HOST_MARKUP_H
#define VELTRANE_HOST_MARKUP_H

#include <string>

namespace veltrane
{

/// With what HTML would take for its own written otherwise. What is no UTF-8 becomes question marks.
std::string escaped(const std::string& words);

/// The content of an SVG file as cairo writes it, for a place within a page: its names begin with the given one,
/// numbers have no more digits than can be seen, and ink has the colour of the page's text.
std::string embedded(const std::string& svgFile, const std::string& name);

} // namespace veltrane

#endif
