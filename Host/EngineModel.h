/// Meshes and points in the form in which the engine takes them.
#ifndef VELTRANE_HOST_ENGINE_MODEL_H
#define VELTRANE_HOST_ENGINE_MODEL_H

#include "CommonOrigin.h"
#include "Mesh.h"

#include "Allocation.h"
#include "ModelClass.h"

#include <cstddef>
#include <vector>

namespace veltrane
{

/// The engine's view of a mesh or of points, whose arrays it borrows; coordinates are counted from the origin.
class EngineModel
{
public:
    explicit EngineModel(const Mesh& mesh, const Origin& origin = noOrigin);
    explicit EngineModel(const PointCloud& points, const Origin& origin = noOrigin);
    EngineModel(const EngineModel&) = delete;
    EngineModel& operator=(const EngineModel&) = delete;

    const ModelClass& model() const { return model_; }

private:
    std::vector<float> movedCoordinates_;
    OwnedArray<int> typeCodes_;
    std::vector<int> stateCodes_;
    ModelClass model_;
};

GaussRuleChoice engineRule(GaussPointRule rule);

/// The engine's mapping flags of a selection of target materials, in which nothing selects all. Throws InvalidOption if
/// there is not one entry per material.
std::vector<int> mappingFlags(const std::vector<bool>& selection, std::size_t materialCount);

} // namespace veltrane

#endif
