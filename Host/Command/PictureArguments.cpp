#include "PictureArguments.h"

#include "Errors.h"
#include "Text.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace veltrane
{
namespace
{

std::optional<double> numberOf(std::string_view word)
{
    double number = 0;
    const auto [end, failure] = std::from_chars(word.data(), word.data() + word.size(), number);
    return failure == std::errc() && end == word.data() + word.size() ? std::optional(number) : std::nullopt;
}

/// "x=0.3"
std::optional<CutPlane> parsePlane(const std::string& word)
{
    if (word.empty())
    {
        return std::nullopt;
    }
    const std::size_t axis = std::string_view("xyz").find(word.front());
    const auto position = word.size() > 2 && word[1] == '=' ? numberOf(std::string_view(word).substr(2)) : std::nullopt;
    if (axis == std::string_view::npos || !position)
    {
        throw InvalidOption(text("--picture-plane ", word, " is not an axis and a number, such as x=0.3"));
    }
    return CutPlane{axis, *position};
}

/// "0,120"
std::optional<std::array<double, 2>> parseRange(const std::string& word)
{
    if (word.empty())
    {
        return std::nullopt;
    }
    const std::size_t comma = std::min(word.find(','), word.size());
    const auto first = numberOf(std::string_view(word).substr(0, comma));
    const auto last = comma < word.size() ? numberOf(std::string_view(word).substr(comma + 1)) : std::nullopt;
    if (!first || !last || !(*first < *last))
    {
        throw InvalidOption(text("--picture-range ", word, " is not two numbers, the smaller first, such as 0,120"));
    }
    return std::array{*first, *last};
}

bool isAtNodes(const Field& field)
{
    return field.location() == Location::nodes;
}

/// A number from 1, or an axis of a vector.
std::optional<int> componentOf(const Field& field, std::string_view word)
{
    if (field.componentCount() == 3 && word.size() == 1 && std::string_view("xyz").find(word) != std::string_view::npos)
    {
        return static_cast<int>(std::string_view("xyz").find(word));
    }
    for (int component = 0; component < field.componentCount(); ++component)
    {
        if (word == text(component + 1))
        {
            return component;
        }
    }
    return std::nullopt;
}

PictureView parseField(const std::string& word, std::span<const Field> fields)
{
    const auto isNamed = [&](const std::string& name) {
        return std::ranges::find_if(fields,
                                    [&](const Field& field) { return isAtNodes(field) && field.name() == name; });
    };
    if (const auto whole = isNamed(word); whole != fields.end())
    {
        return {static_cast<std::size_t>(whole - fields.begin()), {}};
    }
    const std::size_t colon = word.rfind(':');
    const auto found = colon == std::string::npos ? fields.end() : isNamed(word.substr(0, colon));
    if (found == fields.end())
    {
        throw InvalidOption(text("--picture-field ", word, " is none of the fields at nodes that are transferred"));
    }
    const std::optional<int> component = componentOf(*found, std::string_view(word).substr(colon + 1));
    if (!component)
    {
        throw InvalidOption(text("--picture-field ", word, ": '", found->name(), "' has the components 1 to ",
                                 found->componentCount(), found->componentCount() == 3 ? ", or x, y and z" : ""));
    }
    return {static_cast<std::size_t>(found - fields.begin()), {.component = component}};
}

} // namespace

void PictureArguments::addTo(CLI::App& command)
{
    command
        .add_option("--picture-plane", plane,
                    "where pictures are cut, such as x=0.3 (through the peak\nof the field that is drawn)")
        ->type_name("AXIS=PLACE");
    command
        .add_option("--picture-field", field,
                    "which field the picture shows, with :1, :2 ... or :x,\n"
                    ":y, :z for a component instead of the magnitude (the\n"
                    "first field of one component)")
        ->type_name("NAME[:COMPONENT]");
    command.add_option("--picture-range", range, "values at the ends of the colour scale, such as 0,120")
        ->type_name("MIN,MAX");
}

void PictureArguments::check() const
{
    parsePlane(plane);
    parseRange(range);
}

std::optional<PictureView> PictureArguments::choose(std::span<const Field> fields) const
{
    if (std::ranges::none_of(fields, isAtNodes))
    {
        return std::nullopt;
    }
    const auto scalar = std::ranges::find_if(fields, [](const Field& candidate)
                                             { return isAtNodes(candidate) && candidate.componentCount() == 1; });
    const auto first = scalar != fields.end() ? scalar : std::ranges::find_if(fields, isAtNodes);
    PictureView view =
        field.empty() ? PictureView{static_cast<std::size_t>(first - fields.begin()), {}} : parseField(field, fields);
    view.choice.plane = parsePlane(plane);
    view.choice.range = parseRange(range);
    return view;
}

} // namespace veltrane
