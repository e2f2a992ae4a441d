/// veltrane match
#ifndef VELTRANE_COMMAND_MATCH_COMMAND_H
#define VELTRANE_COMMAND_MATCH_COMMAND_H

#include "ExitStatus.h"
#include "MeshPair.h"

#include <CLI/CLI.hpp>

#include <string>
#include <string_view>
#include <vector>

namespace veltrane
{

/// Finds which nodes, or which Gauss points, of two mesh files are at the same places.
class MatchCommand
{
public:
    /// Adds the subcommand.
    explicit MatchCommand(CLI::App& app);
    MatchCommand(const MatchCommand&) = delete;
    MatchCommand& operator=(const MatchCommand&) = delete;

    bool isChosen() const { return command_->parsed(); }

    /// Throws what the host side throws.
    ExitStatus run() const;

private:
    struct Request
    {
        CLI::App* command = nullptr;
        MeshPairArguments files{};
    };

    /// \param toleranceHelp  empty if there is no tolerance to be set
    static void addOptions(Request& request, std::string_view points, const std::string& toleranceHelp = "");

    CLI::App* command_;
    Request nodes_;
    Request gaussPoints_;
};

} // namespace veltrane

#endif
