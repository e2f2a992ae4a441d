#include "Transfer.h"

#include "ElementChecks.h"
#include "Errors.h"
#include "LibraryCall.h"
#include "MeshArguments.h"
#include "Text.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <iterator>
#include <tuple>
#include <utility>

namespace veltrane
{
namespace
{

constexpr const char* tuningFileName = "mappingInputs.txt";

/// How many locations of each sort a mesh or a point cloud has.
struct LocationCounts
{
    std::size_t nodes;
    std::size_t gaussPoints;

    std::size_t at(Location location) const { return location == Location::nodes ? nodes : gaussPoints; }
};

LocationCounts countLocations(const Mesh& mesh)
{
    return {static_cast<std::size_t>(mesh.nodeCount()), mesh.gaussPointCount()};
}

/// One side's records for the library; the values stay where they are.
class FieldRecords
{
public:
    void add(const std::string& name, Location location, int componentCount, FieldValues& values, float defaultValue,
             bool isClassOneOnly)
    {
        FieldStruct record{};
        record.matlStateFlag = isClassOneOnly ? 1 : 0;
        std::strncpy(record.name, name.c_str(), sizeof record.name - 1);
        record.location = static_cast<int>(location);
        record.nbComponents = componentCount;
        if (auto* floats = std::get_if<std::vector<float>>(&values))
        {
            record.precision = 1;
            record.valuesFloat = floats->data();
        }
        else
        {
            record.precision = 2;
            record.valuesDouble = std::get<std::vector<double>>(values).data();
        }
        record.defaultValueFloat = defaultValue;
        record.defaultValueDouble = defaultValue;
        records_.push_back(record);
    }

    FieldsSetStruct set() { return {static_cast<int>(records_.size()), records_.data()}; }

private:
    std::vector<FieldStruct> records_;
};

void checkSourceFields(std::span<const Field> fields, const LocationCounts& counts)
{
    if (fields.empty())
    {
        throw InvalidData("there is no field to be transferred");
    }
    if (fields.size() > static_cast<std::size_t>(INT_MAX))
    {
        throw InvalidData("there are too many fields");
    }
    for (const Field& field : fields)
    {
        const std::size_t expected = counts.at(field.location());
        if (field.locationCount() != expected)
        {
            throw InvalidData(text("field '", field.name(), "' has values at ", field.locationCount(),
                                   field.location() == Location::nodes ? " nodes" : " Gauss points",
                                   ", but the source has ", expected));
        }
    }
}

std::vector<Location> targetLocations(std::span<const Field> sourceFields, const std::vector<Location>& requested)
{
    if (!requested.empty())
    {
        if (requested.size() != sourceFields.size())
        {
            throw InvalidOption(
                text("there are ", requested.size(), " target locations for ", sourceFields.size(), " source fields"));
        }
        return requested;
    }
    std::vector<Location> locations;
    std::ranges::transform(sourceFields, std::back_inserter(locations), &Field::location);
    return locations;
}

/// A further field that tells by its values where those of the others come from. It is 1 at all source nodes, so that
/// interpolation gives 1, up to rounding, at each node that an element gives values to.
class OriginField
{
public:
    static constexpr float defaultValue = -1;
    static constexpr float untouched = 0;

    OriginField(std::size_t sourceNodeCount, std::size_t targetNodeCount)
        : source(std::vector<float>(sourceNodeCount, 1.0F)), target(std::vector<float>(targetNodeCount, untouched))
    {
    }

    std::vector<ValueOrigin> origins() const
    {
        const auto originOf = [](float value) {
            return value > 0.5F ? ValueOrigin::element : value < -0.5F ? ValueOrigin::defaultValue : ValueOrigin::none;
        };
        std::vector<ValueOrigin> result;
        std::ranges::transform(std::get<std::vector<float>>(target), std::back_inserter(result), originOf);
        return result;
    }

    FieldValues source;
    FieldValues target;
};

FieldOptions optionsOf(const TransferOptions& options, std::size_t field)
{
    return options.fieldOptions.empty() ? FieldOptions{} : options.fieldOptions[field];
}

/// The fields of both sides while the library works on them.
class FieldsInTransfer
{
public:
    FieldsInTransfer(std::span<const Field> sourceFields, std::vector<Location> locations,
                     const LocationCounts& sourceCounts, const LocationCounts& targetCounts,
                     const TransferOptions& options)
        : sourceFields_(sourceFields), locations_(std::move(locations))
    {
        if (!options.fieldOptions.empty() && options.fieldOptions.size() != sourceFields.size())
        {
            throw InvalidOption(text("there are options for ", options.fieldOptions.size(), " fields, but ",
                                     sourceFields.size(), " source fields"));
        }
        targetValues_.reserve(sourceFields.size()); // the records point into it
        for (std::size_t i = 0; i < sourceFields.size(); ++i)
        {
            const Field& field = sourceFields[i];
            const FieldOptions fieldOptions = optionsOf(options, i);
            const float defaultValue = fieldOptions.defaultValue.value_or(options.defaultValue);
            const bool isClassOneOnly = fieldOptions.isClassOneOnly;
            auto& sourceValues = const_cast<FieldValues&>(field.values()); // only read
            source_.add(field.name(), field.location(), field.componentCount(), sourceValues, defaultValue,
                        isClassOneOnly);

            const std::size_t valueCount =
                targetCounts.at(locations_[i]) * static_cast<std::size_t>(field.componentCount());
            if (std::max(valueCount, field.valueCount()) > static_cast<std::size_t>(INT_MAX))
            {
                throw InvalidData(text("field '", field.name(), "' would have more than ", INT_MAX, " values"));
            }
            targetValues_.push_back(field.isSinglePrecision()
                                        ? FieldValues(std::vector<float>(valueCount, defaultValue))
                                        : FieldValues(std::vector<double>(valueCount, double{defaultValue})));
            target_.add(field.name(), locations_[i], field.componentCount(), targetValues_.back(), defaultValue,
                        isClassOneOnly);
        }
        // Where no field is at nodes, one more would make the library visit them, and perhaps fail there.
        if (options.tellsOrigins && std::ranges::find(locations_, Location::nodes) != locations_.end())
        {
            origin_.emplace(sourceCounts.nodes, targetCounts.nodes);
            source_.add(originName, Location::nodes, 1, origin_->source, OriginField::defaultValue, false);
            target_.add(originName, Location::nodes, 1, origin_->target, OriginField::defaultValue, false);
        }
    }
    FieldsInTransfer(const FieldsInTransfer&) = delete; // the records point into this object
    FieldsInTransfer& operator=(const FieldsInTransfer&) = delete;

    FieldsSetStruct source() { return source_.set(); }
    FieldsSetStruct target() { return target_.set(); }

    std::vector<Field> takeResults()
    {
        std::vector<Field> results;
        results.reserve(targetValues_.size());
        for (std::size_t i = 0; i < targetValues_.size(); ++i)
        {
            results.emplace_back(sourceFields_[i].name(), locations_[i], sourceFields_[i].componentCount(),
                                 std::move(targetValues_[i]));
        }
        return results;
    }

    std::vector<ValueOrigin> origins() const { return origin_ ? origin_->origins() : std::vector<ValueOrigin>(); }

private:
    static constexpr const char* originName = "origin of values";

    std::span<const Field> sourceFields_;
    std::vector<Location> locations_;
    std::vector<FieldValues> targetValues_;
    std::optional<OriginField> origin_;
    FieldRecords source_;
    FieldRecords target_;
};

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

TransferResult result(LibraryOutcome outcome, FieldsInTransfer& fields)
{
    const bool warned = outcome.code < 0;
    return {.fields = fields.takeResults(),
            .origins = fields.origins(),
            .outcome = warned ? Outcome::propagationWarning : Outcome::done,
            .message = std::move(outcome.message),
            .statistics = outcome.log ? parseStatistics(std::move(*outcome.log), warned) : std::nullopt,
            .libraryOutput = std::move(outcome.output)};
}

/// Propagation spreads the values of the origin field like all others. Which nodes it has reached, only a transfer
/// without propagation tells.
void markPropagation(TransferResult& result, const Mesh& source, const Mesh& target, const TransferOptions& options)
{
    if (result.statistics && result.statistics->nodes && result.statistics->nodes->far == 0)
    {
        return;
    }
    const Field ones("origin of values", Location::nodes, 1,
                     std::vector<float>(static_cast<std::size_t>(source.nodeCount()), 1.0F));
    const auto atTheEnd = [&](const Progress& progress)
    { return options.progress({.percent = 100, .title = progress.title, .stage = progress.stage}); };
    const TransferResult located = transfer(source, std::span(&ones, 1), target,
                                            {.mode = OutsideMode::defaultValue,
                                             .targetMapping = options.targetMapping,
                                             .tellsOrigins = true,
                                             .tuning = options.tuning,
                                             .progress = options.progress ? ProgressCallback(atTheEnd) : nullptr});
    for (std::size_t node = 0; node < result.origins.size(); ++node)
    {
        if (result.origins[node] == ValueOrigin::element && located.origins[node] == ValueOrigin::defaultValue)
        {
            result.origins[node] = ValueOrigin::neighbours;
        }
    }
}

/// Calls one of the two interpolations, which differ in what a target is made of.
template <typename Function, typename TargetArguments>
TransferResult run(Function function, const Mesh& source, TargetArguments targetArguments, std::vector<int> flags,
                   FieldsInTransfer& fields, const TransferOptions& options)
{
    MeshArguments sourceArguments(source);
    const auto computation = [&](char* message, int* errorCode, VeltraneCallback callback)
    {
        std::apply(function, std::tuple_cat(std::tuple(static_cast<int>(options.mode), options.defaultValue),
                                            sourceArguments.list(), targetArguments.list(),
                                            std::tuple(flags.data(), fields.source(), fields.target(), message,
                                                       errorCode, callback)));
    };
    return result(callLibrary(tuningFileName, options.tuning, options.progress, computation), fields);
}

} // namespace

TransferResult transfer(const Mesh& source, std::span<const Field> sourceFields, const Mesh& target,
                        const TransferOptions& options)
{
    checkMode(options.mode, false);
    std::vector<int> flags = mappingFlags(options.targetMapping, target.materials().size());
    checkSourceElements(source);
    checkSourceFields(sourceFields, countLocations(source));
    std::vector<Location> locations = targetLocations(sourceFields, options.targetLocations);
    if (std::ranges::find(locations, Location::gaussPoints) != locations.end())
    {
        checkVolumeElements(target, "target", "Gauss-point fields need a target of volume elements only");
    }
    FieldsInTransfer fields(sourceFields, std::move(locations), countLocations(source), countLocations(target),
                            options);

    TransferResult result = run(FE3DMeshToFE3DMesh_VariablesInterpolation, source, MeshArguments(target),
                                std::move(flags), fields, options);
    if (options.mode == OutsideMode::propagate && !result.origins.empty())
    {
        markPropagation(result, source, target, options);
    }
    return result;
}

TransferResult sample(const Mesh& source, std::span<const Field> sourceFields, const PointCloud& points,
                      const TransferOptions& options)
{
    checkMode(options.mode, true);
    std::vector<int> flags = mappingFlags(options.targetMapping, points.materials().size());
    checkSourceElements(source);
    checkSourceFields(sourceFields, countLocations(source));
    std::vector<Location> locations(sourceFields.size(), Location::nodes);
    if (!options.targetLocations.empty() && options.targetLocations != locations)
    {
        throw InvalidOption("points receive values as nodes do, one location for each field");
    }
    FieldsInTransfer fields(sourceFields, std::move(locations), countLocations(source),
                            {static_cast<std::size_t>(points.pointCount()), 0}, options);

    return run(FE3DMEshToPtCloud_VariablesInterpolation, source, PointCloudArguments(points), std::move(flags), fields,
               options);
}

} // namespace veltrane
