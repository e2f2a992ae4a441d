#include "ReferenceGrid.h"

#include <cmath>
#include <cstddef>
#include <functional>
#include <limits>

namespace reference
{

namespace
{

/// First and last bucket per axis; the last is -1 when nothing of the grid is touched.
struct Range
{
    std::array<int, 3> lo{};
    std::array<int, 3> hi{};
};

/// Truncation toward zero; what lies beyond the integers saturates.
int truncated(float value)
{
    if (std::isnan(value))
    {
        return 0;
    }
    if (value >= 2147483648.0F)
    {
        return std::numeric_limits<int>::max();
    }
    if (value <= -2147483648.0F)
    {
        return std::numeric_limits<int>::min();
    }
    return static_cast<int>(value);
}

int floorAdjusted(float value)
{
    if (value < 0.0F)
    {
        value = static_cast<float>(static_cast<double>(value) - 1.0);
    }
    return truncated(value);
}

Range rangeOf(const Grid& grid, const Vec3& boxMin, const Vec3& boxMax)
{
    Range range;
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        const float first = (boxMin[axis] - grid.min[axis]) * grid.invBucketSize;
        const float last = (boxMax[axis] - grid.min[axis]) * grid.invBucketSize;
        int lo = 0;
        int hi = -1;
        if (!std::isnan(first) && !std::isnan(last))
        {
            lo = floorAdjusted(first);
            hi = floorAdjusted(last);
        }
        if (hi < 0)
        {
            lo = 0;
            hi = -1;
        }
        else if (lo < 0)
        {
            lo = 0;
        }
        if (lo < grid.nbBuckets[axis])
        {
            if (hi > grid.nbBuckets[axis] - 1)
            {
                hi = grid.nbBuckets[axis] - 1;
            }
        }
        else
        {
            lo = 0;
            hi = -1;
        }
        range.lo[axis] = lo;
        range.hi[axis] = hi;
    }
    return range;
}

void forEachBucket(Grid& grid, const Range& range, const std::function<void(Bucket&)>& action)
{
    if (range.hi[0] == -1 || range.hi[1] == -1 || range.hi[2] == -1)
    {
        return;
    }
    for (int i = range.lo[0]; i <= range.hi[0]; ++i)
    {
        for (int j = range.lo[1]; j <= range.hi[1]; ++j)
        {
            for (int k = range.lo[2]; k <= range.hi[2]; ++k)
            {
                action(grid.at(i, j, k));
            }
        }
    }
}

void widen(Box& box, bool first, const Vec3& point)
{
    if (first)
    {
        box.min = point;
        box.max = point;
    }
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        if (point[axis] < box.min[axis])
        {
            box.min[axis] = point[axis];
        }
        if (point[axis] > box.max[axis])
        {
            box.max[axis] = point[axis];
        }
    }
}

/// Box around the nodes of the elements (or the points) whose material is selected. False when there are none.
bool selectedBox(TargetKind kind, const MeshArrays& target, const int* mappingFlags, Box& box)
{
    bool found = false;
    if (kind == TargetKind::mesh)
    {
        for (int e = 0; e < target.nbElts; ++e)
        {
            if (mappingFlags[target.matlIdPerElt[e]] != 1)
            {
                continue;
            }
            for (int n = 0; n < nodeCount(target.eltTypes[e]); ++n)
            {
                widen(box, !found, nodePosition(target, target.connectivity[e][n]));
                found = true;
            }
        }
    }
    else
    {
        for (int i = 0; i < target.nbNodes; ++i)
        {
            if (mappingFlags[target.matlIdPerElt[i]] == 1)
            {
                widen(box, !found, nodePosition(target, i));
                found = true;
            }
        }
    }
    return found;
}

bool isIncludedInSource(const Grid& grid, const MeshArrays& source)
{
    Box box;
    bool found = false;
    for (int e = 0; e < source.nbElts; ++e)
    {
        for (int n = 0; n < nodeCount(source.eltTypes[e]); ++n)
        {
            widen(box, !found, nodePosition(source, source.connectivity[e][n]));
            found = true;
        }
    }
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        const float extent = box.max[axis] - box.min[axis];
        const float low = static_cast<float>(box.min[axis] - 0.05 * extent);
        const float high = static_cast<float>(box.max[axis] + 0.05 * extent);
        if (!(low < grid.min[axis] && grid.max[axis] < high))
        {
            return false;
        }
    }
    return true;
}

void countBuckets(Grid& grid)
{
    grid.invBucketSize = static_cast<float>(1.0 / grid.bucketSize);
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        const int whole = truncated((grid.max[axis] - grid.min[axis]) * grid.invBucketSize);
        grid.nbBuckets[axis] = whole == std::numeric_limits<int>::max() ? whole : whole + 1;
    }
}

bool hasMoreBucketsThan(const Grid& grid, long long limit)
{
    if (limit < 1)
    {
        return true;
    }
    const long long layer = static_cast<long long>(grid.nbBuckets[0]) * grid.nbBuckets[1];
    return layer > limit / grid.nbBuckets[2];
}

bool isSingleBucket(const Grid& grid)
{
    return grid.nbBuckets[0] == 1 && grid.nbBuckets[1] == 1 && grid.nbBuckets[2] == 1;
}

} // namespace

Bucket& Grid::at(int i, int j, int k)
{
    const long long index = (static_cast<long long>(i) * nbBuckets[1] + j) * nbBuckets[2] + k;
    return buckets.at(static_cast<std::size_t>(index));
}

const Bucket& Grid::at(int i, int j, int k) const
{
    return const_cast<Grid*>(this)->at(i, j, k);
}

const Bucket* Grid::bucketOf(const Vec3& point) const
{
    std::array<int, 3> index{};
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        const float product = (point[axis] - min[axis]) * invBucketSize;
        if (std::isnan(product))
        {
            return nullptr;
        }
        index[axis] = truncated(product);
        if (index[axis] < 0 || index[axis] >= nbBuckets[axis])
        {
            return nullptr;
        }
    }
    return &at(index[0], index[1], index[2]);
}

std::vector<Box> elementBoxes(const MeshArrays& mesh)
{
    std::vector<Box> boxes;
    for (int e = 0; e < mesh.nbElts; ++e)
    {
        boxes.push_back(elementBox(mesh, e));
    }
    return boxes;
}

float meanBoxSize(const std::vector<Box>& boxes)
{
    float sum = 0.0F;
    for (const Box& box : boxes)
    {
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            sum = sum + std::fabs(box.max[axis] - box.min[axis]);
        }
    }
    return sum / static_cast<float>(3 * boxes.size());
}

Grid buildGrid(GridItems items, TargetKind targetKind, const MeshArrays& target, const MeshArrays& source,
               const std::vector<Box>& refBoxes, const std::vector<Box>& targetBoxes, const int* mappingFlags,
               float initialBucketSize, const Tuning& tuning)
{
    Box selected;
    if (!selectedBox(targetKind, target, mappingFlags, selected))
    {
        throw Stopped{1, "Error: please select at least one domain in the target model.\n"};
    }
    Grid grid;
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        const float margin = boxMarginRatio * (selected.max[axis] - selected.min[axis]);
        grid.min[axis] = selected.min[axis] - margin;
        grid.max[axis] = selected.max[axis] + margin;
    }
    if (targetKind == TargetKind::mesh && !isIncludedInSource(grid, source))
    {
        throw Stopped{1, "Error: the target mesh is not included in the source mesh.\n"};
    }

    grid.bucketSize = initialBucketSize;
    countBuckets(grid);
    while (hasMoreBucketsThan(grid, tuning.maxNbBuckets) && !isSingleBucket(grid))
    {
        grid.bucketSize = static_cast<float>(2.0 * grid.bucketSize);
        countBuckets(grid);
        ++grid.nbDoublings;
    }
    const long long total = static_cast<long long>(grid.nbBuckets[0]) * grid.nbBuckets[1] * grid.nbBuckets[2];
    grid.buckets.resize(static_cast<std::size_t>(total));

    // The buckets that the target needs, whatever the selection.
    const auto markNeeded = [](Bucket& bucket) { bucket.state = 0; };
    if (targetKind == TargetKind::mesh)
    {
        for (const Box& box : targetBoxes)
        {
            forEachBucket(grid, rangeOf(grid, box.min, box.max), markNeeded);
        }
    }
    else
    {
        const float d = boxMarginRatio * grid.bucketSize;
        for (int i = 0; i < target.nbNodes; ++i)
        {
            const Vec3 p = nodePosition(target, i);
            forEachBucket(grid, rangeOf(grid, {p[0] - d, p[1] - d, p[2] - d}, {p[0] + d, p[1] + d, p[2] + d}),
                          markNeeded);
        }
    }

    if (items == GridItems::nodes)
    {
        // The tolerance follows the size passed in, not the doubled one.
        const float t = static_cast<float>(0.001 * initialBucketSize);
        for (int i = 0; i < source.nbNodes; ++i)
        {
            const Vec3 p = nodePosition(source, i);
            forEachBucket(grid, rangeOf(grid, {p[0] - t, p[1] - t, p[2] - t}, {p[0] + t, p[1] + t, p[2] + t}),
                          [i](Bucket& bucket)
                          {
                              if (bucket.state != -1)
                              {
                                  bucket.state = 1;
                                  bucket.items.push_back(i);
                              }
                          });
        }
        return grid;
    }

    for (int e = 0; e < source.nbElts; ++e)
    {
        const Box& box = refBoxes[static_cast<std::size_t>(e)];
        forEachBucket(grid, rangeOf(grid, box.min, box.max),
                      [e](Bucket& bucket)
                      {
                          if (bucket.state != -1)
                          {
                              bucket.state = 1;
                              bucket.items.push_back(e);
                          }
                      });
    }
    for (int e = 0; e < source.nbElts; ++e)
    {
        Box box = refBoxes[static_cast<std::size_t>(e)];
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            const float margin = tuning.bucketFactor * (box.max[axis] - box.min[axis]);
            box.min[axis] = box.min[axis] - margin;
            box.max[axis] = box.max[axis] + margin;
        }
        forEachBucket(grid, rangeOf(grid, box.min, box.max),
                      [e](Bucket& bucket)
                      {
                          if (bucket.state == 0 || bucket.state == 2)
                          {
                              bucket.state = 2;
                              bucket.items.push_back(e);
                          }
                      });
    }
    return grid;
}

} // namespace reference
