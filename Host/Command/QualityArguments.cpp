#include "QualityArguments.h"

#include "Report.h"

#include <algorithm>

namespace veltrane
{

void QualityArguments::addTo(CLI::App& command, bool canValidate)
{
    if (canValidate)
    {
        command.add_flag("--validate", validates,
                         "map the fields back onto the source and compare them\n"
                         "there, tell what of both meshes is mapped and what the\n"
                         "integrals are on both sides, and give a verdict");
    }
    command
        .add_option("--require", requirements,
                    "rules such as 'validation<0.02,far=0', listed below; if\n"
                    "one is not kept, the exit status is 4")
        ->type_name("RULES");
}

bool QualityArguments::needsValidation() const
{
    return validates || std::ranges::any_of(rules(), [](const Requirement& rule)
                                            { return rule.rule == Rule::validation || rule.rule == Rule::integral; });
}

ExitStatus QualityArguments::report(const Verdict& verdict, ExitStatus otherwise)
{
    const std::vector<std::string> missed = verdict.missedRequirements();
    for (const std::string& sentence : missed)
    {
        warn(sentence, "requirement");
    }
    return missed.empty() ? otherwise : ExitStatus::requirementMissed;
}

} // namespace veltrane
