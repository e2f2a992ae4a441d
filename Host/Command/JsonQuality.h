/// How good a transfer is, for machines.
#ifndef VELTRANE_COMMAND_JSON_QUALITY_H
#define VELTRANE_COMMAND_JSON_QUALITY_H

#include "TransferRecord.h"

#include <nlohmann/json_fwd.hpp>

namespace veltrane
{

nlohmann::ordered_json describeVerdict(const Verdict& verdict);

/// Null without a validation.
nlohmann::ordered_json describeValidation(const TransferRecord& record);

/// Of each field of loads the sums and moments of both sides.
nlohmann::ordered_json describeLoads(const TransferRecord& record);

/// How far near locations are from the places whose values they take; null if there are none.
nlohmann::ordered_json describeNearHistogram(const TransferRecord& record);

} // namespace veltrane

#endif
