#include "Companion.h"

#include "Errors.h"
#include "Text.h"

#include <array>
#include <system_error>

namespace veltrane
{

std::optional<OutputFile> openCompanion(const CompanionOption& option, const MeshPairArguments& files)
{
    if (option.path.empty())
    {
        return std::nullopt;
    }
    if (!option.format.empty() && std::filesystem::path(option.path).extension() != option.format)
    {
        throw InvalidOption(text("the file '", option.path, "' of ", option.name, " is not named ", option.format));
    }
    std::error_code ignored; // a path without a place is reported when the file is opened
    if (std::filesystem::weakly_canonical(option.path, ignored) ==
        std::filesystem::weakly_canonical(files.output, ignored))
    {
        throw InvalidOption(text("the output and the file of ", option.name, " are both '", option.path, "'"));
    }
    const std::array<std::filesystem::path, 2> inputs{files.source, files.target};
    return OutputFile(option.path, inputs);
}

void writeCompanion(const std::optional<OutputFile>& file,
                    const std::function<void(const std::filesystem::path&)>& writer)
{
    if (file)
    {
        file->write(writer);
    }
}

} // namespace veltrane
