/// The one place where tests and benchmarks cut a box into elements: a grid of cells, each filled with elements of a
/// kind.
#ifndef CELL_GRID_H
#define CELL_GRID_H

#include <array>
#include <functional>
#include <optional>
#include <span>

namespace meshes
{

/// Type codes of the library, and numbers of kinds that only the engine and the C++ interface know.
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
constexpr int quadraticPyramid = 113;
constexpr int quadraticWedge = 115;
constexpr int biquadraticWedge = 118;
constexpr int quadraticHexahedron = 120;
constexpr int triquadraticHexahedron = 127;

constexpr std::array<int, 5> volumes = {hexahedron, tetrahedron, wedge, quadraticTetrahedron, pyramid};
constexpr std::array<int, 5> curvedVolumes = {quadraticHexahedron, triquadraticHexahedron, quadraticWedge,
                                              biquadraticWedge, quadraticPyramid};
} // namespace element

/// What a cell is made of. All volumes but the five tetrahedra fit together: a face of a cell is one quadrilateral, or
/// two triangles that meet in the diagonal from its lowest to its highest corner.
enum class Filling
{
    hexahedron,
    wedges,                   ///< two
    pyramids,                 ///< six around the centre
    pyramidsBesideTetrahedra, ///< the same, but two tetrahedra on the upper face
    tetrahedra,               ///< six around the diagonal from the lowest to the highest corner
    fiveTetrahedra,
    quadraticTetrahedra,
    fiveQuadraticTetrahedra,
    quadraticHexahedron,
    triquadraticHexahedron,
    quadraticWedges,
    biquadraticWedges,
    quadraticPyramids,
    quadrilateral, ///< the lower face of the cell
    triangles      ///< the lower face of the cell, cut in two
};

/// How a cell is filled with elements of a type.
Filling fillingWith(int type);

using Position = std::array<double, 3>;

Position middle(const Position& a, const Position& b);

/// The cells (i, j, k) of a box, i running fastest. Each function is called once for each cell, corner or edge.
struct CellGrid
{
    std::array<int, 3> cells = {1, 1, 1};
    /// Where a corner of cells lies, from (0, 0, 0) to `cells`.
    std::function<Position(int i, int j, int k)> corner;
    /// Without one, the cell stays empty.
    std::function<std::optional<Filling>(int i, int j, int k)> filling;
    std::function<int(int i, int j, int k)> matl = [](int, int, int) { return 0; };
    /// Where the node between two nodes of a quadratic element lies; in the centre of a face or of an element, between
    /// its corner of the lowest number and the one across.
    std::function<Position(const Position& middle, int nodeA, int nodeB)> midEdge = [](const Position& p, int, int)
    { return p; };
    /// Where the apex of pyramids lies.
    std::function<Position(const Position& centre)> apex = [](const Position& p) { return p; };
};

/// Receives a mesh.
class MeshSink
{
public:
    virtual ~MeshSink() = default;
    /// Nodes are numbered from 0 as they come: the corners of cells that are not empty first, in their order, then
    /// those within cells.
    virtual void addNode(const Position& position) = 0;
    virtual void addElement(int type, std::span<const int> nodes, int matl) = 0;
};

void cut(const CellGrid& grid, MeshSink& sink);

} // namespace meshes

#endif
