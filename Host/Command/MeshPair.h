/// What the commands between two mesh files share: their arguments, and the checks that a pair must pass.
#ifndef VELTRANE_COMMAND_MESH_PAIR_H
#define VELTRANE_COMMAND_MESH_PAIR_H

#include "FileFormat.h"
#include "Materials.h"
#include "MeshFile.h"
#include "OutputFile.h"
#include "TableText.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace veltrane
{

/// How the materials of the two sides belong together.
struct MaterialArguments
{
    std::optional<std::string> array{};
    bool ignored = false;
    std::vector<std::string> states{};
    std::vector<std::string> only{};

    /// \param selected  what is selected by --only: "nodes to receive values"
    void addTo(CLI::App& command, const std::string& selected);

    /// Throws InvalidOption if the options contradict each other or are none.
    StateCodes stateCodes() const;

    /// The target materials to be mapped, one entry per material; none if all are. Throws BadFile.
    ///
    /// \param file  what the materials are of, for messages
    std::vector<bool> select(const std::vector<Material>& materials, bool haveNumbers,
                             const std::filesystem::path& file) const;

    /// Lets the materials of two meshes correspond by their numbers if both have them and it is not to be ignored.
    /// Returns a sentence about those materials, among the selected ones, that the target has and the source lacks, or
    /// nothing.
    template <typename Target>
    std::optional<std::string> match(Mesh& source, bool sourceHasNumbers, Target& target, bool targetHasNumbers,
                                     const std::vector<bool>& selection) const
    {
        const StateCodes codes = stateCodes();
        if (ignored || !sourceHasNumbers || !targetHasNumbers)
        {
            checkUnused(codes);
            return std::nullopt; // all have the same state code from the beginning
        }
        checkKnown(codes, source.materials(), target.materials());
        return missingText(source.materials(), target.materials(), matchMaterialsByName(source, target, codes),
                           selection);
    }

private:
    void checkUnused(const StateCodes& codes) const;
    static void checkKnown(const StateCodes& codes, const std::vector<Material>& source,
                           const std::vector<Material>& target);
    static std::optional<std::string> missingText(const std::vector<Material>& source,
                                                  const std::vector<Material>& target, std::vector<std::string> missing,
                                                  const std::vector<bool>& selection);
};

/// The arguments themselves, with the addition of each to a subcommand.
struct MeshPairArguments
{
    std::string source;
    std::string target;
    std::string output;
    MaterialArguments materials;
    std::optional<float> tolerance;
    std::optional<int> step; ///< of a source with several steps, from 0
    bool skipUnsupported = false;
    bool keepsRepeatedNodes = false; ///< see MeshReading
    std::string gaussRule = "full";
    bool replace = false;
    bool quiet = false;
    int threads = 0;            ///< 0: all cores that the process may use
    std::string compression{};  ///< empty if the option is not given
    std::string streamEnding{}; ///< of the format in which the output goes to standard output

    void addFiles(CLI::App& command, const std::string& sourceHelp, const std::string& targetHelp,
                  const std::string& outputHelp, const std::string& targetName = "TARGET");
    void addSkipUnsupported(CLI::App& command);
    void addTolerance(CLI::App& command, const std::string& help);
    void addReplace(CLI::App& command, const std::string& help);
    void addQuiet(CLI::App& command, const std::string& help);
    void addGaussRule(CLI::App& command);
    void addThreads(CLI::App& command);
    void addCompression(CLI::App& command);

    /// Throws CannotWrite if it could not be written.
    OutputFile openOutput() const;

    bool isOutputStandard() const { return output == standardStream; }
    const FileFormat* outputFormat() const;

    /// Where results are told: standard output, unless it takes the output itself.
    std::ostream& summaryStream() const;

    GaussPointRule gaussPointRule() const;

    /// How the output is to be written.
    FileWriting writing() const;

    /// Warns of what the output's format cannot hold.
    void warnOf(const LeftOut& leftOut) const;

    /// Throws InvalidOption if the output is of a format that --compression has no effect on.
    void checkCompression() const;

    /// Throw NoInput or BadFile, and Cancelled if the command was interrupted meanwhile. Warn of cells left out on
    /// request.
    MeshFile readSource(bool cellsAsNodes = false, const Placement& placement = {},
                        std::shared_ptr<VtuAhead> ahead = nullptr) const;

    /// Begins to read the target beside whatever comes next; null if that cannot be done.
    std::shared_ptr<VtuAhead> readTargetAhead() const;
    MeshFile readTarget(MeshRole role, std::shared_ptr<VtuAhead> ahead = nullptr) const;

    /// The box of the target, or of its selected materials, must touch the source's; throws BadFile.
    void checkOverlap(const Box& sourceBox, const Box& targetBox) const;

    /// Throws BadFile if the target has such an array and it is not to be replaced.
    void checkNewArray(const MeshFile& targetFile, ArrayPlace place, const std::string& name) const;
};

/// For the help texts of these commands.
std::string meshFormatHelp();
inline constexpr const char* materialHelp =
    "Cells of source and target correspond only within materials of the same number, if both\n"
    "files have a cell-data array 'material' (or MaterialIds, part, PartId, gmsh:physical ...; an\n"
    "Exodus file's block numbers will do).\n\n";

/// "steel, copper"
std::string namesOf(const std::vector<Material>& materials);

/// The same of two mesh files.
std::optional<std::string> matchMaterials(const MaterialArguments& arguments, MeshFile& source, MeshFile& target,
                                          const std::vector<bool>& selection);

/// If the materials are numbered by arrays of different names, those of a usual name that both files have, if there is
/// one, take their place. If all materials of both files have names, they go by these and not by their numbers, which
/// programs give out as they come.
void useCommonMaterials(MeshFile& source, MeshFile& target);

/// Warns of cells of the source that have no volume, in which nothing can be found, and of those that are inside out.
void checkSourceCells(const MeshFile& source, int threads);

/// The first three of such elements by their cells' numbers in the file: "cells 3, 8, 11 and 4 more".
std::string cellList(const MeshFile& file, const std::vector<int>& elements);

/// Asks for the units of length if one of the boxes is very much larger than the other, or by an inch in millimetres;
/// otherwise nothing.
std::string unitHint(const Box& source, const Box& target);

} // namespace veltrane

#endif
