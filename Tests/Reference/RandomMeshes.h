/// Random meshes for the differential test: distorted grids of cells, each cut into elements.
///
/// Everything follows from a seed alone: the distributions are written here, since those of the standard library differ
/// between implementations.
#ifndef RANDOM_MESHES_H
#define RANDOM_MESHES_H

#include "ReferenceTypes.h"

#include <array>
#include <cstdint>
#include <functional>
#include <random>
#include <vector>

namespace random_models
{

class Random
{
public:
    explicit Random(std::uint64_t seed) : itsEngine(seed) {}

    /// Both ends included.
    int integer(int low, int high)
    {
        return low + static_cast<int>(itsEngine() % static_cast<std::uint64_t>(high - low + 1));
    }

    double real(double low, double high)
    {
        return low + (high - low) * (static_cast<double>(itsEngine() >> 11) * 0x1p-53);
    }

    bool chance(double probability) { return real(0.0, 1.0) < probability; }

    template <typename T> T pick(const std::vector<T>& values)
    {
        return values[static_cast<std::size_t>(integer(0, static_cast<int>(values.size()) - 1))];
    }

    /// A random order of the numbers 0 to n - 1.
    std::vector<int> permutation(int n);

private:
    std::mt19937_64 itsEngine;
};

/// A mesh that owns its arrays, in the form in which a host passes them. A point cloud has nodes only and one material
/// per node.
struct MeshModel
{
    std::vector<std::array<float, 3>> nodes;
    std::vector<std::vector<int>> connectivity;
    std::vector<int> types;
    std::vector<int> matlIds;
    std::vector<int> matlStates;

    bool operator==(const MeshModel&) const = default;

    int nbNodes() const { return static_cast<int>(nodes.size()); }
    int nbElements() const { return static_cast<int>(types.size()); }
    void add(int type, const std::vector<int>& elementNodes, int matl);
    int nbGaussPoints() const;
};

/// The pointers into a mesh model; the model must outlive them.
class MeshPointers
{
public:
    explicit MeshPointers(MeshModel& mesh);

    float (*coords())[3] { return reinterpret_cast<float(*)[3]>(itsMesh.nodes.data()); }
    int** connectivity() { return itsRows.data(); }
    reference::MeshArrays arrays();

private:
    MeshModel& itsMesh;
    std::vector<int*> itsRows;
};

enum class CellKind
{
    hexahedron,
    wedges,
    pyramids,
    fiveTetrahedra,
    sixTetrahedra,
    quadraticTetrahedra,
    quadrilateral, ///< the lower face of the cell
    triangles      ///< the lower face of the cell, cut in two
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
MeshModel cut(Random& random, const Cutting& cutting);

/// Renumbers nodes and elements at random.
void renumber(Random& random, MeshModel& mesh);

/// Adds nodes that no element uses, at random numbers.
void addUnusedNodes(Random& random, MeshModel& mesh, int count);

/// The elements with a true mark, with the nodes that they use in their old order.
MeshModel extract(const MeshModel& mesh, const std::vector<bool>& marks);

} // namespace random_models

#endif
