/// Meshes and points in the form in which the library takes them.
#ifndef VELTRANE_HOST_MESH_ARGUMENTS_H
#define VELTRANE_HOST_MESH_ARGUMENTS_H

#include "Mesh.h"

#include <cstddef>
#include <tuple>
#include <vector>

namespace veltrane
{

/// The library's view of a mesh. It borrows the mesh's arrays, and the library does not write into them although its
/// interface does not say so.
class MeshArguments
{
public:
    explicit MeshArguments(const Mesh& mesh);

    /// Numbers of elements and nodes, coordinates, nodes per element, type codes; number of materials, material per
    /// element, state codes.
    std::tuple<int, int, float (*)[3], int**, int*, int, int*, int*> list();

private:
    const Mesh& mesh_;
    std::vector<int*> nodesPerElement_;
    std::vector<int> typeCodes_;
    std::vector<int> stateCodes_;
};

/// The same of points.
class PointCloudArguments
{
public:
    explicit PointCloudArguments(const PointCloud& points);

    /// Number of points, coordinates; number of materials, material per point, state codes.
    std::tuple<int, float (*)[3], int, int*, int*> list();

private:
    const PointCloud& points_;
    std::vector<int> stateCodes_;
};

/// The library's mapping flags of a selection of target materials, in which nothing selects all. Throws InvalidOption
/// if there is not one entry per material.
std::vector<int> mappingFlags(const std::vector<bool>& selection, std::size_t materialCount);

} // namespace veltrane

#endif
