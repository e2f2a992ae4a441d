#include "CellGrid.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <unordered_map>
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
        case Filling::quadrilateral: add(element::quadrilateral, std::span(c).first(4)); break;
        case Filling::triangles:
            add(element::triangle, std::array{c[0], c[1], c[2]});
            add(element::triangle, std::array{c[0], c[2], c[3]});
            break;
        }
    }

    void addPyramids(const Corners& c, bool isBesideTetrahedra)
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
            add(element::pyramid, std::array{c[f[0]], c[f[1]], c[f[2]], c[f[3]], apex});
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
