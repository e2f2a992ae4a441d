/// The nodes of a target that is spread over ranks.
#ifndef VELTRANE_HOST_TARGET_NODES_H
#define VELTRANE_HOST_TARGET_NODES_H

#include "ElementOrder.h"
#include "SharedNodes.h"

#include "Mesh.h"

#include <vector>

namespace veltrane
{

struct TargetNodes
{
    std::vector<int> materials; ///< of the first element in the whole that each node is part of; -1 in none
    std::vector<char> areOwn;   ///< whether this rank has this first element, so that the node is counted here
};

/// Collective.
TargetNodes settleTargetNodes(const Communicator& ranks, const Mesh& part, const ElementOrder& order,
                              const SharedNodes& shared);

} // namespace veltrane

#endif
