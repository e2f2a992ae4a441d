/// What a transfer has done, for machines.
#ifndef VELTRANE_COMMAND_JSON_REPORT_H
#define VELTRANE_COMMAND_JSON_REPORT_H

#include "TransferRecord.h"

#include <filesystem>

namespace veltrane
{

/// Writes a JSON file; Documentation/report.schema.json says what is in it. Throws CannotWrite with nothing but the
/// reason.
void writeReport(const TransferRecord& record, const std::filesystem::path& path);

} // namespace veltrane

#endif
