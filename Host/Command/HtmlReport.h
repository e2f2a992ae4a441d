/// What a transfer has done and how good it is, as a page for people.
#ifndef VELTRANE_COMMAND_HTML_REPORT_H
#define VELTRANE_COMMAND_HTML_REPORT_H

#include "PictureArguments.h"
#include "TransferRecord.h"

#include <filesystem>

namespace veltrane
{

/// Writes one file below 5 MB that needs no other: with pictures as long as there is room for them. Throws CannotWrite
/// with nothing but the reason, and InvalidOption if what is to be drawn cannot be.
void writeHtmlReport(const TransferRecord& record, const PictureArguments& pictures, const std::filesystem::path& path);

} // namespace veltrane

#endif
