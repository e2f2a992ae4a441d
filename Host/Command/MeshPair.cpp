#include "MeshPair.h"

#include "ElementChecks.h"
#include "FormatList.h"
#include "GridMaterials.h"
#include "Interruption.h"
#include "Report.h"
#include "Text.h"
#include "VtuAhead.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <iostream>
#include <iterator>
#include <utility>

namespace veltrane
{
namespace
{

/// By which part of the source's box the target's may miss it and still has nodes in common with it.
constexpr float admittedGap = 0.05F;

std::string intervalText(const Box& box, std::size_t axis)
{
    return text("xyz"[axis], " = ", box.min[axis], " to ", box.max[axis]);
}

MeshFile read(const std::string& path, const MeshReading& reading)
{
    MeshFile file(path, reading);
    throwIfInterrupted();
    if (!file.skippedCells().empty())
    {
        warn(text("left out cells of '", path, "' that cannot be used: ", cellCountText(file.skippedCells())),
             text("cells left out ", reading.role == MeshRole::source));
    }
    return file;
}

} // namespace

std::string meshFormatHelp()
{
    constexpr std::size_t width = 100;
    const std::string words =
        text("The ending tells the format of a mesh file; of one with several steps it is the last step. Read: ",
             endingsOf(isMeshInput), ". Written: ", endingsOf(isMeshOutput), ".");
    std::string lines;
    std::size_t begin = 0;
    while (words.size() - begin > width)
    {
        const std::size_t end = words.rfind(' ', begin + width);
        lines += words.substr(begin, end - begin) + '\n';
        begin = end + 1;
    }
    return lines + words.substr(begin) + "\n\n";
}

std::string namesOf(const std::vector<Material>& materials)
{
    std::vector<std::string> names;
    std::ranges::transform(materials, std::back_inserter(names), &Material::name);
    return joined(names);
}

void MeshPairArguments::addFiles(CLI::App& command, const std::string& sourceHelp, const std::string& targetHelp,
                                 const std::string& outputHelp, const std::string& targetName)
{
    command.add_option("SOURCE", source, sourceHelp)->required()->type_name("");
    command.add_option(targetName, target, targetHelp)->required()->type_name("");
    command.add_option("-o,--output", output, outputHelp)->required()->type_name("FILE");
}

void MeshPairArguments::addSkipUnsupported(CLI::App& command)
{
    command.add_flag("--skip-unsupported", skipUnsupported,
                     "leave out volume cells that cannot be used, such as\npolyhedra in a source, instead of failing");
}

void MeshPairArguments::addTolerance(CLI::App& command, const std::string& help)
{
    command.add_option("--tolerance", tolerance, help)->type_name("VALUE");
}

void MeshPairArguments::addReplace(CLI::App& command, const std::string& help)
{
    command.add_flag("--replace", replace, help);
}

void MeshPairArguments::addGaussRule(CLI::App& command)
{
    command
        .add_option("--gauss-rule", gaussRule,
                    "the Gauss points of hexahedra with 20 or 27 nodes:\n"
                    "full: 27,\n"
                    "reduced: 8")
        ->check(CLI::IsMember({"full", "reduced"}))
        ->type_name("RULE")
        ->capture_default_str();
}

GaussPointRule MeshPairArguments::gaussPointRule() const
{
    return gaussRule == "reduced" ? GaussPointRule::reduced : GaussPointRule::full;
}

void MeshPairArguments::addThreads(CLI::App& command)
{
    command
        .add_option("--threads", threads,
                    "threads for the computation and the output (0: all cores\n"
                    "that may be used); results do not depend on it")
        ->type_name("N")
        ->check(CLI::Range(0, 1024));
}

void MeshPairArguments::addCompression(CLI::App& command)
{
    command
        .add_option("--compression", compression,
                    "how the arrays of a .vtu or .vtp output are compressed:\n"
                    "none: not at all,\n"
                    "fast: quickly,\n"
                    "small: to some percent less, in several times the time\n(fast)")
        ->check(CLI::IsMember({"none", "fast", "small"}))
        ->type_name("HOW");
}

FileWriting MeshPairArguments::writing() const
{
    return {.compression = compression == "none"    ? Compression::none
                           : compression == "small" ? Compression::small
                                                    : Compression::fast,
            .threads = threads};
}

void MeshPairArguments::checkCompression() const
{
    const FileFormat* format = outputFormat();
    if (!compression.empty() && format != nullptr && !isCollection(format) && !format->isCompressed)
    {
        throw InvalidOption(text("--compression has no effect on the output '", output, "', only on .vtu and .vtp"));
    }
}

void MeshPairArguments::warnOf(const LeftOut& leftOut) const
{
    if (!leftOut.empty())
    {
        warn(text("the output '", output, "' cannot hold ", joined(leftOut)), "left out of the output");
    }
}

void MeshPairArguments::addQuiet(CLI::App& command, const std::string& help)
{
    command.add_flag("--quiet", quiet, help);
}

OutputFile MeshPairArguments::openOutput() const
{
    if (isOutputStandard())
    {
        return OutputFile::standardOutput(streamEnding);
    }
    const std::array<std::filesystem::path, 2> inputs{source, target};
    return OutputFile(output, inputs);
}

const FileFormat* MeshPairArguments::outputFormat() const
{
    return formatOf(isOutputStandard() ? "-" + streamEnding : output);
}

std::ostream& MeshPairArguments::summaryStream() const
{
    return isOutputStandard() ? std::cerr : std::cout;
}

MeshFile MeshPairArguments::readSource(bool cellsAsNodes, const Placement& placement,
                                       std::shared_ptr<VtuAhead> ahead) const
{
    return read(source, {.role = MeshRole::source,
                         .skipUnsupported = skipUnsupported,
                         .cellsAsNodes = cellsAsNodes,
                         .materialArray = materials.array,
                         .step = step,
                         .placement = placement,
                         .keepsRepeatedNodes = keepsRepeatedNodes,
                         .gaussPointRule = gaussPointRule(),
                         .threads = threads,
                         .ahead = std::move(ahead)});
}

std::shared_ptr<VtuAhead> MeshPairArguments::readTargetAhead() const
{
    return VtuAhead::begin(target, threads);
}

MeshFile MeshPairArguments::readTarget(MeshRole role, std::shared_ptr<VtuAhead> ahead) const
{
    return read(target, {.role = role,
                         .skipUnsupported = skipUnsupported,
                         .materialArray = materials.array,
                         .gaussPointRule = gaussPointRule(),
                         .threads = threads,
                         .ahead = std::move(ahead)});
}

void MeshPairArguments::checkNewArray(const MeshFile& targetFile, ArrayPlace place, const std::string& name) const
{
    if (!replace && targetFile.hasArray(place, name))
    {
        throw BadFile(text("the target '", target, "' has a ",
                           place == ArrayPlace::points  ? "point"
                           : place == ArrayPlace::cells ? "cell"
                                                        : "field",
                           "-data array '", name, "' of its own; --replace lets the new one take its place"));
    }
}

void MeshPairArguments::checkOverlap(const Box& sourceBox, const Box& targetBox) const
{
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        const float margin = admittedGap * (sourceBox.max[axis] - sourceBox.min[axis]);
        if (targetBox.min[axis] > sourceBox.max[axis] + margin || targetBox.max[axis] < sourceBox.min[axis] - margin)
        {
            throw BadFile(text("the source '", source, "' and the target '", target,
                               "' do not overlap: the source reaches from ", intervalText(sourceBox, axis),
                               ", the target from ", intervalText(targetBox, axis), unitHint(sourceBox, targetBox)));
        }
    }
}

void MaterialArguments::addTo(CLI::App& command, const std::string& selected)
{
    command
        .add_option("--material-array", array,
                    "the cell-data array that numbers the materials of both\nfiles (the first of the usual names)")
        ->type_name("NAME");
    command.add_flag("--ignore-materials", ignored, "let cells of different materials correspond");
    command
        .add_option("--state", states,
                    "the state code of a material, may be repeated; materials\n"
                    "of the same code correspond, others have codes of their own")
        ->type_name("ID=CODE")
        ->expected(1)
        ->take_all()
        ->allow_extra_args(false);
    command.add_option("--only", only, text("the target's materials of the ", selected, ",\nall if not given"))
        ->type_name("ID,...")
        ->delimiter(',')
        ->expected(1)
        ->take_all()
        ->allow_extra_args(false);
}

StateCodes MaterialArguments::stateCodes() const
{
    if (ignored && !states.empty())
    {
        throw InvalidOption("--state and --ignore-materials contradict each other");
    }
    StateCodes codes;
    for (const std::string& argument : states)
    {
        const std::size_t sign = argument.find('=');
        int code = 0;
        const char* end = argument.data() + argument.size();
        const auto [rest, failure] = std::from_chars(argument.data() + std::min(sign + 1, argument.size()), end, code);
        constexpr int largest = 1000000; // leaves room for the codes of the other materials
        if (sign == std::string::npos || failure != std::errc() || rest != end || code == -1 || code > largest)
        {
            throw InvalidOption(text("--state ", argument, " is not ID=CODE with a whole number, at most ", largest,
                                     " and not -1, as CODE"));
        }
        if (!codes.try_emplace(argument.substr(0, sign), code).second)
        {
            throw InvalidOption(text("--state is given twice for material ", argument.substr(0, sign)));
        }
    }
    return codes;
}

std::vector<bool> MaterialArguments::select(const std::vector<Material>& materials, bool haveNumbers,
                                            const std::filesystem::path& file) const
{
    if (only.empty())
    {
        return {};
    }
    if (!haveNumbers)
    {
        throw BadFile(text("'", file.string(), "' has no materials to choose from by --only"));
    }
    std::vector<bool> selection(materials.size(), false);
    for (const std::string& name : only)
    {
        const auto found = std::ranges::find(materials, name, &Material::name);
        if (found == materials.end())
        {
            throw BadFile(text("'", file.string(), "' has no material ", name, ", only ", namesOf(materials)));
        }
        selection[static_cast<std::size_t>(found - materials.begin())] = true;
    }
    return selection;
}

void MaterialArguments::checkUnused(const StateCodes& codes) const
{
    if (!codes.empty())
    {
        throw BadFile("--state needs materials in both files");
    }
}

void MaterialArguments::checkKnown(const StateCodes& codes, const std::vector<Material>& source,
                                   const std::vector<Material>& target)
{
    for (const auto& [name, code] : codes)
    {
        if (std::ranges::find(source, name, &Material::name) == source.end() &&
            std::ranges::find(target, name, &Material::name) == target.end())
        {
            throw BadFile(text("--state: there is no material ", name, "; the source has ", namesOf(source),
                               ", the target ", namesOf(target)));
        }
    }
}

std::optional<std::string> MaterialArguments::missingText(const std::vector<Material>& source,
                                                          const std::vector<Material>& target,
                                                          std::vector<std::string> missing,
                                                          const std::vector<bool>& selection)
{
    for (std::size_t i = 0; i < selection.size(); ++i)
    {
        if (!selection[i])
        {
            std::erase(missing, target[i].name);
        }
    }
    if (missing.empty())
    {
        return std::nullopt;
    }
    return text("the source has no material", missing.size() == 1 ? " " : "s ", joined(missing),
                ", which the target has; the source has ", namesOf(source));
}

std::optional<std::string> matchMaterials(const MaterialArguments& arguments, MeshFile& source, MeshFile& target,
                                          const std::vector<bool>& selection)
{
    return arguments.match(source.mesh(), source.materialArray().has_value(), target.mesh(),
                           target.materialArray().has_value(), selection);
}

namespace
{

void useCommonMaterialArray(MeshFile& source, MeshFile& target)
{
    if (!source.materialArray() || !target.materialArray() || source.materialArray() == target.materialArray())
    {
        return;
    }
    for (const char* name : usualMaterialArrays())
    {
        if (source.hasArray(ArrayPlace::cells, name) && target.hasArray(ArrayPlace::cells, name))
        {
            source.useMaterialArray(name);
            target.useMaterialArray(name);
            return;
        }
    }
}

} // namespace

void useCommonMaterials(MeshFile& source, MeshFile& target)
{
    useCommonMaterialArray(source, target);
    if (source.canNameMaterials() && target.canNameMaterials())
    {
        source.nameMaterials();
        target.nameMaterials();
    }
}

void checkSourceCells(const MeshFile& source, int threads)
{
    const Mesh& mesh = source.mesh();
    const auto [flat, inverted] = findElementFaults(mesh, threads);
    if (!flat.empty())
    {
        warn(text("'", source.path().string(), "' has ",
                  oneOrMore(static_cast<long long>(flat.size()), "cell", "cells"),
                  " without volume in single precision, in which nothing is found: ", cellList(source, flat)),
             "flat cells");
    }
    if (!inverted.empty())
    {
        warn(text("'", source.path().string(), "' has ",
                  oneOrMore(static_cast<long long>(inverted.size()), "cell that is", "cells that are"),
                  " inside out; the first is cell ", source.cellOf(inverted.front()), ", a ",
                  mesh.kindOf(inverted.front()).name),
             "cells inside out");
    }
}

std::string cellList(const MeshFile& file, const std::vector<int>& elements)
{
    constexpr std::size_t mostNamed = 3;
    const std::size_t named = std::min(elements.size(), mostNamed);
    std::string list = elements.size() == 1 ? "cell " : "cells ";
    for (std::size_t i = 0; i < named; ++i)
    {
        const bool isLast = i + 1 == elements.size();
        list += text(i == 0 ? "" : isLast ? " and " : ", ", file.cellOf(elements[i]));
    }
    return elements.size() > named ? text(list, " and ", elements.size() - named, " more") : list;
}

std::string unitHint(const Box& source, const Box& target)
{
    constexpr float suspicious = 300;
    constexpr float inch = 25.4F;
    constexpr float accuracy = 0.01F;
    const float ratio = target.size() / source.size();
    const bool isOnePoint = ratio == 0; // which has no size in any unit
    const float factor = ratio >= 1 ? ratio : 1 / ratio;
    const bool isInch = std::abs(factor - inch) <= accuracy * inch;
    if (isOnePoint || !(factor >= suspicious || isInch))
    {
        return "";
    }
    return text("; the target is ", isInch ? text(inch) : text(std::lround(factor)), " times as ",
                ratio >= 1 ? "large" : "small", " as the source: are both in the same unit of length?");
}

} // namespace veltrane
