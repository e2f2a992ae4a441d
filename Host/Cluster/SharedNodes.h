/// Nodes that more than one rank has.
#ifndef VELTRANE_HOST_SHARED_NODES_H
#define VELTRANE_HOST_SHARED_NODES_H

#include "Communicator.h"
#include "Exchange.h"

#include "Mesh.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace veltrane
{

/// Per other rank the nodes that both have, in the order of their global numbers: the same list on both sides.
struct SharedNodes
{
    std::vector<std::vector<int>> with;

    /// A node at the time: visit(rank, node).
    template <class Visit> void forEach(Visit visit) const
    {
        for (std::size_t rank = 0; rank < with.size(); ++rank)
        {
            for (const int node : with[rank])
            {
                visit(static_cast<int>(rank), node);
            }
        }
    }
};

/// Collective. Nodes of one number are at one place. Without numbers no node is shared. Throws InvalidData on all ranks
/// if there is not one number per node.
SharedNodes findSharedNodes(const Communicator& ranks, const Mesh& mesh, std::span<const std::int64_t> numbers,
                            std::string_view side);

} // namespace veltrane

#endif
