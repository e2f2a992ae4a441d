#include "TransferSummary.h"

#include "Report.h"
#include "Text.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <limits>
#include <map>
#include <ostream>

namespace veltrane
{
namespace
{

long long countNodesInElements(const Mesh& mesh)
{
    std::vector<bool> used(static_cast<std::size_t>(mesh.nodeCount()));
    for (int element = 0; element < mesh.elementCount(); ++element)
    {
        for (const int node : mesh.nodesOf(element))
        {
            used[static_cast<std::size_t>(node)] = true;
        }
    }
    return std::ranges::count(used, true);
}

std::string materialNames(const Mesh& mesh)
{
    constexpr std::size_t mostNames = 12;
    std::string names;
    for (std::size_t i = 0; i < std::min(mesh.materials().size(), mostNames); ++i)
    {
        names += text(names.empty() ? "" : ", ", mesh.materials()[i].name);
    }
    return mesh.materials().size() > mostNames ? names + ", ..." : names;
}

void printMaterials(std::ostream& stream, const MeshFile& source, const MeshFile& target)
{
    if (source.materialArray() && target.materialArray())
    {
        printLine(stream, "materials",
                  text(materialNames(source.mesh()), " in the source, ", materialNames(target.mesh()),
                       " in the target, matched by number"));
        return;
    }
    if (source.materialArray() || target.materialArray())
    {
        printLine(stream, "materials",
                  text("not regarded: only the ", source.materialArray() ? "source" : "target", " has them"));
    }
}

std::string_view farRemark(OutsideMode mode)
{
    switch (mode)
    {
    case OutsideMode::error: break;
    case OutsideMode::defaultValue: return "too far from the source: default value";
    case OutsideMode::propagate: return "too far from the source: values of neighbouring nodes";
    }
    return "";
}

void printCounts(std::ostream& stream, const Mesh& target, const TransferStatistics& statistics,
                 const TransferOptions& options)
{
    const long long nodeCount = countNodesInElements(target);
    const OutsideCounts outside = statistics.nodes.value_or(OutsideCounts{0, 0});
    printCount(stream, "target nodes", target.nodeCount());
    if (nodeCount < target.nodeCount())
    {
        printCount(stream, "  in no cell", target.nodeCount() - nodeCount, "not given values: hold the default value");
    }
    printCount(stream, "  inside", nodeCount - outside.all());
    printCount(stream, "  near", outside.near, "just outside the source: values of a nearby element");
    printCount(stream, "  far", outside.far, farRemark(options.mode));
    printCount(stream, "search buckets", statistics.bucketCount);
    printCount(stream, "  in use", statistics.usedBucketCount,
               text("holding ", std::fixed, std::setprecision(2), statistics.meanElementsPerUsedBucket,
                    " source elements each, on average"));
    printLine(stream, "mean iterations",
              text("     ", std::fixed, std::setprecision(2), statistics.meanIterations,
                   "   to find the place of a node within an element"));
}

std::string componentName(const Field& field, int component)
{
    if (field.componentCount() == 1)
    {
        return field.name();
    }
    if (field.componentCount() == 3)
    {
        return text(field.name(), " ", "xyz"[component]);
    }
    return text(field.name(), " ", component + 1);
}

void printRanges(std::ostream& stream, std::span<const Field> sourceFields, std::span<const Field> targetFields)
{
    constexpr int digits = 6;
    TextTable table(12);
    table.addRow({"", "source min", "source max", "target min", "target max"});
    for (std::size_t i = 0; i < sourceFields.size(); ++i)
    {
        for (int component = 0; component < sourceFields[i].componentCount(); ++component)
        {
            const ValueRange source = rangeOf(sourceFields[i], component);
            const ValueRange target = rangeOf(targetFields[i], component);
            table.addRow({componentName(sourceFields[i], component), inDigits(digits, source.min),
                          inDigits(digits, source.max), inDigits(digits, target.min), inDigits(digits, target.max)});
        }
    }
    table.print(stream);
}

} // namespace

ValueRange rangeOf(const Field& field, int component)
{
    ValueRange range{std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::quiet_NaN()};
    const auto extend = [&](const auto& values)
    {
        const auto step = static_cast<std::size_t>(field.componentCount());
        for (auto i = static_cast<std::size_t>(component); i < values.size(); i += step)
        {
            const auto value = static_cast<double>(values[i]);
            if (value > double{undefinedBound})
            {
                range.min = std::fmin(range.min, value); // takes the other one if one is not a number
                range.max = std::fmax(range.max, value);
            }
        }
    };
    std::visit(extend, field.values());
    return range;
}

std::string describe(const Mesh& mesh)
{
    std::map<ElementKind, int> counts;
    for (const ElementKind kind : mesh.kinds())
    {
        ++counts[kind];
    }
    std::string description = oneOrMore(mesh.nodeCount(), "node", "nodes");
    for (const auto& [kind, count] : counts)
    {
        const ElementKindInfo& info = *findElementKind(kind);
        description += text(", ", oneOrMore(count, info.name, info.plural));
    }
    return description;
}

void printSummary(std::ostream& stream, const MeshFile& source, std::span<const Field> sourceFields,
                  const MeshFile& target, const TransferResult& result, const TransferOptions& options)
{
    printLine(stream, "source", source.path().string());
    printLine(stream, "", describe(source.mesh()));
    if (source.leftOutCellCount() > 0)
    {
        printLine(stream, "", text(oneOrMore(source.leftOutCellCount(), "surface cell", "surface cells"), " left out"));
    }
    printLine(stream, "target", target.path().string());
    printLine(stream, "", describe(target.mesh()));
    printMaterials(stream, source, target);
    if (result.statistics)
    {
        printCounts(stream, target.mesh(), *result.statistics, options);
    }
    stream << '\n';
    printRanges(stream, sourceFields, result.fields);
}

} // namespace veltrane
