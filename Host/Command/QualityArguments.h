/// What can be asked of a transfer's quality.
#ifndef VELTRANE_COMMAND_QUALITY_ARGUMENTS_H
#define VELTRANE_COMMAND_QUALITY_ARGUMENTS_H

#include "ExitStatus.h"
#include "Requirements.h"
#include "Verdict.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace veltrane
{

struct QualityArguments
{
    bool validates = false;
    std::string requirements{};

    /// \param canValidate  whether there is something to map back from
    void addTo(CLI::App& command, bool canValidate);

    /// Throws InvalidOption.
    std::vector<Requirement> rules() const { return parseRequirements(requirements); }

    /// Whether a figure that only a validation gives is asked for.
    bool needsValidation() const;

    /// Whether the summary is to tell the verdict.
    bool wantsVerdict() const { return validates || !requirements.empty(); }

    /// Warns of each rule that is required and not kept.
    static ExitStatus report(const Verdict& verdict, ExitStatus otherwise);
};

} // namespace veltrane

#endif
