/// What the commands between two mesh files share: their arguments, and the checks that a pair must pass.
#ifndef VELTRANE_COMMAND_MESH_PAIR_H
#define VELTRANE_COMMAND_MESH_PAIR_H

#include "MeshFile.h"
#include "OutputFile.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <string>
#include <vector>

namespace veltrane
{

/// The arguments themselves, with the addition of each to a subcommand.
struct MeshPairArguments
{
    std::string source;
    std::string target;
    std::string output;
    std::optional<float> tolerance;
    bool skipUnsupported = false;
    bool replace = false;
    bool quiet = false;

    void addFiles(CLI::App& command, const std::string& sourceHelp, const std::string& targetHelp,
                  const std::string& outputHelp);
    void addSkipUnsupported(CLI::App& command);
    void addTolerance(CLI::App& command, const std::string& help);
    void addReplace(CLI::App& command, const std::string& help);
    void addQuiet(CLI::App& command, const std::string& help);

    /// Throws CannotWrite if it could not be written.
    OutputFile openOutput() const;

    /// Throw NoInput or BadFile, and Cancelled if the command was interrupted meanwhile. Warn of cells left out on
    /// request.
    MeshFile readSource() const;
    MeshFile readTarget(MeshRole role) const;

    /// Throws BadFile if the target has such an array and it is not to be replaced.
    void checkNewArray(const MeshFile& targetFile, ArrayPlace place, const std::string& name) const;
};

/// For the help texts of these commands.
inline constexpr const char* meshFormatHelp =
    "Mesh files are VTK's unstructured grids (.vtu, .vtk, .pvtu) and Exodus files (.e, .exo, .ex2; their\n"
    "last step); .vtu and .vtk are written. The ending tells the format.\n\n";
inline constexpr const char* materialHelp =
    "Cells of source and target correspond only within materials of the same number, if both\n"
    "files have a cell-data array 'material' (or MaterialIds, part, PartId, gmsh:physical ...).\n\n";

/// "steel, copper"
std::string namesOf(const std::vector<Material>& materials);

/// Lets the materials of two meshes correspond by their names if both have materials. Returns a sentence about those
/// materials, among the selected ones if there is a selection, that the target has and the source lacks, or nothing.
std::optional<std::string> matchMaterials(MeshFile& source, MeshFile& target, const std::vector<bool>& selection = {});

/// The box of the target, or of its selected materials, must touch the source's; throws BadFile.
void checkOverlap(const Box& source, const Box& target);

/// Where the target leaves the box that the library admits, to follow a message, or nothing.
std::string excessText(const Box& source, const Box& target);

} // namespace veltrane

#endif
