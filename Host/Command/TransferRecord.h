/// What there is to tell of a transfer that has been done.
#ifndef VELTRANE_COMMAND_TRANSFER_RECORD_H
#define VELTRANE_COMMAND_TRANSFER_RECORD_H

#include "MeshFile.h"
#include "NearPoints.h"
#include "PointFile.h"
#include "StageTimes.h"
#include "Transfer.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <variant>

namespace veltrane
{

struct DistributedLoads;
struct Validation;
struct Verdict;

/// For the summary, the report and the picture, which all are of one transfer; lives no longer than what it refers to.
struct TransferRecord
{
    const MeshFile& source;
    std::span<const Field> sourceFields;
    std::variant<const MeshFile*, const PointFile*> target;
    const TransferResult& result;
    const TransferOptions& options;
    const StageTimes& times;
    Placement placement{};                  ///< of the source
    const Validation* validation = nullptr; ///< null if it was not asked for, or cannot be done
    std::span<const DistributedLoads> loads{};
    const Verdict* verdict = nullptr; ///< null before it is made

    /// The target if it is a mesh, or if it is points, and otherwise null.
    const MeshFile* targetMesh() const;
    const PointFile* targetPoints() const;
};

/// Where the nodes of the target lie.
struct NodeCounts
{
    long long all;
    long long inNoCell;  ///< get no values
    long long notMapped; ///< of materials that are not to receive values
    long long inside;
    long long near; ///< just outside, with the values of a nearby element
    NearDistances nearDistances;
    long long far;
    long long farOfMissingMaterial; ///< of the far ones those of materials that the source lacks
    long long reached;              ///< of the far ones those with values of neighbours
};

/// Nothing if the values are not at nodes.
std::optional<NodeCounts> countNodes(const TransferRecord& record);

/// Where points lie.
struct PointCounts
{
    long long all;
    long long notMapped; ///< of materials that are not to receive values
    long long inside;
    long long near; ///< just outside, with the values of a nearby element
    NearDistances nearDistances;
    long long outside;
    long long outsideOfMissingMaterial; ///< of these those of materials that the source lacks
};

/// \pre the target is points
PointCounts countPoints(const TransferRecord& record);

/// Whether a location of the target holds a value of the source, by itself or through neighbours. Empty if there is
/// nothing known of it, or all do.
std::function<bool(std::size_t location)> hasSourceValue(const TransferRecord& record, const Field& field);

/// "displacement x"
std::string componentName(const Field& field, int component);

} // namespace veltrane

#endif
