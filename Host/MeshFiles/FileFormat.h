/// Formats of mesh and point files, told apart by the endings of their names.
#ifndef VELTRANE_HOST_FILE_FORMAT_H
#define VELTRANE_HOST_FILE_FORMAT_H

#include <filesystem>
#include <optional>
#include <string_view>

namespace veltrane
{

enum class FileFormat
{
    unstructuredGrid,         ///< .vtu
    legacyUnstructuredGrid,   ///< .vtk
    parallelUnstructuredGrid, ///< .pvtu
    exodus,                   ///< .e, .exo, .ex2
    polyData,                 ///< .vtp
    table,                    ///< .csv
    collection                ///< .pvd, which names files of the other formats
};

/// By the ending in small or capital letters; null for other endings.
std::optional<FileFormat> formatOf(const std::filesystem::path& path);

/// For messages and help texts.
inline constexpr std::string_view meshInputEndings = ".vtu, .vtk, .pvtu, .e, .exo or .ex2";
inline constexpr std::string_view pointInputEndings = ".csv, .vtp, .vtu, .vtk, .pvtu, .e, .exo or .ex2";
inline constexpr std::string_view meshOutputEndings = ".vtu or .vtk";
inline constexpr std::string_view pointOutputEndings = ".csv, .vtp, .vtu or .vtk";

bool isMeshInput(std::optional<FileFormat> format);
bool isPointInput(std::optional<FileFormat> format);
bool isMeshOutput(std::optional<FileFormat> format);
bool isPointOutput(std::optional<FileFormat> format);

} // namespace veltrane

#endif
