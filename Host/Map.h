/// A map from a source mesh to a target mesh or to points: the search is done once, values are carried as often as one
/// likes.
///
/// A map is a value: it keeps nothing of the meshes that it was built from, is never changed, and costs nothing to
/// copy. Any number of threads may build maps and use the same one at once. Nothing in the process is touched: neither
/// its directory nor its output, locale or signals.
#ifndef VELTRANE_HOST_MAP_H
#define VELTRANE_HOST_MAP_H

#include "CallSettings.h"
#include "Field.h"
#include "Mesh.h"
#include "TransferStatistics.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

class TransferMap;

namespace veltrane
{

/// What happens to target points too far from the source to be given values from it.
enum class OutsideMode : int
{
    error = 0,        ///< there is no result (TargetOutside)
    defaultValue = 1, ///< nodes and points get the default value, Gauss points 0
    propagate = 2     ///< nodes get values from neighbouring nodes, Gauss points 0; not for points
};

struct MapOptions
{
    OutsideMode mode = OutsideMode::error;
    /// Per target material: its nodes and Gauss points receive values. A node belongs to the material of the first
    /// element that it is part of. Empty: all do.
    std::vector<bool> targetMapping{};
    bool toNodes = true;          ///< nodes of the target, or points, receive values
    bool toGaussPoints = false;   ///< Gauss points of the target mesh do
    bool fromGaussPoints = false; ///< fields at Gauss points of the source may be applied
    /// Tries at up to 10 000 target locations whether the source overlaps itself there; the statistics tell.
    bool looksForOverlap = false;
    /// Of both meshes, for isFrom() and isTo(); they take a few percent of the time.
    bool takesChecksums = true;
    Rules rules{};
    Tuning tuning{};
    int threads = 1; ///< 0: as many as usableThreadCount() tells
    ProgressCallback progress{};
};

/// What can be said of a single field.
struct FieldOptions
{
    std::optional<float> defaultValue{}; ///< instead of the one of all fields
    /// The field exists only in materials of the state codes 1, 2, 3, 7 and 8: target points in others keep the default
    /// value.
    bool isClassOneOnly = false;
};

struct ApplyOptions
{
    /// What far nodes and points get in mode `defaultValue`, and what all those hold that receive no values.
    float defaultValue = 0;
    std::vector<FieldOptions> fieldOptions{}; ///< per field; empty: nothing special
    /// Per field, where on the target its values go. Empty: to the locations that it has on the source.
    std::vector<Location> targetLocations{};
    int threads = 1;
};

/// How a target location was found.
enum class Finding : unsigned char
{
    notMapped = 0, ///< it is part of no element, or its material is not to receive values
    inside = 1,    ///< in a source element
    near = 2,      ///< in none, and taken to a near one
    far = 3,       ///< too far from the source
    reached = 4    ///< far, but values spread to it from its neighbours
};

/// Where the nodes or points, or the Gauss points of a target lie in the source; one entry per location.
struct Places
{
    std::vector<Finding> findings;
    std::vector<int> elements; ///< from 0, or -1
    std::vector<std::array<float, 3>> referenceCoordinates;
    std::vector<double> distances; ///< of near ones to the place whose values they take; 0 inside, infinite elsewhere
};

/// Arrays of one field that are applied where they are; all are the caller's.
struct FieldView
{
    std::variant<std::span<const float>, std::span<const double>> source{}; ///< [source locations][componentCount]
    std::variant<std::span<float>, std::span<double>> target{};             ///< [target locations][componentCount]
    int componentCount = 1;
    Location sourceLocation = Location::nodes;
    Location targetLocation = Location::nodes;
    float defaultValue = 0;
    bool isClassOneOnly = false;
};

/// A sparse matrix in compressed rows.
struct SparseMatrix
{
    std::int64_t rowCount = 0;
    std::int64_t columnCount = 0;
    std::vector<std::int64_t> rowStarts; ///< one more than rows
    std::vector<int> columns;            ///< in increasing order within a row
    std::vector<double> values;
};

struct MatrixOptions
{
    Location target = Location::nodes;                ///< rows
    Location source = Location::nodes;                ///< columns
    GaussPointRule sourceRule = GaussPointRule::full; ///< of columns of Gauss points
    /// Nodes that propagation reaches are expressed by source locations, too; rows can become long.
    bool resolvesPropagation = false;
    std::int64_t mostEntries = 1'000'000'000; ///< of a resolved matrix
};

/// What stood at target locations, at the source's nodes.
struct TransposedField
{
    Field atSource;           ///< in double precision, at nodes
    std::vector<double> left; ///< per component the sum of what stood at locations without weights
};

struct Validation;

/// How a transfer is validated.
struct ValidationOptions
{
    /// As the fields were, or are to be, applied.
    ApplyOptions apply{};
    /// As those of the map; empty: all materials of the target receive values.
    std::vector<bool> targetMapping{};
    /// Of the search for the way back. Unless its near limit is set, it is the longest edge of any target element's
    /// box.
    Rules rules{};
    Tuning tuning{};
    int threads = 1;
    ProgressCallback progress{};
};

class Map
{
public:
    /// Builds the map. Throws InvalidData or InvalidOption if the arguments do not fit each other, TargetOutside in
    /// mode `error` if a target point is too far from the source, SingularElement as the rules say, TransferError if
    /// the meshes cannot be mapped otherwise, Cancelled if the progress callback says so, and what it throws.
    Map(const Mesh& source, const Mesh& target, const MapOptions& options = {});
    Map(const Mesh& source, const PointCloud& points, const MapOptions& options = {});

    std::size_t sourceNodeCount() const;
    /// Rows of a field at Gauss points of the source. A field may be by either rule, which is told from its rows; the
    /// reduced one is known to maps that are made for such fields.
    std::size_t sourceGaussPointCount(GaussPointRule rule = GaussPointRule::full) const;
    /// Target nodes or points, or Gauss points; 0 if the map does not give them values.
    std::size_t locationCount(Location location) const;

    /// The values of source fields at the target. Locations that receive none hold the default value. Throws
    /// InvalidData or InvalidOption if the fields do not fit the map.
    std::vector<Field> apply(std::span<const Field> fields, const ApplyOptions& options = {}) const;

    /// The same in arrays of the caller's: target values that are not to be written stay as they are; propagation reads
    /// those at nodes that are not mapped. With one thread no memory is asked for. `workspace` holds at least
    /// workspaceSize() bytes. Throws InvalidData if a size is wrong; nothing is written then.
    void apply(std::span<const FieldView> fields, std::span<std::byte> workspace, int threads = 1) const;
    std::size_t workspaceSize(std::span<const FieldView> fields) const;

    /// Distributes what stands at target locations, such as nodal forces or heat flows, to the source's nodes with the
    /// weights of apply(): sums are kept up to the rounding of the weights. Throws InvalidData if the field does not
    /// have a value for each target location of its kind.
    TransposedField applyTransposed(const Field& field) const;

    /// Maps fields to the target and back, and tells what both meshes have in common, as Validator does: see
    /// Validation.h. Throws InvalidData if the meshes or fields do not fit the map, and what the construction of a map
    /// throws.
    Validation validate(const Mesh& source, const Mesh& target, std::span<const Field> fields,
                        const ValidationOptions& options = {}) const;

    /// The map as a matrix, whose product with source values is what apply() gives up to rounding; rows of locations
    /// without weights are empty. Throws InvalidOption if the map has no such locations, or if a resolved matrix would
    /// have more entries than are allowed.
    SparseMatrix matrix(const MatrixOptions& options = {}) const;
    /// Entries of the matrix of nodes with propagation resolved.
    std::int64_t resolvedMatrixSize(Location source = Location::nodes,
                                    GaussPointRule sourceRule = GaussPointRule::full) const;

    Places places(Location location = Location::nodes) const;
    /// The same, for whoever needs no more.
    std::vector<Finding> findings(Location location = Location::nodes) const;
    std::vector<double> distances(Location location = Location::nodes) const;
    const TransferStatistics& statistics() const { return *statistics_; }
    OutsideMode mode() const;
    /// Whether there are far nodes that propagation does not reach; they become 0.
    bool hasUnreachedNodes() const;
    /// Source elements that were left out for some point, from 0.
    std::vector<int> singularElements() const;

    /// Writes the map to a file, and reads it back. save() throws Error if it cannot be written, and a file that was
    /// there stays as it was; load() throws Error if there is no such file, or it is not a whole map of this version.
    void save(const std::filesystem::path& path) const;
    static Map load(const std::filesystem::path& path);
    /// Bytes of such a file, for whoever keeps them elsewhere.
    std::vector<std::byte> bytes() const;
    static Map fromBytes(std::span<const std::byte> bytes);
    /// Whether the map was built from this mesh, or to this target: positions, elements and state codes are the same.
    /// False if it was built without checksums.
    bool isFrom(const Mesh& source) const;
    bool isTo(const Mesh& target) const;
    bool isTo(const PointCloud& points) const;

private:
    friend class RankMap; // keeps that of its part of the models

    explicit Map(std::shared_ptr<const TransferMap> map);

    bool hasSourceLocations(Location location, std::size_t count) const;
    std::string sourceCountText(Location location) const;
    std::int64_t firstRow(Location location) const;
    void checkArrays(const FieldView& arrays) const;
    void checkFields(std::span<const Field> fields, const ApplyOptions& options) const;

    std::shared_ptr<const TransferMap> map_;
    std::shared_ptr<const TransferStatistics> statistics_;
};

} // namespace veltrane

#endif
