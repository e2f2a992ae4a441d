#include "Formula.h"

#include "Errors.h"
#include "Text.h"

#include <muParser.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <regex>
#include <utility>
#include <vector>

namespace veltrane
{
namespace
{

std::string trimmed(const std::string& text)
{
    const std::size_t begin = text.find_first_not_of(' ');
    return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(' ') + 1 - begin);
}

/// An expression whose variables can be set.
class Expression
{
public:
    explicit Expression(const std::string& expression)
    {
        parser_.DefineVar("x", &position_[0]);
        parser_.DefineVar("y", &position_[1]);
        parser_.DefineVar("z", &position_[2]);
        parser_.DefineConst("pi", std::numbers::pi);
        parser_.DefineConst("e", std::numbers::e);
        parser_.SetExpr(expression);
    }
    Expression(const Expression&) = delete; // the parser knows where the position is
    Expression& operator=(const Expression&) = delete;

    /// One value per component.
    std::span<const double> at(const std::array<double, 3>& position)
    {
        position_ = position;
        int count = 0;
        const double* values = parser_.Eval(count);
        return {values, static_cast<std::size_t>(count)};
    }

private:
    std::array<double, 3> position_{};
    mu::Parser parser_;
};

/// As exact as the file has it.
std::array<double, 3> positionOf(const Mesh& mesh, int node)
{
    const std::size_t first = 3 * static_cast<std::size_t>(node);
    std::array<double, 3> position{};
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        position[axis] = mesh.exactCoordinates().empty() ? double{mesh.coordinates()[first + axis]}
                                                         : mesh.exactCoordinates()[first + axis];
    }
    return position;
}

} // namespace

Formula::Formula(const std::string& text)
{
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0 || equals + 1 == text.size())
    {
        throw InvalidOption(veltrane::text("--exact '", text, "' is not a name, an equal sign and a formula"));
    }
    name = trimmed(text.substr(0, equals));
    expression = trimmed(text.substr(equals + 1));
}

Field Formula::at(const Mesh& mesh) const
{
    try
    {
        Expression parsed(expression);
        std::vector<double> values;
        std::size_t componentCount = 1;
        for (int node = 0; node < mesh.nodeCount(); ++node)
        {
            const std::span<const double> components = parsed.at(positionOf(mesh, node));
            componentCount = components.size();
            values.insert(values.end(), components.begin(), components.end());
        }
        return Field(name, Location::nodes, static_cast<int>(componentCount), std::move(values));
    }
    catch (const mu::Parser::exception_type& error)
    {
        // The parser counts from 0 in its own words.
        const std::string reason = std::regex_replace(error.GetMsg(), std::regex(" at position -?[0-9]+"), "");
        const std::size_t character = std::min(static_cast<std::size_t>(error.GetPos()), expression.size()) + 1;
        throw InvalidOption(
            text("the formula '", expression, "' of ", name, " is wrong at character ", character, ": ", reason));
    }
}

} // namespace veltrane
