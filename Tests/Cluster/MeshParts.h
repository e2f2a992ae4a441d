/// Meshes for tests over several ranks, and the parts of them that ranks get.
#ifndef MESH_PARTS_H
#define MESH_PARTS_H

#include "DistributedMap.h"

#include <array>
#include <cstdint>
#include <functional>
#include <vector>

namespace mesh_parts
{

/// Layers of all volume kinds, or of one kind in them all, in three materials side by side along x, slightly distorted.
struct Body
{
    std::array<int, 3> cells = {6, 5, 5};
    std::array<double, 3> low = {0, 0, 0};
    std::array<double, 3> high = {6, 5, 5};
    std::vector<int> kinds = {1, 3, 12, 2, 10}; ///< layer by layer, from below and again
    int materialCount = 3;
    double distortion = 0.2; ///< of a cell, but for the outside
    double bend = 0;         ///< by which mid-edge nodes are moved along x
    double offset = 0;       ///< added to all coordinates
};
veltrane::Mesh meshOf(const Body& body);

/// How a mesh is cut.
enum class Cutting
{
    inOrder,   ///< stretches of elements
    halves,    ///< by place, over and over
    scattered, ///< element i to rank i modulo the number of ranks, in descending order
    oneHasAll  ///< the last rank
};
inline constexpr std::array allCuttings{Cutting::inOrder, Cutting::halves, Cutting::scattered, Cutting::oneHasAll};

struct Part
{
    veltrane::Mesh mesh;
    std::vector<std::int64_t> elementNumbers;
    std::vector<std::int64_t> nodeNumbers;

    veltrane::MeshPart view() const { return {mesh, elementNumbers, nodeNumbers}; }
};
Part partOf(const veltrane::Mesh& whole, Cutting cutting, int rank, int rankCount);

/// The part's values of a field on the whole mesh.
veltrane::Field restricted(const veltrane::Field& field, const veltrane::Mesh& whole, const Part& part);

} // namespace mesh_parts

#endif
