/// What a validation has found, in words.
#ifndef VELTRANE_COMMAND_VALIDATION_SUMMARY_H
#define VELTRANE_COMMAND_VALIDATION_SUMMARY_H

#include "TransferRecord.h"

#include <iosfwd>

namespace veltrane
{

/// What of both meshes is mapped, the fields mapped back beside the source, and integrals on both sides.
///
/// \pre record.validation is there
void printValidation(std::ostream& stream, const TransferRecord& record);

} // namespace veltrane

#endif
