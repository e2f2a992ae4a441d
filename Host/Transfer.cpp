#include "Transfer.h"

#include "ElementChecks.h"
#include "Errors.h"
#include "Text.h"

#include <algorithm>
#include <climits>
#include <iterator>
#include <utility>

namespace veltrane
{
namespace
{

constexpr const char* meshDoneText = "FE 3D Mesh to FE 3D Mesh interpolation normal termination.";
constexpr const char* pointsDoneText = "FE 3D Mesh to point cloud interpolation normal termination.";
constexpr const char* unreachedText =
    "Warning: propagation is not possible for nodes located in a region that is not connected to an already "
    "interpolated region. Fields are set to zero in these regions.";

void checkSourceFields(std::span<const Field> fields, const Mesh& source)
{
    if (fields.empty())
    {
        throw InvalidData("there is no field to be transferred");
    }
    for (const Field& field : fields)
    {
        const bool isAtNodes = field.location() == Location::nodes;
        const auto expected = [&](GaussPointRule rule)
        { return isAtNodes ? static_cast<std::size_t>(source.nodeCount()) : source.gaussPointCount(rule); };
        const std::size_t full = expected(GaussPointRule::full);
        const std::size_t count = field.locationCount();
        if (count != full && count != expected(GaussPointRule::reduced))
        {
            const std::size_t reduced = expected(GaussPointRule::reduced);
            throw InvalidData(text("field '", field.name(), "' has values at ", count,
                                   isAtNodes ? " nodes" : " Gauss points", ", but the source has ",
                                   full == reduced ? text(full) : text(full, " or ", reduced)));
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

void checkFieldOptions(std::span<const Field> sourceFields, const TransferOptions& options)
{
    if (!options.fieldOptions.empty() && options.fieldOptions.size() != sourceFields.size())
    {
        throw InvalidOption(text("there are options for ", options.fieldOptions.size(), " fields, but ",
                                 sourceFields.size(), " source fields"));
    }
}

ValueOrigin originOf(Finding finding, OutsideMode mode)
{
    switch (finding)
    {
    case Finding::inside:
    case Finding::near: return ValueOrigin::element;
    case Finding::reached: return ValueOrigin::neighbours;
    case Finding::far: return mode == OutsideMode::propagate ? ValueOrigin::none : ValueOrigin::defaultValue;
    case Finding::notMapped: break;
    }
    return ValueOrigin::none;
}

void tellOrigins(const Map& map, TransferResult& result)
{
    if (map.locationCount(Location::nodes) > 0)
    {
        result.findings = map.findings(Location::nodes);
        result.distances = map.distances(Location::nodes);
        result.origins.reserve(result.findings.size());
        std::ranges::transform(result.findings, std::back_inserter(result.origins),
                               [&](Finding finding) { return originOf(finding, map.mode()); });
    }
    if (map.locationCount(Location::gaussPoints) > 0)
    {
        result.gaussPointFindings = map.findings(Location::gaussPoints);
        result.gaussPointDistances = map.distances(Location::gaussPoints);
    }
}

} // namespace

MapOptions mapOptions(std::span<const Field> sourceFields, const TransferOptions& options)
{
    const std::vector<Location> locations = targetLocations(sourceFields, options.targetLocations);
    const auto isUsed = [&](Location location) { return std::ranges::find(locations, location) != locations.end(); };
    return {.mode = options.mode,
            .targetMapping = options.targetMapping,
            .toNodes = isUsed(Location::nodes),
            .toGaussPoints = isUsed(Location::gaussPoints),
            .fromGaussPoints = std::ranges::any_of(sourceFields, [](const Field& field)
                                                   { return field.location() == Location::gaussPoints; }),
            .looksForOverlap = options.looksForOverlap,
            .takesChecksums = false,
            .rules = options.rules,
            .tuning = options.tuning,
            .threads = options.threads,
            .progress = options.progress};
}

TransferResult transferWith(const Map& map, std::span<const Field> sourceFields, const TransferOptions& options)
{
    const bool isWarned = map.hasUnreachedNodes();
    TransferResult result{.fields = map.apply(sourceFields, {.defaultValue = options.defaultValue,
                                                             .fieldOptions = options.fieldOptions,
                                                             .targetLocations = options.targetLocations,
                                                             .threads = options.threads}),
                          .origins = {},
                          .findings = {},
                          .distances = {},
                          .gaussPointFindings = {},
                          .gaussPointDistances = {},
                          .outcome = isWarned ? Outcome::propagationWarning : Outcome::done,
                          .message = isWarned ? unreachedText : meshDoneText,
                          .statistics = map.statistics(),
                          .singularElements = map.singularElements()};
    if (options.tellsOrigins)
    {
        tellOrigins(map, result);
    }
    return result;
}

void checkTransfer(const Mesh& source, std::span<const Field> sourceFields, const TransferOptions& options)
{
    checkSourceFields(sourceFields, source);
    checkFieldOptions(sourceFields, options);
}

TransferOptions atPoints(std::span<const Field> sourceFields, const TransferOptions& options)
{
    TransferOptions atPoints = options;
    atPoints.targetLocations.resize(sourceFields.size(), Location::nodes);
    if (std::ranges::find(atPoints.targetLocations, Location::gaussPoints) != atPoints.targetLocations.end() ||
        (!options.targetLocations.empty() && options.targetLocations.size() != sourceFields.size()))
    {
        throw InvalidOption("points receive values as nodes do, one location for each field");
    }
    return atPoints;
}

TransferResult transfer(const Mesh& source, std::span<const Field> sourceFields, const Mesh& target,
                        const TransferOptions& options)
{
    checkTransfer(source, sourceFields, options);
    return transferWith(Map(source, target, mapOptions(sourceFields, options)), sourceFields, options);
}

TransferResult sample(const Mesh& source, std::span<const Field> sourceFields, const PointCloud& points,
                      const TransferOptions& options)
{
    checkTransfer(source, sourceFields, options);
    const TransferOptions forPoints = atPoints(sourceFields, options);
    TransferResult result =
        transferWith(Map(source, points, mapOptions(sourceFields, forPoints)), sourceFields, forPoints);
    result.message = pointsDoneText;
    return result;
}

} // namespace veltrane
