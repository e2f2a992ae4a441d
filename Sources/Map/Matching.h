/// Partners of target nodes and Gauss points in a source mesh that shares them.
#ifndef VELTRANE_MATCHING_H
#define VELTRANE_MATCHING_H

#include "../BucketSpaceClass.h"
#include "../ModelClass.h"

inline constexpr int anyMatlState = -1;

/// Finds source nodes at the place of a point.
struct NodeMatcher
{
    const ModelClass& source;
    const int* matlStatePerNode;   ///< of the source
    const BucketSpaceClass& space; ///< of the source nodes
    float tolerance;

    /// The number, from 1, of the first source node in the list of the point's bucket that is within the tolerance and
    /// has the material state, or 0. One bucket suffices: a source node is listed in every bucket that its tolerance
    /// reaches.
    int find(const Vector3& point, int matlState) const;

    /// Why a point has no partner: nothing is there, or only nodes of other materials.
    const char* reasonFor(const Vector3& point) const;
};

/// The number, from 1, of the first Gauss point of a source element within the tolerance of a point, or 0.
int matchingGaussPoint(const ModelClass& source, int elt, const Vector3& point, float tolerance);

inline constexpr const char* unmatchedGaussPointText =
    "At least one gauss point of the target mesh does not correspond to one gauss point of the source mesh.\n";

#endif
