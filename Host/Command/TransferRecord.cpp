#include "TransferRecord.h"

#include "Text.h"

#include <algorithm>
#include <vector>

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
    const long long inCells = countNodesInElements(mesh);
    const long long withElement = std::ranges::count(record.result.origins, ValueOrigin::element);
    const OutsideCounts outside = record.result.statistics.nodes.value_or(OutsideCounts{0, 0});
    return NodeCounts{.all = mesh.nodeCount(),
                      .inNoCell = mesh.nodeCount() - inCells,
                      .notMapped = inCells - withElement - outside.far,
                      .inside = withElement - outside.near,
                      .near = outside.near,
                      .far = outside.far};
}

PointCounts countPoints(const TransferRecord& record)
{
    const auto count = [&](ValueOrigin origin)
    { return static_cast<long long>(std::ranges::count(record.result.origins, origin)); };
    return {.all = record.targetPoints()->points().pointCount(),
            .notMapped = count(ValueOrigin::none),
            .inside = count(ValueOrigin::element),
            .outside = count(ValueOrigin::defaultValue)};
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
