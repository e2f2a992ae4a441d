/// Random meshes for the differential test: distorted grids of cells, each cut into elements.
#ifndef RANDOM_MESHES_H
#define RANDOM_MESHES_H

#include "Meshes.h"
#include "Random.h"
#include "ReferenceTypes.h"

#include <array>
#include <functional>
#include <vector>

namespace random_models
{

using meshes::Mesh;
using CellKind = meshes::Filling;

/// The pointers into a mesh; the mesh must outlive them.
class MeshPointers
{
public:
    explicit MeshPointers(Mesh& mesh);

    float (*coords())[3] { return reinterpret_cast<float(*)[3]>(itsMesh.nodes.data()); }
    int** connectivity() { return itsRows.data(); }
    reference::MeshArrays arrays();

private:
    Mesh& itsMesh;
    std::vector<int*> itsRows;
};

const std::vector<CellKind>& volumeKinds();

/// A box cut into cells, and the cells into elements.
struct Cutting
{
    std::array<double, 3> origin{};
    std::array<double, 3> size = {1.0, 1.0, 1.0};
    std::array<int, 3> cells = {1, 1, 1};
    std::vector<CellKind> kinds = {CellKind::hexahedron}; ///< one of them is drawn per cell
    double distortion = 0.0;                              ///< of inner nodes, as a fraction of a cell
    double curvature = 0.0;                               ///< of quadratic edges, as a fraction of their length
    std::array<double, 2> shear{};                        ///< of x and y along z
    bool detached = false;                                ///< whether materials have nodes of their own
    bool turned = false;                                  ///< whether hexahedra begin at a random corner of their base
    std::function<bool(int, int, int)> keep = [](int, int, int) { return true; };
    std::function<int(int, int, int)> matl = [](int, int, int) { return 0; };
};

/// Elements have positive Jacobians. Materials' state codes are left to the caller.
Mesh cut(Random& random, const Cutting& cutting);

/// Renumbers nodes and elements at random.
void renumber(Random& random, Mesh& mesh);

/// Adds nodes that no element uses, at random numbers.
void addUnusedNodes(Random& random, Mesh& mesh, int count);

/// The elements with a true mark, with the nodes that they use in their old order.
Mesh extract(const Mesh& mesh, const std::vector<bool>& marks);

} // namespace random_models

#endif
