#include "CellGrid.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <stdexcept>
#include <unordered_map>
#include <utility>
#include <vector>

namespace meshes
{
namespace
{
/// A cell's corners are numbered as the nodes of a hexahedron.
using Corners = std::array<int, 8>;
using Tetrahedron = std::array<std::size_t, 4>;

constexpr std::array<std::array<int, 3>, 8> cornerSteps{
    {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}}};

constexpr std::array<Tetrahedron, 6> sixTetrahedra{
    {{0, 1, 2, 6}, {0, 2, 3, 6}, {0, 3, 7, 6}, {0, 7, 4, 6}, {0, 4, 5, 6}, {0, 5, 1, 6}}};
constexpr std::array<Tetrahedron, 5> fiveTetrahedra{
    {{0, 1, 2, 5}, {0, 2, 3, 7}, {0, 5, 7, 4}, {2, 7, 5, 6}, {0, 2, 7, 5}}};

/// Counter-clockwise seen from the cell's centre, from the lowest corner or the highest; the upper face comes second.
constexpr std::array<std::array<std::size_t, 4>, 6> faces{
    {{0, 1, 2, 3}, {4, 7, 6, 5}, {0, 4, 5, 1}, {1, 5, 6, 2}, {2, 6, 7, 3}, {3, 7, 4, 0}}};
constexpr std::size_t upperFace = 1;

/// By their corners, in the order of the nodes between them.
using Edge = std::array<std::size_t, 2>;
constexpr std::array<Edge, 12> hexahedronEdges{
    {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {4, 5}, {5, 6}, {6, 7}, {7, 4}, {0, 4}, {1, 5}, {2, 6}, {3, 7}}};
constexpr std::array<Edge, 9> wedgeEdges{{{0, 1}, {1, 2}, {2, 0}, {3, 4}, {4, 5}, {5, 3}, {0, 3}, {1, 4}, {2, 5}}};
constexpr std::array<Edge, 8> pyramidEdges{{{0, 1}, {1, 2}, {2, 3}, {3, 0}, {0, 4}, {1, 4}, {2, 4}, {3, 4}}};

/// The faces of a hexahedron in the order of the nodes in their centres.
constexpr std::array<std::array<std::size_t, 4>, 6> centredFaces{
    {{0, 3, 7, 4}, {1, 2, 6, 5}, {0, 1, 5, 4}, {3, 2, 6, 7}, {0, 1, 2, 3}, {4, 5, 6, 7}}};

bool isFlat(Filling filling)
{
    return filling == Filling::quadrilateral || filling == Filling::triangles;
}

class Cutter
{
public:
    Cutter(const CellGrid& grid, MeshSink& sink) : itsGrid(grid), itsSink(sink) {}

    void run()
    {
        chooseFillings();
        placeCorners();
        std::size_t cell = 0;
        forEach(itsGrid.cells,
                [&](int i, int j, int k)
                {
                    if (const std::optional<Filling> filling = itsFillings[cell++])
                    {
                        itsMatl = itsGrid.matl(i, j, k);
                        fill(*filling, cornersOf(i, j, k, *filling));
                    }
                });
    }

private:
    template <typename Function> static void forEach(const std::array<int, 3>& counts, const Function& function)
    {
        for (int k = 0; k < counts[2]; ++k)
        {
            for (int j = 0; j < counts[1]; ++j)
            {
                for (int i = 0; i < counts[0]; ++i)
                {
                    function(i, j, k);
                }
            }
        }
    }

    std::array<int, 3> cornerCounts() const
    {
        return {itsGrid.cells[0] + 1, itsGrid.cells[1] + 1, itsGrid.cells[2] + 1};
    }

    int& nodeAtCorner(int i, int j, int k)
    {
        const auto [ni, nj, nk] = cornerCounts();
        return itsCornerNodes[(static_cast<std::size_t>(k) * static_cast<std::size_t>(nj) +
                               static_cast<std::size_t>(j)) *
                                  static_cast<std::size_t>(ni) +
                              static_cast<std::size_t>(i)];
    }

    void chooseFillings()
    {
        forEach(itsGrid.cells, [&](int i, int j, int k) { itsFillings.push_back(itsGrid.filling(i, j, k)); });
    }

    /// Only corners of cells that are not empty become nodes.
    void placeCorners()
    {
        const auto [ni, nj, nk] = cornerCounts();
        itsCornerNodes.assign(
            static_cast<std::size_t>(ni) * static_cast<std::size_t>(nj) * static_cast<std::size_t>(nk), -1);
        std::size_t cell = 0;
        forEach(itsGrid.cells,
                [&](int i, int j, int k)
                {
                    if (const std::optional<Filling> filling = itsFillings[cell++])
                    {
                        forEach({2, 2, isFlat(*filling) ? 1 : 2},
                                [&](int a, int b, int c) { nodeAtCorner(i + a, j + b, k + c) = 0; });
                    }
                });
        forEach(cornerCounts(),
                [&](int i, int j, int k)
                {
                    if (nodeAtCorner(i, j, k) == 0)
                    {
                        nodeAtCorner(i, j, k) = addNode(itsGrid.corner(i, j, k));
                    }
                });
    }

    Corners cornersOf(int i, int j, int k, Filling filling)
    {
        Corners corners{};
        for (std::size_t c = 0; c < (isFlat(filling) ? 4U : 8U); ++c)
        {
            corners[c] = nodeAtCorner(i + cornerSteps[c][0], j + cornerSteps[c][1], k + cornerSteps[c][2]);
        }
        return corners;
    }

    void fill(Filling filling, const Corners& c)
    {
        switch (filling)
        {
        case Filling::hexahedron: add(element::hexahedron, c); break;
        case Filling::wedges:
            add(element::wedge, std::array{c[0], c[1], c[2], c[4], c[5], c[6]});
            add(element::wedge, std::array{c[0], c[2], c[3], c[4], c[6], c[7]});
            break;
        case Filling::pyramids:
        case Filling::pyramidsBesideTetrahedra: addPyramids(c, filling == Filling::pyramidsBesideTetrahedra); break;
        case Filling::tetrahedra: addTetrahedra(sixTetrahedra, c); break;
        case Filling::fiveTetrahedra: addTetrahedra(fiveTetrahedra, c); break;
        case Filling::quadraticTetrahedra: addQuadraticTetrahedra(sixTetrahedra, c); break;
        case Filling::fiveQuadraticTetrahedra: addQuadraticTetrahedra(fiveTetrahedra, c); break;
        case Filling::quadraticHexahedron: add(element::quadraticHexahedron, withEdges(c, hexahedronEdges)); break;
        case Filling::triquadraticHexahedron: addTriquadraticHexahedron(c); break;
        case Filling::quadraticWedges:
        case Filling::biquadraticWedges:
            addQuadraticWedge({c[0], c[1], c[2], c[4], c[5], c[6]}, filling == Filling::biquadraticWedges);
            addQuadraticWedge({c[0], c[2], c[3], c[4], c[6], c[7]}, filling == Filling::biquadraticWedges);
            break;
        case Filling::quadraticPyramids: addPyramids(c, false, true); break;
        case Filling::quadrilateral: add(element::quadrilateral, std::span(c).first(4)); break;
        case Filling::triangles:
            add(element::triangle, std::array{c[0], c[1], c[2]});
            add(element::triangle, std::array{c[0], c[2], c[3]});
            break;
        }
    }

    void addPyramids(const Corners& c, bool isBesideTetrahedra, bool areQuadratic = false)
    {
        Position centre{};
        for (const int corner : c)
        {
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                centre[axis] += itsPositions[static_cast<std::size_t>(corner)][axis] / 8;
            }
        }
        const int apex = addNode(itsGrid.apex(centre));
        for (std::size_t face = 0; face < faces.size(); ++face)
        {
            const auto& f = faces[face];
            if (isBesideTetrahedra && face == upperFace)
            {
                add(element::tetrahedron, std::array{c[f[0]], c[f[1]], c[f[2]], apex});
                add(element::tetrahedron, std::array{c[f[0]], c[f[2]], c[f[3]], apex});
                continue;
            }
            const std::array nodes{c[f[0]], c[f[1]], c[f[2]], c[f[3]], apex};
            if (areQuadratic)
            {
                add(element::quadraticPyramid, withEdges(nodes, pyramidEdges));
                continue;
            }
            add(element::pyramid, nodes);
        }
    }

    void addTetrahedra(std::span<const Tetrahedron> tetrahedra, const Corners& c)
    {
        for (const Tetrahedron& t : tetrahedra)
        {
            add(element::tetrahedron, std::array{c[t[0]], c[t[1]], c[t[2]], c[t[3]]});
        }
    }

    void addQuadraticTetrahedra(std::span<const Tetrahedron> tetrahedra, const Corners& c)
    {
        for (const Tetrahedron& t : tetrahedra)
        {
            const std::array n{c[t[0]], c[t[1]], c[t[2]], c[t[3]]};
            add(element::quadraticTetrahedron,
                std::array{n[0], n[1], n[2], n[3], nodeBetween(n[0], n[1]), nodeBetween(n[1], n[2]),
                           nodeBetween(n[0], n[2]), nodeBetween(n[0], n[3]), nodeBetween(n[1], n[3]),
                           nodeBetween(n[2], n[3])});
        }
    }

    std::vector<int> withEdges(std::span<const int> corners, std::span<const Edge> edges)
    {
        std::vector<int> nodes(corners.begin(), corners.end());
        for (const auto& [a, b] : edges)
        {
            nodes.push_back(nodeBetween(corners[a], corners[b]));
        }
        return nodes;
    }

    void addTriquadraticHexahedron(const Corners& c)
    {
        std::vector<int> nodes = withEdges(c, hexahedronEdges);
        for (const auto& f : centredFaces)
        {
            nodes.push_back(nodeAmong(std::array{c[f[0]], c[f[1]], c[f[2]], c[f[3]]}));
        }
        nodes.push_back(nodeAmong(c));
        add(element::triquadraticHexahedron, nodes);
    }

    void addQuadraticWedge(const std::array<int, 6>& c, bool hasFaceNodes)
    {
        std::vector<int> nodes = withEdges(c, wedgeEdges);
        for (std::size_t i = 0; hasFaceNodes && i < 3; ++i)
        {
            const std::size_t j = (i + 1) % 3;
            nodes.push_back(nodeAmong(std::array{c[i], c[j], c[j + 3], c[i + 3]}));
        }
        add(hasFaceNodes ? element::biquadraticWedge : element::quadraticWedge, nodes);
    }

    /// In the centre of a face, whose corners run around it, or of a hexahedron.
    int nodeAmong(std::span<const int> corners)
    {
        const auto lowest = static_cast<std::size_t>(std::ranges::min_element(corners) - corners.begin());
        const std::size_t across = corners.size() == 4 ? (lowest + 2) % 4 : (lowest % 4 + 2) % 4 + (lowest < 4 ? 4 : 0);
        const int low = corners[lowest];
        const int high = corners[across];
        const auto [entry, isNew] = itsCentreNodes.try_emplace({low, high}, 0);
        if (isNew)
        {
            Position centre{};
            for (const int corner : corners)
            {
                for (std::size_t axis = 0; axis < 3; ++axis)
                {
                    centre[axis] +=
                        itsPositions[static_cast<std::size_t>(corner)][axis] / static_cast<double>(corners.size());
                }
            }
            entry->second = addNode(itsGrid.midEdge(centre, low, high));
        }
        return entry->second;
    }

    int nodeBetween(int a, int b)
    {
        const auto [low, high] = std::minmax(a, b);
        const std::uint64_t edge = static_cast<std::uint64_t>(low) << 32U | static_cast<std::uint64_t>(high);
        const auto [entry, isNew] = itsEdgeNodes.try_emplace(edge, 0);
        if (isNew)
        {
            const Position centre = meshes::middle(itsPositions[static_cast<std::size_t>(low)],
                                                   itsPositions[static_cast<std::size_t>(high)]);
            entry->second = addNode(itsGrid.midEdge(centre, low, high));
        }
        return entry->second;
    }

    int addNode(const Position& position)
    {
        itsSink.addNode(position);
        itsPositions.push_back(position);
        return static_cast<int>(itsPositions.size()) - 1;
    }

    void add(int type, std::span<const int> nodes) { itsSink.addElement(type, nodes, itsMatl); }

    const CellGrid& itsGrid;
    MeshSink& itsSink;
    int itsMatl = 0;
    std::vector<std::optional<Filling>> itsFillings;
    std::vector<int> itsCornerNodes; ///< -1: none
    std::vector<Position> itsPositions;
    std::unordered_map<std::uint64_t, int> itsEdgeNodes; ///< by the numbers of the nodes at the edge's ends
    std::map<std::pair<int, int>, int> itsCentreNodes;   ///< by the lowest corner and the one across
};
} // namespace

Filling fillingWith(int type)
{
    switch (type)
    {
    case element::hexahedron: return Filling::hexahedron;
    case element::tetrahedron: return Filling::tetrahedra;
    case element::wedge: return Filling::wedges;
    case element::quadrilateral: return Filling::quadrilateral;
    case element::triangle: return Filling::triangles;
    case element::quadraticTetrahedron: return Filling::quadraticTetrahedra;
    case element::pyramid: return Filling::pyramids;
    case element::quadraticHexahedron: return Filling::quadraticHexahedron;
    case element::triquadraticHexahedron: return Filling::triquadraticHexahedron;
    case element::quadraticWedge: return Filling::quadraticWedges;
    case element::biquadraticWedge: return Filling::biquadraticWedges;
    case element::quadraticPyramid: return Filling::quadraticPyramids;
    default: throw std::invalid_argument("no cell is filled with such elements");
    }
}

Position middle(const Position& a, const Position& b)
{
    return {(a[0] + b[0]) / 2, (a[1] + b[1]) / 2, (a[2] + b[2]) / 2};
}

void cut(const CellGrid& grid, MeshSink& sink)
{
    Cutter(grid, sink).run();
}

} // namespace meshes
