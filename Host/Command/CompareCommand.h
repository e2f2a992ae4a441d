/// veltrane compare
#ifndef VELTRANE_COMMAND_COMPARE_COMMAND_H
#define VELTRANE_COMMAND_COMPARE_COMMAND_H

#include "ExitStatus.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <string>
#include <vector>

namespace veltrane
{

/// Says how far the point data of two files on the same mesh are from each other.
class CompareCommand
{
public:
    /// Adds the subcommand.
    explicit CompareCommand(CLI::App& app);
    CompareCommand(const CompareCommand&) = delete;
    CompareCommand& operator=(const CompareCommand&) = delete;

    bool isChosen() const { return command_->parsed(); }

    /// Throws what the host side throws.
    ExitStatus run() const;

private:
    CLI::App* command_;
    std::string file_;
    std::string reference_;
    std::vector<std::string> fields_;
    std::optional<double> tolerance_;
};

} // namespace veltrane

#endif
