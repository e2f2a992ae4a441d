/// The grid of buckets of the reference implementation.
#ifndef REFERENCE_GRID_H
#define REFERENCE_GRID_H

#include "ReferenceElements.h"
#include "ReferenceTypes.h"

#include <array>
#include <vector>

namespace reference
{

/// A bucket's state: -1 no target entity touches it, 0 needed and empty, 1 filled with the items that touch it,
/// 2 filled with the elements near it because none touches it.
struct Bucket
{
    int state = -1;
    std::vector<int> items;
};

struct Grid
{
    Vec3 min{};
    Vec3 max{};
    float bucketSize = 0.0F;
    float invBucketSize = 0.0F;
    std::array<int, 3> nbBuckets{};
    std::vector<Bucket> buckets; ///< x-major
    int nbDoublings = 0;

    Bucket& at(int i, int j, int k);
    const Bucket& at(int i, int j, int k) const;

    /// The bucket that a point falls in, or null when it lies outside the grid. Products are truncated toward zero: a
    /// point up to one bucket below the grid falls in the first one.
    const Bucket* bucketOf(const Vec3& point) const;
};

/// What the buckets hold.
enum class GridItems
{
    elements,
    nodes
};

enum class TargetKind
{
    mesh,
    pointCloud
};

/// The boxes of all elements of a mesh.
std::vector<Box> elementBoxes(const MeshArrays& mesh);

/// Mean extent of the boxes over elements and axes.
float meanBoxSize(const std::vector<Box>& boxes);

/// Builds the grid over the selected part of the target. Throws `Stopped` when nothing is selected or a target mesh is
/// not included in the source mesh.
Grid buildGrid(GridItems items, TargetKind targetKind, const MeshArrays& target, const MeshArrays& source,
               const std::vector<Box>& refBoxes, const std::vector<Box>& targetBoxes, const int* mappingFlags,
               float initialBucketSize, const Tuning& tuning);

} // namespace reference

#endif
