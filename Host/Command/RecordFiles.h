/// The files that a transfer writes beside its output.
#ifndef VELTRANE_COMMAND_RECORD_FILES_H
#define VELTRANE_COMMAND_RECORD_FILES_H

#include "Companion.h"
#include "MeshPair.h"
#include "PictureArguments.h"
#include "ProgressBar.h"
#include "Series.h"
#include "TransferRecord.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace veltrane
{

/// The options that ask for them.
struct RecordFileOptions
{
    CompanionOption report{"--report",
                           {".html", ".json"},
                           "write what has been done and found, and how good it is,\n"
                           "as a page for people (.html) or for machines (.json)"};
    CompanionOption picture{"--picture", {".png"}, ""};
    PictureArguments drawn{};
    CompanionOption log{"--log", {}, "keep the statistics log of the search"};

    /// \param subject  what the picture shows
    void addTo(CLI::App& command, const std::string& subject);

    /// Throws InvalidOption if what is said of the picture is nothing that can be drawn, or there is none.
    void check() const;

    /// Throws InvalidOption or CannotWrite, before any work is done, if a collection cannot have such files.
    void checkForSeries(const MeshPairArguments& files) const;

    /// Those of one step of a series, whose files lie beside its output until finishSeries() takes them.
    RecordFileOptions ofStep(const std::filesystem::path& output) const;

    /// Gives the steps' pictures their numbered names, and writes the report of all. Throws CannotWrite.
    void finishSeries(const std::vector<FinishedStep>& steps, const MeshPairArguments& files) const;

    /// Whether the report is a page, which shows what a validation finds, or is for one.
    bool isPageWanted() const { return isForPage || isPage(); }
    bool isPage() const { return std::filesystem::path(report.path).extension() == ".html"; }

    bool isForPage = false;
};

class RecordFiles
{
public:
    /// Throws as openCompanion() does. Refers to the options.
    RecordFiles(const RecordFileOptions& options, const MeshPairArguments& files);

    /// Throws BadFile if a picture is wanted and these fields of the source cannot be drawn, and InvalidOption if the
    /// one that is asked for is not among them.
    void checkFields(std::span<const Field> sourceFields, const std::string& sourceName) const;

    /// Draws the picture, ends the last stage, and writes the others; adds them to the outputs, which do not have their
    /// names yet. Throws CannotWrite or Cancelled.
    void prepare(const TransferRecord& record, ProgressBar& progress, std::vector<PendingOutput>& outputs) const;

private:
    const RecordFileOptions& options_;
    std::optional<OutputFile> report_;
    std::optional<OutputFile> picture_;
    std::optional<OutputFile> log_;
};

} // namespace veltrane

#endif
