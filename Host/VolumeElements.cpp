#include "VolumeElements.h"

#include "Errors.h"
#include "Text.h"

#include <algorithm>
#include <utility>

namespace veltrane
{

bool hasVolumeElements(const Mesh& mesh)
{
    return std::ranges::any_of(mesh.kinds(), [](ElementKind kind) { return findElementKind(kind)->isVolume; });
}

VolumeElements::VolumeElements(const Mesh& mesh, std::string_view side) : whole_(mesh)
{
    MeshData data{.offsets = {0}};
    for (int element = 0; element < mesh.elementCount(); ++element)
    {
        if (const ElementKindInfo& kind = mesh.kindOf(element); kind.isVolume)
        {
            const auto nodes = mesh.nodesOf(element);
            data.kinds.push_back(kind.kind);
            data.connectivity.insert(data.connectivity.end(), nodes.begin(), nodes.end());
            data.offsets.push_back(data.connectivity.size());
            data.materialPerElement.push_back(mesh.materialOf(element));
        }
    }
    if (data.kinds.empty())
    {
        throw InvalidData(text("the ", side, " has no volume elements, from which values could be mapped"));
    }
    if (data.kinds.size() < mesh.kinds().size())
    {
        data.coordinates = mesh.coordinates();
        data.exactCoordinates = mesh.exactCoordinates();
        data.materials = mesh.materials();
        extracted_.emplace(std::move(data));
        extracted_->setGaussPointRule(mesh.gaussPointRule());
    }
}

} // namespace veltrane
