#include "Map.h"

#include "ElementChecks.h"
#include "EngineModel.h"
#include "EngineTuning.h"
#include "Errors.h"
#include "MapPart.h"
#include "Text.h"
#include "ThreadWorkers.h"

#include "Map/TransferMap.h"

#include <algorithm>
#include <climits>
#include <limits>
#include <utility>

namespace veltrane
{
namespace
{

constexpr const char* meshTitle = "FE 3D mesh to FE 3D mesh interpolation";
constexpr const char* pointsTitle = "FE 3D mesh to points cloud interpolation";
constexpr const char* cancelledText = "Interpolation cancelled.";
constexpr const char* terminatedText = "Interpolation terminated successfully.";

::Location engineLocation(Location location)
{
    return location == Location::nodes ? atNodes : atGaussPoints;
}

void checkMode(OutsideMode mode, bool isPointCloud)
{
    switch (mode)
    {
    case OutsideMode::error:
    case OutsideMode::defaultValue: return;
    case OutsideMode::propagate:
        if (isPointCloud)
        {
            throw InvalidOption("values cannot be propagated to points, which have no neighbours");
        }
        return;
    }
    throw InvalidOption(text("there is no mode ", static_cast<int>(mode)));
}

MapSettings engineSettings(const MapOptions& options)
{
    return {.rules = engineRules(options.rules),
            .farPoints = static_cast<FarPoints>(options.mode),
            .atNodes = options.toNodes,
            .atGaussPoints = options.toGaussPoints,
            .fromGaussPoints = options.fromGaussPoints,
            .nearLimit = options.rules.nearLimit,
            .tuning = engineTuning(options.tuning),
            .looksForOverlap = options.looksForOverlap,
            .takesChecksums = options.takesChecksums};
}

int countOf(std::int64_t count)
{
    return static_cast<int>(std::min<std::int64_t>(count, INT_MAX));
}

TransferStatistics statisticsOf(const TransferMap& map, bool hasOutsideCounts)
{
    const MapStatistics& figures = map.statistics();
    TransferStatistics statistics{};
    statistics.bucketCount = figures.nbBuckets;
    statistics.usedBucketCount = figures.nbUsedBuckets;
    statistics.unusedBucketCount = figures.nbUnusedBuckets;
    statistics.meanElementsPerUsedBucket = figures.meanItemsPerUsedBucket;
    statistics.interpolatedPointCount = countOf(figures.nbInterpolatedPoints);
    statistics.meanIterations = figures.meanIterations;
    if (hasOutsideCounts)
    {
        statistics.nodes = OutsideCounts{countOf(figures.nbNearNodes), countOf(figures.nbFarNodes)};
        statistics.gaussPoints = OutsideCounts{countOf(figures.nbNearGaussPoints), countOf(figures.nbFarGaussPoints)};
    }
    statistics.unconvergedPointCount = countOf(figures.nbUnconvergedPoints);
    statistics.singularElementCount = countOf(figures.nbSingularElts);
    statistics.overlap = {.triedCount = countOf(figures.overlap.nbTried),
                          .foundCount = countOf(figures.overlap.nbFound),
                          .element = figures.overlap.elt,
                          .otherElement = figures.overlap.otherElt};
    statistics.origin = figures.origin;
    return statistics;
}

/// Null for none.
const double (*rowsOfThree(const std::vector<double>& coordinates))[3]
{
    return coordinates.empty() ? nullptr : reinterpret_cast<const double(*)[3]>(coordinates.data());
}

/// The coordinates in double precision, or those in single precision widened into `widened`; null if the latter say it
/// all.
template <typename Positions>
const double (*exactRows(const Positions& positions, bool isExact, std::vector<double>& widened))[3]
{
    if (isExact && positions.exactCoordinates().empty())
    {
        widened.assign(positions.coordinates().begin(), positions.coordinates().end());
        return rowsOfThree(widened);
    }
    return rowsOfThree(positions.exactCoordinates());
}

template <typename Target>
std::shared_ptr<const TransferMap> build(const Mesh& source, const Target& target, std::vector<int> flags,
                                         const MapOptions& options, const char* title, const MapPart* part)
{
    MapSettings settings = engineSettings(options);
    ThreadWorkers workers(options.threads, options.progress, title);
    if (!workers.report(0, "Pretreatment"))
    {
        workers.throwStopped(cancelledText);
    }
    if (part != nullptr)
    {
        settings.origin = part->origin;
        settings.part = &part->figures;
    }
    else if (options.rules.movesOrigin)
    {
        settings.origin =
            commonOrigin(source, target.coordinates(), settings.tuning.refCoordTolerance, options.threads);
    }
    settings.isDouble = options.rules.inDoublePrecision;
    std::vector<double> widenedSource;
    std::vector<double> widenedTarget;
    settings.exactSourceCoords = exactRows(source, part != nullptr && part->hasExactSource, widenedSource);
    settings.exactTargetCoords = exactRows(target, part != nullptr && part->hasExactTarget, widenedTarget);
    const EngineModel sourceModel(source, settings.origin);
    const EngineModel targetModel(target, settings.origin);
    auto map = std::make_shared<TransferMap>();
    const MapFailure failure = map->build(sourceModel.model(), targetModel.model(), flags.data(), settings, workers);
    if (workers.isStopped() || failure.reason == MapFailure::cancelled || !workers.report(100, terminatedText))
    {
        workers.throwStopped(cancelledText);
    }
    if (failure.reason == MapFailure::outside)
    {
        throw TargetOutside(oneLine(failure.text));
    }
    if (failure)
    {
        throw TransferError(oneLine(failure.text), failure.reason);
    }
    return map;
}

std::shared_ptr<const TransferMap> build(const Mesh& source, const Mesh& target, const MapOptions& options,
                                         const MapPart* part = nullptr)
{
    checkMode(options.mode, false);
    checkSourceKinds(source);
    if (options.toGaussPoints)
    {
        checkVolumeElements(target, "target", "Gauss-point fields need a target of volume elements only");
    }
    return build(source, target, mappingFlags(options.targetMapping, target.materials().size()), options, meshTitle,
                 part);
}

std::shared_ptr<const TransferMap> build(const Mesh& source, const PointCloud& points, const MapOptions& options,
                                         const MapPart* part = nullptr)
{
    checkMode(options.mode, true);
    checkSourceKinds(source);
    if (options.toGaussPoints)
    {
        throw InvalidOption("points receive values as nodes do, one location for each field");
    }
    return build(source, points, mappingFlags(options.targetMapping, points.materials().size()), options, pointsTitle,
                 part);
}

const char* placeName(Location location)
{
    return location == Location::nodes ? "nodes" : "Gauss points";
}

template <typename Arrays> std::size_t sizeOf(const Arrays& values)
{
    return std::visit([](const auto& span) { return span.size(); }, values);
}

/// The record of a field for the engine. Sizes are checked by whoever has them.
MapField engineField(const FieldView& arrays, const TransferMap& map)
{
    const auto fullCount = static_cast<std::size_t>(map.nbSourceGaussPoints() * arrays.componentCount);
    MapField field;
    field.sourceLocation = engineLocation(arrays.sourceLocation);
    field.sourceRule = sizeOf(arrays.source) == fullCount ? GaussRuleChoice::full : GaussRuleChoice::reduced;
    field.targetLocation = engineLocation(arrays.targetLocation);
    field.nbComponents = arrays.componentCount;
    field.isClassOneOnly = arrays.isClassOneOnly;
    field.defaultValue = arrays.defaultValue;
    if (const auto* floats = std::get_if<std::span<const float>>(&arrays.source))
    {
        field.sourceFloats = floats->data();
    }
    else
    {
        field.sourceDoubles = std::get<std::span<const double>>(arrays.source).data();
    }
    if (const auto* floats = std::get_if<std::span<float>>(&arrays.target))
    {
        field.targetFloats = floats->data();
    }
    else
    {
        field.targetDoubles = std::get<std::span<double>>(arrays.target).data();
    }
    return field;
}

/// Fields are applied in groups of a fixed size, so that the records need no memory of their own.
constexpr std::size_t groupSize = 8;

struct FieldGroup
{
    FieldGroup(std::span<const FieldView> fields, const TransferMap& map) : count(fields.size())
    {
        std::ranges::transform(fields, records.begin(),
                               [&](const FieldView& arrays) { return engineField(arrays, map); });
    }

    std::span<const MapField> span() const { return {records.data(), count}; }

    std::array<MapField, groupSize> records;
    std::size_t count;
};

FieldView arraysOf(const Field& field, FieldValues& target, Location targetLocation, float defaultValue,
                   bool isClassOneOnly)
{
    FieldView arrays{.componentCount = field.componentCount(),
                     .sourceLocation = field.location(),
                     .targetLocation = targetLocation,
                     .defaultValue = defaultValue,
                     .isClassOneOnly = isClassOneOnly};
    std::visit([&](const auto& values) { arrays.source = std::span(values); }, field.values());
    std::visit([&](auto& values) { arrays.target = std::span(values); }, target);
    return arrays;
}

} // namespace

std::shared_ptr<const TransferMap> buildPart(const Mesh& source, const Mesh& target, const MapOptions& options,
                                             const MapPart& part)
{
    return build(source, target, options, &part);
}

std::shared_ptr<const TransferMap> buildPart(const Mesh& source, const PointCloud& points, const MapOptions& options,
                                             const MapPart& part)
{
    return build(source, points, options, &part);
}

Map::Map(const Mesh& source, const Mesh& target, const MapOptions& options)
    : map_(build(source, target, options)), statistics_(std::make_shared<TransferStatistics>(statisticsOf(*map_, true)))
{
}

Map::Map(const Mesh& source, const PointCloud& points, const MapOptions& options)
    : map_(build(source, points, options)),
      statistics_(std::make_shared<TransferStatistics>(statisticsOf(*map_, options.rules.pointsMayBeNear)))
{
}

Map::Map(std::shared_ptr<const TransferMap> map)
    : map_(std::move(map)), statistics_(std::make_shared<TransferStatistics>(statisticsOf(*map_, true)))
{
}

std::size_t Map::sourceNodeCount() const
{
    return static_cast<std::size_t>(map_->nbSourceNodes());
}

std::size_t Map::sourceGaussPointCount(GaussPointRule rule) const
{
    return static_cast<std::size_t>(map_->nbSourceGaussPoints(engineRule(rule)));
}

/// Whether this is the number of source nodes, or of Gauss points by one of the rules.
bool Map::hasSourceLocations(Location location, std::size_t count) const
{
    return location == Location::nodes
               ? count == sourceNodeCount()
               : count == sourceGaussPointCount() || count == sourceGaussPointCount(GaussPointRule::reduced);
}

/// How many of them there are: "8", "27 or 8".
std::string Map::sourceCountText(Location location) const
{
    const std::size_t full = location == Location::nodes ? sourceNodeCount() : sourceGaussPointCount();
    const std::size_t reduced = location == Location::nodes ? full : sourceGaussPointCount(GaussPointRule::reduced);
    return full == reduced ? text(full) : text(full, " or ", reduced);
}

std::size_t Map::locationCount(Location location) const
{
    return static_cast<std::size_t>(location == Location::nodes ? map_->nbNodes() : map_->nbGaussPoints());
}

std::int64_t Map::firstRow(Location location) const
{
    return location == Location::nodes ? 0 : map_->nbNodes();
}

void Map::checkArrays(const FieldView& arrays) const
{
    if (arrays.componentCount < 1 || arrays.componentCount > maxComponentCount)
    {
        throw InvalidData(text("a field has ", arrays.componentCount, " components, not 1 to ", maxComponentCount));
    }
    const auto components = static_cast<std::size_t>(arrays.componentCount);
    const std::size_t sourceSize = sizeOf(arrays.source);
    if (sourceSize % components != 0 || !hasSourceLocations(arrays.sourceLocation, sourceSize / components))
    {
        throw InvalidData(text("there are ", sourceSize, " source values, not ", components, " for each of ",
                               sourceCountText(arrays.sourceLocation), " ", placeName(arrays.sourceLocation)));
    }
    const std::size_t targetCount = locationCount(arrays.targetLocation);
    if (targetCount == 0 || sizeOf(arrays.target) != targetCount * components)
    {
        throw InvalidData(text("there are ", sizeOf(arrays.target), " target values, not ", components, " for each of ",
                               targetCount, " ", placeName(arrays.targetLocation)));
    }
    if (arrays.sourceLocation == Location::gaussPoints && !map_->mapsFromGaussPoints())
    {
        throw InvalidData("the map is not made for fields at Gauss points of the source");
    }
}

std::size_t Map::workspaceSize(std::span<const FieldView> fields) const
{
    std::int64_t size = 0;
    for (std::size_t first = 0; first < fields.size(); first += groupSize)
    {
        const FieldGroup group(fields.subspan(first, std::min(groupSize, fields.size() - first)), *map_);
        size = std::max(size, map_->workspaceSize(group.span()));
    }
    return static_cast<std::size_t>(size);
}

void Map::apply(std::span<const FieldView> fields, std::span<std::byte> workspace, int threads) const
{
    for (const FieldView& field : fields)
    {
        checkArrays(field);
    }
    if (workspace.size() < workspaceSize(fields))
    {
        throw InvalidData(text("the workspace has ", workspace.size(), " bytes, not ", workspaceSize(fields)));
    }
    ThreadWorkers workers(threads);
    for (std::size_t first = 0; first < fields.size(); first += groupSize)
    {
        const FieldGroup group(fields.subspan(first, std::min(groupSize, fields.size() - first)), *map_);
        if (const char* refusal = map_->apply(group.span(), workspace, workers))
        {
            throw InvalidData(refusal);
        }
    }
}

std::vector<Field> Map::apply(std::span<const Field> fields, const ApplyOptions& options) const
{
    checkFields(fields, options);
    std::vector<FieldValues> values;
    std::vector<FieldView> arrays;
    values.reserve(fields.size()); // the arrays point into it
    for (std::size_t i = 0; i < fields.size(); ++i)
    {
        const Field& field = fields[i];
        const FieldOptions fieldOptions = options.fieldOptions.empty() ? FieldOptions{} : options.fieldOptions[i];
        const Location location = options.targetLocations.empty() ? field.location() : options.targetLocations[i];
        const float defaultValue = fieldOptions.defaultValue.value_or(options.defaultValue);
        const std::size_t count = locationCount(location) * static_cast<std::size_t>(field.componentCount());
        values.push_back(field.isSinglePrecision() ? FieldValues(std::vector<float>(count, defaultValue))
                                                   : FieldValues(std::vector<double>(count, double{defaultValue})));
        arrays.push_back(arraysOf(field, values.back(), location, defaultValue, fieldOptions.isClassOneOnly));
    }
    std::vector<std::byte> workspace(workspaceSize(arrays));
    apply(arrays, workspace, options.threads);
    std::vector<Field> results;
    results.reserve(fields.size());
    for (std::size_t i = 0; i < fields.size(); ++i)
    {
        results.emplace_back(fields[i].name(), arrays[i].targetLocation, fields[i].componentCount(),
                             std::move(values[i]));
    }
    return results;
}

void Map::checkFields(std::span<const Field> fields, const ApplyOptions& options) const
{
    if (!options.fieldOptions.empty() && options.fieldOptions.size() != fields.size())
    {
        throw InvalidOption(text("there are options for ", options.fieldOptions.size(), " fields, but ", fields.size(),
                                 " source fields"));
    }
    if (!options.targetLocations.empty() && options.targetLocations.size() != fields.size())
    {
        throw InvalidOption(text("there are ", options.targetLocations.size(), " target locations for ", fields.size(),
                                 " source fields"));
    }
    for (const Field& field : fields)
    {
        if (!hasSourceLocations(field.location(), field.locationCount()))
        {
            throw InvalidData(text("field '", field.name(), "' has values at ", field.locationCount(), " ",
                                   placeName(field.location()), ", but the source has ",
                                   sourceCountText(field.location())));
        }
    }
}

TransposedField Map::applyTransposed(const Field& field) const
{
    const std::size_t count = locationCount(field.location());
    if (count == 0 || field.locationCount() != count)
    {
        throw InvalidData(text("field '", field.name(), "' has values at ", field.locationCount(), " ",
                               placeName(field.location()), ", but the target of the map has ", count));
    }
    const auto components = static_cast<std::size_t>(field.componentCount());
    std::vector<double> atSource(sourceNodeCount() * components, 0.0);
    std::vector<double> left(components, 0.0);
    std::visit(
        [&](const auto& values)
        {
            map_->applyTransposed(engineLocation(field.location()), values.data(), field.componentCount(),
                                  atSource.data(), left.data());
        },
        field.values());
    return {Field(field.name(), Location::nodes, field.componentCount(), std::move(atSource)), std::move(left)};
}

SparseMatrix Map::matrix(const MatrixOptions& options) const
{
    if (locationCount(options.target) == 0)
    {
        throw InvalidOption(text("the map gives no values to ", placeName(options.target), " of the target"));
    }
    if (options.source == Location::gaussPoints && !map_->mapsFromGaussPoints())
    {
        throw InvalidOption("the map is not made for fields at Gauss points of the source");
    }
    if (options.resolvesPropagation && options.target != Location::nodes)
    {
        throw InvalidOption("values are propagated to nodes only");
    }
    SparseRows rows;
    if (options.resolvesPropagation)
    {
        const std::int64_t size = resolvedMatrixSize(options.source, options.sourceRule);
        if (size > options.mostEntries)
        {
            throw InvalidOption(text("the matrix would have ", size, " entries, more than the ", options.mostEntries,
                                     " that are allowed"));
        }
    }
    const ::Location source = engineLocation(options.source);
    const GaussRuleChoice rule = engineRule(options.sourceRule);
    const bool isMade = options.resolvesPropagation ? map_->resolvedMatrix(source, options.mostEntries, rows, rule)
                                                    : map_->matrix(engineLocation(options.target), source, rows, rule);
    if (!isMade)
    {
        throw std::bad_alloc();
    }
    const auto vectorOf = [](const auto& array, std::int64_t count)
    { return std::vector(array.get(), array.get() + count); };
    return {rows.nbRows, rows.nbColumns, vectorOf(rows.rowStarts, rows.nbRows + 1),
            vectorOf(rows.columns, rows.nbEntries()), vectorOf(rows.values, rows.nbEntries())};
}

std::int64_t Map::resolvedMatrixSize(Location source, GaussPointRule sourceRule) const
{
    const std::int64_t size = map_->resolvedSize(engineLocation(source), engineRule(sourceRule));
    if (size < 0)
    {
        throw std::bad_alloc();
    }
    return size;
}

std::vector<Finding> Map::findings(Location location) const
{
    const std::int64_t first = firstRow(location);
    std::vector<Finding> findings(locationCount(location));
    for (std::size_t i = 0; i < findings.size(); ++i)
    {
        findings[i] = static_cast<Finding>(map_->table().finding(first + static_cast<std::int64_t>(i)));
    }
    return findings;
}

std::vector<double> Map::distances(Location location) const
{
    const std::int64_t first = firstRow(location);
    std::vector<double> distances(locationCount(location));
    for (std::size_t i = 0; i < distances.size(); ++i)
    {
        const bool isInside = map_->table().finding(first + static_cast<std::int64_t>(i)) == ::Finding::inside;
        distances[i] = isInside ? 0.0 : std::numeric_limits<double>::infinity();
    }
    for (const NearMiss& near : map_->nearMisses())
    {
        const std::int64_t i = near.row - first;
        if (i >= 0 && i < static_cast<std::int64_t>(distances.size()))
        {
            distances[static_cast<std::size_t>(i)] = near.distance;
        }
    }
    return distances;
}

Places Map::places(Location location) const
{
    const MapTable& table = map_->table();
    const std::int64_t first = firstRow(location);
    const std::size_t count = locationCount(location);
    Places places{.findings = findings(location),
                  .elements = std::vector<int>(count),
                  .referenceCoordinates = std::vector<std::array<float, 3>>(count),
                  .distances = distances(location)};
    for (std::size_t i = 0; i < count; ++i)
    {
        const std::int64_t row = first + static_cast<std::int64_t>(i);
        places.elements[i] = table.elements[row];
        places.referenceCoordinates[i] =
            table.elements[row] == -1 ? std::array<float, 3>{} : table.referenceCoords[row];
    }
    return places;
}

OutsideMode Map::mode() const
{
    return static_cast<OutsideMode>(map_->farPoints());
}

bool Map::hasUnreachedNodes() const
{
    return !map_->propagation().isComplete;
}

std::vector<int> Map::singularElements() const
{
    const auto elements = map_->singularElts();
    return {elements.begin(), elements.end()};
}

bool Map::isFrom(const Mesh& source) const
{
    OneWorker worker;
    return checksumOf(EngineModel(source, map_->statistics().origin).model(), rowsOfThree(source.exactCoordinates()),
                      worker) == map_->sourceChecksum();
}

bool Map::isTo(const Mesh& target) const
{
    OneWorker worker;
    return checksumOf(EngineModel(target, map_->statistics().origin).model(), rowsOfThree(target.exactCoordinates()),
                      worker) == map_->targetChecksum();
}

bool Map::isTo(const PointCloud& points) const
{
    OneWorker worker;
    return checksumOf(EngineModel(points, map_->statistics().origin).model(), rowsOfThree(points.exactCoordinates()),
                      worker) == map_->targetChecksum();
}

} // namespace veltrane
