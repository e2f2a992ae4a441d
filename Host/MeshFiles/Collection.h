/// Results in steps: ParaView's collections of files (.pvd), and the steps of Exodus files.
#ifndef VELTRANE_HOST_COLLECTION_H
#define VELTRANE_HOST_COLLECTION_H

#include "FileErrors.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace veltrane
{

/// Where the results of a step are.
struct Step
{
    std::filesystem::path file;
    std::optional<int> number; ///< of an Exodus file, from 0
    double time;
};

/// The steps of a collection or an Exodus file in their order; a file of another format is one step of the time 0.
/// Throws NoInput or BadFile.
std::vector<Step> readSteps(const std::filesystem::path& path);

/// Writes a collection; files are named relative to its directory. Throws CannotWrite with nothing but the reason.
void writeCollection(const std::vector<Step>& steps, const std::filesystem::path& path);

} // namespace veltrane

#endif
