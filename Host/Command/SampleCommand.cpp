#include "SampleCommand.h"

#include "FileFormat.h"
#include "Interruption.h"
#include "OutsideText.h"
#include "PointFile.h"
#include "ProgressBar.h"
#include "TableText.h"
#include "Text.h"
#include "TransferFindings.h"
#include "TransferRecord.h"
#include "TransferSummary.h"

#include <filesystem>
#include <memory>
#include <vector>

namespace veltrane
{
namespace
{

/// An array that is asked for must be there in the source; the points may do without.
PointFile readPointFile(const MeshPairArguments& files, VtuAhead* ahead)
{
    PointFile points(files.target, {}, files.threads, ahead);
    if (files.materials.array && points.hasArray(*files.materials.array))
    {
        points = PointFile(files.target, files.materials.array, files.threads);
    }
    throwIfInterrupted();
    return points;
}

void checkNewArray(const MeshPairArguments& files, const PointFile& points, const std::string& name)
{
    if (!files.replace && points.hasArray(name))
    {
        throw BadFile(text("'", files.target, "' has a point-data array '", name,
                           "' of its own; --replace lets the new one take its place"));
    }
}

/// Points that come with cells keep them.
std::string partEnding(const std::filesystem::path& points)
{
    return isMeshInput(formatOf(points)) ? ".vtu" : ".vtp";
}

} // namespace

SampleCommand::SampleCommand(CLI::App& app)
    : command_(app.add_subcommand("sample", "Samples the point data of a mesh file at points"))
{
    files_.addFiles(*command_, "mesh file with the fields, of volume cells",
                    "file with the points (.csv, .vtp, or any mesh file), or -\nfor a table from standard input",
                    "file to be written: the points with the fields added\n(.csv, .vtp, .vtu, .vtk, .pvd for steps, or "
                    "- for standard\noutput, as .csv)",
                    "POINTS");
    files_.streamEnding = ".csv";
    arguments_.addFields(*command_);
    arguments_.addOutside(*command_, "points", false);
    arguments_.addNear(*command_, "points", true);
    files_.materials.addTo(*command_, "points to receive values");
    arguments_.addTuning(*command_);
    placement_.addTo(*command_);
    series_.addTo(*command_);
    files_.addSkipUnsupported(*command_);
    files_.addReplace(*command_, "let sampled fields replace the points' arrays of the same names");
    quality_.addTo(*command_, false);
    recordFiles_.addTo(*command_,
                       "the source and show the points as they\nare seen from across it, with those outside");
    files_.addThreads(*command_);
    files_.addCompression(*command_);
    files_.addQuiet(*command_, "print no summary and no progress");
    command_->footer(
        text("Example:\n"
             "  veltrane sample thermal.vtu sensors.csv -o readings.csv --outside default --default nan\n\n"
             "The first line of a .csv file names the columns, among them x, y and z. Points have materials if\n"
             "they have point data of that name; an element holds a point only if it has the point's material.\n"
             "The array vtkValidPointMask of the output is 1 in an element of the source, 3 near one, whose values\n"
             "are taken (--near), -1 where the values are default values, and 0 at points that are not mapped, which\n"
             "hold the default value.\n\n",
             requirementsHelp(), meshFormatHelp(), seriesHelp, exitStatusHelp));
}

void SampleCommand::checkOutput(bool isCollection) const
{
    if (isCollection)
    {
        recordFiles_.checkForSeries(files_);
    }
    else if (!isPointOutput(files_.outputFormat()))
    {
        throw InvalidOption(text("the output '", files_.output, "' is not named ", endingsOf(isPointOutput)));
    }
    files_.checkCompression();
}

ExitStatus SampleCommand::run() const
{
    arguments_.options(!files_.materials.states.empty()); // each step would find the same fault
    if (arguments_.nearLimit && !arguments_.pointsMayBeNear)
    {
        throw InvalidOption("--near-limit has an effect only together with --near");
    }
    placement_.placement();
    recordFiles_.check();
    if (quality_.needsValidation())
    {
        throw InvalidOption("--require: points cannot be mapped back, so there are no figures validation and integral");
    }
    if (files_.target == standardStream)
    {
        standardInput(); // before there are processes, of which each would read a part of it
    }
    checkOutput(isCollectionOutput(files_.outputFormat()));
    const bool isSeries = isCollectionOutput(files_.outputFormat());
    return runSteps(
        series_, files_, partEnding(files_.target),
        [&](const MeshPairArguments& files, StepMemory& memory)
        { return sampleOne(files, memory, isSeries ? recordFiles_.ofStep(files.output) : recordFiles_); },
        [&](const std::vector<FinishedStep>& steps) { recordFiles_.finishSeries(steps, files_); });
}

ExitStatus SampleCommand::sampleOne(const MeshPairArguments& files, StepMemory& memory,
                                    const RecordFileOptions& recordOptions) const
{
    TransferOptions options = arguments_.options(!files.materials.states.empty());
    const OutputFile output = files.openOutput();
    const RecordFiles recordFiles(recordOptions, files);
    ProgressBar progress(!files.quiet);
    progress.beginStage("reading source");
    const std::shared_ptr<VtuAhead> pointsAhead = memory.hasTarget() ? nullptr : files.readTargetAhead();
    MeshFile source =
        files.readSource(arguments_.cellsAsNodes, placement_.placement(), memory.takeSource(files.source));
    memory.readNextSource(files.threads);
    checkSourceCells(source, files.threads);
    progress.beginStage("reading points");
    PointFile& points = memory.points([&] { return readPointFile(files, pointsAhead.get()); });

    const std::vector<ChosenField> chosen = arguments_.chooseFields(source);
    for (const ChosenField& field : chosen)
    {
        checkNewArray(files, points, field.newName);
    }
    options.fieldOptions = arguments_.fieldOptions(chosen);
    std::vector<Field> fields = readFields(source, chosen);
    source.forgetArrays();
    placement_.turn(fields);
    recordFiles.checkFields(fields, files.source);
    const bool haveMaterials = points.materialArray().has_value();
    options.targetMapping = files.materials.select(points.points().materials(), haveMaterials, points.path());
    const Box sourceBox = source.mesh().boundingBox({}, files.threads);
    const Box pointBox = points.points().boundingBox();
    reportMissingMaterials(files.materials.match(source.mesh(), source.materialArray().has_value(), points.points(),
                                                 haveMaterials, options.targetMapping),
                           options.mode);

    options.looksForOverlap = true;
    options.threads = files.threads;
    arguments_.limitNearPoints(options, source.mesh());
    options.progress = progress.callback("sampling");
    const auto sample = [&](const TransferOptions& withOptions)
    { return memory.maps.sample(source.mesh(), fields, points.points(), withOptions); };
    const auto describeOutside = [&]
    {
        TransferOptions withDefault = options; // which tells where the points are
        withDefault.mode = OutsideMode::defaultValue;
        return outsideText(source.mesh(), sample(withDefault), points.points().coordinates(), "points");
    };
    TransferResult result =
        explainingFailures([&] { return sample(options); }, describeOutside,
                           arguments_.pointsMayBeNear ? "--outside default gives such points the default value"
                                                      : "--outside default gives such points the default value, --near "
                                                        "those just outside the values of a near cell",
                           sourceBox, pointBox);
    warnOfFindings(source, result, sourceBox, pointBox, "points");
    progress.beginStage("writing output");
    const IntegerArray mask = validPointMask(result.findings, options.mode);
    completeForOutput(result, options, arguments_.writesDistances);
    std::vector<PendingOutput> outputs;
    outputs.push_back(output.prepare(
        [&](const std::filesystem::path& path)
        { files.warnOf(points.writeWith(result.fields, mask.name, mask.values, path, files.writing())); }));

    TransferRecord record{source, fields, &points, result, options, progress.times(), placement_.placement()};
    const Verdict verdict = judge(record, quality_.rules());
    record.verdict = &verdict;
    recordFiles.prepare(record, progress, outputs);
    publishAll(outputs); // all of them are complete
    if (!files.quiet)
    {
        printSummary(files.summaryStream(), record);
    }
    return QualityArguments::report(verdict, ExitStatus::done);
}

} // namespace veltrane
