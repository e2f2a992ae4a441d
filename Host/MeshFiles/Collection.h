/// Results in steps: of one file that holds several, or of a collection that lists files.
#ifndef VELTRANE_HOST_COLLECTION_H
#define VELTRANE_HOST_COLLECTION_H

#include "FileErrors.h"
#include "Step.h"

#include <filesystem>
#include <vector>

namespace veltrane
{

/// The steps of a collection or of a file with steps in their order; another file is one step of the time 0. Throws
/// NoInput or BadFile.
std::vector<Step> readSteps(const std::filesystem::path& path);

/// Writes a ParaView collection (.pvd); files are named relative to its directory. Throws CannotWrite with nothing but
/// the reason.
void writeCollection(const std::vector<Step>& steps, const std::filesystem::path& path);

} // namespace veltrane

#endif
