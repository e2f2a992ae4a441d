#include "TargetNodes.h"

#include "Agreement.h"
#include "Exchange.h"

#include <limits>

namespace veltrane
{
namespace
{

constexpr std::int64_t noElement = std::numeric_limits<std::int64_t>::max();

struct FirstElement
{
    std::int64_t number = noElement;
    int material = -1;
};

std::vector<FirstElement> firstElements(const Mesh& part, const ElementOrder& order)
{
    std::vector<FirstElement> first(static_cast<std::size_t>(part.nodeCount()));
    for (const int element : order.sorted)
    {
        for (const int node : part.nodesOf(element))
        {
            FirstElement& known = first[static_cast<std::size_t>(node)];
            if (known.number == noElement)
            {
                known = {order.numbers[static_cast<std::size_t>(element)], part.materialOf(element)};
            }
        }
    }
    return first;
}

} // namespace

TargetNodes settleTargetNodes(const Communicator& ranks, const Mesh& part, const ElementOrder& order,
                              const SharedNodes& shared)
{
    std::vector<FirstElement> first;
    TargetNodes nodes;
    agree(ranks,
          [&]
          {
              first = firstElements(part, order);
              nodes.areOwn.assign(first.size(), 1);
          });
    const Routes routes(ranks, shared.with);
    std::vector<FirstElement> others;
    agree(ranks, [&] { others.resize(static_cast<std::size_t>(routes.exchange().takenCount())); });
    routes.carry(first.data(), 1, others.data());
    std::size_t next = 0;
    shared.forEach(
        [&](int, int node)
        {
            const FirstElement& other = others[next++];
            FirstElement& known = first[static_cast<std::size_t>(node)];
            if (other.number < known.number)
            {
                known = other;
                nodes.areOwn[static_cast<std::size_t>(node)] = 0;
            }
        });
    agree(ranks,
          [&]
          {
              nodes.materials.reserve(first.size());
              for (const FirstElement& element : first)
              {
                  nodes.materials.push_back(element.material);
              }
          });
    return nodes;
}

} // namespace veltrane
