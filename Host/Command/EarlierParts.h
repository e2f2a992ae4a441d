/// What a collection that is written again leaves of its earlier self.
#ifndef VELTRANE_COMMAND_EARLIER_PARTS_H
#define VELTRANE_COMMAND_EARLIER_PARTS_H

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace veltrane
{

/// The directory of a collection's parts.
std::filesystem::path partPlace(const std::filesystem::path& collection);

/// "loaded_0007.vtu"
std::string partName(const std::filesystem::path& collection, std::size_t index, const std::string& ending);

/// The files that the collection standing under this name lists in the directory of its parts and under names of parts.
/// None if there is no such collection.
std::vector<std::filesystem::path> findEarlierParts(const std::filesystem::path& collection);

} // namespace veltrane

#endif
