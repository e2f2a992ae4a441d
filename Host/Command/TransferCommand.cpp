#include "TransferCommand.h"

#include "FieldChoice.h"
#include "FileFormat.h"
#include "JsonReport.h"
#include "ProgressBar.h"
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

OutsideMode parseMode(const std::string& mode)
{
    return static_cast<OutsideMode>(mode.front() - '0');
}

TransferResult transferExplainingFailures(const Mesh& source, std::span<const Field> fields, const Mesh& target,
                                          const TransferOptions& options)
{
    try
    {
        return transfer(source, fields, target, options);
    }
    catch (const TargetOutside& error)
    {
        throw TargetOutside(text(bareMessage(error.what()), "; --mode 1 gives such nodes the default value, --mode 2 ",
                                 "the values of neighbouring nodes"));
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
    command_
        ->add_option("--mode", mode_,
                     "what happens if nodes of the target are far outside the source:\n"
                     "0 the transfer fails, 1 they get the default value,\n"
                     "2 they get values propagated from neighbouring nodes")
        ->check(CLI::IsMember({"0", "1", "2"}))
        ->type_name("MODE")
        ->capture_default_str();
    command_
        ->add_option("--field", fields_,
                     "a point-data array to be transferred, may be repeated;\n"
                     "all those of floating-point numbers if none is given")
        ->type_name("NAME")
        ->expected(1)
        ->take_all()
        ->allow_extra_args(false);
    command_->add_option("--default", defaultValue_, "the default value of mode 1 (0)")->type_name("VALUE");
    files_.addTolerance(*command_, "how exactly points are located, as part of the size\nof an element (0.001)");
    files_.addSkipUnsupported(*command_);
    files_.addReplace(*command_, "let transferred fields replace the target's arrays of the same names");
    report_.addTo(*command_);
    files_.addQuiet(*command_, "print no summary and no progress");
    command_->footer(
        text("Example:\n"
             "  veltrane transfer thermal.vtu structure.vtu -o loaded.vtu --field temperature --mode 2\n\n",
             meshFormatHelp, materialHelp, exitStatusHelp));
}

ExitStatus TransferCommand::run() const
{
    TransferOptions options;
    options.mode = parseMode(mode_);
    if (defaultValue_ && options.mode != OutsideMode::defaultValue)
    {
        throw InvalidOption("--default has an effect only together with --mode 1");
    }
    options.defaultValue = defaultValue_.value_or(0.0F);
    options.tuning.tolerance = files_.tolerance;
    checkRequestedFields(fields_);
    if (!isMeshOutput(formatOf(files_.output)))
    {
        throw InvalidOption(text("the output '", files_.output, "' is not named ", meshOutputEndings));
    }

    const OutputFile output = files_.openOutput();
    const std::optional<OutputFile> report = openCompanion(report_, files_);
    ProgressBar progress(!files_.quiet);
    progress.beginStage("reading source");
    MeshFile source = files_.readSource();
    progress.beginStage("reading target");
    MeshFile target = files_.readTarget(MeshRole::target);

    const std::vector<std::string> names = chooseFields(source, fields_, "transferred");
    for (const std::string& name : names)
    {
        files_.checkNewArray(target, ArrayPlace::points, name);
    }
    std::vector<Field> fields;
    std::ranges::transform(names, std::back_inserter(fields), [&](const auto& name) { return source.field(name); });
    checkOverlap(source.mesh().boundingBox(), target.mesh().boundingBox());
    if (const auto missing = matchMaterials(source, target))
    {
        if (options.mode == OutsideMode::error)
        {
            throw BadFile(*missing);
        }
        warn(*missing);
    }

    options.progress = progress.callback("interpolating");
    const TransferResult result = transferExplainingFailures(source.mesh(), fields, target.mesh(), options);
    progress.beginStage("writing output");
    output.write([&](const std::filesystem::path& path) { target.writeWith(result.fields, path); });
    progress.finish();

    const TransferRecord record{source, fields, target, result, options, progress.times()};
    writeCompanion(report, [&](const std::filesystem::path& path) { writeReport(record, path); });
    if (!files_.quiet)
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
