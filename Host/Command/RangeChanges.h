/// Where the values of the target reach beyond those of the source, or do not reach as far any more.
#ifndef VELTRANE_COMMAND_RANGE_CHANGES_H
#define VELTRANE_COMMAND_RANGE_CHANGES_H

#include "TransferRecord.h"

#include <string>
#include <string_view>
#include <vector>

namespace veltrane
{

/// One end of the range of one component.
struct RangeChange
{
    std::string name;     ///< of the component
    std::string_view end; ///< "minimum" or "maximum"
    double excess;        ///< by which the target's lies beyond the source's, as part of the source's range
};

/// A loss of no more than that is none: a coarser mesh always loses a little.
inline constexpr double notablePeakLoss = 0.05;

/// Both ends of all components that have a range. Default values and propagated ones do not count.
std::vector<RangeChange> rangeChanges(const TransferRecord& record);

} // namespace veltrane

#endif
