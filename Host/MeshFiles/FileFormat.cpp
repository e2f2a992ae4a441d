#include "FileFormat.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string>
#include <utility>

namespace veltrane
{
namespace
{

constexpr std::array<std::pair<std::string_view, FileFormat>, 9> endings{{
    {".vtu", FileFormat::unstructuredGrid},
    {".vtk", FileFormat::legacyUnstructuredGrid},
    {".pvtu", FileFormat::parallelUnstructuredGrid},
    {".e", FileFormat::exodus},
    {".exo", FileFormat::exodus},
    {".ex2", FileFormat::exodus},
    {".vtp", FileFormat::polyData},
    {".csv", FileFormat::table},
    {".pvd", FileFormat::collection},
}};

} // namespace

std::optional<FileFormat> formatOf(const std::filesystem::path& path)
{
    std::string ending = path.extension().string();
    std::ranges::transform(ending, ending.begin(),
                           [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    const auto found = std::ranges::find(endings, ending, &std::pair<std::string_view, FileFormat>::first);
    return found == endings.end() ? std::nullopt : std::optional(found->second);
}

bool isMeshInput(std::optional<FileFormat> format)
{
    return isMeshOutput(format) || format == FileFormat::parallelUnstructuredGrid || format == FileFormat::exodus;
}

bool isPointInput(std::optional<FileFormat> format)
{
    return isMeshInput(format) || isPointOutput(format);
}

bool isMeshOutput(std::optional<FileFormat> format)
{
    return format == FileFormat::unstructuredGrid || format == FileFormat::legacyUnstructuredGrid;
}

bool isPointOutput(std::optional<FileFormat> format)
{
    return isMeshOutput(format) || format == FileFormat::polyData || format == FileFormat::table;
}

} // namespace veltrane
