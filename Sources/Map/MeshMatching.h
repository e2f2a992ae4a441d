/// Correspondences of whole meshes, side by side with workers.
#ifndef VELTRANE_MESH_MATCHING_H
#define VELTRANE_MESH_MATCHING_H

#include "EngineRules.h"
#include "MapFailure.h"
#include "TargetPoints.h"
#include "Workers.h"

/// What to match: two meshes, whose arrays are borrowed, and per target material 1 to match it.
struct MeshPair
{
    const ModelClass& source;
    const ModelClass& target;
    const int* targetMatlMappingFlags;
};

/// Writes for every node of the selected target materials the number, from 1, of the source node at its place in a
/// material of its state into `partners`, one entry per target node; other entries stay. A failure leaves it undefined.
MapFailure matchNodes(const MeshPair& meshes, const EngineRules& rules, const SearchTuning& tuning, Workers& workers,
                      int* partners);

/// Writes for every Gauss point of the selected target elements the numbers, from 1, of the source element around the
/// target element's centre, and of its Gauss point at the same place, into two tables with an entry per target Gauss
/// point. A singular Jacobian leaves the computation.
MapFailure matchGaussPoints(const MeshPair& meshes, const EngineRules& rules, const SearchTuning& tuning,
                            Workers& workers, int* partnerElts, int* partnerGaussPoints);

#endif
