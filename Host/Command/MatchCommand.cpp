#include "MatchCommand.h"

#include "FileFormat.h"
#include "MatchDiagnosis.h"
#include "MatchTables.h"
#include "ProgressBar.h"
#include "Report.h"
#include "Text.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <iostream>
#include <string_view>

namespace veltrane
{
namespace
{

/// What distinguishes the two sorts of matches.
struct Sort
{
    std::string_view points; ///< what is matched
    std::string_view item;   ///< what is looked for if that fails, by itself and where its partner is missing
    std::string_view partner;
    std::string_view partnerOfMaterial; ///< the same, if those of other materials do not count
    std::string_view otherwise;         ///< what to say if none is missing
    MeshRole targetRole;
    ArrayPlace arrayPlace;
    std::vector<std::string> arrayNames;
    std::function<MatchTable(const MeshFile& source, const MeshFile& target, const MatchOptions& options)> match;
    std::function<Unmatched(const Mesh& source, const Mesh& target, const std::vector<bool>& selection)> findUnmatched;
    std::function<std::string(const MeshFile& target, int item)> describe;
};

const Sort& nodeSort()
{
    static const Sort sort{.points = "nodes",
                           .item = "node",
                           .partner = "source node",
                           .partnerOfMaterial = "source node of the same material",
                           .otherwise = "",
                           .targetRole = MeshRole::target,
                           .arrayPlace = ArrayPlace::points,
                           .arrayNames = {"source_node"},
                           .match = matchNodeTable,
                           .findUnmatched = findUnmatchedNodes,
                           .describe = [](const MeshFile& target, int node) {
                               return text("node ", target.nodeLabel(node), " at ",
                                           placeText(target.mesh().nodePosition(node)));
                           }};
    return sort;
}

const Sort& gaussPointSort()
{
    static const Sort sort{
        .points = "Gauss points",
        .item = "element",
        .partner = "source element of the same kind",
        .partnerOfMaterial = "source element of the same kind and material",
        .otherwise = "; each target element has a source element of the same kind in its place, but the one that holds "
                     "its centre was another one, as it happens where source elements overlap",
        .targetRole = MeshRole::gaussPointTarget,
        .arrayPlace = ArrayPlace::cells,
        .arrayNames = {"source_element", "source_gauss_point"},
        .match = matchGaussPointTable,
        .findUnmatched = findUnmatchedElements,
        .describe = [](const MeshFile& target, int element) {
            return text("element ", target.cellOf(element) + 1, " around ",
                        placeText(centreOf(target.mesh(), element)));
        }};
    return sort;
}

/// Lines that tell which items have no partner.
std::string listText(const Sort& sort, const MeshFile& target, const Unmatched& unmatched)
{
    if (unmatched.nowhere.empty() && unmatched.elsewhereOnly.empty())
    {
        return std::string(sort.otherwise);
    }
    constexpr std::size_t mostItems = 10;
    const auto list = [&](const std::vector<int>& items, std::string_view partner, std::string_view but)
    {
        if (items.empty())
        {
            return std::string();
        }
        std::string lines =
            text("\n  ", items.size(), " of ", unmatched.selectedCount, " target ", sort.item, "s without a ", partner,
                 " within ", unmatched.tolerance, but, items.size() > mostItems ? ", the first:" : ":");
        for (std::size_t i = 0; i < std::min(items.size(), mostItems); ++i)
        {
            lines += text("\n    ", sort.describe(target, items[i]));
        }
        return lines;
    };
    return list(unmatched.nowhere, sort.partner, "") +
           list(unmatched.elsewhereOnly, sort.partnerOfMaterial, ", but with one of another material");
}

/// The library calls a transfer the Mapping option.
std::string namingTransfer(std::string message)
{
    constexpr std::string_view option = "the Mapping option";
    const std::size_t place = message.find(option);
    return place == std::string::npos ? message : message.insert(place + option.size(), " (veltrane transfer)");
}

/// What the library's message about a failure does not tell.
std::string explain(const Sort& sort, const MeshFile& source, const MeshFile& target, const MatchOptions& options)
{
    return unitHint(source.mesh().boundingBox(), target.mesh().boundingBox(options.targetMapping)) +
           listText(sort, target, sort.findUnmatched(source.mesh(), target.mesh(), options.targetMapping));
}

MatchTable matchExplainingFailures(const Sort& sort, const MeshFile& source, const MeshFile& target,
                                   const MatchOptions& options)
{
    try
    {
        return sort.match(source, target, options);
    }
    catch (const TransferError& error)
    {
        throw TransferError(text("the ", sort.points, " cannot be matched: ", namingTransfer(bareMessage(error.what())),
                                 explain(sort, source, target, options)),
                            error.code());
    }
}

ExitStatus run(const Sort& sort, const MeshPairArguments& files)
{
    const FileFormat* format = files.outputFormat();
    if (!isTable(format) && !isMeshOutput(format))
    {
        throw InvalidOption(text("the output '", files.output, "' is not named .csv, ", endingsOf(isMeshOutput)));
    }
    if (files.replace && !isMeshOutput(format))
    {
        throw InvalidOption(text("--replace has an effect only on an output named ", endingsOf(isMeshOutput)));
    }
    files.checkCompression();

    const OutputFile output = files.openOutput();
    ProgressBar progress(!files.quiet);
    progress.beginStage("reading source");
    std::shared_ptr<VtuAhead> targetAhead = files.readTargetAhead();
    MeshFile source = files.readSource();
    progress.beginStage("reading target");
    MeshFile target = files.readTarget(sort.targetRole, std::move(targetAhead));
    useCommonMaterials(source, target);
    if (isMeshOutput(format))
    {
        for (const std::string& name : sort.arrayNames)
        {
            files.checkNewArray(target, sort.arrayPlace, name);
        }
    }
    MatchOptions options{.targetMapping = files.materials.select(target.mesh().materials(),
                                                                 target.materialArray().has_value(), target.path()),
                         .tuning = {.tolerance = files.tolerance},
                         .rules = {},
                         .threads = files.threads};
    files.checkOverlap(source.mesh().boundingBox(), target.mesh().boundingBox(options.targetMapping));
    if (const auto missing = matchMaterials(files.materials, source, target, options.targetMapping))
    {
        throw BadFile(*missing);
    }

    options.progress = progress.callback(text("matching ", sort.points));
    const MatchTable table = matchExplainingFailures(sort, source, target, options);
    progress.beginStage("writing output");
    output.write(
        [&](const std::filesystem::path& path)
        {
            if (isTable(format))
            {
                writeCsv(table, path);
            }
            else
            {
                files.warnOf(target.writeWith({}, table.arrays, path, files.writing()));
            }
        });
    progress.finish();
    if (!files.quiet)
    {
        files.summaryStream() << table.summary << '\n';
    }
    return ExitStatus::done;
}

} // namespace

MatchCommand::MatchCommand(CLI::App& app)
    : command_(app.add_subcommand("match", "Finds the source nodes or Gauss points at the target's places, exactly")),
      nodes_{.command = command_->add_subcommand("nodes", "Finds the source node in the place of each target node")},
      gaussPoints_{.command = command_->add_subcommand(
                       "gauss", "Finds the source Gauss point in the place of each target Gauss point")}
{
    command_->require_subcommand(1);
    command_->footer("Examples:\n"
                     "  veltrane match nodes assembly.vtu part.vtu -o nodes.csv\n"
                     "  veltrane match gauss assembly.vtu part.vtu -o gauss.csv\n");

    addOptions(nodes_, nodeSort().points);
    nodes_.command->footer(
        text("Example:\n"
             "  veltrane match nodes assembly.vtu part.vtu -o nodes.csv --only 2,5\n\n"
             "A .csv output has a line for each matched node: target_node,source_node.\n"
             "A .vtu or .vtk output is the target with the point array source_node, 0 at nodes not to be matched.\n"
             "Nodes are the points of the files, counted from 1. Partners may be apart by a thousandth\n"
             "of the mean source cell. A node is of the material of the first cell that it is part of.\n\n",
             meshFormatHelp(), materialHelp, exitStatusHelp));

    gaussPoints_.files.keepsRepeatedNodes = true; // Gauss points are those of the cells as they are given
    addOptions(gaussPoints_, gaussPointSort().points,
               "how exactly the source cell around the centre of a target\n"
               "cell is located, as part of its size (0.001)");
    gaussPoints_.files.addGaussRule(*gaussPoints_.command);
    gaussPoints_.command->footer(text(
        "Example:\n"
        "  veltrane match gauss assembly.vtu part.vtu -o gauss.vtu\n\n"
        "A .csv output has a line for each matched Gauss point:\n"
        "target_element,target_gauss_point,source_element,source_gauss_point.\n"
        "A .vtu or .vtk output is the target with the cell arrays source_element and source_gauss_point, which has a\n"
        "component per Gauss point; they are 0 where nothing was to be matched or there is no Gauss point.\n"
        "Elements are the cells of the files, counted from 1, and Gauss points count from 1 in each of them.\n"
        "Surface cells are left out. Partners may be apart by a thousandth of the mean source cell.\n\n",
        meshFormatHelp(), materialHelp, exitStatusHelp));
}

void MatchCommand::addOptions(Request& request, std::string_view points, const std::string& toleranceHelp)
{
    CLI::App& command = *request.command;
    request.files.addFiles(command, text("mesh file with the ", points, " to be found, of volume cells"),
                           "mesh file of the same geometry, or of a part of it",
                           "file to be written: a table (.csv, or - for standard\noutput), or the target with the "
                           "numbers found (.vtu, .vtk)");
    request.files.streamEnding = ".csv";
    request.files.materials.addTo(command, text(points, " to be matched"));
    if (!toleranceHelp.empty())
    {
        request.files.addTolerance(command, toleranceHelp);
    }
    request.files.addSkipUnsupported(command);
    request.files.addReplace(command, "let the numbers found replace the target's arrays of the same names");
    request.files.addThreads(command);
    request.files.addCompression(command);
    request.files.addQuiet(command, "print no result line and no progress");
}

ExitStatus MatchCommand::run() const
{
    if (nodes_.command->parsed())
    {
        return veltrane::run(nodeSort(), nodes_.files);
    }
    return veltrane::run(gaussPointSort(), gaussPoints_.files);
}

} // namespace veltrane
