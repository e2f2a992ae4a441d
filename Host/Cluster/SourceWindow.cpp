#include "SourceWindow.h"

#include "Agreement.h"

#include <algorithm>
#include <array>
#include <utility>

namespace veltrane
{
namespace
{

/// Per rank the elements of this part that it needs, in order.
Lists elementsForRanks(const Communicator& ranks, const MeshInParts& part, const BoxTable& boxes,
                       const BucketRanges& ranges, const BucketRange& window, float bucketFactor)
{
    const std::vector<BucketRange> windows = ranks.gathered(window);
    Lists lists(windows.size());
    agree(ranks,
          [&]
          {
              for (const int element : part.order.sorted)
              {
                  const ::Box box = enlarged(boxOfElement(boxes, element), bucketFactor);
                  const std::array<float, 6> values{box.low[0],  box.low[1],  box.low[2],
                                                    box.high[0], box.high[1], box.high[2]};
                  const BucketRange range = ranges(values.data());
                  for (std::size_t rank = 0; !range.isEmpty() && rank < windows.size(); ++rank)
                  {
                      if (!range.cutBy(windows[rank]).isEmpty())
                      {
                          lists[rank].push_back(element);
                      }
                  }
              }
          });
    return lists;
}

} // namespace

MovedMesh gatherSource(const Communicator& ranks, const MeshInParts& part, const BoxTable& boxes,
                       const BucketRanges& ranges, const BucketRange& window, float bucketFactor, bool isExact)
{
    const Lists elements = elementsForRanks(ranks, part, boxes, ranges, window, bucketFactor);
    Lists nodes(elements.size());
    agree(ranks,
          [&]
          {
              std::ranges::transform(elements, nodes.begin(),
                                     [&](const std::vector<int>& list) { return nodesOfElements(part.mesh, list); });
          });
    return moveElements(ranks, part, elements, std::move(nodes), isExact);
}

} // namespace veltrane
