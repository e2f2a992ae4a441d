/// What to say of a target that leaves the source.
#ifndef VELTRANE_COMMAND_OUTSIDE_TEXT_H
#define VELTRANE_COMMAND_OUTSIDE_TEXT_H

#include "Transfer.h"

#include <span>
#include <string>

namespace veltrane
{

/// "14 of 64 nodes are outside the source; the farthest, at (9, 9, 9), is 8.2 from the nearest node of the source".
///
/// \param result       of a transfer that gives them the default value, which tells the findings
/// \param coordinates  of the target's nodes or points; x, y, z of each
/// \param points       what they are: "nodes"
std::string outsideText(const Mesh& source, const TransferResult& result, std::span<const float> coordinates,
                        const std::string& points);

} // namespace veltrane

#endif
