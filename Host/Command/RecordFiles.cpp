#include "RecordFiles.h"

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
    if (drawn.areGiven() && picture.path.empty())
    {
        throw InvalidOption("--picture-plane, --picture-field and --picture-range have an effect only with --picture");
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
    if (picture_ && !options_.drawn.choose(sourceFields))
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
    progress.finish();
    prepareCompanion(
        report_, [&](const std::filesystem::path& path) { writeReport(record, path); }, outputs);
    prepareCompanion(
        log_, [&](const std::filesystem::path& path) { writeLog(record.result, path); }, outputs);
}

} // namespace veltrane
