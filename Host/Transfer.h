/// Transfers of fields from a source mesh to a target mesh or to points, in one call: a map that is built, applied once
/// and forgotten.
///
/// Whatever is wrong with the arguments is thrown as an exception, and no input ends the process. Any number of
/// transfers may run at once, also from within a progress callback.
#ifndef VELTRANE_HOST_TRANSFER_H
#define VELTRANE_HOST_TRANSFER_H

#include "CallSettings.h"
#include "Field.h"
#include "Map.h"
#include "Mesh.h"
#include "TransferStatistics.h"

#include <span>
#include <string>
#include <vector>

namespace veltrane
{

struct TransferOptions
{
    OutsideMode mode = OutsideMode::error;
    /// What far nodes and points get in mode `defaultValue`, and what all those hold that receive no values.
    float defaultValue = 0;
    /// Per target material: its nodes and Gauss points receive values. Empty: all do.
    std::vector<bool> targetMapping{};
    /// Per source field, where on the target mesh its values go. Empty: to the locations that it has on the source.
    std::vector<Location> targetLocations{};
    /// Per source field. Empty: nothing special.
    std::vector<FieldOptions> fieldOptions{};
    /// Whether the result tells where the values of each node or point come from, and how it and the Gauss points were
    /// found.
    bool tellsOrigins = false;
    bool looksForOverlap = false; ///< see MapOptions
    Rules rules{};
    Tuning tuning{};
    int threads = 1; ///< 0: as many as usableThreadCount() tells
    ProgressCallback progress{};
};

enum class Outcome
{
    done,
    /// Nodes in regions of the target without any connection to the source were set to zero; with the rules of the
    /// exported functions no Gauss-point values were computed.
    propagationWarning
};

/// Where the values of a target node or point come from.
enum class ValueOrigin : int
{
    defaultValue = -1, ///< it is far from the source
    none = 0,          ///< it was not to receive values, is part of no element, or could not be reached by propagation
    element = 1,       ///< an element of the source
    neighbours = 2     ///< it is far from the source, and values were propagated to it
};

struct TransferResult
{
    std::vector<Field> fields; ///< one per source field, of its name, components and precision
    /// One per target node or point if asked for and if there is a field at nodes, and otherwise none.
    std::vector<ValueOrigin> origins;
    /// One per target node or point, or Gauss point, on the same conditions; distances as in Places.
    std::vector<Finding> findings;
    std::vector<double> distances;
    std::vector<Finding> gaussPointFindings;
    std::vector<double> gaussPointDistances;
    Outcome outcome;
    std::string message; ///< of the outcome, in one line
    TransferStatistics statistics;
    /// Source elements that were left out for some location, on the way to which their Jacobian becomes singular.
    std::vector<int> singularElements;
};

/// Transfers the fields of the source to the target.
///
/// Throws InvalidData or InvalidOption if the arguments do not fit each other, TargetOutside in mode `error` if a
/// target point is too far from the source, TransferError if the transfer cannot be done otherwise, Cancelled if the
/// progress callback says so, and what the callback throws.
TransferResult transfer(const Mesh& source, std::span<const Field> sourceFields, const Mesh& target,
                        const TransferOptions& options = {});

/// Samples the fields of the source at points; exceptions as for transfer(). Points in no source element are far,
/// unless the rules say otherwise.
TransferResult sample(const Mesh& source, std::span<const Field> sourceFields, const PointCloud& points,
                      const TransferOptions& options = {});

/// What transfer() checks before it builds a map: throws InvalidData or InvalidOption.
void checkTransfer(const Mesh& source, std::span<const Field> sourceFields, const TransferOptions& options);

/// The options for points: all locations are those of nodes. Throws InvalidOption.
TransferOptions atPoints(std::span<const Field> sourceFields, const TransferOptions& options);

/// The options of the map that a transfer of such fields with such options uses.
MapOptions mapOptions(std::span<const Field> sourceFields, const TransferOptions& options);

/// What transfer() and sample() do once they have the map: for whoever keeps it for further fields. Of the options
/// those of the fields count, and the threads.
TransferResult transferWith(const Map& map, std::span<const Field> sourceFields, const TransferOptions& options);

} // namespace veltrane

#endif
