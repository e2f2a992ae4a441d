/// Files that a command writes beside its output if it is asked for them.
#ifndef VELTRANE_COMMAND_COMPANION_H
#define VELTRANE_COMMAND_COMPANION_H

#include "MeshPair.h"
#include "OutputFile.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

namespace veltrane
{

/// An option that names such a file.
struct CompanionOption
{
    std::string name;                 ///< "--report"
    std::vector<std::string> formats; ///< how the file's name must end; empty if it may end in any way
    std::string help;
    std::string path{}; ///< empty if the option is not given

    void addTo(CLI::App& command) { command.add_option(name, path, help)->type_name("FILE"); }
};

/// Throws InvalidOption if two of them are to write the same file.
void checkDistinct(std::initializer_list<const CompanionOption*> options);

/// Nothing if the option is not given. Throws InvalidOption or CannotWrite, before any work is done, if the file could
/// not be written or is one of the command's other files.
std::optional<OutputFile> openCompanion(const CompanionOption& option, const MeshPairArguments& files);

/// Writes the file, if there is one, as OutputFile::prepare() does, and adds it to the outputs.
void prepareCompanion(const std::optional<OutputFile>& file,
                      const std::function<void(const std::filesystem::path&)>& writer,
                      std::vector<PendingOutput>& outputs);

} // namespace veltrane

#endif
