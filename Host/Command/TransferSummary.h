/// What a transfer has done, for people.
#ifndef VELTRANE_COMMAND_TRANSFER_SUMMARY_H
#define VELTRANE_COMMAND_TRANSFER_SUMMARY_H

#include "MeshFile.h"
#include "Transfer.h"

#include <iosfwd>
#include <span>

namespace veltrane
{

/// The smallest and the largest defined value of one component; both not a number if there is no defined value.
struct ValueRange
{
    double min;
    double max;
};
ValueRange rangeOf(const Field& field, int component);

/// "12 nodes, 3 tetrahedra, 2 wedges"
std::string describe(const Mesh& mesh);

void printSummary(std::ostream& stream, const MeshFile& source, std::span<const Field> sourceFields,
                  const MeshFile& target, const TransferResult& result, const TransferOptions& options);

} // namespace veltrane

#endif
