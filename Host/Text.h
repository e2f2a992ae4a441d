/// Sentences put together from parts.
#ifndef VELTRANE_HOST_TEXT_H
#define VELTRANE_HOST_TEXT_H

#include <locale>
#include <span>
#include <sstream>
#include <string>

namespace veltrane
{

/// The parts written one after another, numbers as in the C locale whatever the host's.
template <typename... Parts> std::string text(const Parts&... parts)
{
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    (stream << ... << parts);
    return stream.str();
}

/// "(x, y, z)"
inline std::string placeText(std::span<const float, 3> position)
{
    return text("(", position[0], ", ", position[1], ", ", position[2], ")");
}

} // namespace veltrane

#endif
