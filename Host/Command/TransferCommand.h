/// veltrane transfer
#ifndef VELTRANE_COMMAND_TRANSFER_COMMAND_H
#define VELTRANE_COMMAND_TRANSFER_COMMAND_H

#include "ExitStatus.h"
#include "LoadArguments.h"
#include "MeshPair.h"
#include "PlacementArguments.h"
#include "QualityArguments.h"
#include "RecordFiles.h"
#include "Series.h"
#include "StepMemory.h"
#include "TransferArguments.h"

#include <CLI/CLI.hpp>

namespace veltrane
{

/// What has been asked of a transfer.
struct TransferChoices
{
    const MeshPairArguments& files;
    const TransferArguments& arguments;
    const LoadArguments& loads;
    const PlacementArguments& placement;
    const SeriesArguments& series;
    const QualityArguments& quality;
    const RecordFileOptions& recordFiles;
};

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

    TransferChoices choices() const
    {
        return {files_, arguments_, loads_, placement_, series_, quality_, recordFiles_};
    }

private:
    void checkOptions(bool isCollection) const;
    ExitStatus transferOne(const MeshPairArguments& files, StepMemory& memory,
                           const RecordFileOptions& recordOptions) const;

    CLI::App* command_;
    MeshPairArguments files_;
    TransferArguments arguments_;
    LoadArguments loads_;
    PlacementArguments placement_;
    SeriesArguments series_;
    QualityArguments quality_;
    RecordFileOptions recordFiles_;
};

} // namespace veltrane

#endif
