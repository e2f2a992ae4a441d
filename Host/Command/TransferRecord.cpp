#include "TransferRecord.h"

#include "Text.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace veltrane
{
namespace
{

/// Per node the material of the first element that it is part of, or -1.
std::vector<int> materialsOfNodes(const Mesh& mesh)
{
    std::vector<int> materials(static_cast<std::size_t>(mesh.nodeCount()), -1);
    for (int element = mesh.elementCount() - 1; element >= 0; --element)
    {
        for (const int node : mesh.nodesOf(element))
        {
            materials[static_cast<std::size_t>(node)] = mesh.materialOf(element);
        }
    }
    return materials;
}

/// Per material of the target, whether none of the source's has its state code.
std::vector<bool> findMissing(const std::vector<Material>& source, const std::vector<Material>& target)
{
    std::vector<bool> areMissing;
    std::ranges::transform(
        target, std::back_inserter(areMissing),
        [&](const Material& material)
        { return std::ranges::find(source, material.stateCode, &Material::stateCode) == source.end(); });
    return areMissing;
}

bool isFar(ValueOrigin origin, OutsideMode mode)
{
    return origin == ValueOrigin::defaultValue || origin == ValueOrigin::neighbours ||
           (origin == ValueOrigin::none && mode == OutsideMode::propagate);
}

long long count(const std::vector<ValueOrigin>& origins, ValueOrigin wanted)
{
    return std::ranges::count(origins, wanted);
}

} // namespace

const MeshFile* TransferRecord::targetMesh() const
{
    const auto* const* mesh = std::get_if<const MeshFile*>(&target);
    return mesh == nullptr ? nullptr : *mesh;
}

const PointFile* TransferRecord::targetPoints() const
{
    const auto* const* points = std::get_if<const PointFile*>(&target);
    return points == nullptr ? nullptr : *points;
}

std::optional<NodeCounts> countNodes(const TransferRecord& record)
{
    if (record.targetMesh() == nullptr || record.result.origins.empty())
    {
        return std::nullopt;
    }
    const Mesh& mesh = record.targetMesh()->mesh();
    const std::vector<ValueOrigin>& origins = record.result.origins;
    const std::vector<int> materials = materialsOfNodes(mesh);
    const std::vector<bool> areMissing = findMissing(record.source.mesh().materials(), mesh.materials());
    const std::vector<bool>& selection = record.options.targetMapping;
    const long long inCells = mesh.nodeCount() - std::ranges::count(materials, -1);
    const long long withElement = count(origins, ValueOrigin::element);
    const OutsideCounts outside = record.result.statistics.nodes.value_or(OutsideCounts{0, 0});
    long long ofMissingMaterial = 0;
    for (std::size_t node = 0; node < materials.size(); ++node)
    {
        const auto material = static_cast<std::size_t>(materials[node]);
        const bool isMapped = materials[node] != -1 && (selection.empty() || selection[material]);
        ofMissingMaterial += isMapped && areMissing[material] && isFar(origins[node], record.options.mode) ? 1 : 0;
    }
    return NodeCounts{.all = mesh.nodeCount(),
                      .inNoCell = mesh.nodeCount() - inCells,
                      .notMapped = inCells - withElement - outside.far,
                      .inside = withElement - outside.near,
                      .near = outside.near,
                      .nearDistances = nearDistances(record.result.findings, record.result.distances),
                      .far = outside.far,
                      .farOfMissingMaterial = ofMissingMaterial,
                      .reached = count(origins, ValueOrigin::neighbours)};
}

PointCounts countPoints(const TransferRecord& record)
{
    const PointCloud& points = record.targetPoints()->points();
    const std::vector<ValueOrigin>& origins = record.result.origins;
    const std::vector<bool> areMissing = findMissing(record.source.mesh().materials(), points.materials());
    const NearDistances near = nearDistances(record.result.findings, record.result.distances);
    long long ofMissingMaterial = 0;
    for (std::size_t point = 0; point < origins.size(); ++point)
    {
        const auto material = static_cast<std::size_t>(points.materialPerPoint()[point]);
        ofMissingMaterial += areMissing[material] && origins[point] == ValueOrigin::defaultValue ? 1 : 0;
    }
    return {.all = points.pointCount(),
            .notMapped = count(origins, ValueOrigin::none),
            .inside = count(origins, ValueOrigin::element) - near.count,
            .near = near.count,
            .nearDistances = near,
            .outside = count(origins, ValueOrigin::defaultValue),
            .outsideOfMissingMaterial = ofMissingMaterial};
}

std::function<bool(std::size_t location)> hasSourceValue(const TransferRecord& record, const Field& field)
{
    const std::vector<Finding>& findings =
        field.location() == Location::nodes ? record.result.findings : record.result.gaussPointFindings;
    if (findings.empty())
    {
        return {};
    }
    return [&findings](std::size_t location)
    { return findings[location] != Finding::notMapped && findings[location] != Finding::far; };
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

} // namespace veltrane
