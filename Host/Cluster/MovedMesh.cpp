#include "MovedMesh.h"

#include "Agreement.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace veltrane
{
namespace
{

/// What is told of an element besides its nodes.
struct ElementRecord
{
    std::int64_t number;
    int kind;
    int material;
};

int nodeCountOf(int kind)
{
    return findElementKind(static_cast<ElementKind>(kind))->nodeCount;
}

/// The elements as they come, from rank after rank.
struct Arrived
{
    std::vector<ElementRecord> elements;
    std::vector<int> connectivity; ///< numbers in the list of the sender's nodes
    std::vector<std::size_t> offsets;
    std::vector<int> firstNodes; ///< per element that of its sender
};

/// Nodes as the connectivity of a list of elements has them, one after another.
class ConnectivityReader
{
public:
    ConnectivityReader(const Mesh& mesh, const std::vector<int>& elements) : mesh_(mesh), elements_(elements) {}

    int next()
    {
        auto nodes = mesh_.nodesOf(elements_[element_]);
        if (node_ == nodes.size())
        {
            nodes = mesh_.nodesOf(elements_[++element_]);
            node_ = 0;
        }
        return nodes[node_++];
    }

private:
    const Mesh& mesh_;
    const std::vector<int>& elements_;
    std::size_t element_ = 0;
    std::size_t node_ = 0;
};

Arrived exchangeElements(const Communicator& ranks, const MeshInParts& part, const Lists& elements, const Lists& nodes,
                         const Routes& nodeRoutes)
{
    const Mesh& mesh = part.mesh;
    std::vector<std::int64_t> sizes;
    for (const std::vector<int>& list : elements)
    {
        sizes.push_back(std::accumulate(list.begin(), list.end(), std::int64_t{0},
                                        [&](std::int64_t sum, int element)
                                        { return sum + static_cast<std::int64_t>(mesh.nodesOf(element).size()); }));
    }
    const Exchange records(ranks, sizesOf(elements));
    const Exchange connectivity(ranks, sizes);
    Arrived arrived;
    std::vector<int> places;
    agree(ranks,
          [&]
          {
              arrived.elements.resize(static_cast<std::size_t>(records.takenCount()));
              arrived.connectivity.resize(static_cast<std::size_t>(connectivity.takenCount()));
              places.resize(static_cast<std::size_t>(mesh.nodeCount()));
          });
    records.run(1, arrived.elements.data(),
                [&](int to, std::int64_t first, std::int64_t count, ElementRecord* rows)
                {
                    const int* list = elements[static_cast<std::size_t>(to)].data() + first;
                    for (std::int64_t i = 0; i < count; ++i)
                    {
                        rows[i] = {part.order.numbers[static_cast<std::size_t>(list[i])],
                                   static_cast<int>(mesh.kinds()[static_cast<std::size_t>(list[i])]),
                                   mesh.materialOf(list[i])};
                    }
                });
    std::optional<ConnectivityReader> reader;
    connectivity.run(1, arrived.connectivity.data(),
                     [&](int to, std::int64_t first, std::int64_t count, int* rows)
                     {
                         const auto rank = static_cast<std::size_t>(to);
                         if (first == 0)
                         {
                             reader.emplace(mesh, elements[rank]);
                             for (std::size_t i = 0; i < nodes[rank].size(); ++i)
                             {
                                 places[static_cast<std::size_t>(nodes[rank][i])] = static_cast<int>(i);
                             }
                         }
                         for (std::int64_t i = 0; i < count; ++i)
                         {
                             rows[i] = places[static_cast<std::size_t>(reader->next())];
                         }
                     });
    agree(
        ranks,
        [&]
        {
            arrived.offsets.push_back(0);
            for (const ElementRecord& element : arrived.elements)
            {
                arrived.offsets.push_back(arrived.offsets.back() + static_cast<std::size_t>(nodeCountOf(element.kind)));
            }
            for (int from = 0; from < ranks.size(); ++from)
            {
                arrived.firstNodes.insert(arrived.firstNodes.end(), static_cast<std::size_t>(records.takenCount(from)),
                                          static_cast<int>(nodeRoutes.exchange().firstTaken(from)));
            }
        });
    return arrived;
}

/// Puts the elements into the order of the whole.
void arrange(const Arrived& arrived, MeshData& data, std::vector<std::int64_t>& numbers)
{
    std::vector<int> order(arrived.elements.size());
    std::iota(order.begin(), order.end(), 0);
    const auto numberOf = [&](int i) { return arrived.elements[static_cast<std::size_t>(i)].number; };
    if (!std::ranges::is_sorted(order, {}, numberOf))
    {
        std::ranges::sort(order, {}, numberOf);
    }
    data.kinds.reserve(order.size());
    data.materialPerElement.reserve(order.size());
    data.connectivity.reserve(arrived.connectivity.size());
    data.offsets.reserve(order.size() + 1);
    data.offsets.push_back(0);
    numbers.reserve(order.size());
    for (const int i : order)
    {
        const auto element = static_cast<std::size_t>(i);
        numbers.push_back(arrived.elements[element].number);
        data.kinds.push_back(static_cast<ElementKind>(arrived.elements[element].kind));
        data.materialPerElement.push_back(arrived.elements[element].material);
        for (std::size_t node = arrived.offsets[element]; node < arrived.offsets[element + 1]; ++node)
        {
            data.connectivity.push_back(arrived.firstNodes[element] + arrived.connectivity[node]);
        }
        data.offsets.push_back(data.connectivity.size());
    }
}

/// Positions in either precision of all nodes that are taken.
template <class Number>
std::vector<Number> carried(const Communicator& ranks, const Routes& routes, const std::vector<Number>& coordinates)
{
    std::vector<Number> taken;
    agree(ranks, [&] { taken.resize(3 * static_cast<std::size_t>(routes.exchange().takenCount())); });
    routes.carry(coordinates.data(), 3, taken.data());
    return taken;
}

} // namespace

std::vector<int> nodesOfElements(const Mesh& mesh, const std::vector<int>& elements)
{
    std::vector<char> isUsed(elements.empty() ? 0 : static_cast<std::size_t>(mesh.nodeCount()), 0);
    for (const int element : elements)
    {
        for (const int node : mesh.nodesOf(element))
        {
            isUsed[static_cast<std::size_t>(node)] = 1;
        }
    }
    std::vector<int> nodes;
    for (std::size_t node = 0; node < isUsed.size(); ++node)
    {
        if (isUsed[node] != 0)
        {
            nodes.push_back(static_cast<int>(node));
        }
    }
    return nodes;
}

MovedMesh moveElements(const Communicator& ranks, const MeshInParts& part, const Lists& elements, Lists nodes,
                       bool isExact)
{
    const Mesh& mesh = part.mesh;
    MovedMesh result;
    result.nodes = Routes(ranks, nodes);
    MeshData data{.materials = mesh.materials()};
    {
        const Arrived arrived = exchangeElements(ranks, part, elements, nodes, result.nodes);
        agree(ranks, [&] { arrange(arrived, data, result.elementNumbers); });
    }
    data.coordinates = carried(ranks, result.nodes, mesh.coordinates());
    if (isExact)
    {
        std::vector<double> widened;
        if (mesh.exactCoordinates().empty())
        {
            widened.assign(mesh.coordinates().begin(), mesh.coordinates().end());
        }
        data.exactCoordinates = carried(ranks, result.nodes, widened.empty() ? mesh.exactCoordinates() : widened);
    }
    agree(ranks, [&] { result.mesh.emplace(std::move(data), Extent::part); });
    return result;
}

} // namespace veltrane
