#include "TestMeshes.h"

#include <utility>

using namespace veltrane;

Mesh cubes(const std::vector<Corner>& corners, float edge)
{
    constexpr std::array<Corner, 8> reference{
        {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}}};
    MeshData data{.offsets = {0}, .materials = {{"steel", 1}}};
    for (const Corner& corner : corners)
    {
        for (const Corner& node : reference)
        {
            data.connectivity.push_back(static_cast<int>(data.coordinates.size() / 3));
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                data.coordinates.push_back(corner[axis] + edge * node[axis]);
            }
        }
        data.kinds.push_back(ElementKind::hexahedron);
        data.offsets.push_back(data.connectivity.size());
        data.materialPerElement.push_back(0);
    }
    return Mesh(std::move(data));
}

Mesh cubeGrid(int n, float from, float edge)
{
    std::vector<Corner> corners;
    const float step = edge / static_cast<float>(n);
    for (int k = 0; k < n; ++k)
    {
        for (int j = 0; j < n; ++j)
        {
            for (int i = 0; i < n; ++i)
            {
                corners.push_back({from + step * static_cast<float>(i), from + step * static_cast<float>(j),
                                   from + step * static_cast<float>(k)});
            }
        }
    }
    return cubes(corners, step);
}

Mesh oneElement(ElementKind kind, std::vector<float> coordinates)
{
    const std::size_t nodeCount = coordinates.size() / 3;
    MeshData data{.coordinates = std::move(coordinates),
                  .kinds = {kind},
                  .offsets = {0, nodeCount},
                  .materialPerElement = {0},
                  .materials = {{"steel", 1}}};
    for (std::size_t node = 0; node < nodeCount; ++node)
    {
        data.connectivity.push_back(static_cast<int>(node));
    }
    return Mesh(std::move(data));
}
