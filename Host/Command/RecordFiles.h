/// The files that a transfer writes beside its output.
#ifndef VELTRANE_COMMAND_RECORD_FILES_H
#define VELTRANE_COMMAND_RECORD_FILES_H

#include "Companion.h"
#include "MeshPair.h"
#include "ProgressBar.h"
#include "TransferRecord.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace veltrane
{

/// The options that ask for them.
struct RecordFileOptions
{
    CompanionOption report{"--report", ".json", "write what has been done and found for machines, too (.json)"};
    CompanionOption picture{"--picture", ".png", ""};
    CompanionOption log{"--log", "", "keep the statistics log of the search"};

    /// \param drawn  what the picture shows
    void addTo(CLI::App& command, const std::string& drawn);

    /// Throws InvalidOption if one of them is given: a collection has none of these files.
    void checkNoneGiven() const;
};

class RecordFiles
{
public:
    /// Throws as openCompanion() does.
    RecordFiles(const RecordFileOptions& options, const MeshPairArguments& files);

    /// Throws BadFile if a picture is wanted and these fields of the source cannot be drawn.
    void checkFields(std::span<const Field> sourceFields, const std::string& sourceName) const;

    /// Draws the picture, ends the last stage, and writes the others; adds them to the outputs, which do not have their
    /// names yet. Throws CannotWrite or Cancelled.
    void prepare(const TransferRecord& record, ProgressBar& progress, std::vector<PendingOutput>& outputs) const;

private:
    std::optional<OutputFile> report_;
    std::optional<OutputFile> picture_;
    std::optional<OutputFile> log_;
};

} // namespace veltrane

#endif
