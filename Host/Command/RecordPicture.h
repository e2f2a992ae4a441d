/// The pictures of a transfer that has been done.
#ifndef VELTRANE_COMMAND_RECORD_PICTURE_H
#define VELTRANE_COMMAND_RECORD_PICTURE_H

#include "Drawing.h"
#include "PictureArguments.h"
#include "TransferRecord.h"

#include <span>

namespace veltrane
{

/// \param differences  per node of the source, of the field that was mapped back; or empty
/// Throws InvalidOption if a plane that is chosen meets nothing.
Drawing drawRecord(DrawingFormat format, const TransferRecord& record, const PictureView& view,
                   std::span<const double> differences = {});

} // namespace veltrane

#endif
