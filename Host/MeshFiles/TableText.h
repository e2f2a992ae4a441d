/// Tables as spreadsheets write them.
#ifndef VELTRANE_HOST_TABLE_TEXT_H
#define VELTRANE_HOST_TABLE_TEXT_H

#include <filesystem>
#include <string>
#include <string_view>

namespace veltrane
{

/// The name that stands for standard input and standard output.
inline constexpr std::string_view standardStream = "-";

/// All of standard input, read once.
const std::string& standardInput();

/// The text of a table, or of standard input if it has that name, with commas between columns, points in numbers, and
/// without a byte order mark. Columns may stand between semicolons or tabulators, which a first line "sep=;" or else
/// the names of the columns tell; then numbers may have decimal commas, and empty lines are left out. Throws BadFile.
std::string readTableText(const std::filesystem::path& path);

} // namespace veltrane

#endif
