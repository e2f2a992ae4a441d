#include "Transfer.h"

#include "Errors.h"
#include "LibraryCall.h"
#include "SourceChecks.h"
#include "Text.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <utility>

namespace veltrane
{
namespace
{

constexpr const char* tuningFileName = "mappingInputs.txt";

/// The library's view of coordinates. It borrows them and does not write, although its interface says float.
float (*rowsOfThree(const std::vector<float>& coordinates))[3]
{
    return reinterpret_cast<float(*)[3]>(const_cast<float*>(coordinates.data()));
}

int* borrowed(const std::vector<int>& numbers)
{
    return const_cast<int*>(numbers.data());
}

std::vector<int> stateCodes(const std::vector<Material>& materials)
{
    std::vector<int> codes;
    codes.reserve(materials.size());
    std::ranges::transform(materials, std::back_inserter(codes), &Material::stateCode);
    return codes;
}

/// The tables of a mesh that the library wants in a form of its own.
struct MeshTables
{
    explicit MeshTables(const Mesh& mesh) : materialStates(stateCodes(mesh.materials()))
    {
        const auto elementCount = static_cast<std::size_t>(mesh.elementCount());
        nodesPerElement.reserve(elementCount);
        typeCodes.reserve(elementCount);
        for (int element = 0; element < mesh.elementCount(); ++element)
        {
            nodesPerElement.push_back(const_cast<int*>(mesh.nodesOf(element).data()));
            typeCodes.push_back(static_cast<int>(mesh.kindOf(element).kind));
        }
    }

    std::vector<int*> nodesPerElement;
    std::vector<int> typeCodes;
    std::vector<int> materialStates;
};

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
    void add(const std::string& name, Location location, int componentCount, FieldValues& values, float defaultValue)
    {
        FieldStruct record{};
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

void checkMappingFlags(const std::vector<bool>& flags, std::size_t materialCount)
{
    if (!flags.empty() && flags.size() != materialCount)
    {
        throw InvalidOption(
            text("there are ", flags.size(), " mapping flags for ", materialCount, " target materials"));
    }
}

std::vector<int> mappingFlags(const std::vector<bool>& flags, std::size_t materialCount)
{
    return flags.empty() ? std::vector<int>(materialCount, 1) : std::vector<int>(flags.begin(), flags.end());
}

/// Gauss points of surface elements have no positions in the library.
void checkGaussPointTarget(const Mesh& target)
{
    for (int element = 0; element < target.elementCount(); ++element)
    {
        const ElementKindInfo& kind = target.kindOf(element);
        if (!kind.isVolume)
        {
            throw InvalidData(text("target element ", element, " is a ", kind.name,
                                   "; Gauss-point fields need a target of volume elements only"));
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

/// The fields of both sides while the library works on them.
class FieldsInTransfer
{
public:
    FieldsInTransfer(std::span<const Field> sourceFields, std::vector<Location> locations,
                     const LocationCounts& targetCounts, float defaultValue)
        : sourceFields_(sourceFields), locations_(std::move(locations))
    {
        targetValues_.reserve(sourceFields.size()); // the records point into it
        for (std::size_t i = 0; i < sourceFields.size(); ++i)
        {
            const Field& field = sourceFields[i];
            auto& sourceValues = const_cast<FieldValues&>(field.values()); // only read
            source_.add(field.name(), field.location(), field.componentCount(), sourceValues, defaultValue);

            const std::size_t valueCount =
                targetCounts.at(locations_[i]) * static_cast<std::size_t>(field.componentCount());
            if (std::max(valueCount, field.valueCount()) > static_cast<std::size_t>(INT_MAX))
            {
                throw InvalidData(text("field '", field.name(), "' would have more than ", INT_MAX, " values"));
            }
            targetValues_.push_back(field.isSinglePrecision()
                                        ? FieldValues(std::vector<float>(valueCount, defaultValue))
                                        : FieldValues(std::vector<double>(valueCount, double{defaultValue})));
            target_.add(field.name(), locations_[i], field.componentCount(), targetValues_.back(), defaultValue);
        }
    }

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

private:
    std::span<const Field> sourceFields_;
    std::vector<Location> locations_;
    std::vector<FieldValues> targetValues_;
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
            .outcome = warned ? Outcome::propagationWarning : Outcome::done,
            .message = std::move(outcome.message),
            .statistics = outcome.log ? parseStatistics(std::move(*outcome.log), warned) : std::nullopt,
            .libraryOutput = std::move(outcome.output)};
}

} // namespace

TransferResult transfer(const Mesh& source, std::span<const Field> sourceFields, const Mesh& target,
                        const TransferOptions& options)
{
    checkMode(options.mode, false);
    checkMappingFlags(options.targetMapping, target.materials().size());
    checkSourceElements(source);
    checkSourceFields(sourceFields, countLocations(source));
    std::vector<Location> locations = targetLocations(sourceFields, options.targetLocations);
    if (std::ranges::find(locations, Location::gaussPoints) != locations.end())
    {
        checkGaussPointTarget(target);
    }
    FieldsInTransfer fields(sourceFields, std::move(locations), countLocations(target), options.defaultValue);

    MeshTables sourceTables(source);
    MeshTables targetTables(target);
    std::vector<int> flags = mappingFlags(options.targetMapping, target.materials().size());
    const auto computation = [&](char* message, int* errorCode, VeltraneCallback callback)
    {
        FE3DMeshToFE3DMesh_VariablesInterpolation(
            static_cast<int>(options.mode), options.defaultValue, source.elementCount(), source.nodeCount(),
            rowsOfThree(source.coordinates()), sourceTables.nodesPerElement.data(), sourceTables.typeCodes.data(),
            static_cast<int>(source.materials().size()), borrowed(source.materialPerElement()),
            sourceTables.materialStates.data(), target.elementCount(), target.nodeCount(),
            rowsOfThree(target.coordinates()), targetTables.nodesPerElement.data(), targetTables.typeCodes.data(),
            static_cast<int>(target.materials().size()), borrowed(target.materialPerElement()),
            targetTables.materialStates.data(), flags.data(), fields.source(), fields.target(), message, errorCode,
            callback);
    };
    return result(callLibrary(tuningFileName, options.tuning, options.progress, computation), fields);
}

TransferResult sample(const Mesh& source, std::span<const Field> sourceFields, const PointCloud& points,
                      const TransferOptions& options)
{
    checkMode(options.mode, true);
    checkMappingFlags(options.targetMapping, points.materials().size());
    checkSourceElements(source);
    checkSourceFields(sourceFields, countLocations(source));
    std::vector<Location> locations(sourceFields.size(), Location::nodes);
    if (!options.targetLocations.empty() && options.targetLocations != locations)
    {
        throw InvalidOption("points receive values as nodes do, one location for each field");
    }
    FieldsInTransfer fields(sourceFields, std::move(locations), {static_cast<std::size_t>(points.pointCount()), 0},
                            options.defaultValue);

    MeshTables sourceTables(source);
    std::vector<int> materialStates = stateCodes(points.materials());
    std::vector<int> flags = mappingFlags(options.targetMapping, points.materials().size());
    const auto computation = [&](char* message, int* errorCode, VeltraneCallback callback)
    {
        FE3DMEshToPtCloud_VariablesInterpolation(
            static_cast<int>(options.mode), options.defaultValue, source.elementCount(), source.nodeCount(),
            rowsOfThree(source.coordinates()), sourceTables.nodesPerElement.data(), sourceTables.typeCodes.data(),
            static_cast<int>(source.materials().size()), borrowed(source.materialPerElement()),
            sourceTables.materialStates.data(), points.pointCount(), rowsOfThree(points.coordinates()),
            static_cast<int>(points.materials().size()), borrowed(points.materialPerPoint()), materialStates.data(),
            flags.data(), fields.source(), fields.target(), message, errorCode, callback);
    };
    return result(callLibrary(tuningFileName, options.tuning, options.progress, computation), fields);
}

} // namespace veltrane
