#include "RecordFiles.h"

#include "EarlierParts.h"
#include "HtmlReport.h"
#include "JsonReport.h"
#include "RecordPicture.h"
#include "SeriesReport.h"
#include "Text.h"
#include "TransferArguments.h"

#include <array>
#include <fstream>
#include <iterator>
#include <system_error>

namespace veltrane
{
namespace
{

/// Beside the output of a step.
std::filesystem::path stepFile(const std::filesystem::path& output, const std::string& ending)
{
    return std::filesystem::path(output).concat(ending);
}

void copyFile(const std::filesystem::path& from, const std::filesystem::path& to)
{
    std::error_code failure;
    std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing, failure);
    if (failure)
    {
        throw CannotWrite(failure.message());
    }
}

std::string contentOf(const std::filesystem::path& path)
{
    std::ifstream stream(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

} // namespace

void RecordFileOptions::addTo(CLI::App& command, const std::string& subject)
{
    report.addTo(command);
    picture.help = text("draw a cut through ", subject, " (.png)");
    picture.addTo(command);
    drawn.addTo(command);
    log.addTo(command);
}

void RecordFileOptions::checkForSeries(const MeshPairArguments& files) const
{
    if (!log.path.empty())
    {
        throw InvalidOption("--log is of single steps, not of a collection");
    }
    openCompanion(report, files);
    openCompanion(picture, files);
    checkDistinct({&report, &picture});
}

RecordFileOptions RecordFileOptions::ofStep(const std::filesystem::path& output) const
{
    RecordFileOptions ofStep(*this);
    ofStep.isForPage = isPage();
    ofStep.report.path = report.path.empty() ? "" : stepFile(output, ".json").string();
    ofStep.picture.path = picture.path.empty() ? "" : stepFile(output, ".png").string();
    return ofStep;
}

void RecordFileOptions::finishSeries(const std::vector<FinishedStep>& steps, const MeshPairArguments& files) const
{
    const std::array<std::filesystem::path, 2> inputs{files.source, files.target};
    std::vector<StepReport> reports;
    for (std::size_t i = 0; i < steps.size(); ++i)
    {
        if (!picture.path.empty())
        {
            const std::filesystem::path ofStep = stepFile(steps[i].part, ".png");
            const std::filesystem::path name(picture.path);
            OutputFile(name.parent_path() / partName(name, i, ".png"), inputs)
                .write([&](const std::filesystem::path& path) { copyFile(ofStep, path); });
            std::filesystem::remove(ofStep);
        }
        if (!report.path.empty())
        {
            const std::filesystem::path written = stepFile(steps[i].part, ".json");
            reports.push_back({steps[i].listed.file.generic_string(), steps[i].listed.time, contentOf(written)});
            std::filesystem::remove(written);
        }
    }
    if (!report.path.empty())
    {
        OutputFile(report.path, inputs)
            .write([&](const std::filesystem::path& path) { writeSeriesReport(reports, report.path, path); });
    }
}

void RecordFileOptions::check() const
{
    drawn.check();
    if (drawn.areGiven() && picture.path.empty() && !isPageWanted())
    {
        throw InvalidOption(
            "--picture-plane, --picture-field and --picture-range have an effect only with --picture or "
            "a page of --report");
    }
}

RecordFiles::RecordFiles(const RecordFileOptions& options, const MeshPairArguments& files)
    : options_(options), report_(openCompanion(options.report, files)), picture_(openCompanion(options.picture, files)),
      log_(openCompanion(options.log, files))
{
    checkDistinct({&options.report, &options.picture, &options.log});
}

void RecordFiles::checkFields(std::span<const Field> sourceFields, const std::string& sourceName) const
{
    const bool canBeDrawn = options_.drawn.choose(sourceFields).has_value();
    if (picture_ && !canBeDrawn)
    {
        throw BadFile(text("--picture draws fields at nodes, and those of '", sourceName, "' are at Gauss points"));
    }
}

void RecordFiles::prepare(const TransferRecord& record, ProgressBar& progress,
                          std::vector<PendingOutput>& outputs) const
{
    if (picture_)
    {
        progress.beginStage("drawing picture");
        prepareCompanion(
            picture_,
            [&](const std::filesystem::path& path)
            { drawRecord(DrawingFormat::pixels, record, *options_.drawn.choose(record.sourceFields)).write(path); },
            outputs);
    }
    if (report_ && options_.isPage())
    {
        progress.beginStage("writing report");
    }
    else
    {
        progress.finish();
    }
    prepareCompanion(
        report_,
        [&](const std::filesystem::path& path)
        {
            if (options_.isPage())
            {
                writeHtmlReport(record, options_.drawn, path);
            }
            else
            {
                writeReport(record, path);
            }
        },
        outputs);
    progress.finish();
    prepareCompanion(
        log_, [&](const std::filesystem::path& path) { writeLog(record.result, path); }, outputs);
}

} // namespace veltrane
