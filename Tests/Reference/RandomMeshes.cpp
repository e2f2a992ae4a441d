#include "RandomMeshes.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace random_models
{

namespace
{

using meshes::Position;
using reference::index;

/// Where the corners of a cutting's cells lie. Detached nodes share their position with those of other materials.
class CornerPositions
{
public:
    CornerPositions(Random& random, const Cutting& cutting) : itsRandom(random), itsCutting(cutting) {}

    Position operator()(int i, int j, int k)
    {
        const std::array<int, 3> corner = {i, j, k};
        const auto found = itsPositions.find(corner);
        return found != itsPositions.end() ? found->second : itsPositions[corner] = newPosition(corner);
    }

private:
    Position newPosition(const std::array<int, 3>& corner)
    {
        Position p{};
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            double at = corner[axis];
            if (corner[axis] != 0 && corner[axis] != itsCutting.cells[axis])
            {
                at += itsCutting.distortion * itsRandom.real(-1.0, 1.0);
            }
            p[axis] = itsCutting.origin[axis] + itsCutting.size[axis] * at / itsCutting.cells[axis];
        }
        p[0] += itsCutting.shear[0] * p[2];
        p[1] += itsCutting.shear[1] * p[2];
        return p;
    }

    Random& itsRandom;
    const Cutting& itsCutting;
    std::map<std::array<int, 3>, Position> itsPositions;
};

/// Six times the volume of a tetrahedron, positive when d lies on the side that a, b, c turn round.
double volume(const Mesh& mesh, int a, int b, int c, int d)
{
    const auto edge = [&mesh, a](int to)
    {
        Position e{};
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            e[axis] =
                static_cast<double>(mesh.nodes[index(to)][axis]) - static_cast<double>(mesh.nodes[index(a)][axis]);
        }
        return e;
    };
    const Position u = edge(b);
    const Position v = edge(c);
    const Position w = edge(d);
    return u[0] * (v[1] * w[2] - v[2] * w[1]) + u[1] * (v[2] * w[0] - v[0] * w[2]) + u[2] * (v[0] * w[1] - v[1] * w[0]);
}

/// Distortion may turn a thin tetrahedron inside out: two of its corners change places, and with them the nodes on the
/// edges that end there.
void orientTetrahedra(Mesh& mesh)
{
    for (std::size_t e = 0; e < mesh.types.size(); ++e)
    {
        std::vector<int>& n = mesh.connectivity[e];
        const bool isQuadratic = mesh.types[e] == meshes::element::quadraticTetrahedron;
        if ((mesh.types[e] != meshes::element::tetrahedron && !isQuadratic) ||
            volume(mesh, n[0], n[1], n[2], n[3]) >= 0.0)
        {
            continue;
        }
        std::swap(n[0], n[1]);
        if (isQuadratic)
        {
            std::swap(n[5], n[6]);
            std::swap(n[7], n[8]);
        }
    }
}

/// Moves the nodes on the edges of quadratic elements.
void bendEdges(Random& random, double curvature, Mesh& mesh)
{
    std::set<int> moved;
    constexpr std::array<std::array<std::size_t, 2>, 6> edges = {{{0, 1}, {1, 2}, {0, 2}, {0, 3}, {1, 3}, {2, 3}}};
    for (std::size_t e = 0; e < mesh.types.size(); ++e)
    {
        for (std::size_t edge = 0; mesh.types[e] == meshes::element::quadraticTetrahedron && edge < 6; ++edge)
        {
            const std::vector<int>& n = mesh.connectivity[e];
            if (!moved.insert(n[4 + edge]).second)
            {
                continue;
            }
            const auto& from = mesh.nodes[index(n[edges[edge][0]])];
            const auto& to = mesh.nodes[index(n[edges[edge][1]])];
            double length = 0.0;
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                length += std::abs(static_cast<double>(to[axis]) - static_cast<double>(from[axis]));
            }
            for (float& coordinate : mesh.nodes[index(n[4 + edge])])
            {
                coordinate =
                    static_cast<float>(static_cast<double>(coordinate) + curvature * length * random.real(-0.5, 0.5));
            }
        }
    }
}

/// Hexahedra begin at a random corner of their base.
void turnHexahedra(Random& random, Mesh& mesh)
{
    for (std::size_t e = 0; e < mesh.types.size(); ++e)
    {
        if (mesh.types[e] == meshes::element::hexahedron)
        {
            const auto base = mesh.connectivity[e].begin();
            const int turn = random.integer(0, 3);
            std::rotate(base, base + turn, base + 4);
            std::rotate(base + 4, base + 4 + turn, base + 8);
        }
    }
}

/// What a cutting draws for every cell, and the cells of one block of nodes.
meshes::CellGrid gridOf(Random& random, const Cutting& cutting, CornerPositions& positions)
{
    meshes::CellGrid grid;
    grid.cells = cutting.cells;
    grid.corner = [&positions](int i, int j, int k) { return positions(i, j, k); };
    grid.matl = cutting.matl;
    grid.filling = [&](int i, int j, int k) -> std::optional<CellKind>
    {
        if (!cutting.keep(i, j, k))
        {
            return std::nullopt;
        }
        const CellKind kind = random.pick(cutting.kinds);
        return kind == CellKind::quadraticTetrahedra && random.chance(0.5) ? CellKind::fiveQuadraticTetrahedra : kind;
    };
    return grid;
}

/// The cells of each material in turn, each with nodes of its own.
Mesh cutApart(const meshes::CellGrid& grid)
{
    std::map<std::array<int, 3>, std::pair<std::optional<CellKind>, int>> cells;
    std::set<int> matls;
    for (int i = 0; i < grid.cells[0]; ++i)
    {
        for (int j = 0; j < grid.cells[1]; ++j)
        {
            for (int k = 0; k < grid.cells[2]; ++k)
            {
                const int matl = grid.matl(i, j, k);
                cells[{i, j, k}] = {grid.filling(i, j, k), matl};
                matls.insert(matl);
            }
        }
    }
    Mesh mesh;
    for (const int matl : matls)
    {
        meshes::CellGrid part = grid;
        part.matl = [matl](int, int, int) { return matl; };
        part.filling = [&cells, matl](int i, int j, int k)
        {
            const auto& [filling, matlOfCell] = cells.at({i, j, k});
            return matlOfCell == matl ? filling : std::nullopt;
        };
        Mesh block = meshes::cut(part);
        for (std::size_t e = 0; e < block.types.size(); ++e)
        {
            for (int& node : block.connectivity[e])
            {
                node += mesh.nbNodes();
            }
            mesh.addElement(block.types[e], block.connectivity[e], matl);
        }
        mesh.nodes.insert(mesh.nodes.end(), block.nodes.begin(), block.nodes.end());
    }
    return mesh;
}

} // namespace

MeshPointers::MeshPointers(Mesh& mesh) : itsMesh(mesh)
{
    for (std::vector<int>& row : mesh.connectivity)
    {
        itsRows.push_back(row.data());
    }
}

reference::MeshArrays MeshPointers::arrays()
{
    return {itsMesh.nbElts(),       itsMesh.nbNodes(),        coords(),
            connectivity(),         itsMesh.types.data(),     static_cast<int>(itsMesh.matlStates.size()),
            itsMesh.matlIds.data(), itsMesh.matlStates.data()};
}

const std::vector<CellKind>& volumeKinds()
{
    static const std::vector<CellKind> kinds = {CellKind::hexahedron, CellKind::wedges,
                                                CellKind::pyramids,   CellKind::fiveTetrahedra,
                                                CellKind::tetrahedra, CellKind::quadraticTetrahedra};
    return kinds;
}

Mesh cut(Random& random, const Cutting& cutting)
{
    CornerPositions positions(random, cutting);
    const meshes::CellGrid grid = gridOf(random, cutting, positions);
    Mesh mesh = cutting.detached ? cutApart(grid) : meshes::cut(grid);
    orientTetrahedra(mesh);
    if (cutting.curvature > 0.0)
    {
        bendEdges(random, cutting.curvature, mesh);
    }
    if (cutting.turned)
    {
        turnHexahedra(random, mesh);
    }
    mesh.matlStates.clear();
    return mesh;
}

void renumber(Random& random, Mesh& mesh)
{
    mesh = meshes::withNodesAt(mesh, random.permutation(mesh.nbNodes()), mesh.nbNodes());
    Mesh ordered;
    ordered.nodes = mesh.nodes;
    ordered.matlStates = mesh.matlStates;
    for (const int e : random.permutation(mesh.nbElts()))
    {
        ordered.addElement(mesh.types[index(e)], mesh.connectivity[index(e)], mesh.matlIds[index(e)]);
    }
    mesh = ordered;
}

void addUnusedNodes(Random& random, Mesh& mesh, int count)
{
    const int total = mesh.nbNodes() + count;
    std::vector<int> numbers = random.permutation(total);
    const std::array<float, 3> somewhere = mesh.nodes.front();
    for (int i = 0; i < count; ++i)
    {
        mesh.nodes.push_back({somewhere[0] + static_cast<float>(random.real(-1.0, 1.0)), somewhere[1], somewhere[2]});
    }
    mesh = meshes::withNodesAt(mesh, numbers, total);
}

Mesh extract(const Mesh& mesh, const std::vector<bool>& marks)
{
    Mesh result;
    result.matlStates = mesh.matlStates;
    std::vector<bool> isUsed(mesh.nodes.size(), false);
    for (std::size_t e = 0; e < mesh.types.size(); ++e)
    {
        for (const int node : mesh.connectivity[e])
        {
            isUsed[index(node)] = isUsed[index(node)] || marks[e];
        }
    }
    std::vector<int> numbers(mesh.nodes.size(), -1);
    for (std::size_t n = 0; n < mesh.nodes.size(); ++n)
    {
        if (isUsed[n])
        {
            numbers[n] = result.nbNodes();
            result.nodes.push_back(mesh.nodes[n]);
        }
    }
    for (std::size_t e = 0; e < mesh.types.size(); ++e)
    {
        if (!marks[e])
        {
            continue;
        }
        std::vector<int> row;
        for (const int node : mesh.connectivity[e])
        {
            row.push_back(numbers[index(node)]);
        }
        result.addElement(mesh.types[e], row, mesh.matlIds[e]);
    }
    return result;
}

} // namespace random_models
