#include "Requirements.h"

#include "Errors.h"
#include "Text.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <sstream>

namespace veltrane
{

const std::array<RuleKey, ruleCount> ruleKeys{
    {{Rule::far, "far", 0, "share of the target's nodes or points that are far from the source"},
     {Rule::near, "near", 0.1, "share that takes values from more than 0.02 of a source cell's length away"},
     {Rule::distance, "distance", 0.25, "the farthest that values come from, in lengths of a source cell"},
     {Rule::validation, "validation", 0.1, "largest relative L2 difference of a field that was mapped back"},
     {Rule::integral, "integral", 0.02, "largest difference of a field's integrals, relative to its magnitude's"},
     {Rule::peak, "peak", 0.05, "largest loss at an end of a field's range, as part of the range"}}};

namespace
{

std::optional<Rule> ruleOf(std::string_view key)
{
    const auto found = std::ranges::find(ruleKeys, key, &RuleKey::key);
    return found == ruleKeys.end() ? std::nullopt : std::optional(found->rule);
}

std::string keys()
{
    std::string words;
    for (const RuleKey& rule : ruleKeys)
    {
        words += text(words.empty() ? "" : ", ", rule.key);
    }
    return words;
}

Requirement parseRequirement(const std::string& word)
{
    const std::size_t sign = word.find_first_of("<=");
    const auto fail = [&]
    {
        throw InvalidOption(
            text("--require: '", word, "' is not a rule such as validation<0.02 or far=0; its keys are ", keys()));
    };
    if (sign == std::string::npos)
    {
        fail();
    }
    const bool isAtMost = word.compare(sign, 2, "<=") == 0;
    const Relation relation = isAtMost ? Relation::atMost : word[sign] == '<' ? Relation::below : Relation::equal;
    const std::optional<Rule> rule = ruleOf(std::string_view(word).substr(0, sign));
    double limit = 0;
    const char* begin = word.data() + sign + (isAtMost ? 2 : 1);
    const char* end = word.data() + word.size();
    const auto [rest, failure] = std::from_chars(begin, end, limit);
    if (!rule || failure != std::errc() || rest != end || !(limit >= 0))
    {
        fail();
    }
    return {*rule, relation, limit};
}

} // namespace

std::string_view relationText(Relation relation)
{
    return relation == Relation::below ? "<" : relation == Relation::atMost ? "<=" : "=";
}

bool Requirement::isKeptBy(double figure) const
{
    switch (relation)
    {
    case Relation::below: return figure < limit;
    case Relation::atMost: return figure <= limit;
    case Relation::equal: break;
    }
    return figure == limit;
}

std::vector<Requirement> parseRequirements(const std::string& words)
{
    std::vector<Requirement> requirements;
    std::istringstream stream(words);
    for (std::string word; std::getline(stream, word, ',');)
    {
        std::erase(word, ' ');
        const Requirement requirement = parseRequirement(word);
        if (std::ranges::find(requirements, requirement.rule, &Requirement::rule) != requirements.end())
        {
            throw InvalidOption(text("--require ", words, " has two rules for the same figure"));
        }
        requirements.push_back(requirement);
    }
    return requirements;
}

std::string requirementsHelp()
{
    std::string help =
        "Rules of --require, each KEY<LIMIT, KEY<=LIMIT or KEY=LIMIT; without it the verdict's limits are:\n";
    for (const RuleKey& rule : ruleKeys)
    {
        help += text("  ", rule.key, "<=", rule.limit, std::string(16 - rule.key.size() - text(rule.limit).size(), ' '),
                     rule.meaning, "\n");
    }
    return help + "\n";
}

} // namespace veltrane
