/// The picture of a transfer that has been done.
#ifndef VELTRANE_COMMAND_RECORD_PICTURE_H
#define VELTRANE_COMMAND_RECORD_PICTURE_H

#include "TransferRecord.h"

#include <filesystem>

namespace veltrane
{

/// Draws the first field of one component, or else the first field, and leaves out those at Gauss points. Throws
/// CannotWrite with nothing but the reason.
void drawPicture(const TransferRecord& record, const std::filesystem::path& path);

} // namespace veltrane

#endif
