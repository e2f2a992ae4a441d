/// Small meshes and point clouds for the tests, node by node and element by element as a host would hand them over.
#ifndef VELTRANE_TESTS_MESH_BUILDER_H
#define VELTRANE_TESTS_MESH_BUILDER_H

#include <array>
#include <cstddef>
#include <functional>
#include <vector>

/// Element type codes of the interface.
namespace element
{
constexpr int hexahedron = 1;
constexpr int tetrahedron = 2;
constexpr int wedge = 3;
constexpr int unknownWith8Nodes = 4;
constexpr int quadrilateral = 6;
constexpr int triangle = 7;
constexpr int quadraticTetrahedron = 10;
constexpr int pyramid = 12;

constexpr std::array<int, 5> volumes = {hexahedron, tetrahedron, wedge, quadraticTetrahedron, pyramid};
} // namespace element

using Point = std::array<float, 3>;

Point operator+(const Point& a, const Point& b);
Point operator*(float factor, const Point& a);

/// A mesh, or a point cloud when it has no elements: `materials` then holds one entry per point.
struct Mesh
{
    std::vector<Point> nodes;
    std::vector<std::vector<int>> elements; ///< node numbers, from 0
    std::vector<int> types;
    std::vector<int> materials;
    std::vector<int> stateCodes; ///< per material

    int nbNodes() const { return static_cast<int>(nodes.size()); }
    int nbElements() const { return static_cast<int>(elements.size()); }
};

/// Gauss points of an element type that a mesh of the interface may hold.
int gaussPointsOfType(int type);

/// Gauss points of all elements of a mesh.
std::size_t gaussPointsOf(const Mesh& mesh);

/// Elements filling a box, all of material 0 with state code 1. The box is cut into cells, numbered along x first, then
/// y, then z, as their nodes are; a cell is one hexahedron, two wedges, six tetrahedra (linear or quadratic) or six
/// pyramids.
Mesh box(int type, Point minimum, Point maximum, std::array<int, 3> cells = {1, 1, 1});

/// One element of any type in its reference position, stretched by a factor and then moved.
Mesh referenceElement(int type, float factor = 1.0F, Point origin = {0.0F, 0.0F, 0.0F});

/// One element with the given nodes.
Mesh single(int type, std::vector<Point> nodes);

/// Points of material 0 with state code 1.
Mesh cloud(std::vector<Point> points);

/// The same mesh with one material of the given state code.
Mesh withStateCode(Mesh mesh, int stateCode);

/// The same mesh with these materials per element (per point of a cloud) and these state codes per material.
Mesh withMaterials(Mesh mesh, std::vector<int> materials, std::vector<int> stateCodes);

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

/// The values of a function at the nodes.
std::vector<double> atNodes(const Mesh& mesh, const std::function<double(const Point&)>& function);

/// The value of a node repeated.
std::vector<double> constant(std::size_t count, double value);

#endif
