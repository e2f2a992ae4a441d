/// Elements that go from ranks to ranks.
#ifndef VELTRANE_HOST_MOVED_MESH_H
#define VELTRANE_HOST_MOVED_MESH_H

#include "ElementOrder.h"
#include "Exchange.h"

#include "Mesh.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace veltrane
{

/// Per rank the elements or nodes of this rank's part that it gets.
using Lists = std::vector<std::vector<int>>;

struct MeshInParts
{
    const Mesh& mesh;
    const ElementOrder& order;
};

/// What a rank has got.
struct MovedMesh
{
    std::optional<Mesh> mesh;                 ///< its elements in the order of the whole
    std::vector<std::int64_t> elementNumbers; ///< in the whole
    Routes nodes;                             ///< from the nodes of the parts to those of `mesh`
};

/// The nodes of these elements, each once, in the order of the mesh.
std::vector<int> nodesOfElements(const Mesh& mesh, const std::vector<int>& elements);

/// Collective. Lists of elements are in the order of the whole; `nodes` has at least those of the elements. Nodes that
/// come from two ranks are two.
///
/// \param isExact  whether any rank has coordinates in double precision
MovedMesh moveElements(const Communicator& ranks, const MeshInParts& part, const Lists& elements, Lists nodes,
                       bool isExact);

} // namespace veltrane

#endif
