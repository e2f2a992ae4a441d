#include "CommandLine.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace veltrane
{
namespace
{

std::string& remembered()
{
    static std::string line = "veltrane";
    return line;
}

} // namespace

void rememberCommandLine(int count, const char* const* words)
{
    std::string line = "veltrane";
    for (int i = 1; i < count; ++i)
    {
        line += ' ';
        line += quotedForShell(words[i]);
    }
    remembered() = line;
}

const std::string& commandLine()
{
    return remembered();
}

std::string quotedForShell(const std::string& word)
{
    constexpr std::string_view harmless = "-_./,:=+@%";
    const bool isHarmless = std::ranges::all_of(
        word, [&](unsigned char letter)
        { return std::isalnum(letter) != 0 || harmless.find(static_cast<char>(letter)) != std::string_view::npos; });
    if (isHarmless && !word.empty())
    {
        return word;
    }
    std::string quoted = "'";
    for (const char letter : word)
    {
        quoted += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
    }
    return quoted + "'";
}

} // namespace veltrane
