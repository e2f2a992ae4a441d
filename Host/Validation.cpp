#include "Validation.h"

#include "ElementSizes.h"
#include "Errors.h"
#include "GaussPoints.h"
#include "Text.h"
#include "VolumeElements.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>
#include <variant>

namespace veltrane
{
namespace
{

bool isMapped(Finding finding)
{
    return finding == Finding::inside || finding == Finding::near;
}

void countNodes(Coverage& coverage, const Mesh& mesh, const Places& places)
{
    std::vector<bool> isOfElement(places.findings.size());
    for (const int node : mesh.connectivity())
    {
        isOfElement[static_cast<std::size_t>(node)] = true;
    }
    double sum = 0;
    for (std::size_t node = 0; node < places.findings.size(); ++node)
    {
        const Finding finding = places.findings[node];
        if (!isOfElement[node] || finding == Finding::notMapped)
        {
            continue;
        }
        ++coverage.nodes;
        coverage.mappedNodes += isMapped(finding) ? 1 : 0;
        if (finding == Finding::near)
        {
            ++coverage.nearNodes;
            sum += places.distances[node];
            coverage.largestNearDistance = std::max(coverage.largestNearDistance, places.distances[node]);
        }
    }
    coverage.meanNearDistance = coverage.nearNodes == 0 ? 0 : sum / static_cast<double>(coverage.nearNodes);
}

void countElements(Coverage& coverage, const Mesh& mesh, const Places& places, const std::vector<bool>& selection)
{
    for (int element = 0; element < mesh.elementCount(); ++element)
    {
        if (!selection.empty() && !selection[static_cast<std::size_t>(mesh.materialOf(element))])
        {
            continue;
        }
        ++coverage.elements;
        const bool areMapped = std::ranges::all_of(
            mesh.nodesOf(element), [&](int node) { return isMapped(places.findings[static_cast<std::size_t>(node)]); });
        coverage.mappedElements += areMapped ? 1 : 0;
    }
}

/// \param mesh       of volumes only
/// \param nodes      where its nodes lie in the other one
/// \param points     where its Gauss points do
/// \param selection  its materials that count
Coverage coverageOf(const Mesh& mesh, const Places& nodes, const Places& points, const std::vector<double>& volumes,
                    const std::vector<bool>& selection)
{
    Coverage coverage;
    countNodes(coverage, mesh, nodes);
    countElements(coverage, mesh, nodes, selection);
    for (std::size_t i = 0; i < volumes.size(); ++i)
    {
        coverage.volume += points.findings[i] == Finding::notMapped ? 0 : volumes[i];
        coverage.mappedVolume += points.findings[i] == Finding::inside ? volumes[i] : 0;
    }
    return coverage;
}

/// Without the values of those locations that do not have one of the other mesh.
Field withoutUnmapped(const Field& field, const std::vector<Finding>& findings)
{
    FieldValues values = field.values();
    const auto components = static_cast<std::size_t>(field.componentCount());
    const auto blank = [&](auto& numbers)
    {
        using Number = typename std::remove_reference_t<decltype(numbers)>::value_type;
        for (std::size_t i = 0; i < numbers.size(); ++i)
        {
            if (!isMapped(findings[i / components]))
            {
                numbers[i] = std::numeric_limits<Number>::quiet_NaN();
            }
        }
    };
    std::visit(blank, values);
    return Field(field.name(), field.location(), field.componentCount(), std::move(values));
}

/// The search at the edge must not be freer on one side than on the other.
Rules rulesFor(Rules rules, const Mesh& source)
{
    if (std::isinf(rules.nearLimit))
    {
        rules.nearLimit = largestElementSize(source);
    }
    return rules;
}

Map searchPlaces(const Mesh& source, const Mesh& target, const ValidationOptions& options,
                 const std::vector<bool>& selection, bool withNodes)
{
    return Map(source, target,
               {.mode = OutsideMode::defaultValue,
                .targetMapping = selection,
                .toNodes = withNodes,
                .toGaussPoints = true,
                .fromGaussPoints = true,
                .takesChecksums = false,
                .rules = rulesFor(options.rules, source),
                .tuning = options.tuning,
                .threads = options.threads,
                .progress = options.progress});
}

double share(double part, double all)
{
    return all > 0 ? part / all : 0;
}

} // namespace

double Coverage::nodeShare() const
{
    return share(static_cast<double>(mappedNodes), static_cast<double>(nodes));
}

double Coverage::elementShare() const
{
    return share(static_cast<double>(mappedElements), static_cast<double>(elements));
}

double Coverage::volumeShare() const
{
    return share(mappedVolume, volume);
}

double Validation::largestDifference() const
{
    double largest = 0;
    for (const FieldRoundTrip& field : fields)
    {
        const double difference = field.comparison.relativeDifference;
        if (!(difference <= largest)) // not a number, too
        {
            largest = difference;
        }
        if (std::isnan(largest))
        {
            return largest;
        }
    }
    return largest;
}

struct Validator::Contents
{
    Contents(const Map& map, const Mesh& source, const Mesh& target, const ValidationOptions& validationOptions)
        : options(validationOptions), back(searchPlaces(target, source, options, {}, true)),
          sourceVolumes(gaussPointVolumes(source)), targetVolumes(gaussPointVolumes(target)),
          backNodes(back.places(Location::nodes)), backPoints(back.places(Location::gaussPoints))
    {
        const bool hasPoints = map.locationCount(Location::gaussPoints) > 0;
        const bool hasNodes = map.locationCount(Location::nodes) > 0;
        std::optional<Map> there;
        if (!hasPoints || !hasNodes)
        {
            there = searchPlaces(source, target, options, options.targetMapping, !hasNodes);
        }
        thereNodes = (hasNodes ? map : *there).places(Location::nodes);
        therePoints = (hasPoints ? map : *there).places(Location::gaussPoints);
        ofTarget = coverageOf(target, thereNodes, therePoints, targetVolumes, options.targetMapping);
        ofSource = coverageOf(source, backNodes, backPoints, sourceVolumes, {});
    }

    ValidationOptions options;
    Map back;
    std::vector<double> sourceVolumes; ///< of Gauss points
    std::vector<double> targetVolumes;
    Places backNodes; ///< where the source's nodes lie in the target
    Places backPoints;
    Places thereNodes; ///< where the target's lie in the source
    Places therePoints;
    Coverage ofTarget;
    Coverage ofSource;
};

Validator::Validator(const Map& map, const Mesh& source, const Mesh& target, const ValidationOptions& options)
{
    const auto check = [](std::size_t expected, std::size_t found, const char* side)
    {
        if (expected != 0 && expected != found)
        {
            throw InvalidData(text("the map is for a ", side, " with ", expected, " nodes, and this one has ", found));
        }
    };
    check(map.sourceNodeCount(), static_cast<std::size_t>(source.nodeCount()), "source");
    check(map.locationCount(Location::nodes), static_cast<std::size_t>(target.nodeCount()), "target");
    contents_ = std::make_unique<const Contents>(map, source, VolumeElements(target, "target").mesh(), options);
}

Validator::~Validator() = default;
Validator::Validator(Validator&&) noexcept = default;
Validator& Validator::operator=(Validator&&) noexcept = default;

Validation Validator::validate(const Mesh& source, const Mesh& target, std::span<const Field> sourceFields,
                               std::span<const Field> targetFields) const
{
    const Contents& own = *contents_;
    const VolumeElements targetElements(target, "target");
    if (targetFields.size() < sourceFields.size())
    {
        throw InvalidData(text("there are ", targetFields.size(), " fields of the target for ", sourceFields.size(),
                               " of the source"));
    }
    std::vector<Field> there;
    ApplyOptions apply{.defaultValue = std::numeric_limits<float>::quiet_NaN(),
                       .fieldOptions = own.options.apply.fieldOptions,
                       .targetLocations = {},
                       .threads = own.options.threads};
    for (FieldOptions& field : apply.fieldOptions)
    {
        field.defaultValue.reset();
    }
    for (std::size_t i = 0; i < sourceFields.size(); ++i)
    {
        const Field& field = targetFields[i];
        const Places& places = field.location() == Location::nodes ? own.thereNodes : own.therePoints;
        if (field.locationCount() != places.findings.size())
        {
            throw InvalidData(text("field '", field.name(), "' has values at ", field.locationCount(),
                                   " places of the target, not at ", places.findings.size()));
        }
        there.push_back(withoutUnmapped(field, places.findings));
        apply.targetLocations.push_back(sourceFields[i].location());
    }
    const std::vector<Field> returned = own.back.apply(there, apply);

    Validation validation{.target = own.ofTarget, .source = own.ofSource, .fields = {}};
    for (std::size_t i = 0; i < sourceFields.size(); ++i)
    {
        const bool isAtNodes = sourceFields[i].location() == Location::nodes;
        Field back = withoutUnmapped(returned[i], (isAtNodes ? own.backNodes : own.backPoints).findings);
        FieldComparison comparison = compare(back, sourceFields[i]);
        validation.fields.push_back({.returned = std::move(back),
                                     .comparison = comparison,
                                     .atSource = integralsOf(sourceFields[i], source, own.sourceVolumes),
                                     .atTarget = integralsOf(there[i], targetElements.mesh(), own.targetVolumes)});
    }
    return validation;
}

Validation Map::validate(const Mesh& source, const Mesh& target, std::span<const Field> fields,
                         const ValidationOptions& options) const
{
    if (const GaussPointRule rule = gaussPointRuleOf(fields, source); rule != source.gaussPointRule())
    {
        Mesh byRule(source);
        byRule.setGaussPointRule(rule);
        return validate(byRule, target, fields, options);
    }
    const std::vector<Field> there = apply(fields, options.apply);
    return Validator(*this, source, target, options).validate(source, target, fields, there);
}

} // namespace veltrane
