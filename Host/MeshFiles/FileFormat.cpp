#include "FileFormat.h"

#include "DataSetReader.h"
#include "FormatList.h"
#include "Text.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace veltrane
{
namespace
{

#define VELTRANE_FORMAT_ADDRESS(format) &formats::format,
constexpr std::array all{VELTRANE_FORMATS(VELTRANE_FORMAT_ADDRESS)};
#undef VELTRANE_FORMAT_ADDRESS

/// How many letters of a file name tell that it is of the format; 0 if none do.
std::size_t matchLength(const FileFormat& format, std::string_view name)
{
    std::size_t length = 0;
    for (const std::string_view ending : format.endings)
    {
        if (name.size() > ending.size() && name.ends_with(ending))
        {
            length = std::max(length, ending.size());
        }
    }
    return length == 0 && format.isNamed != nullptr && format.isNamed(name) ? name.size() : length;
}

} // namespace

const FileFormat* formatOf(const std::filesystem::path& path)
{
    std::string name = path.filename().string();
    std::ranges::transform(name, name.begin(),
                           [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    const auto best =
        std::ranges::max_element(all, {}, [&](const FileFormat* format) { return matchLength(*format, name); });
    return matchLength(**best, name) == 0 ? nullptr : *best;
}

std::span<const FileFormat* const> allFormats()
{
    return all;
}

bool isMeshInput(const FileFormat* format)
{
    return format != nullptr && format->read != nullptr && format->reads.cells;
}

bool isPointInput(const FileFormat* format)
{
    return format != nullptr && format->read != nullptr;
}

bool isMeshOutput(const FileFormat* format)
{
    return format != nullptr && format->write != nullptr && (format->writes.cells || format->isInclude);
}

bool isPointOutput(const FileFormat* format)
{
    return format != nullptr && format->write != nullptr;
}

bool isTable(const FileFormat* format)
{
    return format == &formats::table;
}

bool isCollection(const FileFormat* format)
{
    return format != nullptr && format->steps != nullptr;
}

bool isCollectionOutput(const FileFormat* format)
{
    return format == &formats::collection;
}

std::string endingsOf(bool (*condition)(const FileFormat*))
{
    std::vector<std::string_view> endings;
    for (const FileFormat* format : all)
    {
        if (condition(format))
        {
            endings.insert(endings.end(), format->endings.begin(), format->endings.end());
        }
    }
    std::string list;
    for (std::size_t i = 0; i < endings.size(); ++i)
    {
        list += text(i == 0 ? "" : i + 1 == endings.size() ? " or " : ", ", endings[i]);
    }
    return list;
}

std::optional<int> chosenStep(const FileReading& reading, std::size_t stepCount, const std::filesystem::path& path)
{
    const auto count = static_cast<int>(stepCount);
    if (reading.step && (*reading.step < 0 || *reading.step >= count))
    {
        throw BadFile(text(quoted(path), " has ", count, " steps; there is no step ", *reading.step + 1));
    }
    return reading.step ? reading.step : count > 0 ? std::optional(count - 1) : std::nullopt;
}

} // namespace veltrane
