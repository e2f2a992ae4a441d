/// Sentences put together from parts.
#ifndef VELTRANE_HOST_TEXT_H
#define VELTRANE_HOST_TEXT_H

#include <locale>
#include <span>
#include <sstream>
#include <string>
#include <string_view>

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

/// The text in one line, without blanks at its ends.
inline std::string oneLine(std::string_view lines)
{
    std::string line;
    bool gap = false;
    for (const char character : lines)
    {
        if (character == '\n' || character == ' ')
        {
            gap = !line.empty();
            continue;
        }
        if (gap)
        {
            line += ' ';
            gap = false;
        }
        line += character;
    }
    return line;
}

/// "(x, y, z)"
inline std::string placeText(std::span<const float, 3> position)
{
    return text("(", position[0], ", ", position[1], ", ", position[2], ")");
}

} // namespace veltrane

#endif
