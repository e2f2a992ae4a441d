/// The picture of a transfer that has been done.
#ifndef VELTRANE_COMMAND_RECORD_PICTURE_H
#define VELTRANE_COMMAND_RECORD_PICTURE_H

#include "TransferRecord.h"

#include <filesystem>
#include <span>

namespace veltrane
{

/// Whether there is a field at nodes, which a picture needs.
bool canBeDrawn(std::span<const Field> sourceFields);

/// Draws the first field at nodes that has one component, or else the first field at nodes. Throws CannotWrite with
/// nothing but the reason.
void drawPicture(const TransferRecord& record, const std::filesystem::path& path);

} // namespace veltrane

#endif
