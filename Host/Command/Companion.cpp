#include "Companion.h"

#include "Errors.h"
#include "Report.h"
#include "Text.h"

#include <algorithm>
#include <array>
#include <system_error>

namespace veltrane
{
namespace
{

/// Empty if the path leads to no place, which is reported when the file is opened.
std::filesystem::path placeOf(const std::filesystem::path& path)
{
    std::error_code ignored;
    return std::filesystem::weakly_canonical(std::filesystem::absolute(path, ignored), ignored);
}

/// However they are spelled.
bool areSame(const std::filesystem::path& first, const std::filesystem::path& second)
{
    return !placeOf(first).empty() && placeOf(first) == placeOf(second);
}

} // namespace

void checkDistinct(std::initializer_list<const CompanionOption*> options)
{
    for (const auto* first = options.begin(); first != options.end(); ++first)
    {
        for (const auto* second = first + 1; second != options.end(); ++second)
        {
            const bool areGiven = !(*first)->path.empty() && !(*second)->path.empty();
            if (areGiven && areSame((*first)->path, (*second)->path))
            {
                throw InvalidOption(text("the files of ", (*first)->name, " and ", (*second)->name, " are both '",
                                         (*second)->path, "'"));
            }
        }
    }
}

std::optional<OutputFile> openCompanion(const CompanionOption& option, const MeshPairArguments& files)
{
    if (option.path.empty())
    {
        return std::nullopt;
    }
    const auto isNamed = [&](const std::string& format)
    { return std::filesystem::path(option.path).extension() == format; };
    if (!option.formats.empty() && std::ranges::none_of(option.formats, isNamed))
    {
        throw InvalidOption(
            text("the file '", option.path, "' of ", option.name, " is not named ", joined(option.formats, " or ")));
    }
    if (areSame(option.path, files.output))
    {
        throw InvalidOption(text("the output and the file of ", option.name, " are both '", option.path, "'"));
    }
    const std::array<std::filesystem::path, 2> inputs{files.source, files.target};
    return OutputFile(option.path, inputs);
}

void prepareCompanion(const std::optional<OutputFile>& file,
                      const std::function<void(const std::filesystem::path&)>& writer,
                      std::vector<PendingOutput>& outputs)
{
    if (file)
    {
        outputs.push_back(file->prepare(writer));
    }
}

} // namespace veltrane
