/// The file that names the pieces of an unstructured grid (.pvtu).
#ifndef VELTRANE_CLUSTER_PIECE_SUMMARY_H
#define VELTRANE_CLUSTER_PIECE_SUMMARY_H

#include <filesystem>
#include <string>
#include <vector>

namespace veltrane
{

/// The part of it that lists the arrays, as one of the pieces (.vtu) has them. Throws CannotWrite.
std::string arrayListOf(const std::filesystem::path& piece);

/// Throws CannotWrite with nothing but the reason.
///
/// \param pieces  relative to the file
void writePieceSummary(const std::filesystem::path& path, const std::string& arrayList,
                       const std::vector<std::string>& pieces);

} // namespace veltrane

#endif
