#include "MatchDiagnosis.h"

#include "CommonOrigin.h"
#include "EngineModel.h"
#include "EngineTuning.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <map>
#include <span>

namespace veltrane
{
namespace
{

using Position = std::array<float, 3>;

constexpr int notAssigned = -1;

/// The library's rule, in single precision as there.
bool isWithin(std::span<const float, 3> a, std::span<const float, 3> b, float tolerance)
{
    const float dx = std::fabs(a[0] - b[0]);
    const float dy = std::fabs(a[1] - b[1]);
    const float dz = std::fabs(a[2] - b[2]);
    return dx <= tolerance && dy <= tolerance && dz <= tolerance &&
           dx * dx + dy * dy + dz * dz <= tolerance * tolerance;
}

/// The mean extent of the source elements' boxes, each enlarged by a hundredth of its largest extent: one running sum
/// in single precision, as the library computes it.
float meanBoxSize(const Mesh& source, const PositionsInMesh& positions)
{
    constexpr float margin = 0.01F;
    float sum = 0;
    for (int element = 0; element < source.elementCount(); ++element)
    {
        Box box;
        std::ranges::for_each(source.nodesOf(element), [&](int node) { box.add(positions[node]); });
        const float width = margin * box.size();
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            const float low = box.min[axis] - width;
            const float high = box.max[axis] + width;
            sum += std::fabs(high - low);
        }
    }
    return sum / static_cast<float>(3 * static_cast<long long>(source.elementCount()));
}

/// Numbered positions, to be found again by their place.
class PlaceFinder
{
public:
    /// \param cellSize  much larger than the tolerances asked for, and not much larger than the positions' distances
    explicit PlaceFinder(float cellSize) : cellSize_(cellSize > 0 ? double{cellSize} : 1.0) {}

    void add(std::span<const float, 3> position, int number)
    {
        cells_[{cellOf(position[0]), cellOf(position[1]), cellOf(position[2])}].push_back(
            {{position[0], position[1], position[2]}, number});
    }

    /// Whether a position within the tolerance has a number that is accepted.
    template <typename Accept>
    bool finds(std::span<const float, 3> position, float tolerance, const Accept& accept) const
    {
        for (const double x : cellsAround(position[0], tolerance))
        {
            for (const double y : cellsAround(position[1], tolerance))
            {
                for (const double z : cellsAround(position[2], tolerance))
                {
                    const auto cell = cells_.find({x, y, z});
                    if (cell != cells_.end() &&
                        std::ranges::any_of(
                            cell->second, [&](const Entry& entry)
                            { return isWithin(position, entry.position, tolerance) && accept(entry.number); }))
                    {
                        return true;
                    }
                }
            }
        }
        return false;
    }

private:
    struct Entry
    {
        Position position;
        int number;
    };

    double cellOf(double coordinate) const { return std::floor(coordinate / cellSize_); }

    /// The cells of both ends of the tolerance; if they are the same, it counts twice.
    std::array<double, 2> cellsAround(double coordinate, double tolerance) const
    {
        return {cellOf(coordinate - tolerance), cellOf(coordinate + tolerance)};
    }

    double cellSize_;
    std::map<std::array<double, 3>, std::vector<Entry>> cells_;
};

/// What the library makes of a mesh's nodes: the first element of each decides.
struct NodeStates
{
    NodeStates(const Mesh& mesh, const std::vector<int>& flags)
        : states(static_cast<std::size_t>(mesh.nodeCount()), notAssigned),
          isSelected(static_cast<std::size_t>(mesh.nodeCount()), false)
    {
        for (int element = 0; element < mesh.elementCount(); ++element)
        {
            const auto material = static_cast<std::size_t>(mesh.materialOf(element));
            for (const int number : mesh.nodesOf(element))
            {
                const auto node = static_cast<std::size_t>(number);
                if (states[node] == notAssigned)
                {
                    states[node] = mesh.materials()[material].stateCode;
                    isSelected[node] = flags[material] == 1;
                }
            }
        }
    }

    std::vector<int> states; ///< notAssigned for nodes of no element
    std::vector<bool> isSelected;
};

int stateOf(const Mesh& mesh, int element)
{
    return mesh.materials()[static_cast<std::size_t>(mesh.materialOf(element))].stateCode;
}

/// Enters a selected target item.
/// \param hasPartner  whether it has a partner of which a condition on the source item's number holds
template <typename HasPartner, typename HasSameState>
void enter(Unmatched& unmatched, int item, const HasPartner& hasPartner, const HasSameState& hasSameState)
{
    ++unmatched.selectedCount;
    if (hasPartner(hasSameState))
    {
        return;
    }
    const bool isElsewhere = hasPartner([](int) { return true; });
    (isElsewhere ? unmatched.elsewhereOnly : unmatched.nowhere).push_back(item);
}

/// Two meshes with their positions as they are matched: counted from a common origin where there is one.
struct PlacedPair
{
    PlacedPair(const Mesh& sourceMesh, const Mesh& targetMesh)
        : source(sourceMesh), target(targetMesh),
          origin(commonOrigin(source, target.coordinates(), engineTuning({}).refCoordTolerance, 1)),
          sourcePositions(source, origin), targetPositions(target, origin)
    {
    }

    const Mesh& source;
    const Mesh& target;
    Origin origin;
    PositionsInMesh sourcePositions;
    PositionsInMesh targetPositions;
};

Position centreOf(const Mesh& mesh, const PositionsInMesh& positions, int element)
{
    Position centre{};
    for (const int node : mesh.nodesOf(element))
    {
        std::ranges::transform(centre, positions[node], centre.begin(), std::plus());
    }
    const auto weight = static_cast<float>(1.0 / mesh.kindOf(element).nodeCount);
    std::ranges::for_each(centre, [&](float& coordinate) { coordinate *= weight; });
    return centre;
}

bool areNodesAtSamePlaces(const PlacedPair& pair, int sourceElement, int targetElement, float tolerance)
{
    const auto hasPartner = [&](int targetNode)
    {
        return std::ranges::any_of(
            pair.source.nodesOf(sourceElement), [&](int sourceNode)
            { return isWithin(pair.targetPositions[targetNode], pair.sourcePositions[sourceNode], tolerance); });
    };
    return std::ranges::all_of(pair.target.nodesOf(targetElement), hasPartner);
}

/// Whether the Gauss points of two elements of about the same centre are at the same places. The centre of a quadratic
/// tetrahedron is a Gauss point too.
bool areAlike(const PlacedPair& pair, int sourceElement, int targetElement, float tolerance)
{
    const ElementKind sourceKind = pair.source.kindOf(sourceElement).kind;
    const ElementKind targetKind = pair.target.kindOf(targetElement).kind;
    if (targetKind == ElementKind::tetrahedron)
    {
        return sourceKind == ElementKind::tetrahedron || sourceKind == ElementKind::quadraticTetrahedron;
    }
    return sourceKind == targetKind && areNodesAtSamePlaces(pair, sourceElement, targetElement, tolerance);
}

} // namespace

Unmatched findUnmatchedNodes(const Mesh& source, const Mesh& target, const std::vector<bool>& selection)
{
    const PlacedPair pair(source, target);
    const float meanSize = meanBoxSize(source, pair.sourcePositions);
    PlaceFinder sourceNodes(meanSize);
    for (int node = 0; node < source.nodeCount(); ++node)
    {
        sourceNodes.add(pair.sourcePositions[node], node);
    }
    const NodeStates sourceStates(source, mappingFlags({}, source.materials().size()));
    const NodeStates targetStates(target, mappingFlags(selection, target.materials().size()));

    Unmatched unmatched{.tolerance = static_cast<float>(meanSize * 0.001)};
    for (int node = 0; node < target.nodeCount(); ++node)
    {
        const auto index = static_cast<std::size_t>(node);
        if (targetStates.isSelected[index])
        {
            enter(
                unmatched, node,
                [&](const auto& accept)
                { return sourceNodes.finds(pair.targetPositions[node], unmatched.tolerance, accept); },
                [&](int sourceNode)
                { return sourceStates.states[static_cast<std::size_t>(sourceNode)] == targetStates.states[index]; });
        }
    }
    return unmatched;
}

Unmatched findUnmatchedElements(const Mesh& source, const Mesh& target, const std::vector<bool>& selection)
{
    const std::vector<int> flags = mappingFlags(selection, target.materials().size());
    const PlacedPair pair(source, target);
    const float meanSize = meanBoxSize(source, pair.sourcePositions);
    PlaceFinder sourceCentres(meanSize);
    for (int element = 0; element < source.elementCount(); ++element)
    {
        sourceCentres.add(centreOf(source, pair.sourcePositions, element), element);
    }

    Unmatched unmatched{.tolerance = meanSize * 0.001F};
    for (int element = 0; element < target.elementCount(); ++element)
    {
        if (flags[static_cast<std::size_t>(target.materialOf(element))] == 1)
        {
            const auto hasPartner = [&](const auto& accept)
            {
                return sourceCentres.finds(centreOf(target, pair.targetPositions, element), unmatched.tolerance,
                                           [&](int sourceElement) {
                                               return accept(sourceElement) &&
                                                      areAlike(pair, sourceElement, element, unmatched.tolerance);
                                           });
            };
            enter(unmatched, element, hasPartner,
                  [&](int sourceElement) { return stateOf(source, sourceElement) == stateOf(target, element); });
        }
    }
    return unmatched;
}

std::array<float, 3> centreOf(const Mesh& mesh, int element)
{
    return centreOf(mesh, PositionsInMesh(mesh, noOrigin), element);
}

} // namespace veltrane
