/// Formulas in x, y and z.
#ifndef VELTRANE_COMMAND_FORMULA_H
#define VELTRANE_COMMAND_FORMULA_H

#include "Field.h"
#include "Mesh.h"

#include <string>

namespace veltrane
{

/// A field given by a formula for each of its components: "displacement=x*y, 0, sin(z)".
struct Formula
{
    std::string name;
    std::string expression;

    /// Throws InvalidOption if the text is not "name=expression".
    explicit Formula(const std::string& text);

    /// Its values at the nodes of a mesh. Throws InvalidOption, with the place, if the expression cannot be understood.
    Field at(const Mesh& mesh) const;
};

/// For the help texts.
inline constexpr const char* formulaHelp =
    "Formulas know x, y, z, pi, e, + - * / ^, comparisons, a ? b : c, and among others sqrt, abs, min, max, exp,\n"
    "ln, log10, sin, cos, tan, asin, acos, atan, atan2, sinh, cosh, tanh; components are separated by commas.\n";

} // namespace veltrane

#endif
