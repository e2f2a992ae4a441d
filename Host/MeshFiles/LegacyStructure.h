/// The structure of VTK's legacy files.
#ifndef VELTRANE_HOST_LEGACY_STRUCTURE_H
#define VELTRANE_HOST_LEGACY_STRUCTURE_H

#include <filesystem>

namespace veltrane
{

/// Finds what VTK's reader believes and does not survive, cell records that do not fill their section; what it takes no
/// notice of, arrays of the same name, of which it keeps the last one; and what it does not tell the place of, counts
/// out of range and missing values. Throws BadFile. What else is wrong with the file is left to the reader to find.
void checkLegacyStructure(const std::filesystem::path& path);

} // namespace veltrane

#endif
