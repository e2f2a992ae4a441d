/// Exodus files as grids.
#ifndef VELTRANE_HOST_EXODUS_READING_H
#define VELTRANE_HOST_EXODUS_READING_H

#include "FileFormat.h"

namespace veltrane
{

/// The numbers of nodes in the whole mesh, of which a file may be a part.
inline constexpr const char* globalNodesName = "GlobalNodeId";

/// All element blocks in one grid, with the cell array ObjectId telling their numbers, and all results at one step.
/// Nodes stand where the file says, whatever displacements it holds. Throws BadFile.
///
/// \param withGlobalNodes  whether point data of that name is added, if the file has it
FileData readExodus(const std::filesystem::path& path, const FileReading& reading, bool withGlobalNodes = false);

/// Throws BadFile.
std::vector<double> readExodusTimes(const std::filesystem::path& path);

} // namespace veltrane

#endif
