/// Meshes of the unit cube, distorted, of any size: what the benchmarks transfer from and to.
#ifndef VELTRANE_BENCHMARKS_GENERATED_MESH_H
#define VELTRANE_BENCHMARKS_GENERATED_MESH_H

#include "Random.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace benchmarks
{
enum class MeshKind
{
    tetrahedra,
    hexahedra,
    wedges,
    pyramids,
    quadraticTetrahedra,
    mix ///< slabs of hexahedra, wedges, pyramids with a few tetrahedra, tetrahedra, quadratic tetrahedra
};

/// A mesh in the arrays that a host hands to the library. Moves, but does not copy: `eltNodes` points into
/// `connectivity`.
struct GeneratedMesh
{
    GeneratedMesh() = default;
    GeneratedMesh(GeneratedMesh&&) = default;
    GeneratedMesh& operator=(GeneratedMesh&&) = default;
    GeneratedMesh(const GeneratedMesh&) = delete;
    GeneratedMesh& operator=(const GeneratedMesh&) = delete;

    int nbNodes() const { return static_cast<int>(coords.size() / 3); }
    int nbElts() const { return static_cast<int>(eltTypes.size()); }
    std::int64_t nbGaussPoints() const;
    const float (*nodeCoords() const)[3] { return reinterpret_cast<const float(*)[3]>(coords.data()); }

    std::vector<float> coords;     ///< x, y, z of each node
    std::vector<int> connectivity; ///< 0-based node numbers, element after element
    std::vector<int*> eltNodes;    ///< where each element's nodes begin
    std::vector<int> eltTypes;     ///< the library's type codes
    std::vector<int> matlIdPerElt;
    std::vector<int> matlStates{1};
};

struct MeshOptions
{
    MeshKind kind = MeshKind::tetrahedra;
    int nbCellsPerAxis = 1;
    /// Largest movement of an inner node along each axis, in cell sizes. Up to 0.15 no element turns inside out.
    double distortion = 0.15;
    std::uint32_t seed = 1;
    /// Elements in this fraction of the cube, from x = 0, belong to a second material of state code 4.
    double secondMaterial = 0.0;
};

/// Number of nodes, elements or Gauss points of a mesh.
enum class MeshCount
{
    nodes,
    elements,
    gaussPoints
};

GeneratedMesh generateMesh(const MeshOptions& options);

/// The mesh with nodes and elements renumbered at random. In a mix the elements keep their places, because the
/// correspondences compare element types by number.
struct RenumberedMesh
{
    GeneratedMesh mesh;
    std::vector<int> originalNode; ///< per new node
    std::vector<int> originalElt;  ///< per new element
};
RenumberedMesh renumber(const GeneratedMesh& mesh, std::uint32_t seed);

/// The number of cells per axis whose mesh comes nearest to `wanted` nodes, elements or Gauss points.
int nbCellsFor(MeshKind kind, MeshCount count, std::int64_t wanted);

std::string_view nameOf(MeshKind kind);
} // namespace benchmarks

#endif
