#include "ReferenceLocation.h"

#include <cstddef>

namespace reference
{

namespace
{

bool isInBox(const Vec3& point, const Box& box)
{
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        if (!(box.min[axis] <= point[axis] && point[axis] <= box.max[axis]))
        {
            return false;
        }
    }
    return true;
}

Vec3 centre(const MeshArrays& mesh, int element)
{
    const int nbNodes = nodeCount(mesh.eltTypes[element]);
    Vec3 sum = {0.0F, 0.0F, 0.0F};
    for (int n = 0; n < nbNodes; ++n)
    {
        const Vec3 node = nodePosition(mesh, mesh.connectivity[element][n]);
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            sum[axis] = sum[axis] + node[axis];
        }
    }
    for (float& value : sum)
    {
        value = value / static_cast<float>(nbNodes);
    }
    return sum;
}

} // namespace

Location locate(const SearchableMesh& source, const Vec3& point, int matlState)
{
    const Bucket* bucket = source.grid.bucketOf(point);
    if (bucket == nullptr || bucket->state != 1)
    {
        return {};
    }
    for (const int e : bucket->items)
    {
        const Box& box = source.boxes[static_cast<std::size_t>(e)];
        if (source.stateOf(e) != matlState || !isInBox(point, box))
        {
            continue;
        }
        const Inversion inversion = invertPoint(source.mesh, e, box, point, source.precision);
        if (inversion.result == 1)
        {
            return {e, inversion};
        }
    }
    return {};
}

int nearestElement(const SearchableMesh& source, const Vec3& point, int matlState)
{
    const Bucket* bucket = source.grid.bucketOf(point);
    if (bucket == nullptr)
    {
        return -1;
    }
    int best = -1;
    float bestDistance = 0.0F;
    for (const int e : bucket->items)
    {
        if (source.stateOf(e) != matlState)
        {
            continue;
        }
        const float distance = squaredDistance(point, centre(source.mesh, e));
        if (best == -1 || bestDistance >= distance)
        {
            best = e;
            bestDistance = distance;
        }
    }
    return best;
}

} // namespace reference
