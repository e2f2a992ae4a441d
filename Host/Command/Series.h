/// The same work for several steps of a result, in processes of their own.
#ifndef VELTRANE_COMMAND_SERIES_H
#define VELTRANE_COMMAND_SERIES_H

#include "Collection.h"
#include "ExitStatus.h"
#include "MeshPair.h"
#include "OutputFile.h"
#include "StepMemory.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace veltrane
{

struct SeriesArguments
{
    std::string steps{};
    int jobs = 1;

    void addTo(CLI::App& command);

    /// The steps of the source that are wanted: those asked for, and otherwise all of them for a collection and the
    /// last one for a single output. Throws InvalidOption, NoInput or BadFile.
    std::vector<Step> select(const std::filesystem::path& source, bool isCollectionWanted) const;
};

/// For the help texts.
inline constexpr const char* seriesHelp =
    "The source may be a collection of files (.pvd, .series). If the output is a .pvd, its files are written to the\n"
    "directory of its name without the ending.\n\n";

/// Does one step, writing the given file. `next` is the step that follows in the same process, or null.
using StepWork = std::function<ExitStatus(const Step& step, const std::filesystem::path& output, const Step* next)>;

/// A step that is done: its output, complete and not yet in its place, and how the collection lists it.
struct FinishedStep
{
    std::filesystem::path part;
    Step listed;
};

/// What is to be done when all steps are, before their outputs get their places.
using SeriesEnd = std::function<void(const std::vector<FinishedStep>& steps)>;

/// Does the steps in as many processes as wanted and writes a collection of their outputs, which lie in a directory
/// beside it of its name without the ending. If a step fails, nothing is left behind, and its status is returned; it
/// has told the reason itself. Throws CannotWrite or Cancelled.
///
/// \param output      the collection as a file to be written
/// \param partEnding  of the names of the steps' outputs: ".vtu"
ExitStatus runSeries(const std::vector<Step>& steps, int jobs, const std::filesystem::path& collection,
                     const OutputFile& output, const std::string& partEnding, bool isQuiet, const StepWork& work,
                     const SeriesEnd& end);

/// Does the work on the files as they are given or, if the source has steps, on the one that is wanted or as
/// runSeries() does, with this end; the steps of one process share a map as long as they share the meshes. Throws
/// InvalidOption if the options do not fit, and what the work throws.
ExitStatus runSteps(const SeriesArguments& series, const MeshPairArguments& files, const std::string& partEnding,
                    const std::function<ExitStatus(const MeshPairArguments&, StepMemory&)>& work, const SeriesEnd& end);

} // namespace veltrane

#endif
