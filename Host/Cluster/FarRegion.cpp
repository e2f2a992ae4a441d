#include "FarRegion.h"

#include "Agreement.h"

#include "EngineModel.h"

#include "Map/FieldSpreading.h"
#include "Map/Propagation.h"

#include <algorithm>
#include <new>
#include <numeric>
#include <utility>

namespace veltrane
{
namespace
{

struct FarElement
{
    std::int64_t number;
    int kind;
    int material;
};

struct ListedNode
{
    std::int64_t number;
    int isFar;
};

template <class Row> Exchange toRankZero(const Communicator& ranks, const std::vector<Row>& rows)
{
    std::vector<std::int64_t> counts(static_cast<std::size_t>(ranks.size()), 0);
    counts[0] = static_cast<std::int64_t>(rows.size());
    return Exchange(ranks, std::move(counts));
}

template <class Row> std::vector<Row> gatheredRows(const Communicator& ranks, const std::vector<Row>& rows)
{
    const Exchange exchange = toRankZero(ranks, rows);
    std::vector<Row> all;
    agree(ranks, [&] { all.resize(static_cast<std::size_t>(exchange.takenCount())); });
    exchange.run(1, all.data(),
                 [&](int, std::int64_t first, std::int64_t count, Row* packed)
                 { std::copy_n(rows.begin() + first, count, packed); });
    return all;
}

std::size_t nodeCountOf(const FarElement& element)
{
    return static_cast<std::size_t>(findElementKind(static_cast<ElementKind>(element.kind))->nodeCount);
}

} // namespace

/// What rank 0 has of all.
struct FarRegion::Gathered
{
    std::vector<FarElement> elements;
    std::vector<std::int64_t> elementNodes; ///< numbers in the whole, element after element
    std::vector<ListedNode> nodes;
    std::vector<Material> materials;
};

FarRegion::FarRegion(const Communicator& ranks, const TargetInParts& part, std::span<unsigned char> isFar)
{
    Gathered gathered;
    gather(ranks, part, isFar, gathered);
    std::vector<unsigned char> unreached; // per listed node of all ranks
    agree(ranks, [&] { plan(gathered, unreached); });
    isComplete_ = ranks.told(plan_.isComplete, 0);
    back_ = toRoot_.exchange().reversed();
    agree(ranks, [&] { takes_.resize(listed_.size()); });
    back_.run(1, takes_.data(),
              [&](int to, std::int64_t first, std::int64_t count, unsigned char* packed)
              { std::copy_n(unreached.begin() + toRoot_.exchange().firstTaken(to) + first, count, packed); });
    for (std::size_t i = 0; i < listed_.size(); ++i)
    {
        unsigned char& far = isFar[static_cast<std::size_t>(listed_[i])];
        const bool isReached = far == 1 && takes_[i] == 0;
        takes_[i] = isReached ? 1 : 0;
        far = isReached ? 0 : far;
    }
}

void FarRegion::gather(const Communicator& ranks, const TargetInParts& part, std::span<const unsigned char> isFar,
                       Gathered& gathered)
{
    const std::vector<std::int64_t> nodeCounts = ranks.gathered(std::int64_t{part.mesh.nodeCount()});
    const auto firstNode = std::accumulate(nodeCounts.begin(), nodeCounts.begin() + ranks.rank(), std::int64_t{0});
    std::vector<FarElement> elements;
    std::vector<std::int64_t> elementNodes;
    std::vector<ListedNode> nodes;
    const auto numberOf = [&](int node)
    { return part.nodeNumbers.empty() ? firstNode + node : part.nodeNumbers[static_cast<std::size_t>(node)]; };
    agree(ranks,
          [&]
          {
              std::vector<char> isListed(static_cast<std::size_t>(part.mesh.nodeCount()), 0);
              for (const int element : part.order.sorted)
              {
                  const auto ofElement = part.mesh.nodesOf(element);
                  const int material = part.mesh.materialOf(element);
                  const auto isFarNode = [&](int node) { return isFar[static_cast<std::size_t>(node)] == 1; };
                  if (part.mappingFlags[static_cast<std::size_t>(material)] != 1 ||
                      std::ranges::none_of(ofElement, isFarNode))
                  {
                      continue;
                  }
                  const auto i = static_cast<std::size_t>(element);
                  elements.push_back({part.order.numbers[i], static_cast<int>(part.mesh.kinds()[i]), material});
                  for (const int node : ofElement)
                  {
                      elementNodes.push_back(numberOf(node));
                      if (std::exchange(isListed[static_cast<std::size_t>(node)], 1) == 0)
                      {
                          listed_.push_back(node);
                          nodes.push_back({numberOf(node), isFarNode(node) ? 1 : 0});
                      }
                  }
              }
          });
    gathered.elements = gatheredRows(ranks, elements);
    gathered.elementNodes = gatheredRows(ranks, elementNodes);
    gathered.nodes = gatheredRows(ranks, nodes);
    gathered.materials = part.mesh.materials();
    std::vector<std::vector<int>> rows(static_cast<std::size_t>(ranks.size()));
    rows[0] = listed_;
    toRoot_ = Routes(ranks, std::move(rows));
}

/// On rank 0, which alone has elements. `isFar` becomes 1 for listed nodes that are not reached.
void FarRegion::plan(const Gathered& gathered, std::vector<unsigned char>& isFar)
{
    std::vector<std::int64_t> numbers;
    std::ranges::transform(gathered.nodes, std::back_inserter(numbers), &ListedNode::number);
    std::ranges::sort(numbers);
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    const auto placeOf = [&](std::int64_t number)
    { return static_cast<int>(std::ranges::lower_bound(numbers, number) - numbers.begin()); };
    for (const ListedNode& node : gathered.nodes)
    {
        nodeOf_.push_back(placeOf(node.number));
    }
    if (gathered.elements.empty())
    {
        return;
    }
    wasFar_.assign(numbers.size(), 0);
    for (std::size_t i = 0; i < nodeOf_.size(); ++i)
    {
        wasFar_[static_cast<std::size_t>(nodeOf_[i])] = static_cast<unsigned char>(gathered.nodes[i].isFar);
    }
    std::vector<std::size_t> firstNodes(1, 0);
    std::vector<int> order(gathered.elements.size());
    std::iota(order.begin(), order.end(), 0);
    for (const FarElement& element : gathered.elements)
    {
        firstNodes.push_back(firstNodes.back() + nodeCountOf(element));
    }
    std::ranges::sort(order, {}, [&](int i) { return gathered.elements[static_cast<std::size_t>(i)].number; });
    MeshData data{.offsets = {0}, .materials = gathered.materials};
    data.coordinates.assign(3 * numbers.size(), 0.0F); // which do not matter
    for (const int place : order)
    {
        const auto i = static_cast<std::size_t>(place);
        data.kinds.push_back(static_cast<ElementKind>(gathered.elements[i].kind));
        data.materialPerElement.push_back(gathered.elements[i].material);
        for (std::size_t node = firstNodes[i]; node < firstNodes[i + 1]; ++node)
        {
            data.connectivity.push_back(placeOf(gathered.elementNodes[node]));
        }
        data.offsets.push_back(data.connectivity.size());
    }
    const Mesh mesh(std::move(data));
    const EngineModel model(mesh);
    const std::vector<int> flags(mesh.materials().size(), 1); // of other materials there are no elements
    std::vector<unsigned char> far = wasFar_;
    if (!planSpreading({model.model(), flags.data(), {}}, far.data(), plan_))
    {
        throw std::bad_alloc();
    }
    std::ranges::transform(nodeOf_, std::back_inserter(isFar),
                           [&](int node) { return far[static_cast<std::size_t>(node)]; });
}

template <class Real, class Value>
void FarRegion::spread(const Communicator& ranks, const MapField& field, Value* values) const
{
    const auto width = static_cast<std::size_t>(field.nbComponents);
    std::vector<Value> arrived;
    std::vector<Value> atNodes;
    std::vector<Value> returned;
    agree(ranks,
          [&]
          {
              arrived.resize(static_cast<std::size_t>(toRoot_.exchange().takenCount()) * width);
              atNodes.assign(wasFar_.size() * width, static_cast<Value>(field.defaultValue));
              returned.resize(listed_.size() * width);
          });
    toRoot_.carry(values, width, arrived.data());
    for (std::size_t i = 0; i < nodeOf_.size(); ++i)
    {
        const auto node = static_cast<std::size_t>(nodeOf_[i]);
        if (wasFar_[node] == 0)
        {
            std::copy_n(arrived.data() + i * width, width, atNodes.data() + node * width);
        }
    }
    MapField gathered = field;
    if constexpr (std::is_same_v<Value, float>)
    {
        gathered.targetFloats = atNodes.data();
    }
    else
    {
        gathered.targetDoubles = atNodes.data();
    }
    spreadFields<Real>(plan_, {&gathered, 1});
    back_.run(width, returned.data(),
              [&](int to, std::int64_t first, std::int64_t count, Value* packed)
              {
                  const int* nodes = nodeOf_.data() + toRoot_.exchange().firstTaken(to) + first;
                  for (std::int64_t i = 0; i < count; ++i)
                  {
                      packed = std::copy_n(atNodes.data() + static_cast<std::size_t>(nodes[i]) * width, width, packed);
                  }
              });
    for (std::size_t i = 0; i < listed_.size(); ++i)
    {
        if (takes_[i] == 1)
        {
            std::copy_n(returned.data() + i * width, width, values + static_cast<std::size_t>(listed_[i]) * width);
        }
    }
}

template void FarRegion::spread<float>(const Communicator&, const MapField&, float*) const;
template void FarRegion::spread<float>(const Communicator&, const MapField&, double*) const;
template void FarRegion::spread<double>(const Communicator&, const MapField&, float*) const;
template void FarRegion::spread<double>(const Communicator&, const MapField&, double*) const;

} // namespace veltrane
