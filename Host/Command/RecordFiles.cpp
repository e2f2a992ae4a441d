#include "RecordFiles.h"

#include "HtmlReport.h"
#include "JsonReport.h"
#include "RecordPicture.h"
#include "Text.h"
#include "TransferArguments.h"

namespace veltrane
{

void RecordFileOptions::addTo(CLI::App& command, const std::string& subject)
{
    report.addTo(command);
    picture.help = text("draw a cut through ", subject, " (.png)");
    picture.addTo(command);
    drawn.addTo(command);
    log.addTo(command);
}

void RecordFileOptions::checkNoneGiven() const
{
    if (!(report.path.empty() && picture.path.empty() && log.path.empty()))
    {
        throw InvalidOption("--report, --picture and --log are of single steps, not of a collection");
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
    if (report_ && options_.isPageWanted())
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
            if (options_.isPageWanted())
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
