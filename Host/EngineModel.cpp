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

/// Those of a mesh or of points, or `moved`, which become the same counted from the origin.
template <class Positions>
const std::vector<float>& coordinatesOf(const Positions& positions, const Origin& origin, std::vector<float>& moved)
{
    if (origin == noOrigin)
    {
        return positions.coordinates();
    }
    moved = coordinatesFrom(origin, positions.coordinates(), positions.exactCoordinates());
    return moved;
}

std::vector<int> stateCodes(const std::vector<Material>& materials)
{
    std::vector<int> codes;
    codes.reserve(materials.size());
    std::ranges::transform(materials, std::back_inserter(codes), &Material::stateCode);
    return codes;
}

} // namespace

EngineModel::EngineModel(const Mesh& mesh, const Origin& origin) : stateCodes_(stateCodes(mesh.materials()))
{
    if (!typeCodes_.allocate(mesh.elementCount()))
    {
        throw std::bad_alloc();
    }
    std::ranges::transform(mesh.kinds(), typeCodes_.get(), [](ElementKind kind) { return static_cast<int>(kind); });
    model_.init(ModelKind::mesh, mesh.elementCount(), mesh.nodeCount(),
                rowsOfThree(coordinatesOf(mesh, origin, movedCoordinates_)), mesh.nodesPerElement().data(),
                typeCodes_.get(), static_cast<int>(stateCodes_.size()), mesh.materialPerElement().data(),
                stateCodes_.data());
    model_.itsAdmitsAllKinds = true;
    model_.itsGaussRule = engineRule(mesh.gaussPointRule());
}

EngineModel::EngineModel(const PointCloud& points, const Origin& origin) : stateCodes_(stateCodes(points.materials()))
{
    model_.init(ModelKind::pointCloud, 0, points.pointCount(),
                rowsOfThree(coordinatesOf(points, origin, movedCoordinates_)), nullptr, nullptr,
                static_cast<int>(stateCodes_.size()), points.materialPerPoint().data(), stateCodes_.data());
}

GaussRuleChoice engineRule(GaussPointRule rule)
{
    return rule == GaussPointRule::reduced ? GaussRuleChoice::reduced : GaussRuleChoice::full;
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
