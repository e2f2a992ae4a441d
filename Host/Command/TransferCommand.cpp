#include "TransferCommand.h"

#include "Interruption.h"
#include "Materials.h"
#include "MeshFile.h"
#include "OutputFile.h"
#include "ProgressBar.h"
#include "Text.h"
#include "Transfer.h"
#include "TransferSummary.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <set>

namespace veltrane
{
namespace
{

void warn(const std::string& sentence)
{
    std::cerr << "veltrane: warning: " << sentence << '\n';
}

std::string quotedNames(const std::vector<std::string>& names)
{
    std::string list;
    for (const std::string& name : names)
    {
        list += text(list.empty() ? "" : ", ", "'", name, "'");
    }
    return list;
}

std::string namesOf(const std::vector<Material>& materials)
{
    std::string list;
    for (const Material& material : materials)
    {
        list += text(list.empty() ? "" : ", ", material.name);
    }
    return list;
}

OutsideMode parseMode(const std::string& mode)
{
    return static_cast<OutsideMode>(mode.front() - '0');
}

/// The names of the fields to be transferred: those asked for, or all that can be.
std::vector<std::string> chooseFields(const MeshFile& source, const std::vector<std::string>& requested)
{
    std::vector<std::string> available;
    for (const PointArray& array : source.pointArrays())
    {
        if (!array.isFloatingPoint)
        {
            continue;
        }
        available.push_back(array.name);
        if (array.componentCount > maxComponentCount && requested.empty())
        {
            available.pop_back();
            warn(text("left out point-data array '", array.name, "': it has ", array.componentCount,
                      " components, more than the ", maxComponentCount, " that can be transferred"));
        }
    }
    if (available.empty())
    {
        throw BadFile(text("'", source.path().string(), "' has no floating-point point data to be transferred"));
    }
    for (const std::string& name : requested)
    {
        if (std::ranges::find(available, name) == available.end())
        {
            throw BadFile(text("'", source.path().string(), "' has no floating-point point-data array '", name,
                               "', only ", quotedNames(available)));
        }
    }
    return requested.empty() ? available : requested;
}

void checkRequestedFields(const std::vector<std::string>& names)
{
    std::set<std::string> seen;
    for (const std::string& name : names)
    {
        if (!seen.insert(name).second)
        {
            throw InvalidOption(text("--field ", name, " is given twice"));
        }
    }
}

void checkTargetArrays(const MeshFile& target, const std::vector<std::string>& names)
{
    for (const std::string& name : names)
    {
        if (std::ranges::find(target.pointArrays(), name, &PointArray::name) != target.pointArrays().end())
        {
            throw BadFile(text("the target '", target.path().string(), "' has a point-data array '", name,
                               "' of its own; --replace lets the transferred one take its place"));
        }
    }
}

void matchMaterials(MeshFile& source, MeshFile& target, OutsideMode mode)
{
    if (!source.materialArray() || !target.materialArray())
    {
        return; // all have the same state code from the beginning
    }
    const std::vector<std::string> missing = matchMaterialsByName(source.mesh(), target.mesh());
    if (missing.empty())
    {
        return;
    }
    std::string list;
    for (const std::string& name : missing)
    {
        list += text(list.empty() ? "" : ", ", name);
    }
    const std::string sentence = text("the source has no material", missing.size() == 1 ? " " : "s ", list,
                                      ", which the target has; the source has ", namesOf(source.mesh().materials()));
    if (mode == OutsideMode::error)
    {
        throw BadFile(sentence);
    }
    warn(sentence);
}

// The library admits targets within the source's box and this part of its size around it.
constexpr float admittedExcess = 0.05F;

std::string intervalText(const Box& box, std::size_t axis)
{
    return text("xyz"[axis], " = ", box.min[axis], " to ", box.max[axis]);
}

void checkOverlap(const Box& source, const Box& target)
{
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        const float margin = admittedExcess * (source.max[axis] - source.min[axis]);
        if (target.min[axis] > source.max[axis] + margin || target.max[axis] < source.min[axis] - margin)
        {
            throw BadFile(text("the meshes do not overlap: the source reaches from ", intervalText(source, axis),
                               ", the target from ", intervalText(target, axis)));
        }
    }
}

/// Where the target leaves the box that the library admits, or nothing.
std::string excessText(const Box& source, const Box& target)
{
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        const float margin = admittedExcess * (source.max[axis] - source.min[axis]);
        const float targetMargin = 0.01F * (target.max[axis] - target.min[axis]);
        if (target.min[axis] - targetMargin <= source.min[axis] - margin ||
            target.max[axis] + targetMargin >= source.max[axis] + margin)
        {
            return text(": the target reaches from ", intervalText(target, axis), ", the source only from ",
                        intervalText(source, axis));
        }
    }
    return "";
}

/// The library's message without its heading and full stop.
std::string bareMessage(std::string message)
{
    constexpr std::string_view heading = "Error: ";
    if (message.starts_with(heading))
    {
        message.erase(0, heading.size());
    }
    if (message.ends_with('.'))
    {
        message.pop_back();
    }
    return message;
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
    command_->add_option("SOURCE", source_, "mesh file with the fields (.vtu), of volume cells")
        ->required()
        ->type_name("");
    command_->add_option("TARGET", target_, "mesh file that is to receive the fields (.vtu)")
        ->required()
        ->type_name("");
    command_->add_option("-o,--output", output_, "file to be written: the target with the fields added (.vtu)")
        ->required()
        ->type_name("FILE");
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
    command_
        ->add_option("--tolerance", tolerance_,
                     "how exactly points are located, as part of the size\nof an element (0.001)")
        ->type_name("VALUE");
    command_->add_flag("--replace", replace_, "let transferred fields replace the target's arrays of the same names");
    command_->add_flag("--quiet", quiet_, "print no summary and no progress");
    command_->footer(
        text("Example:\n"
             "  veltrane transfer thermal.vtu structure.vtu -o loaded.vtu --field temperature --mode 2\n\n"
             "Cells of source and target correspond only within materials of the same number, if both\n"
             "files have a cell-data array 'material' (or MaterialIds, part, PartId, gmsh:physical ...).\n\n",
             exitStatusHelp));
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
    options.tuning.tolerance = tolerance_;
    checkRequestedFields(fields_);
    if (std::filesystem::path(output_).extension() != ".vtu")
    {
        throw InvalidOption(text("the output '", output_, "' is not named .vtu, as its format is"));
    }

    const std::array<std::filesystem::path, 2> inputs{source_, target_};
    const OutputFile output(output_, inputs);
    MeshFile source(source_, MeshRole::source);
    throwIfInterrupted();
    MeshFile target(target_, MeshRole::target);
    throwIfInterrupted();

    const std::vector<std::string> names = chooseFields(source, fields_);
    if (!replace_)
    {
        checkTargetArrays(target, names);
    }
    std::vector<Field> fields;
    std::ranges::transform(names, std::back_inserter(fields), [&](const auto& name) { return source.field(name); });
    checkOverlap(source.mesh().boundingBox(), target.mesh().boundingBox());
    matchMaterials(source, target, options.mode);

    const TransferResult result = [&]
    {
        ProgressBar bar(!quiet_);
        options.progress = [&](const Progress& progress)
        {
            bar.show(progress);
            return !isInterrupted();
        };
        return transferExplainingFailures(source.mesh(), fields, target.mesh(), options);
    }();
    throwIfInterrupted();
    output.write(
        [&](const std::filesystem::path& path)
        {
            target.writeWith(result.fields, path);
            throwIfInterrupted();
        });

    if (!quiet_)
    {
        printSummary(std::cout, source, fields, target, result, options);
    }
    if (result.outcome == Outcome::propagationWarning)
    {
        warn("regions of the target are not connected to any region with values; they hold 0");
        return ExitStatus::propagationWarning;
    }
    return ExitStatus::done;
}

} // namespace veltrane
