/// Cells of a target of which only the nodes count.
#ifndef VELTRANE_HOST_NODE_GROUPS_H
#define VELTRANE_HOST_NODE_GROUPS_H

#include "Mesh.h"

#include <vtkType.h>

#include <span>

namespace veltrane
{

/// Adds quadrilaterals that have all of these nodes and no others, so that the nodes receive values and propagate them
/// to each other; nodes are repeated where they are too few. All share the first node. Returns how many.
int addNodeGroup(MeshData& data, std::span<const vtkIdType> points);

} // namespace veltrane

#endif
