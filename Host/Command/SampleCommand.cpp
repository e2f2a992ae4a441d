#include "SampleCommand.h"

#include "FieldStatistics.h"
#include "FileFormat.h"
#include "Interruption.h"
#include "PointFile.h"
#include "ProgressBar.h"
#include "Report.h"
#include "Text.h"
#include "TransferRecord.h"
#include "TransferSummary.h"

#include <algorithm>
#include <iostream>

namespace veltrane
{
namespace
{

TransferResult sampleExplainingFailures(const Mesh& source, std::span<const Field> fields, const PointCloud& points,
                                        const TransferOptions& options)
{
    try
    {
        return sample(source, fields, points, options);
    }
    catch (const TargetOutside& error)
    {
        throw TargetOutside(text(bareMessage(error.what()), "; --outside default gives such points the default value"));
    }
    catch (const TransferError& error)
    {
        throw TransferError(text(bareMessage(error.what()), excessText(source.boundingBox(), points.boundingBox())),
                            error.code());
    }
}

void printSummary(std::ostream& stream, const MeshFile& source, std::span<const Field> fields, const PointFile& points,
                  const TransferResult& result)
{
    const auto count = [&](ValueOrigin origin) { return std::ranges::count(result.origins, origin); };
    printLine(stream, "source", source.path().string());
    printLine(stream, "", describe(source.mesh()));
    printLine(stream, "points", points.path().string());
    printCount(stream, "points", points.points().pointCount());
    printCount(stream, "  inside", count(ValueOrigin::element));
    printCount(stream, "  outside", count(ValueOrigin::defaultValue), "in no cell of the source: default value");
    if (count(ValueOrigin::none) > 0)
    {
        printCount(stream, "  not mapped", count(ValueOrigin::none), "of other materials: default value");
    }
    stream << '\n';
    printValues(stream, "values at points", fields, result.fields);
}

} // namespace

SampleCommand::SampleCommand(CLI::App& app)
    : command_(app.add_subcommand("sample", "Samples the point data of a mesh file at points"))
{
    files_.addFiles(*command_, "mesh file with the fields, of volume cells",
                    "file with the points (.csv, .vtp, or any mesh file)",
                    "file to be written: the points with the fields added\n(.csv, .vtp, .vtu, .vtk)", "POINTS");
    arguments_.addFields(*command_);
    arguments_.addOutside(*command_, "points", false);
    files_.materials.addTo(*command_, "points to receive values");
    arguments_.addTuning(*command_);
    files_.addSkipUnsupported(*command_);
    files_.addReplace(*command_, "let sampled fields replace the points' arrays of the same names");
    log_.addTo(*command_);
    files_.addQuiet(*command_, "print no summary and no progress");
    command_->footer(
        text("Example:\n"
             "  veltrane sample thermal.vtu sensors.csv -o readings.csv --outside default --default nan\n\n"
             "The first line of a .csv file names the columns, among them x, y and z. Points have materials if\n"
             "they have point data of that name; an element holds a point only if it has the point's material.\n"
             "The array vtkValidPointMask of the output is 1 where an element of the source has given the values,\n"
             "-1 where they are default values, and 0 at points that are not mapped, which hold the default value.\n\n",
             meshFormatHelp, exitStatusHelp));
}

ExitStatus SampleCommand::run() const
{
    TransferOptions options = arguments_.options(!files_.materials.states.empty());
    if (!isPointOutput(formatOf(files_.output)))
    {
        throw InvalidOption(text("the output '", files_.output, "' is not named ", pointOutputEndings));
    }

    const OutputFile output = files_.openOutput();
    const std::optional<OutputFile> log = openCompanion(log_, files_);
    ProgressBar progress(!files_.quiet);
    progress.beginStage("reading source");
    MeshFile source = files_.readSource(arguments_.cellsAsNodes);
    checkSourceCells(source);
    progress.beginStage("reading points");
    // An array that is asked for must be there in the source; the points may do without.
    PointFile points(files_.target);
    if (files_.materials.array && points.hasArray(*files_.materials.array))
    {
        points = PointFile(files_.target, files_.materials.array);
    }
    throwIfInterrupted();

    const std::vector<ChosenField> chosen = arguments_.chooseFields(source);
    for (const ChosenField& field : chosen)
    {
        if (!files_.replace && points.hasArray(field.newName))
        {
            throw BadFile(text("'", files_.target, "' has a point-data array '", field.newName,
                               "' of its own; --replace lets the new one take its place"));
        }
    }
    options.fieldOptions = arguments_.fieldOptions(chosen);
    const std::vector<Field> fields = readFields(source, chosen);
    options.targetMapping = files_.materials.select(points.points().materials(), points.hasMaterials(), points.path());
    checkOverlap(source.mesh().boundingBox(), points.points().boundingBox());
    if (const auto missing = files_.materials.match(source.mesh(), source.materialArray().has_value(), points.points(),
                                                    points.hasMaterials(), options.targetMapping))
    {
        if (options.mode == OutsideMode::error)
        {
            throw BadFile(*missing);
        }
        warn(*missing);
    }

    options.progress = progress.callback("sampling");
    const TransferResult result = sampleExplainingFailures(source.mesh(), fields, points.points(), options);
    progress.beginStage("writing output");
    const IntegerArray mask = validPointMask(result.origins);
    output.write([&](const std::filesystem::path& path)
                 { points.writeWith(result.fields, mask.name, mask.values, path); });
    progress.finish();
    writeCompanion(log, [&](const std::filesystem::path& path) { writeLog(result, path); });
    if (!files_.quiet)
    {
        printSummary(std::cout, source, fields, points, result);
    }
    return ExitStatus::done;
}

} // namespace veltrane
