/// What the engine could do otherwise than the exported functions promise to do.
#ifndef VELTRANE_ENGINE_RULES_H
#define VELTRANE_ENGINE_RULES_H

#include "../VectorHelpers.h"

#include <cstdint>

/// What happens when an iteration meets a Jacobian whose determinant is exactly 0.
enum class SingularElements
{
    endComputation, ///< the way of a fault: the computation is left
    leaveOut        ///< the element does not hold the point; it is marked, and the search goes on
};

struct EngineRules
{
    /// A target mesh that reaches beyond the source's box by more than 5 % of its extents is refused.
    bool refusesOverhang;
    /// Only element types with a type code are admitted: as a source those with shape functions, as a target mesh
    /// quadrilaterals and triangles too.
    bool admitsTypeCodesOnly;
    SingularElements singularElements;
    /// Points of a cloud that lie in no element are far. Otherwise they are taken to a near element as nodes are.
    bool cloudsHaveNoNearMisses;
    /// Where propagation does not reach all far nodes, nothing is computed at Gauss points.
    bool stopsAtUnreachedNodes;
};

/// What a search may be tuned by.
struct SearchTuning
{
    float bucketFactor = single(0.1);        ///< by which source boxes are enlarged for buckets out of their reach
    float boxMarginRatio = single(0.01);     ///< by which boxes are inflated, of their largest extent
    float refCoordTolerance = single(0.001); ///< half the margin of reference coordinates
    std::int64_t maxNbBuckets = 10000000;
};

/// The rules of the exported functions.
constexpr EngineRules asExported()
{
    return {.refusesOverhang = true,
            .admitsTypeCodesOnly = true,
            .singularElements = SingularElements::endComputation,
            .cloudsHaveNoNearMisses = true,
            .stopsAtUnreachedNodes = true};
}

/// The rules of everyone else: no target is refused for its place, and no element ends a computation.
constexpr EngineRules withoutLimits()
{
    return {.refusesOverhang = false,
            .admitsTypeCodesOnly = false,
            .singularElements = SingularElements::leaveOut,
            .cloudsHaveNoNearMisses = true,
            .stopsAtUnreachedNodes = false};
}

#endif
