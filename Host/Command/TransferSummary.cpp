#include "TransferSummary.h"

#include "FieldStatistics.h"
#include "LoadArguments.h"
#include "RangeChanges.h"
#include "Report.h"
#include "Text.h"
#include "ValidationSummary.h"
#include "Verdict.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <ostream>

namespace veltrane
{
namespace
{

/// The materials of the source or of the target.
struct SideMaterials
{
    const std::vector<Material>& list;
    bool areNumbered;
    bool areNamed;
};

SideMaterials targetMaterials(const TransferRecord& record)
{
    if (const PointFile* points = record.targetPoints())
    {
        return {points->points().materials(), points->materialArray().has_value(), false};
    }
    return {record.targetMesh()->mesh().materials(), record.targetMesh()->materialArray().has_value(),
            record.targetMesh()->hasNamedMaterials()};
}

std::string materialNames(const std::vector<Material>& materials)
{
    constexpr std::size_t mostNames = 12;
    std::string names;
    for (std::size_t i = 0; i < std::min(materials.size(), mostNames); ++i)
    {
        names += text(names.empty() ? "" : ", ", materials[i].name);
    }
    return materials.size() > mostNames ? names + ", ..." : names;
}

/// Whether all materials of both sides have one state code, so that none is told from another.
bool areMaterialsIgnored(const std::vector<Material>& source, const std::vector<Material>& target)
{
    const auto isOfThisCode = [&](const Material& material) { return material.stateCode == source.front().stateCode; };
    return std::ranges::all_of(source, isOfThisCode) && std::ranges::all_of(target, isOfThisCode) &&
           source.size() + target.size() > 2;
}

void printMaterials(std::ostream& stream, const SideMaterials& source, const SideMaterials& target)
{
    if (source.areNumbered && target.areNumbered && areMaterialsIgnored(source.list, target.list))
    {
        printLine(stream, "materials", "not regarded");
        return;
    }
    if (source.areNumbered && target.areNumbered)
    {
        printLine(stream, "materials",
                  text(materialNames(source.list), " in the source, ", materialNames(target.list),
                       " in the target, matched by ", source.areNamed && target.areNamed ? "name" : "number"));
        return;
    }
    if (source.areNumbered || target.areNumbered)
    {
        printLine(stream, "materials",
                  text("not regarded: only the ", source.areNumbered ? "source" : "target", " has them"));
    }
}

/// "scaled by 0.001, turned, moved by 0, 0, 10"
std::string placementText(const Placement& placement)
{
    const Placement identity;
    std::vector<std::string> parts;
    if (placement.scale != identity.scale)
    {
        parts.push_back(text("scaled by ", placement.scale));
    }
    if (placement.rotation != identity.rotation)
    {
        parts.emplace_back("turned");
    }
    if (placement.translation != identity.translation)
    {
        const auto& [x, y, z] = placement.translation;
        parts.push_back(text("moved by ", x, ", ", y, ", ", z));
    }
    return joined(parts);
}

void printNear(std::ostream& stream, long long count, const NearDistances& distances)
{
    constexpr int digits = 3;
    printCount(stream, "  near", count,
               text("just outside the source: values of a nearby element, ", inDigits(digits, distances.mean),
                    " away on average, at most ", inDigits(digits, distances.largest)));
}

/// What has become of far nodes, a line for each fate.
void printFar(std::ostream& stream, const NodeCounts& nodes, OutsideMode mode)
{
    if (mode == OutsideMode::propagate)
    {
        printCount(stream, "  far", nodes.far,
                   nodes.farOfMissingMaterial == nodes.far ? "no such material in the source"
                                                           : "too far from the source");
        if (nodes.far > 0)
        {
            printCount(stream, "    reached", nodes.reached, "values of neighbouring nodes");
            printCount(stream, "    not reached", nodes.far - nodes.reached,
                       "connected to no node with values: hold 0");
        }
        return;
    }
    printCount(stream, "  far", nodes.far - nodes.farOfMissingMaterial, "too far from the source: default value");
    if (nodes.farOfMissingMaterial > 0)
    {
        printCount(stream, "  no material", nodes.farOfMissingMaterial,
                   "no such material in the source: default value");
    }
}

void printNodeCounts(std::ostream& stream, const NodeCounts& nodes, OutsideMode mode)
{
    printCount(stream, "target nodes", nodes.all);
    if (nodes.inNoCell > 0)
    {
        printCount(stream, "  in no cell", nodes.inNoCell, "not given values: hold the default value");
    }
    if (nodes.notMapped > 0)
    {
        printCount(stream, "  not mapped", nodes.notMapped, "of other materials: hold the default value");
    }
    printCount(stream, "  inside", nodes.inside);
    printNear(stream, nodes.near, nodes.nearDistances);
    printFar(stream, nodes, mode);
}

void printPointCounts(std::ostream& stream, const PointCounts& points)
{
    printCount(stream, "target points", points.all);
    if (points.notMapped > 0)
    {
        printCount(stream, "  not mapped", points.notMapped, "of other materials: hold the default value");
    }
    printCount(stream, "  inside", points.inside);
    if (points.near > 0)
    {
        printNear(stream, points.near, points.nearDistances);
    }
    printCount(stream, "  outside", points.outside - points.outsideOfMissingMaterial,
               "in no cell of the source: default value");
    if (points.outsideOfMissingMaterial > 0)
    {
        printCount(stream, "  no material", points.outsideOfMissingMaterial,
                   "no such material in the source: default value");
    }
}

void printGaussPointCounts(std::ostream& stream, const TransferRecord& record)
{
    const OutsideCounts& outside = *record.result.statistics.gaussPoints;
    printCount(stream, "target Gauss points", static_cast<long long>(record.targetMesh()->mesh().gaussPointCount()));
    printNear(stream, outside.near, nearDistances(record.result.gaussPointFindings, record.result.gaussPointDistances));
    printCount(stream, "  far", outside.far,
               record.options.mode == OutsideMode::propagate ? "too far from the source: not a number"
                                                             : "too far from the source: default value");
}

void printSearch(std::ostream& stream, const TransferStatistics& statistics)
{
    if (statistics.unconvergedPointCount > 0)
    {
        printCount(stream, "  not converged", statistics.unconvergedPointCount,
                   "near or far though they may lie in a cell: a larger --tolerance may find them");
    }
    if (statistics.origin != std::array<double, 3>{})
    {
        const auto& [x, y, z] = statistics.origin;
        printLine(stream, "origin", text("moved to ", x, ", ", y, ", ", z, ", since the meshes are far from 0, 0, 0"));
    }
    printCount(stream, "search buckets", statistics.bucketCount);
    printCount(stream, "  in use", statistics.usedBucketCount,
               text("holding ", std::fixed, std::setprecision(2), statistics.meanElementsPerUsedBucket,
                    " source elements each, on average"));
    if (std::isfinite(statistics.meanIterations))
    {
        printLine(stream, "mean iterations",
                  text("     ", std::fixed, std::setprecision(2), statistics.meanIterations,
                       "   to find the place of a point within an element"));
    }
}

void printCounts(std::ostream& stream, const TransferRecord& record)
{
    if (record.targetPoints() != nullptr)
    {
        printPointCounts(stream, countPoints(record));
    }
    else if (const std::optional<NodeCounts> nodes = countNodes(record))
    {
        printNodeCounts(stream, *nodes, record.options.mode);
    }
    else if (record.result.statistics.gaussPoints)
    {
        printGaussPointCounts(stream, record);
    }
    printSearch(stream, record.result.statistics);
}

void printSeconds(std::ostream& stream, const std::string& label, double seconds)
{
    printLine(stream, label, text(std::setw(9), std::fixed, std::setprecision(2), seconds, " s"));
}

void printTimes(std::ostream& stream, const StageTimes& times)
{
    printSeconds(stream, "time in all", times.total());
    for (const StageTime& stage : times.times())
    {
        printSeconds(stream, text("  ", stage.name), stage.seconds);
    }
}

void printList(std::ostream& stream, std::string_view label, const std::vector<std::string>& list)
{
    constexpr std::size_t mostNotices = 6;
    for (std::size_t i = 0; i < std::min(list.size(), mostNotices); ++i)
    {
        printLine(stream, i == 0 ? label : "", text(list[i], i == 0 ? " of the source's range" : ""));
    }
    if (list.size() > mostNotices)
    {
        printLine(stream, "", text("and ", list.size() - mostNotices, " more"));
    }
}

void printNotices(std::ostream& stream, const TransferRecord& record)
{
    constexpr double notable = 0.01;
    const bool arePeaksWanted = record.targetMesh() != nullptr; // single points need not hold all that the source does
    std::vector<std::string> beyond;
    std::vector<std::string> lost;
    for (const auto& [name, end, excess] : rangeChanges(record))
    {
        if (excess > notable || (arePeaksWanted && excess < -notablePeakLoss))
        {
            (excess > 0 ? beyond : lost)
                .push_back(text(name, " ", end, " by ", inDigits(2, 100 * std::abs(excess)), " %"));
        }
    }
    printList(stream, "beyond source", beyond);
    printList(stream, "peaks lost", lost);
}

/// A table of the values on both sides, without those at the target that are none of the source's.
void printValues(std::ostream& stream, std::string_view heading, const TransferRecord& record)
{
    constexpr int digits = 6;
    std::size_t nameWidth = heading.size();
    for (const Field& field : record.sourceFields)
    {
        nameWidth = std::max(nameWidth, componentName(field, 0).size());
    }
    TextTable table(12);
    table.addRow({std::string(heading), "minimum", "mean", "maximum"});
    const auto addRow = [&](std::string name, const char* side, const ComponentStatistics& figures)
    {
        name.resize(std::max(nameWidth, name.size()), ' ');
        const auto figure = [](double value) { return std::isnan(value) ? "-" : inDigits(digits, value); };
        table.addRow({text(name, "  ", side), figure(figures.min), figure(figures.mean), figure(figures.max)});
    };
    for (std::size_t i = 0; i < record.sourceFields.size(); ++i)
    {
        const Field& source = record.sourceFields[i];
        const Field& target = record.result.fields[i];
        for (int component = 0; component < source.componentCount(); ++component)
        {
            addRow(componentName(source, component), "source", statisticsOf(source, component));
            addRow("", "target", statisticsOf(target, component, hasSourceValue(record, target)));
        }
    }
    table.print(stream);
}

std::string_view valuesHeading(const TransferRecord& record)
{
    if (record.targetPoints() != nullptr)
    {
        return "values at points";
    }
    return record.result.origins.empty() ? "values" : "values at nodes";
}

} // namespace

std::string describe(const MeshFile& file)
{
    std::string description = oneOrMore(file.mesh().nodeCount(), "node", "nodes");
    for (const auto& [name, count] : file.elementCounts())
    {
        description += text(", ", oneOrMore(count, name.one, name.more));
    }
    return description;
}

void printSummary(std::ostream& stream, const TransferRecord& record)
{
    if (record.verdict != nullptr)
    {
        printLine(stream, "verdict", record.verdict->text);
    }
    printLine(stream, "source", record.source.path().string());
    printLine(stream, "", describe(record.source));
    if (!record.placement.isIdentity())
    {
        printLine(stream, "", placementText(record.placement));
    }
    if (record.source.leftOutCellCount() > 0)
    {
        printLine(stream, "",
                  text(oneOrMore(record.source.leftOutCellCount(), "other cell", "other cells"), " left out"));
    }
    if (const PointFile* points = record.targetPoints())
    {
        printLine(stream, "target", points->path().string());
        printLine(stream, "", oneOrMore(points->points().pointCount(), "point", "points"));
    }
    else
    {
        printLine(stream, "target", record.targetMesh()->path().string());
        printLine(stream, "", describe(*record.targetMesh()));
    }
    printMaterials(stream,
                   {record.source.mesh().materials(), record.source.materialArray().has_value(),
                    record.source.hasNamedMaterials()},
                   targetMaterials(record));
    if (!record.sourceFields.empty())
    {
        printCounts(stream, record);
    }
    printTimes(stream, record.times);
    if (!record.sourceFields.empty())
    {
        stream << '\n';
        printValues(stream, valuesHeading(record), record);
        printNotices(stream, record);
    }
    if (!record.loads.empty())
    {
        printLoads(stream, record.loads);
    }
    if (record.validation != nullptr)
    {
        printValidation(stream, record);
    }
}

} // namespace veltrane
