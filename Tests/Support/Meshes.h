/// Meshes and point clouds for the tests, in the form in which a host hands them over.
#ifndef MESHES_H
#define MESHES_H

#include "CellGrid.h"

#include <array>
#include <cstddef>
#include <functional>
#include <vector>

namespace meshes
{
using Point = std::array<float, 3>;

Point operator+(const Point& a, const Point& b);
Point operator*(float factor, const Point& a);

/// A mesh, or a point cloud when it has no elements: `matlIds` then holds one entry per point.
struct Mesh
{
    std::vector<Point> nodes;
    std::vector<std::vector<int>> connectivity; ///< node numbers, from 0
    std::vector<int> types;
    std::vector<int> matlIds;
    std::vector<int> matlStates = {1}; ///< state codes per material

    bool operator==(const Mesh&) const = default;

    int nbNodes() const { return static_cast<int>(nodes.size()); }
    int nbElts() const { return static_cast<int>(types.size()); }

    void addElement(int type, std::vector<int> nodeNumbers, int matl = 0);
    /// An element with nodes of its own.
    void addElement(int type, const std::vector<Point>& positions, int matl = 0);
};

/// The cells of a grid as a mesh.
Mesh cut(const CellGrid& grid);

/// Gauss points of an element type that a mesh of the interface may hold.
int gaussPointsOfType(int type);

/// Gauss points of all elements of a mesh.
std::size_t gaussPointsOf(const Mesh& mesh);

/// Elements filling a box, all of material 0 with state code 1. The box is cut into cells, numbered along x first, then
/// y, then z, as their nodes are; a cell is one hexahedron, two wedges, six tetrahedra (linear or quadratic) or six
/// pyramids.
Mesh box(int type, Point minimum, Point maximum, std::array<int, 3> cells = {1, 1, 1});

/// Where the nodes of a type lie in its reference domain.
std::vector<Point> referenceNodes(int type);

/// The corners of a box in the order of a hexahedron's nodes.
std::vector<Point> cornersOf(const Point& low, const Point& high);

/// One element of any type in its reference position, stretched by a factor and then moved.
Mesh referenceElement(int type, float factor = 1.0F, Point origin = {0.0F, 0.0F, 0.0F});

/// One element with the given nodes.
Mesh single(int type, std::vector<Point> nodes);

/// Points of material 0 with state code 1.
Mesh cloud(std::vector<Point> points);

/// The same mesh with one material of the given state code.
Mesh withStateCode(Mesh mesh, int stateCode);

/// The same mesh with these materials per element (per point of a cloud) and these state codes per material.
Mesh withMaterials(Mesh mesh, std::vector<int> matlIds, std::vector<int> matlStates);

/// The same mesh with its elements in another order: the new element i is the old element order[i]. An order that names
/// fewer elements leaves the others out; their nodes stay.
Mesh reordered(const Mesh& mesh, const std::vector<int>& order);

/// Both meshes side by side: nodes, elements and materials of the second are numbered after those of the first.
Mesh joined(const Mesh& first, const Mesh& second);

/// The same mesh with all nodes moved.
Mesh moved(Mesh mesh, Point offset);

/// The same mesh with every node off the surface of the box [minimum, maximum] displaced by at most `amount` along each
/// axis, always the same way.
Mesh distorted(Mesh mesh, Point minimum, Point maximum, float amount);

/// The same mesh with its nodes at other numbers: old node n becomes newNumbers[n] of `newCount`.
Mesh withNodesAt(Mesh mesh, const std::vector<int>& newNumbers, int newCount);

/// The values of a function at the nodes.
std::vector<double> atNodes(const Mesh& mesh, const std::function<double(const Point&)>& function);

/// The value of a node repeated.
std::vector<double> constant(std::size_t count, double value);

} // namespace meshes

#endif
