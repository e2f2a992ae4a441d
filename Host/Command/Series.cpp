#include "Series.h"

#include "ChildProcesses.h"
#include "EarlierParts.h"
#include "Errors.h"
#include "Failures.h"
#include "FileFormat.h"
#include "Interruption.h"
#include "ProgressBar.h"
#include "Report.h"
#include "Text.h"
#include "UniqueWord.h"

#include <algorithm>
#include <charconv>
#include <iostream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string_view>
#include <system_error>

namespace veltrane
{
namespace
{

/// A directory of a name that nothing else has, gone at the end with what is left in it.
class PartDirectory
{
public:
    explicit PartDirectory(const std::filesystem::path& collection)
        : path_(collection.parent_path() / text(".", collection.stem().string(), ".", uniqueWord(), ".parts"))
    {
        std::error_code failure;
        if (!std::filesystem::create_directory(path_, failure))
        {
            throw CannotWrite(text("cannot create the directory '", path_.string(), "': ", failure.message()));
        }
    }
    ~PartDirectory()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    PartDirectory(const PartDirectory&) = delete;
    PartDirectory& operator=(const PartDirectory&) = delete;

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

/// Gives the parts their place. Files of an earlier run are replaced.
void moveParts(const std::filesystem::path& from, const std::filesystem::path& to)
{
    try
    {
        std::filesystem::create_directories(to);
        for (const auto& part : std::filesystem::directory_iterator(from))
        {
            std::filesystem::rename(part.path(), to / part.path().filename());
        }
    }
    catch (const std::filesystem::filesystem_error& failure)
    {
        throw CannotWrite(text("cannot write to the directory '", to.string(), "': ", failure.code().message()));
    }
}

bool isStepOf(const std::vector<Step>& steps, const std::filesystem::path& file)
{
    return std::ranges::any_of(steps,
                               [&](const Step& step)
                               {
                                   std::error_code ignored; // a step that is not there is reported when it is read
                                   return std::filesystem::equivalent(step.file, file, ignored);
                               });
}

/// The parts must not take the places of what they are made from.
void checkParts(const std::vector<Step>& steps, const std::filesystem::path& collection, const std::string& partEnding,
                const OutputFile& output)
{
    for (std::size_t i = 0; i < steps.size(); ++i)
    {
        const std::filesystem::path part = partPlace(collection) / partName(collection, i, partEnding);
        if (isStepOf(steps, part) || output.isInput(part))
        {
            throw CannotWrite(text("the output '", part.string(), "' is an input itself"));
        }
    }
}

/// Parts of an earlier run that the collection listed and does not list any more, unless they are among the inputs.
void removeParts(const std::vector<std::filesystem::path>& earlier, const std::vector<Step>& written,
                 const std::vector<Step>& steps, const OutputFile& output)
{
    for (const std::filesystem::path& part : earlier)
    {
        const bool isListed =
            std::ranges::any_of(written, [&](const Step& step) { return step.file.filename() == part.filename(); });
        if (!isListed && !isStepOf(steps, part) && !output.isInput(part))
        {
            std::error_code ignored; // nothing refers to it any more
            std::filesystem::remove(part, ignored);
        }
    }
}

/// A number from 1.
std::optional<std::size_t> stepNumber(std::string_view word)
{
    std::size_t number = 0;
    const auto [end, failure] = std::from_chars(word.data(), word.data() + word.size(), number);
    const bool isNumber = failure == std::errc() && end == word.data() + word.size() && number > 0;
    return isNumber ? std::optional(number) : std::nullopt;
}

/// "3", "3-5"
std::vector<std::size_t> parseSteps(std::string_view word, const std::string& list)
{
    const std::size_t dash = std::min(word.find('-'), word.size());
    const auto first = stepNumber(word.substr(0, dash));
    const auto last = dash == word.size() ? first : stepNumber(word.substr(dash + 1));
    if (!first || !last || *first > *last)
    {
        throw InvalidOption(
            text("--steps ", list, " is not all, last or numbers from 1, such as 3 or 3-5, separated by commas"));
    }
    std::vector<std::size_t> numbers;
    constexpr std::size_t mostSteps = 1000000; // more than any source has; what there is of them is checked later
    for (std::size_t number = *first; number <= *last && numbers.size() < mostSteps; ++number)
    {
        numbers.push_back(number);
    }
    return numbers;
}

std::vector<std::size_t> parseList(const std::string& list, std::size_t count)
{
    std::vector<std::size_t> indices;
    std::istringstream stream(list);
    for (std::string word; std::getline(stream, word, ',');)
    {
        for (const std::size_t number : parseSteps(word, list))
        {
            if (number > count)
            {
                throw InvalidOption(text("--steps: the source has ", count, " steps; there is no step ", number));
            }
            if (std::ranges::find(indices, number - 1) != indices.end())
            {
                throw InvalidOption(text("--steps ", list, " names step ", number, " twice"));
            }
            indices.push_back(number - 1);
        }
    }
    return indices;
}

} // namespace

void SeriesArguments::addTo(CLI::App& command)
{
    command
        .add_option("--steps", steps,
                    "the steps of a collection or of a file with steps: all, last,\n"
                    "or numbers from 1, such as 3 or 3-5, separated by commas\n"
                    "(all if the output is a collection, otherwise last)")
        ->type_name("STEPS");
    command
        .add_option(
            "--jobs", jobs,
            "processes for the steps (1); those of one process share\na search as long as they share the meshes")
        ->type_name("N")
        ->check(CLI::Range(1, 1024));
}

std::vector<Step> SeriesArguments::select(const std::filesystem::path& source, bool isCollectionWanted) const
{
    const std::vector<Step> all = readSteps(source);
    const std::string wanted = steps.empty() ? (isCollectionWanted ? "all" : "last") : steps;
    std::vector<Step> selected;
    if (wanted == "all")
    {
        selected = all;
    }
    else if (wanted == "last")
    {
        selected = {all.back()};
    }
    else
    {
        std::ranges::transform(parseList(wanted, all.size()), std::back_inserter(selected),
                               [&](std::size_t index) { return all[index]; });
    }
    if (!isCollectionWanted && selected.size() != 1)
    {
        throw InvalidOption(text("the output of ", selected.size(), " steps must be a collection, named .pvd"));
    }
    return selected;
}

/// Every stride-th step, from `first` on, until one fails.
template <typename PartOf>
ExitStatus workOnSteps(const std::vector<Step>& steps, std::size_t first, std::size_t stride, const PartOf& partOf,
                       const StepWork& work)
{
    ExitStatus outcome = ExitStatus::done;
    for (std::size_t i = first; i < steps.size() && !isFailure(outcome) && !isInterrupted(); i += stride)
    {
        const Step* next = i + stride < steps.size() ? &steps[i + stride] : nullptr;
        outcome = worse(outcome, work(steps[i], partOf(i), next));
    }
    return outcome;
}

ExitStatus runSeries(const std::vector<Step>& steps, int jobs, const std::filesystem::path& collection,
                     const OutputFile& output, const std::string& partEnding, bool isQuiet, const StepWork& work,
                     const SeriesEnd& end)
{
    checkParts(steps, collection, partEnding, output);
    const PartDirectory parts(collection);
    std::vector<Step> written;
    std::vector<FinishedStep> finished;
    const WarningsOnce warnings;
    ChildProcesses workers;
    {
        ProgressBar progress(!isQuiet);
        const auto partOf = [&](std::size_t i) { return parts.path() / partName(collection, i, partEnding); };
        const std::size_t stride = std::min(steps.size(), static_cast<std::size_t>(jobs));
        // The steps of a process share its map, so each process has its steps from the beginning. That there is one at
        // all is for the readers' sake: one that crashes on a file takes nothing else with it.
        for (std::size_t first = 0; first < stride; ++first)
        {
            workers.start([&] { return workOnSteps(steps, first, stride, partOf, work); });
        }
        std::size_t shown = 0;
        // As many steps have begun as are finished, and one more per process.
        const auto showStep = [&]
        {
            std::size_t done = 0;
            for (std::size_t i = 0; i < steps.size(); ++i)
            {
                done += std::filesystem::exists(partOf(i)) ? 1 : 0;
            }
            while (shown < std::min(done + stride, steps.size()))
            {
                progress.beginStage(text("step ", ++shown, " of ", steps.size()));
            }
        };
        while (workers.count() > 0)
        {
            showStep();
            workers.wait(showStep);
        }
        for (std::size_t i = 0; i < steps.size(); ++i)
        {
            written.push_back({collection.stem() / partOf(i).filename(), std::nullopt, steps[i].time});
            finished.push_back({partOf(i), written.back()});
        }
    }
    throwIfInterrupted();
    if (warnings.untoldCount() > 0)
    {
        warn(text("there were ", oneOrMore(warnings.untoldCount(), "more such warning", "more such warnings"),
                  " of other steps"),
             "other steps");
    }
    if (isFailure(workers.outcome()))
    {
        return workers.outcome();
    }
    end(finished);
    const std::vector<std::filesystem::path> earlier = findEarlierParts(collection);
    moveParts(parts.path(), partPlace(collection));
    output.write([&](const std::filesystem::path& path) { writeCollection(written, path); });
    removeParts(earlier, written, steps, output);
    if (!isQuiet)
    {
        std::cout << text("wrote ", oneOrMore(static_cast<long long>(written.size()), "step", "steps"), " to '",
                          collection.string(), "'\n");
    }
    return workers.outcome();
}

ExitStatus runSteps(const SeriesArguments& series, const MeshPairArguments& files, const std::string& partEnding,
                    const std::function<ExitStatus(const MeshPairArguments&, StepMemory&)>& work, const SeriesEnd& end)
{
    const bool isSeries = isCollectionOutput(formatOf(files.output));
    StepMemory memory(isSeries);
    if (!isSeries && series.jobs > 1)
    {
        throw InvalidOption("--jobs has an effect only if the output is a collection, named .pvd");
    }
    if (!isSeries && series.steps.empty() && !isCollection(formatOf(files.source)))
    {
        return work(files, memory);
    }
    const auto filesOf = [&](const Step& step, const std::string& output)
    {
        MeshPairArguments ofStep = files;
        ofStep.source = step.file.string();
        ofStep.step = step.number;
        ofStep.output = output;
        return ofStep;
    };
    const std::vector<Step> steps = series.select(files.source, isSeries);
    if (!isSeries)
    {
        return work(filesOf(steps.front(), files.output), memory);
    }
    const auto workOnStep = [&](const Step& step, const std::filesystem::path& part, const Step* next)
    {
        memory.setNextSource(next == nullptr ? nullptr : &next->file);
        MeshPairArguments ofStep = filesOf(step, part.string());
        ofStep.quiet = true;
        return runReportingFailures([&] { return work(ofStep, memory); }, CancellationReport::none);
    };
    return runSeries(steps, series.jobs, files.output, files.openOutput(), partEnding, files.quiet, workOnStep, end);
}

} // namespace veltrane
