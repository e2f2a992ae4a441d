#include "TransferCommand.h"

#include "FieldChoice.h"
#include "FileFormat.h"
#include "GaussPoints.h"
#include "OutsideText.h"
#include "ProgressBar.h"
#include "Report.h"
#include "Text.h"
#include "Transfer.h"
#include "TransferFindings.h"
#include "TransferSummary.h"
#include "VolumeElements.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace veltrane
{
TransferCommand::TransferCommand(CLI::App& app)
    : command_(app.add_subcommand("transfer", "Transfers the point data of one mesh file to the mesh of another"))
{
    files_.addFiles(*command_, "mesh file with the fields, of volume cells", "mesh file that is to receive the fields",
                    "file to be written: the target with the fields added\n(.vtu, .vtk, .pvd for steps, or - for "
                    "standard output, as .vtu)");
    files_.streamEnding = ".vtu";
    arguments_.addFields(*command_);
    loads_.addTo(*command_);
    arguments_.addGauss(*command_);
    files_.addGaussRule(*command_);
    command_->get_option("--gauss-rule")->needs("--gauss");
    arguments_.addOutside(*command_, "nodes", true);
    arguments_.addNear(*command_, "nodes", false);
    files_.materials.addTo(*command_, "nodes to receive values");
    arguments_.addTuning(*command_);
    placement_.addTo(*command_);
    series_.addTo(*command_);
    files_.addSkipUnsupported(*command_);
    files_.addReplace(*command_, "let transferred fields replace the target's arrays of the same names");
    quality_.addTo(*command_, true);
    recordFiles_.addTo(*command_, "source and target, with what of the\ntarget is outside");
    files_.addThreads(*command_);
    files_.addCompression(*command_);
    files_.addQuiet(*command_, "print no summary and no progress");
    command_->footer(
        text("Example:\n"
             "  veltrane transfer thermal.vtu structure.vtu -o loaded.vtu --field temperature --outside propagate\n\n",
             requirementsHelp(), meshFormatHelp(), seriesHelp, materialHelp, validPointMaskHelp, exitStatusHelp));
}

namespace
{

bool holdsGaussFields(const FileFormat* format)
{
    return isMeshOutput(format) && format->writes.gaussFields;
}

} // namespace

void TransferCommand::checkOptions(bool isCollection) const
{
    const FileFormat* format = files_.outputFormat();
    if (!isCollection && !isMeshOutput(format))
    {
        throw InvalidOption(text("the output '", files_.output, "' is not named ", endingsOf(isMeshOutput)));
    }
    if (arguments_.atGaussPoints && !isCollection && !holdsGaussFields(format))
    {
        throw InvalidOption(
            text("the output '", files_.output, "' of --gauss is not named ", endingsOf(holdsGaussFields)));
    }
    if (arguments_.atGaussPoints && !recordFiles_.picture.path.empty())
    {
        throw InvalidOption("--picture draws values at nodes, which --gauss does not give");
    }
    if (isCollection)
    {
        recordFiles_.checkForSeries(files_);
    }
    files_.checkCompression();
}

ExitStatus TransferCommand::run() const
{
    checkOptions(isCollectionOutput(files_.outputFormat()));
    loads_.check(arguments_.options(!files_.materials.states.empty()).mode); // each step would find the same fault
    placement_.placement();
    quality_.rules();
    recordFiles_.check();
    const bool isSeries = isCollectionOutput(files_.outputFormat());
    return runSteps(
        series_, files_, ".vtu",
        [&](const MeshPairArguments& files, StepMemory& memory)
        { return transferOne(files, memory, isSeries ? recordFiles_.ofStep(files.output) : recordFiles_); },
        [&](const std::vector<FinishedStep>& steps) { recordFiles_.finishSeries(steps, files_); });
}

ExitStatus TransferCommand::transferOne(const MeshPairArguments& files, StepMemory& memory,
                                        const RecordFileOptions& recordOptions) const
{
    TransferOptions options = arguments_.options(!files.materials.states.empty());
    const OutputFile output = files.openOutput();
    const RecordFiles recordFiles(recordOptions, files);
    ProgressBar progress(!files.quiet);
    progress.beginStage("reading source");
    const std::shared_ptr<VtuAhead> targetAhead = memory.hasTarget() ? nullptr : files.readTargetAhead();
    MeshFile source =
        files.readSource(arguments_.cellsAsNodes, placement_.placement(), memory.takeSource(files.source));
    progress.beginStage("reading target");
    const MeshRole role = arguments_.atGaussPoints ? MeshRole::gaussPointTarget : MeshRole::target;
    MeshFile& target = memory.target([&] { return files.readTarget(role, targetAhead); });
    memory.readNextSource(files.threads);
    useCommonMaterials(source, target);
    checkSourceCells(source, files.threads);

    const std::vector<ChosenField> chosenLoads = loads_.choose(source);
    const std::vector<ChosenField> chosen = arguments_.chooseFields(source, chosenLoads);
    for (const ChosenField& field : chosen)
    {
        files.checkNewArray(target, arguments_.atGaussPoints ? ArrayPlace::file : ArrayPlace::points, field.newName);
    }
    for (const ChosenField& load : chosenLoads)
    {
        files.checkNewArray(target, ArrayPlace::points, load.newName);
        if (std::ranges::find(chosen, load.newName, &ChosenField::newName) != chosen.end())
        {
            throw InvalidOption(text("--loads and --field give the name '", load.newName, "' to two arrays"));
        }
    }
    options.fieldOptions = arguments_.fieldOptions(chosen);
    std::vector<Field> fields = readFields(source, chosen);
    source.mesh().setGaussPointRule(gaussPointRuleOf(fields, source.mesh()));
    placement_.turn(fields);
    std::vector<Field> loads = readFields(source, chosenLoads);
    if (!loads.empty())
    {
        placement_.turn(loads);
    }
    source.forgetArrays();
    recordFiles.checkFields(fields, files.source);
    options.targetLocations.assign(fields.size(), arguments_.atGaussPoints ? Location::gaussPoints : Location::nodes);
    options.targetMapping =
        files.materials.select(target.mesh().materials(), target.materialArray().has_value(), target.path());
    const Box sourceBox = source.mesh().boundingBox({}, files.threads);
    const Box targetBox = target.mesh().boundingBox(options.targetMapping, files.threads);
    reportMissingMaterials(matchMaterials(files.materials, source, target, options.targetMapping), options.mode);

    options.looksForOverlap = true;
    options.threads = files.threads;
    arguments_.limitNearPoints(options, source.mesh());
    options.progress = progress.callback("interpolating");
    const bool isPageValidated = recordOptions.isPageWanted() && hasVolumeElements(target.mesh());
    const bool isValidated = !fields.empty() && (quality_.needsValidation() || isPageValidated);
    if (isValidated)
    {
        memory.maps.keepMap();
    }
    const auto transfer = [&](const TransferOptions& withOptions)
    { return memory.maps.transfer(source.mesh(), fields, target.mesh(), withOptions); };
    const auto describeOutside = [&]
    {
        TransferOptions withDefault = options; // which tells where the nodes are
        withDefault.mode = OutsideMode::defaultValue;
        return outsideText(source.mesh(), transfer(withDefault), target.mesh().coordinates(), "nodes");
    };
    TransferResult result = explainingFailures(
        [&] { return fields.empty() ? TransferResult{} : transfer(options); }, describeOutside,
        "--outside default gives such nodes the default value, --outside propagate the values of neighbouring nodes",
        sourceBox, targetBox);
    warnOfFindings(source, result, sourceBox, targetBox, "nodes");
    options.progress = progress.callback("spreading loads");
    const std::vector<DistributedLoads> distributed =
        distributeAll(loads, source.mesh(), target.mesh(), options, arguments_.nearLimit);
    std::optional<Validation> validation;
    if (isValidated)
    {
        options.progress = progress.callback("validating");
        validation = memory.maps.validate(source.mesh(), fields, target.mesh(), result.fields, options);
    }
    progress.beginStage("writing output");
    std::vector<IntegerArray> arrays;
    if (!result.findings.empty())
    {
        arrays.push_back(validPointMask(result.findings, options.mode));
    }
    completeForOutput(result, options, arguments_.writesDistances);
    std::ranges::transform(distributed, std::back_inserter(result.fields), &DistributedLoads::atTarget);
    std::vector<PendingOutput> outputs;
    outputs.push_back(
        output.prepare([&](const std::filesystem::path& path)
                       { files.warnOf(target.writeWith(result.fields, arrays, path, files.writing())); }));

    TransferRecord record{source, fields, &target, result, options, progress.times(), placement_.placement()};
    record.validation = validation ? &*validation : nullptr;
    record.loads = distributed;
    const Verdict verdict = judge(record, quality_.rules());
    record.verdict = &verdict;
    recordFiles.prepare(record, progress, outputs);
    publishAll(outputs); // all of them are complete
    if (!files.quiet)
    {
        printSummary(files.summaryStream(), record);
    }
    if (result.outcome == Outcome::propagationWarning)
    {
        warn("regions of the target are not connected to any region with values; they hold 0", "unreached");
        return QualityArguments::report(verdict, ExitStatus::propagationWarning);
    }
    return QualityArguments::report(verdict, ExitStatus::done);
}

} // namespace veltrane
