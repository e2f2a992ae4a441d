/// The rules by which a transfer is judged.
#ifndef VELTRANE_COMMAND_REQUIREMENTS_H
#define VELTRANE_COMMAND_REQUIREMENTS_H

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace veltrane
{

enum class Rule
{
    far,        ///< share of what is to receive values and is too far from the source
    near,       ///< share that takes values from a notable distance
    distance,   ///< the largest distance that values come from, in lengths of a source element
    validation, ///< the largest relative L2 difference of a field that was mapped back
    integral,   ///< the largest relative difference of a field's integrals
    peak        ///< the largest loss at an end of a field's range, as part of it
};

inline constexpr std::size_t ruleCount = 6;

/// What is known of a rule.
struct RuleKey
{
    Rule rule;
    std::string_view key;
    double limit; ///< the figure may not be larger than that, unless something else is required
    std::string_view meaning;
};

extern const std::array<RuleKey, ruleCount> ruleKeys; ///< in the order of the enumeration

enum class Relation
{
    below,
    atMost,
    equal
};

std::string_view relationText(Relation relation);

struct Requirement
{
    Rule rule;
    Relation relation;
    double limit;

    bool isKeptBy(double figure) const; ///< never by what is not a number
};

/// "validation<0.02,far=0". Throws InvalidOption.
std::vector<Requirement> parseRequirements(const std::string& words);

/// For the help texts.
std::string requirementsHelp();

} // namespace veltrane

#endif
