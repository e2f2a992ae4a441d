#include "EngineModel.h"

#include "Errors.h"
#include "Text.h"

#include <algorithm>
#include <iterator>
#include <new>

namespace veltrane
{
namespace
{

const float (*rowsOfThree(const std::vector<float>& coordinates))[3]
{
    return reinterpret_cast<const float(*)[3]>(coordinates.data());
}

std::vector<int> stateCodes(const std::vector<Material>& materials)
{
    std::vector<int> codes;
    codes.reserve(materials.size());
    std::ranges::transform(materials, std::back_inserter(codes), &Material::stateCode);
    return codes;
}

} // namespace

EngineModel::EngineModel(const Mesh& mesh) : stateCodes_(stateCodes(mesh.materials()))
{
    const int elementCount = mesh.elementCount();
    if (!nodesPerElement_.allocate(elementCount) || !typeCodes_.allocate(elementCount))
    {
        throw std::bad_alloc();
    }
    for (int element = 0; element < elementCount; ++element)
    {
        nodesPerElement_[element] = mesh.nodesOf(element).data();
        typeCodes_[element] = static_cast<int>(mesh.kinds()[static_cast<std::size_t>(element)]);
    }
    model_.init(ModelKind::mesh, mesh.elementCount(), mesh.nodeCount(), rowsOfThree(mesh.coordinates()),
                nodesPerElement_.get(), typeCodes_.get(), static_cast<int>(stateCodes_.size()),
                mesh.materialPerElement().data(), stateCodes_.data());
}

EngineModel::EngineModel(const PointCloud& points) : stateCodes_(stateCodes(points.materials()))
{
    model_.init(ModelKind::pointCloud, 0, points.pointCount(), rowsOfThree(points.coordinates()), nullptr, nullptr,
                static_cast<int>(stateCodes_.size()), points.materialPerPoint().data(), stateCodes_.data());
}

std::vector<int> mappingFlags(const std::vector<bool>& selection, std::size_t materialCount)
{
    if (selection.empty())
    {
        return std::vector<int>(materialCount, 1);
    }
    if (selection.size() != materialCount)
    {
        throw InvalidOption(
            text("there are ", selection.size(), " mapping flags for ", materialCount, " target materials"));
    }
    return {selection.begin(), selection.end()};
}

} // namespace veltrane
