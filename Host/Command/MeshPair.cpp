#include "MeshPair.h"

#include "Interruption.h"
#include "Materials.h"
#include "Report.h"
#include "Text.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace veltrane
{
namespace
{

// The library admits targets within the source's box and this part of its size around it.
constexpr float admittedExcess = 0.05F;

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
        warn(text("left out cells of '", path, "' that cannot be used: ", cellCountText(file.skippedCells())));
    }
    return file;
}

} // namespace

std::string namesOf(const std::vector<Material>& materials)
{
    std::vector<std::string> names;
    std::ranges::transform(materials, std::back_inserter(names), &Material::name);
    return joined(names);
}

void MeshPairArguments::addFiles(CLI::App& command, const std::string& sourceHelp, const std::string& targetHelp,
                                 const std::string& outputHelp)
{
    command.add_option("SOURCE", source, sourceHelp)->required()->type_name("");
    command.add_option("TARGET", target, targetHelp)->required()->type_name("");
    command.add_option("-o,--output", output, outputHelp)->required()->type_name("FILE");
}

void MeshPairArguments::addSkipUnsupported(CLI::App& command)
{
    command.add_flag("--skip-unsupported", skipUnsupported,
                     "leave out cells that cannot be used, such as quadratic\nhexahedra, instead of failing");
}

void MeshPairArguments::addTolerance(CLI::App& command, const std::string& help)
{
    command.add_option("--tolerance", tolerance, help)->type_name("VALUE");
}

void MeshPairArguments::addReplace(CLI::App& command, const std::string& help)
{
    command.add_flag("--replace", replace, help);
}

void MeshPairArguments::addQuiet(CLI::App& command, const std::string& help)
{
    command.add_flag("--quiet", quiet, help);
}

OutputFile MeshPairArguments::openOutput() const
{
    const std::array<std::filesystem::path, 2> inputs{source, target};
    return OutputFile(output, inputs);
}

MeshFile MeshPairArguments::readSource() const
{
    return read(source, {.role = MeshRole::source, .skipUnsupported = skipUnsupported});
}

MeshFile MeshPairArguments::readTarget(MeshRole role) const
{
    return read(target, {.role = role, .skipUnsupported = skipUnsupported});
}

void MeshPairArguments::checkNewArray(const MeshFile& targetFile, ArrayPlace place, const std::string& name) const
{
    if (!replace && targetFile.hasArray(place, name))
    {
        throw BadFile(text("the target '", target, "' has a ", place == ArrayPlace::points ? "point" : "cell",
                           "-data array '", name, "' of its own; --replace lets the new one take its place"));
    }
}

std::optional<std::string> matchMaterials(MeshFile& source, MeshFile& target, const std::vector<bool>& selection)
{
    if (!source.materialArray() || !target.materialArray())
    {
        return std::nullopt; // all have the same state code from the beginning
    }
    std::vector<std::string> missing = matchMaterialsByName(source.mesh(), target.mesh());
    const std::vector<Material>& materials = target.mesh().materials();
    for (std::size_t i = 0; i < selection.size(); ++i)
    {
        if (!selection[i])
        {
            std::erase(missing, materials[i].name);
        }
    }
    if (missing.empty())
    {
        return std::nullopt;
    }
    return text("the source has no material", missing.size() == 1 ? " " : "s ", joined(missing),
                ", which the target has; the source has ", namesOf(source.mesh().materials()));
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

} // namespace veltrane
