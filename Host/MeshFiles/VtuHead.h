/// The beginning of VTK's XML files: everything but the arrays that are appended.
#ifndef VELTRANE_HOST_VTU_HEAD_H
#define VELTRANE_HOST_VTU_HEAD_H

#include "StoredArray.h"

#include <optional>
#include <string>

namespace veltrane
{

/// The text of a file up to the appended arrays, and where these begin.
struct VtuHead
{
    std::string text;
    std::optional<StoredBytes> appended{}; ///< from the first array on
};

/// Reads as much of the file as it takes. Throws NotUsual.
VtuHead readVtuHead(const ReadFile& file);

} // namespace veltrane

#endif
