#include "PlacementArguments.h"

#include "Errors.h"
#include "Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <sstream>
#include <string_view>

namespace veltrane
{
namespace
{

std::optional<double> toNumber(std::string_view word)
{
    double number = 0;
    const auto [end, failure] = std::from_chars(word.data(), word.data() + word.size(), number);
    const bool isNumber = failure == std::errc() && end == word.data() + word.size() && std::isfinite(number);
    return isNumber ? std::optional(number) : std::nullopt;
}

Point3 parseTranslation(const std::string& argument)
{
    Point3 translation{};
    std::istringstream stream(argument + ',');
    std::size_t count = 0;
    for (std::string word; std::getline(stream, word, ','); ++count)
    {
        const auto number = toNumber(word);
        if (!number || count == translation.size())
        {
            count = 0;
            break;
        }
        translation[count] = *number;
    }
    if (count != translation.size())
    {
        throw InvalidOption(text("--translate ", argument, " is not X,Y,Z, three numbers separated by commas"));
    }
    return translation;
}

Rotation parseRotation(const std::string& argument)
{
    constexpr std::string_view axes = "xyz";
    const std::size_t axis = argument.size() > 2 && argument[1] == ',' ? axes.find(argument[0]) : std::string::npos;
    const auto angle = axis == std::string::npos ? std::nullopt : toNumber(std::string_view(argument).substr(2));
    if (!angle)
    {
        throw InvalidOption(text("--rotate ", argument, " is not AXIS,ANGLE, such as z,90 with x, y or z and degrees"));
    }
    return rotationAbout(static_cast<int>(axis), *angle);
}

} // namespace

void PlacementArguments::addTo(CLI::App& command)
{
    command
        .add_option("--scale", scale, "scale the source's coordinates by a factor, from\nmetres to millimetres by 1000")
        ->type_name("FACTOR");
    command
        .add_option("--rotate", rotations,
                    "turn the source about x, y or z by an angle in degrees,\n"
                    "with its vectors and tensors; may be repeated")
        ->type_name("AXIS,ANGLE")
        ->expected(1)
        ->take_all()
        ->allow_extra_args(false);
    command.add_option("--translate", translation, "move the source, after it has been scaled and turned")
        ->type_name("X,Y,Z");
    command
        .add_option("--unturned", unturned,
                    "a field of 3, 6 or 9 components that does not turn with\n"
                    "the source, may be repeated")
        ->type_name("FIELD")
        ->expected(1)
        ->take_all()
        ->allow_extra_args(false);
}

Placement PlacementArguments::placement() const
{
    Placement placement;
    if (!(scale > 0) || !std::isfinite(scale))
    {
        throw InvalidOption(text("--scale ", scale, " is not a number above 0"));
    }
    placement.scale = scale;
    for (const std::string& argument : rotations)
    {
        placement.rotation = parseRotation(argument) * placement.rotation;
    }
    if (!translation.empty())
    {
        placement.translation = parseTranslation(translation);
    }
    if (!unturned.empty() && rotations.empty())
    {
        throw InvalidOption("--unturned has an effect only together with --rotate");
    }
    return placement;
}

void PlacementArguments::turn(std::vector<Field>& fields) const
{
    for (const std::string& name : unturned)
    {
        if (std::ranges::find(fields, name, &Field::name) == fields.end())
        {
            throw InvalidOption(text("--unturned: there is no field '", name, "' among those to be transferred"));
        }
    }
    const Placement placement = this->placement();
    for (Field& field : fields)
    {
        if (!rotations.empty() && std::ranges::find(unturned, field.name()) == unturned.end())
        {
            field = turned(field, placement.rotation);
        }
    }
}

} // namespace veltrane
