/// Transfers of fields from a source mesh to a target mesh or to points: the safe C++ side of the library.
///
/// Everything that the library would answer by ending the process and that can be found out beforehand is checked here
/// and thrown as an exception. What remains (a source element whose Jacobian becomes singular on the way to a point)
/// ends the process too, since the library does not return from it, but never with status 0: the line of the library
/// goes to standard error and the process ends with status 1.
///
/// A call works in a private temporary directory: while the library runs, it is the current directory of the whole
/// process and standard output is redirected into it, so that neither tuning files nor logs of the user's directory are
/// touched. Both are as they were again during each progress callback and after the call. Calls take turns; a call from
/// within a progress callback is refused.
#ifndef VELTRANE_HOST_TRANSFER_H
#define VELTRANE_HOST_TRANSFER_H

#include "CallSettings.h"
#include "Field.h"
#include "Mesh.h"
#include "TransferStatistics.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace veltrane
{

/// What happens to target points too far from the source to be given values from it.
enum class OutsideMode : int
{
    error = 0,        ///< the transfer fails (TargetOutside)
    defaultValue = 1, ///< nodes and points get the default value, Gauss points 0
    propagate = 2     ///< nodes get values from neighbouring nodes, Gauss points 0; not for points
};

/// What can be said of a single field.
struct FieldOptions
{
    std::optional<float> defaultValue{}; ///< instead of the one of all fields
    /// The field exists only in materials of the state codes 1, 2, 3, 7 and 8: target points in others keep the default
    /// value.
    bool isClassOneOnly = false;
};

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
    /// Whether the result tells where the values of each node or point come from.
    bool tellsOrigins = false;
    Tuning tuning{};
    ProgressCallback progress{};
};

enum class Outcome
{
    done,
    /// Nodes in regions of the target without any connection to the source were set to zero, and no Gauss-point values
    /// were computed.
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
    Outcome outcome;
    std::string message;                          ///< the library's, in one line
    std::optional<TransferStatistics> statistics; ///< absent if the library could not write its log
    std::string libraryOutput;                    ///< what was written to standard output meanwhile
};

/// Transfers the fields of the source to the target.
///
/// Throws InvalidData or InvalidOption if the arguments do not fit each other, TargetOutside in mode `error` if a
/// target point is too far from the source, TransferError with the library's message if it cannot do the transfer
/// otherwise, Cancelled if the progress callback says so, Error if there is no place for the private directory.
TransferResult transfer(const Mesh& source, std::span<const Field> sourceFields, const Mesh& target,
                        const TransferOptions& options = {});

/// Samples the fields of the source at points; exceptions as for transfer(). Points in no source element are far.
TransferResult sample(const Mesh& source, std::span<const Field> sourceFields, const PointCloud& points,
                      const TransferOptions& options = {});

} // namespace veltrane

#endif
