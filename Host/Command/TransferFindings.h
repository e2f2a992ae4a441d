/// How the points of the target were found: in warnings and in the output.
#ifndef VELTRANE_COMMAND_TRANSFER_FINDINGS_H
#define VELTRANE_COMMAND_TRANSFER_FINDINGS_H

#include "MeshFile.h"
#include "Transfer.h"

#include <string>
#include <vector>

namespace veltrane
{

/// Warnings about what has been found: units of length, near points, source cells left out or inside each other.
///
/// \param points  what receives the values: "nodes"
void warnOfFindings(const MeshFile& source, const TransferResult& result, const Box& sourceBox, const Box& targetBox,
                    const std::string& points);

/// What the output's masks say of a point.
int maskValue(Finding finding, OutsideMode mode);

/// The point array of the output that tells where the values of each point come from.
IntegerArray validPointMask(const std::vector<Finding>& findings, OutsideMode mode);

/// Makes the result's fields what is written: far Gauss points hold the default value or, if it is not asked for, no
/// number. Behind the fields come the mask of Gauss points, and distances if they are wanted.
void completeForOutput(TransferResult& result, const TransferOptions& options, bool withDistances);

} // namespace veltrane

#endif
