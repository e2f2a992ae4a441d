/// What a transfer has done, for people.
#ifndef VELTRANE_COMMAND_TRANSFER_SUMMARY_H
#define VELTRANE_COMMAND_TRANSFER_SUMMARY_H

#include "MeshFile.h"
#include "StageTimes.h"
#include "Transfer.h"

#include <iosfwd>
#include <span>

namespace veltrane
{

/// "12 nodes, 3 tetrahedra, 2 wedges"
std::string describe(const Mesh& mesh);

/// "displacement x"
std::string componentName(const Field& field, int component);

void printSummary(std::ostream& stream, const MeshFile& source, std::span<const Field> sourceFields,
                  const MeshFile& target, const TransferResult& result, const TransferOptions& options,
                  const StageTimes& times);

} // namespace veltrane

#endif
