/// veltrane sample
#ifndef VELTRANE_COMMAND_SAMPLE_COMMAND_H
#define VELTRANE_COMMAND_SAMPLE_COMMAND_H

#include "ExitStatus.h"
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

/// Samples the point data of a mesh file at points.
class SampleCommand
{
public:
    /// Adds the subcommand.
    explicit SampleCommand(CLI::App& app);
    SampleCommand(const SampleCommand&) = delete;
    SampleCommand& operator=(const SampleCommand&) = delete;

    bool isChosen() const { return command_->parsed(); }

    /// Throws what the host side throws.
    ExitStatus run() const;

private:
    void checkOutput(bool isCollection) const;
    ExitStatus sampleOne(const MeshPairArguments& files, StepMemory& memory,
                         const RecordFileOptions& recordOptions) const;

    CLI::App* command_;
    MeshPairArguments files_;
    TransferArguments arguments_;
    PlacementArguments placement_;
    SeriesArguments series_;
    QualityArguments quality_;
    RecordFileOptions recordFiles_;
};

} // namespace veltrane

#endif
