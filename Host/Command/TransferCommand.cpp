#include "TransferCommand.h"

#include "Failures.h"
#include "FieldChoice.h"
#include "FileFormat.h"
#include "JsonReport.h"
#include "ProgressBar.h"
#include "RecordPicture.h"
#include "Report.h"
#include "Text.h"
#include "Transfer.h"
#include "TransferSummary.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <iterator>

namespace veltrane
{
namespace
{

TransferResult transferExplainingFailures(const Mesh& source, std::span<const Field> fields, const Mesh& target,
                                          const TransferOptions& options)
{
    try
    {
        return transfer(source, fields, target, options);
    }
    catch (const TargetOutside& error)
    {
        throw TargetOutside(text(bareMessage(error.what()), "; --outside default gives such nodes the default value, "
                                                            "--outside propagate the values of neighbouring nodes"));
    }
    catch (const TransferError& error)
    {
        throw TransferError(text(bareMessage(error.what()), excessText(source.boundingBox(), target.boundingBox())),
                            error.code());
    }
}

} // namespace

TransferCommand::TransferCommand(CLI::App& app)
    : command_(app.add_subcommand("transfer", "Transfers the point data of one mesh file to the mesh of another"))
{
    files_.addFiles(*command_, "mesh file with the fields, of volume cells", "mesh file that is to receive the fields",
                    "file to be written: the target with the fields added");
    arguments_.addFields(*command_);
    arguments_.addGauss(*command_);
    arguments_.addOutside(*command_, "nodes", true);
    files_.materials.addTo(*command_, "nodes to receive values");
    arguments_.addTuning(*command_);
    series_.addTo(*command_);
    files_.addSkipUnsupported(*command_);
    files_.addReplace(*command_, "let transferred fields replace the target's arrays of the same names");
    report_.addTo(*command_);
    picture_.addTo(*command_);
    log_.addTo(*command_);
    files_.addQuiet(*command_, "print no summary and no progress");
    command_->footer(
        text("Example:\n"
             "  veltrane transfer thermal.vtu structure.vtu -o loaded.vtu --field temperature --outside propagate\n\n",
             meshFormatHelp, seriesHelp, materialHelp, validPointMaskHelp, exitStatusHelp));
}

void TransferCommand::checkOptions(bool isCollection) const
{
    const std::optional<FileFormat> format = formatOf(files_.output);
    if (!isCollection && !isMeshOutput(format))
    {
        throw InvalidOption(text("the output '", files_.output, "' is not named ", meshOutputEndings));
    }
    if (arguments_.atGaussPoints && format == FileFormat::legacyUnstructuredGrid)
    {
        throw InvalidOption(text("the output '", files_.output, "' of --gauss is not named .vtu"));
    }
    if (arguments_.atGaussPoints && !picture_.path.empty())
    {
        throw InvalidOption("--picture draws values at nodes, which --gauss does not give");
    }
    if (isCollection && !(report_.path.empty() && picture_.path.empty() && log_.path.empty()))
    {
        throw InvalidOption("--report, --picture and --log are of single steps, not of a collection");
    }
    if (!isCollection && series_.jobs > 1)
    {
        throw InvalidOption("--jobs has an effect only if the output is a collection, named .pvd");
    }
}

MeshPairArguments TransferCommand::filesOf(const Step& step, const std::string& output) const
{
    MeshPairArguments files = files_;
    files.source = step.file.string();
    files.step = step.number;
    files.output = output;
    return files;
}

ExitStatus TransferCommand::run() const
{
    const bool isCollection = formatOf(files_.output) == FileFormat::collection;
    checkOptions(isCollection);
    if (!isCollection && series_.steps.empty() && formatOf(files_.source) != FileFormat::collection)
    {
        return transferOne(files_);
    }
    arguments_.options(!files_.materials.states.empty()); // each step would find the same fault
    const std::vector<Step> steps = series_.select(files_.source, isCollection);
    if (!isCollection)
    {
        return transferOne(filesOf(steps.front(), files_.output));
    }
    const auto work = [&](const Step& step, const std::filesystem::path& part)
    {
        MeshPairArguments files = filesOf(step, part.string());
        files.quiet = true;
        return runReportingFailures([&] { return transferOne(files); }, CancellationReport::none);
    };
    return runSeries(steps, series_.jobs, files_.output, files_.openOutput(), files_.quiet, work);
}

ExitStatus TransferCommand::transferOne(const MeshPairArguments& files) const
{
    TransferOptions options = arguments_.options(!files.materials.states.empty());
    const OutputFile output = files.openOutput();
    const std::optional<OutputFile> report = openCompanion(report_, files);
    const std::optional<OutputFile> picture = openCompanion(picture_, files);
    const std::optional<OutputFile> log = openCompanion(log_, files);
    ProgressBar progress(!files.quiet);
    progress.beginStage("reading source");
    MeshFile source = files.readSource(arguments_.cellsAsNodes);
    progress.beginStage("reading target");
    MeshFile target = files.readTarget(arguments_.atGaussPoints ? MeshRole::gaussPointTarget : MeshRole::target);
    useCommonMaterialArray(source, target);
    checkSourceCells(source);

    const std::vector<ChosenField> chosen = arguments_.chooseFields(source);
    for (const ChosenField& field : chosen)
    {
        files.checkNewArray(target, arguments_.atGaussPoints ? ArrayPlace::file : ArrayPlace::points, field.newName);
    }
    options.fieldOptions = arguments_.fieldOptions(chosen);
    const std::vector<Field> fields = readFields(source, chosen);
    if (picture && !canBeDrawn(fields))
    {
        throw BadFile(text("--picture draws fields at nodes, and those of '", files_.source, "' are at Gauss points"));
    }
    options.targetLocations.assign(fields.size(), arguments_.atGaussPoints ? Location::gaussPoints : Location::nodes);
    options.targetMapping =
        files.materials.select(target.mesh().materials(), target.materialArray().has_value(), target.path());
    const Box sourceBox = source.mesh().boundingBox();
    checkOverlap(sourceBox, target.mesh().boundingBox(options.targetMapping));
    if (const auto missing = matchMaterials(files.materials, source, target, options.targetMapping))
    {
        if (options.mode == OutsideMode::error)
        {
            throw BadFile(*missing);
        }
        warn(*missing);
    }

    options.progress = progress.callback("interpolating");
    const TransferResult result = transferExplainingFailures(source.mesh(), fields, target.mesh(), options);
    if (const std::string hint = unitHint(sourceBox, target.mesh().boundingBox()); !hint.empty())
    {
        warn(hint.substr(2));
    }
    progress.beginStage("writing output");
    std::vector<IntegerArray> arrays;
    if (!result.origins.empty())
    {
        arrays.push_back(validPointMask(result.origins));
    }
    output.write([&](const std::filesystem::path& path) { target.writeWith(result.fields, arrays, path); });

    const TransferRecord record{source, fields, target, result, options, progress.times()};
    if (picture)
    {
        progress.beginStage("drawing picture");
        writeCompanion(picture, [&](const std::filesystem::path& path) { drawPicture(record, path); });
    }
    progress.finish();
    writeCompanion(report, [&](const std::filesystem::path& path) { writeReport(record, path); });
    writeCompanion(log, [&](const std::filesystem::path& path) { writeLog(result, path); });
    if (!files.quiet)
    {
        printSummary(std::cout, record);
    }
    if (result.outcome == Outcome::propagationWarning)
    {
        warn("regions of the target are not connected to any region with values; they hold 0");
        return ExitStatus::propagationWarning;
    }
    return ExitStatus::done;
}

} // namespace veltrane
