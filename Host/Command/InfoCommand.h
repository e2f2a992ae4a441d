/// veltrane info
#ifndef VELTRANE_COMMAND_INFO_COMMAND_H
#define VELTRANE_COMMAND_INFO_COMMAND_H

#include "ExitStatus.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace veltrane
{

/// Tells what is in mesh and point files.
class InfoCommand
{
public:
    /// Adds the subcommand.
    explicit InfoCommand(CLI::App& app);
    InfoCommand(const InfoCommand&) = delete;
    InfoCommand& operator=(const InfoCommand&) = delete;

    bool isChosen() const { return command_->parsed(); }

    /// Throws what the host side throws.
    ExitStatus run() const;

private:
    CLI::App* command_;
    std::vector<std::string> files_;
};

} // namespace veltrane

#endif
