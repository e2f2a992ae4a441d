/// What all ranks together say of the source and of the target.
#ifndef VELTRANE_HOST_WHOLE_MODELS_H
#define VELTRANE_HOST_WHOLE_MODELS_H

#include "Communicator.h"

#include "CommonOrigin.h"
#include "Mesh.h"

#include "Search/BoundingBox.h"

#include <span>
#include <string_view>

namespace veltrane
{

/// Collective. commonOrigin() of the whole.
Origin wholeOrigin(const Communicator& ranks, const Mesh& source, std::span<const float> targetCoordinates,
                   float tolerance);

/// Collective. The box around those of all ranks.
RunningBox wholeBox(const Communicator& ranks, const RunningBox& part);

/// Collective. Throws InvalidData on all ranks unless all have the same materials in the same order.
void checkMaterials(const Communicator& ranks, const std::vector<Material>& materials, std::string_view side);

} // namespace veltrane

#endif
