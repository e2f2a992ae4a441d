/// veltrane transfer
#ifndef VELTRANE_COMMAND_TRANSFER_COMMAND_H
#define VELTRANE_COMMAND_TRANSFER_COMMAND_H

#include "Companion.h"
#include "ExitStatus.h"
#include "MeshPair.h"
#include "Series.h"
#include "TransferArguments.h"

#include <CLI/CLI.hpp>

#include <string>

namespace veltrane
{

/// Transfers point data from one mesh file to another.
class TransferCommand
{
public:
    /// Adds the subcommand.
    explicit TransferCommand(CLI::App& app);
    TransferCommand(const TransferCommand&) = delete;
    TransferCommand& operator=(const TransferCommand&) = delete;

    bool isChosen() const { return command_->parsed(); }

    /// Throws what the host side throws.
    ExitStatus run() const;

private:
    void checkOptions(bool isCollection) const;
    ExitStatus transferOne(const MeshPairArguments& files) const;
    MeshPairArguments filesOf(const Step& step, const std::string& output) const;

    CLI::App* command_;
    MeshPairArguments files_;
    TransferArguments arguments_;
    SeriesArguments series_;
    CompanionOption picture_{"--picture", ".png",
                             "draw a cut through source and target, with what of the\ntarget is outside (.png)"};
    CompanionOption report_{"--report", ".json", "write what has been done and found for machines, too (.json)"};
    CompanionOption log_{"--log", "", "keep the statistics log of the search"};
};

} // namespace veltrane

#endif
