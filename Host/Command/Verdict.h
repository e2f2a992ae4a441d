/// Whether a transfer is good, by rules.
#ifndef VELTRANE_COMMAND_VERDICT_H
#define VELTRANE_COMMAND_VERDICT_H

#include "Requirements.h"
#include "TransferRecord.h"

#include <optional>
#include <string>
#include <vector>

namespace veltrane
{

/// How a rule is kept.
struct RuleResult
{
    Requirement rule;
    bool isRequired;              ///< by the user; otherwise its limit is the usual one
    bool isApplied;               ///< a figure that is not known, or says nothing here, is not judged unless required
    std::optional<double> figure; ///< nothing if it is not known
    std::string finding;          ///< in words; of a rule that is not applied, why not
    bool isKept() const { return !isApplied || (figure && rule.isKeptBy(*figure)); }
};

struct Verdict
{
    bool isGood;
    std::string text; ///< one line: "good: ..." or "doubtful: ..." and what is wrong, the gravest first
    std::vector<RuleResult> rules;

    /// The rules that the user requires and that are not kept: "far = 0 is not kept: ...". Empty if there are none.
    std::vector<std::string> missedRequirements() const;
};

Verdict judge(const TransferRecord& record, const std::vector<Requirement>& requirements);

/// "validation <= 0.1"
std::string ruleText(const Requirement& rule);

} // namespace veltrane

#endif
