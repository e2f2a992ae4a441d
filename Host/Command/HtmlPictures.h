/// The cuts on a report's page.
#ifndef VELTRANE_COMMAND_HTML_PICTURES_H
#define VELTRANE_COMMAND_HTML_PICTURES_H

#include "PictureArguments.h"
#include "TransferRecord.h"

#include <string>

namespace veltrane
{

/// Cuts of the fields at nodes through their peaks across each axis and, if they were mapped back, through the largest
/// difference; or the one that is asked for. With lists to choose one by, and no more of them than a page has room for.
/// Empty if no field is at nodes.
std::string htmlPictures(const TransferRecord& record, const PictureArguments& pictures);

} // namespace veltrane

#endif
