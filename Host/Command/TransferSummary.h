/// What a transfer has done, for people.
#ifndef VELTRANE_COMMAND_TRANSFER_SUMMARY_H
#define VELTRANE_COMMAND_TRANSFER_SUMMARY_H

#include "TransferRecord.h"

#include <iosfwd>
#include <string>

namespace veltrane
{

/// "12 nodes, 3 tetrahedra, 2 wedges"
std::string describe(const MeshFile& file);

void printSummary(std::ostream& stream, const TransferRecord& record);

} // namespace veltrane

#endif
