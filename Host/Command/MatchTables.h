/// Correspondences as the command writes them: numbers of points and cells of the mesh files, from 1, and 0 for none.
#ifndef VELTRANE_COMMAND_MATCH_TABLES_H
#define VELTRANE_COMMAND_MATCH_TABLES_H

#include "Match.h"
#include "MeshFile.h"

#include <filesystem>
#include <string>
#include <vector>

namespace veltrane
{

struct MatchTable
{
    std::vector<std::string> columns{};
    std::vector<int> rows{};            ///< one after another, each with as many numbers as there are columns
    std::vector<IntegerArray> arrays{}; ///< the same for the target's mesh file
    std::string summary{};              ///< what was matched, in one line
};

/// Columns target_node, source_node; point array source_node.
MatchTable matchNodeTable(const MeshFile& source, const MeshFile& target, const MatchOptions& options);

/// Columns target_element, target_gauss_point, source_element, source_gauss_point; cell arrays source_element, which is
/// the same for all Gauss points of an element, and source_gauss_point, with as many components as any element of the
/// target has Gauss points.
MatchTable matchGaussPointTable(const MeshFile& source, const MeshFile& target, const MatchOptions& options);

/// Writes columns and rows as comma-separated values. Throws CannotWrite with nothing but the reason.
void writeCsv(const MatchTable& table, const std::filesystem::path& path);

} // namespace veltrane

#endif
