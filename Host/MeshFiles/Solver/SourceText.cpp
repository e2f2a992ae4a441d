#include "SourceText.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>

namespace veltrane
{
namespace
{

std::string bytesOf(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const std::streamoff size = file ? static_cast<std::streamoff>(file.tellg()) : -1;
    if (size < 0)
    {
        throw NoInput(text("cannot open '", path.string(), "': ", std::strerror(errno)));
    }
    std::string bytes(static_cast<std::size_t>(size), '\0');
    file.seekg(0);
    file.read(bytes.data(), size);
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    return bytes;
}

} // namespace

SourceText::SourceText(const std::filesystem::path& path) : SourceText(bytesOf(path), path) {}

std::size_t SourceText::lineOf(const char* place) const
{
    return static_cast<std::size_t>(std::count(begin(), place, '\n')) + 1;
}

void SourceText::fail(const std::string& reason) const
{
    throw BadFile(text("cannot read '", path_.string(), "': ", reason));
}

std::string shown(std::string_view piece)
{
    constexpr std::size_t longest = 40;
    std::string result(trimmed(piece).substr(0, longest));
    std::ranges::replace_if(
        result, [](char letter) { return letter < ' ' || letter > '~'; }, '?');
    return text("'", result, "'");
}

std::string inCapitals(std::string_view piece)
{
    std::string result(piece);
    std::ranges::transform(result, result.begin(),
                           [](char letter)
                           { return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter; });
    return result;
}

} // namespace veltrane
