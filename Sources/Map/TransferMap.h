/// A map from values on a source mesh to values at the nodes and Gauss points of a target mesh, or at points: searched
/// once, applied as often as one likes.
///
/// It is built from two models without any field, keeps nothing of theirs, and is never changed afterwards: any number
/// of threads may use it at once. With the rules of asExported() its results are the bits that the exported functions
/// write for the same arguments.
#ifndef VELTRANE_TRANSFER_MAP_H
#define VELTRANE_TRANSFER_MAP_H

#include "../BucketSpaceClass.h"
#include "../FieldClass.h"
#include "../ModelClass.h"
#include "EngineRules.h"
#include "MapFailure.h"
#include "MapTable.h"
#include "Overlap.h"
#include "SparseRows.h"
#include "Workers.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

/// What becomes of target points that are too far from the source.
enum class FarPoints
{
    refuse = 0,      ///< there is no map
    giveDefault = 1, ///< nodes and points get the default value, Gauss points 0
    propagate = 2    ///< nodes get values from their neighbours, 0 where there are none; Gauss points 0
};

/// What the builder of a map between parts of larger models takes from the whole: the source is every element, in the
/// order of the whole, that touches a bucket which the target part touches. Its locations then get what they would get
/// from the whole.
struct PartOfWhole
{
    SurveyedBoxes boxes;                        ///< of both whole models
    float meanSize = 0.0F;                      ///< of the elements of the whole source
    BucketRange window;                         ///< the buckets that the target part touches; not empty
    std::span<const BucketRange> furtherNeeded; ///< buckets that hold points of the part and that other parts touch
    const int* matlIdPerNode = nullptr;         ///< of a target mesh, by the first element in the whole; -1 in none
};

struct MapSettings
{
    EngineRules rules = withoutLimits();
    FarPoints farPoints = FarPoints::refuse;
    bool atNodes = true;                                      ///< nodes or points are target locations
    bool atGaussPoints = false;                               ///< Gauss points of the target mesh are
    bool fromGaussPoints = false;                             ///< source values may be at Gauss points
    float nearLimit = std::numeric_limits<float>::infinity(); ///< points that are farther than this are far
    SearchTuning tuning;
    bool looksForOverlap = false;   ///< of the source with itself
    bool takesChecksums = true;     ///< of the models, for whoever stores the map
    std::array<double, 3> origin{}; ///< what was taken off the models' coordinates before they became singles
    /// Located points get reference coordinates and weights in double precision, and values are summed up in it.
    bool isDouble = false;
    /// The coordinates in double precision, the origin not taken off; null where those of the model say it all.
    const double (*exactSourceCoords)[3] = nullptr;
    const double (*exactTargetCoords)[3] = nullptr;
    /// Null where the models are whole. Propagation is not planned for a part: its far nodes stay far.
    const PartOfWhole* part = nullptr;
};

/// The figures of a map's search.
struct MapStatistics
{
    std::int64_t nbBuckets = 0;
    std::int64_t nbUsedBuckets = 0;
    std::int64_t nbUnusedBuckets = 0;
    float meanItemsPerUsedBucket = 0.0F; ///< not a number if no bucket is used
    std::int64_t nbInterpolatedPoints = 0;
    float meanIterations = 0.0F; ///< not a number if no point was interpolated
    std::int64_t nbNearNodes = 0;
    std::int64_t nbFarNodes = 0; ///< those that propagation reaches included
    std::int64_t nbNearGaussPoints = 0;
    std::int64_t nbFarGaussPoints = 0;
    /// Far points in the box of an element in which the iteration did not converge.
    std::int64_t nbUnconvergedPoints = 0;
    /// Source elements that were left out for some point because their Jacobian was singular on the way to it.
    std::int64_t nbSingularElts = 0;
    OverlapFigures overlap;         ///< nothing tried unless the settings ask for it
    std::array<double, 3> origin{}; ///< that of the settings
};

/// One field of an application: where its source values are, and where its target values go. The arrays are borrowed.
struct MapField
{
    Location sourceLocation = atNodes;
    GaussRuleChoice sourceRule = GaussRuleChoice::full; ///< of values at Gauss points
    const float* sourceFloats = nullptr;                ///< [locations][nbComponents], either this
    const double* sourceDoubles = nullptr;              ///< or that
    Location targetLocation = atNodes;
    float* targetFloats = nullptr;
    double* targetDoubles = nullptr;
    int nbComponents = 1;
    bool isClassOneOnly =
        false; ///< exists on materials of state class 1 only; elsewhere target values stay as they are
    float defaultValue = 0.0F;
};

class TransferMap
{
public:
    TransferMap() = default;
    TransferMap(TransferMap&&) noexcept = default;
    TransferMap& operator=(TransferMap&&) noexcept = default;

    /// Builds the map from a source mesh to a target mesh or cloud, whose arrays are borrowed for the length of the
    /// call. `targetMatlMappingFlags`, per target material, 1: map it. A fault in the data leaves the computation.
    MapFailure build(const ModelClass& source, const ModelClass& target, const int* targetMatlMappingFlags,
                     const MapSettings& settings, Workers& workers);

    std::int64_t nbSourceNodes() const { return itsNbSourceNodes; }
    /// Those of the source's elements; for a rule other than the full one they are known to maps from Gauss points
    /// only.
    std::int64_t nbSourceGaussPoints(GaussRuleChoice rule = GaussRuleChoice::full) const;
    /// Target nodes or points, 0 without values there.
    std::int64_t nbNodes() const { return itsTable.nbNodes; }
    /// Target Gauss points, 0 without values there.
    std::int64_t nbGaussPoints() const { return itsTable.nbGaussPoints; }
    bool mapsFromGaussPoints() const { return itsAveraging.nbElts > 0; }
    FarPoints farPoints() const { return itsFarPoints; }

    const MapTable& table() const { return itsTable; }
    const PropagationPlan& propagation() const { return itsPropagation; }
    const MapStatistics& statistics() const { return itsStatistics; }
    /// In the order of the rows.
    std::span<const NearMiss> nearMisses() const
    {
        return {itsNearMisses.get(), static_cast<std::size_t>(itsNbNearMisses)};
    }
    /// The source elements counted in the statistics, in their order.
    std::span<const int> singularElts() const
    {
        return {itsSingularElts.get(), static_cast<std::size_t>(itsStatistics.nbSingularElts)};
    }
    /// Checksums of the two models that the map was built from.
    std::uint64_t sourceChecksum() const { return itsSourceChecksum; }
    std::uint64_t targetChecksum() const { return itsTargetChecksum; }

    /// How many bytes an application to these fields needs as workspace.
    std::int64_t workspaceSize(std::span<const MapField> fields) const;

    /// Writes the values of the fields at their target locations. Target values that are not to be written (locations
    /// that are not mapped, class 2 of fields on class 1) stay; propagation reads the values at nodes that are not
    /// mapped, so these should be set. Asks for no memory; `workspace` holds at least workspaceSize() bytes. Null, or
    /// why the fields do not fit the map, and nothing is written. The result is incomplete if the workers were stopped.
    const char* apply(std::span<const MapField> fields, std::span<std::byte> workspace, Workers& workers) const;

    /// Distributes what stands at target locations to the source nodes, with the same weights: adds to
    /// `atSourceNodes`, [source nodes][nbComponents]. What stands at locations without weights is added to
    /// `left`, [nbComponents]. `values` are those of all target nodes or of all target Gauss points. Sums run in the
    /// order of the locations.
    template <class Value>
    void applyTransposed(Location location, const Value* values, int nbComponents, double* atSourceNodes,
                         double* left) const;

    /// The map as a sparse matrix: a row per target node or Gauss point, a column per source node or source Gauss
    /// point; rows without weights are empty. Its product with values is that of apply() up to rounding, where these
    /// are defined and propagation does not come in. False if there is no memory.
    bool matrix(Location target, Location source, SparseRows& result,
                GaussRuleChoice sourceRule = GaussRuleChoice::full) const;

    /// The same with propagation resolved: the rows of nodes that it reaches are expressed by source locations, too.
    /// Nodes that are not mapped are taken to hold 0. No more than `mostEntries` entries, or false; resolvedSize()
    /// tells beforehand how many there are.
    bool resolvedMatrix(Location source, std::int64_t mostEntries, SparseRows& result,
                        GaussRuleChoice sourceRule = GaussRuleChoice::full) const;
    /// -1 if there is no memory to find out.
    std::int64_t resolvedSize(Location source, GaussRuleChoice sourceRule = GaussRuleChoice::full) const;

    /// The map as bytes, for the same kind of processor; see MapStorage.cpp.
    std::int64_t storedSize() const;
    void store(std::byte* bytes) const;
    /// Null, or what is wrong with the bytes; then the map is left as it was.
    const char* restore(std::span<const std::byte> bytes);

private:
    template <class Real> friend class MapApplication;
    friend class MapBuilder;
    friend class MapRows;
    friend class StoredMap;

    std::int64_t itsNbSourceNodes = 0;
    std::int64_t itsNbSourceGaussPoints = 0;
    FarPoints itsFarPoints = FarPoints::refuse;
    bool itsIsJumping = false; ///< rows one after another read from places far apart
    MapTable itsTable;
    PropagationPlan itsPropagation;
    AveragingTable itsAveraging;
    MapStatistics itsStatistics;
    OwnedArray<NearMiss> itsNearMisses;
    std::int64_t itsNbNearMisses = 0;
    OwnedArray<int> itsSingularElts;
    std::uint64_t itsSourceChecksum = 0;
    std::uint64_t itsTargetChecksum = 0;
};

/// The checksum of a model: positions, in double precision too unless these are null, elements, materials.
std::uint64_t checksumOf(const ModelClass& model, const double (*exactCoords)[3], Workers& workers);

#endif
