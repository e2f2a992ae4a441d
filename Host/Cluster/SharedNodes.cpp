#include "SharedNodes.h"

#include "Agreement.h"
#include "Text.h"

#include <algorithm>

namespace veltrane
{
namespace
{

bool isIn(const Box& box, std::span<const float, 3> position)
{
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        if (!(box.min[axis] <= position[axis] && position[axis] <= box.max[axis]))
        {
            return false;
        }
    }
    return true;
}

bool areTouching(const Box& first, const Box& second)
{
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        if (!(first.min[axis] <= second.max[axis] && second.min[axis] <= first.max[axis]))
        {
            return false;
        }
    }
    return true;
}

Box boxOfAllNodes(const Mesh& mesh)
{
    Box box;
    for (int node = 0; node < mesh.nodeCount(); ++node)
    {
        box.add(mesh.nodePosition(node));
    }
    return box;
}

/// Those that the other rank may have, in the order of their numbers.
std::vector<int> candidates(const Mesh& mesh, std::span<const std::int64_t> numbers, const Box& other)
{
    std::vector<int> nodes;
    for (int node = 0; node < mesh.nodeCount(); ++node)
    {
        if (isIn(other, mesh.nodePosition(node)))
        {
            nodes.push_back(node);
        }
    }
    std::ranges::sort(nodes, {}, [&](int node) { return numbers[static_cast<std::size_t>(node)]; });
    return nodes;
}

void checkNumbers(const Mesh& mesh, std::span<const std::int64_t> numbers, std::string_view side, int rank)
{
    if (numbers.size() != static_cast<std::size_t>(mesh.nodeCount()))
    {
        throw InvalidData(text("the ", side, " has ", mesh.nodeCount(), " nodes on rank ", rank, ", but ",
                               numbers.size(), " global numbers of nodes"));
    }
    if (std::ranges::any_of(numbers, [](std::int64_t number) { return number < 0; }))
    {
        throw InvalidData(text("the ", side, " has a negative global number of a node on rank ", rank));
    }
}

} // namespace

SharedNodes findSharedNodes(const Communicator& ranks, const Mesh& mesh, std::span<const std::int64_t> numbers,
                            std::string_view side)
{
    const auto rankCount = static_cast<std::size_t>(ranks.size());
    SharedNodes shared{std::vector<std::vector<int>>(rankCount)};
    if (!ranks.isAnywhere(!numbers.empty()))
    {
        return shared;
    }
    const Box own = boxOfAllNodes(mesh);
    const std::vector<Box> boxes = ranks.gathered(own);
    std::vector<std::vector<std::int64_t>> asked(rankCount);
    const auto numberOf = [&](int node) { return numbers[static_cast<std::size_t>(node)]; };
    agree(ranks,
          [&]
          {
              checkNumbers(mesh, numbers, side, ranks.rank());
              for (std::size_t rank = 0; rank < rankCount; ++rank)
              {
                  if (static_cast<int>(rank) != ranks.rank() && areTouching(own, boxes[rank]))
                  {
                      shared.with[rank] = candidates(mesh, numbers, boxes[rank]);
                      std::ranges::transform(shared.with[rank], std::back_inserter(asked[rank]), numberOf);
                  }
              }
          });
    const Exchange exchange(ranks, sizesOf(asked));
    const std::vector<std::int64_t> others = exchange.run(asked);
    agree(ranks,
          [&]
          {
              for (std::size_t rank = 0; rank < rankCount; ++rank)
              {
                  const auto first = others.begin() + exchange.firstTaken(static_cast<int>(rank));
                  const auto end = first + exchange.takenCount(static_cast<int>(rank));
                  std::erase_if(shared.with[rank],
                                [&](int node) { return !std::binary_search(first, end, numberOf(node)); });
              }
          });
    return shared;
}

} // namespace veltrane
