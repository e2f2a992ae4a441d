#include "RandomMeshes.h"

#include "ReferenceElements.h"

#include <map>
#include <numeric>
#include <utility>

namespace random_models
{

namespace
{

using reference::index;
using Point = std::array<double, 3>;

class Cutter
{
public:
    Cutter(Random& random, const Cutting& cutting) : itsRandom(random), itsCutting(cutting) {}

    MeshModel run()
    {
        for (int i = 0; i < itsCutting.cells[0]; ++i)
        {
            for (int j = 0; j < itsCutting.cells[1]; ++j)
            {
                for (int k = 0; k < itsCutting.cells[2]; ++k)
                {
                    if (itsCutting.keep(i, j, k))
                    {
                        cutCell(i, j, k);
                    }
                }
            }
        }
        return std::move(itsMesh);
    }

private:
    void cutCell(int i, int j, int k)
    {
        const int matl = itsCutting.matl(i, j, k);
        const CellKind kind = itsRandom.pick(itsCutting.kinds);
        const bool isSkin = kind == CellKind::quadrilateral || kind == CellKind::triangles;
        std::array<int, 8> c{};
        c[0] = corner(i, j, k, matl);
        c[1] = corner(i + 1, j, k, matl);
        c[2] = corner(i + 1, j + 1, k, matl);
        c[3] = corner(i, j + 1, k, matl);
        if (!isSkin)
        {
            c[4] = corner(i, j, k + 1, matl);
            c[5] = corner(i + 1, j, k + 1, matl);
            c[6] = corner(i + 1, j + 1, k + 1, matl);
            c[7] = corner(i, j + 1, k + 1, matl);
        }
        switch (kind)
        {
        case CellKind::hexahedron: addHexahedron(c, matl); break;
        case CellKind::wedges:
            itsMesh.add(3, {c[0], c[1], c[2], c[4], c[5], c[6]}, matl);
            itsMesh.add(3, {c[0], c[2], c[3], c[4], c[6], c[7]}, matl);
            break;
        case CellKind::pyramids: addPyramids(c, matl); break;
        case CellKind::fiveTetrahedra:
            for (const auto& t : fiveTetrahedra())
            {
                addTetrahedron({c[t[0]], c[t[1]], c[t[2]], c[t[3]]}, matl);
            }
            break;
        case CellKind::sixTetrahedra:
            for (const auto& t : sixTetrahedra())
            {
                addTetrahedron({c[t[0]], c[t[1]], c[t[2]], c[t[3]]}, matl);
            }
            break;
        case CellKind::quadraticTetrahedra:
            for (const auto& t : itsRandom.chance(0.5) ? fiveTetrahedra() : sixTetrahedra())
            {
                addQuadraticTetrahedron({c[t[0]], c[t[1]], c[t[2]], c[t[3]]}, matl);
            }
            break;
        case CellKind::quadrilateral: itsMesh.add(6, {c[0], c[1], c[2], c[3]}, matl); break;
        case CellKind::triangles:
            itsMesh.add(7, {c[0], c[1], c[2]}, matl);
            itsMesh.add(7, {c[0], c[2], c[3]}, matl);
            break;
        }
    }

    using Tetrahedra = std::vector<std::array<std::size_t, 4>>;

    static const Tetrahedra& fiveTetrahedra()
    {
        static const Tetrahedra list = {{0, 1, 2, 5}, {0, 2, 3, 7}, {0, 5, 7, 4}, {2, 7, 5, 6}, {0, 2, 7, 5}};
        return list;
    }

    static const Tetrahedra& sixTetrahedra()
    {
        static const Tetrahedra list = {{0, 1, 2, 6}, {0, 2, 3, 6}, {0, 3, 7, 6},
                                        {0, 7, 4, 6}, {0, 4, 5, 6}, {0, 5, 1, 6}};
        return list;
    }

    void addHexahedron(const std::array<int, 8>& c, int matl)
    {
        const std::size_t turn = itsCutting.turned ? index(itsRandom.integer(0, 3)) : 0;
        std::vector<int> nodes;
        for (std::size_t n = 0; n < 4; ++n)
        {
            nodes.push_back(c[(n + turn) % 4]);
        }
        for (std::size_t n = 0; n < 4; ++n)
        {
            nodes.push_back(c[4 + (n + turn) % 4]);
        }
        itsMesh.add(1, nodes, matl);
    }

    /// Six pyramids around the centre; each base turns its inner side to the apex.
    void addPyramids(const std::array<int, 8>& c, int matl)
    {
        Point sum{};
        for (const int node : c)
        {
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                sum[axis] += itsMesh.nodes[index(node)][axis];
            }
        }
        const int apex = addNode({sum[0] / 8.0, sum[1] / 8.0, sum[2] / 8.0});
        const std::array<std::array<std::size_t, 4>, 6> bases = {
            {{0, 1, 2, 3}, {4, 7, 6, 5}, {0, 4, 5, 1}, {3, 2, 6, 7}, {0, 3, 7, 4}, {1, 5, 6, 2}}};
        for (const auto& b : bases)
        {
            itsMesh.add(12, {c[b[0]], c[b[1]], c[b[2]], c[b[3]], apex}, matl);
        }
    }

    /// Six times the volume of a tetrahedron, positive when d lies on the side that a, b, c turn round.
    double volume(int a, int b, int c, int d) const
    {
        const auto edge = [this, a](int to)
        {
            Point e{};
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                e[axis] = static_cast<double>(itsMesh.nodes[index(to)][axis]) -
                          static_cast<double>(itsMesh.nodes[index(a)][axis]);
            }
            return e;
        };
        const Point u = edge(b);
        const Point v = edge(c);
        const Point w = edge(d);
        return u[0] * (v[1] * w[2] - v[2] * w[1]) + u[1] * (v[2] * w[0] - v[0] * w[2]) +
               u[2] * (v[0] * w[1] - v[1] * w[0]);
    }

    std::array<int, 4> oriented(std::array<int, 4> t) const
    {
        if (volume(t[0], t[1], t[2], t[3]) < 0.0)
        {
            std::swap(t[1], t[2]);
        }
        return t;
    }

    void addTetrahedron(const std::array<int, 4>& corners, int matl)
    {
        const std::array<int, 4> t = oriented(corners);
        itsMesh.add(2, {t[0], t[1], t[2], t[3]}, matl);
    }

    /// The origin of the reference space is the third corner here.
    void addQuadraticTetrahedron(const std::array<int, 4>& corners, int matl)
    {
        const std::array<int, 4> t = oriented(corners);
        const int c1 = t[1];
        const int c2 = t[2];
        const int c3 = t[0];
        const int c4 = t[3];
        itsMesh.add(10,
                    {c1, c2, c3, c4, middle(c1, c2), middle(c2, c3), middle(c1, c3), middle(c1, c4), middle(c2, c4),
                     middle(c3, c4)},
                    matl);
    }

    int middle(int a, int b)
    {
        const std::pair<int, int> key = a < b ? std::pair(a, b) : std::pair(b, a);
        const auto found = itsMiddles.find(key);
        if (found != itsMiddles.end())
        {
            return found->second;
        }
        Point p{};
        double length = 0.0;
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            const double from = itsMesh.nodes[index(a)][axis];
            const double to = itsMesh.nodes[index(b)][axis];
            p[axis] = (from + to) / 2.0;
            length += to > from ? to - from : from - to;
        }
        if (itsCutting.curvature > 0.0)
        {
            for (double& coordinate : p)
            {
                coordinate += itsCutting.curvature * length * itsRandom.real(-0.5, 0.5);
            }
        }
        const int node = addNode(p);
        itsMiddles[key] = node;
        return node;
    }

    int corner(int i, int j, int k, int matl)
    {
        const std::array<int, 4> key = {i, j, k, itsCutting.detached ? matl : 0};
        const auto found = itsCorners.find(key);
        if (found != itsCorners.end())
        {
            return found->second;
        }
        const int node = addNode(cornerPosition(i, j, k));
        itsCorners[key] = node;
        return node;
    }

    /// Detached nodes share their position with those of the other materials.
    const Point& cornerPosition(int i, int j, int k)
    {
        const std::array<int, 3> key = {i, j, k};
        const auto found = itsPositions.find(key);
        if (found != itsPositions.end())
        {
            return found->second;
        }
        Point p{};
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            double at = key[axis];
            if (key[axis] != 0 && key[axis] != itsCutting.cells[axis])
            {
                at += itsCutting.distortion * itsRandom.real(-1.0, 1.0);
            }
            p[axis] = itsCutting.origin[axis] + itsCutting.size[axis] * at / itsCutting.cells[axis];
        }
        p[0] += itsCutting.shear[0] * p[2];
        p[1] += itsCutting.shear[1] * p[2];
        return itsPositions[key] = p;
    }

    int addNode(const Point& p)
    {
        itsMesh.nodes.push_back({static_cast<float>(p[0]), static_cast<float>(p[1]), static_cast<float>(p[2])});
        return itsMesh.nbNodes() - 1;
    }

    Random& itsRandom;
    const Cutting& itsCutting;
    MeshModel itsMesh;
    std::map<std::array<int, 3>, Point> itsPositions;
    std::map<std::array<int, 4>, int> itsCorners;
    std::map<std::pair<int, int>, int> itsMiddles;
};

/// Gives every node its new number.
void moveNodes(MeshModel& mesh, const std::vector<int>& newNumbers, int newCount)
{
    std::vector<std::array<float, 3>> nodes(index(newCount));
    for (std::size_t n = 0; n < mesh.nodes.size(); ++n)
    {
        nodes[index(newNumbers[n])] = mesh.nodes[n];
    }
    mesh.nodes = nodes;
    for (std::vector<int>& row : mesh.connectivity)
    {
        for (int& node : row)
        {
            node = newNumbers[index(node)];
        }
    }
}

} // namespace

std::vector<int> Random::permutation(int n)
{
    std::vector<int> numbers(index(n));
    std::iota(numbers.begin(), numbers.end(), 0);
    for (int i = n - 1; i > 0; --i)
    {
        std::swap(numbers[index(i)], numbers[index(integer(0, i))]);
    }
    return numbers;
}

void MeshModel::add(int type, const std::vector<int>& elementNodes, int matl)
{
    types.push_back(type);
    connectivity.push_back(elementNodes);
    matlIds.push_back(matl);
}

int MeshModel::nbGaussPoints() const
{
    int count = 0;
    for (const int type : types)
    {
        count += reference::gaussPointCount(type);
    }
    return count;
}

MeshPointers::MeshPointers(MeshModel& mesh) : itsMesh(mesh)
{
    for (std::vector<int>& row : mesh.connectivity)
    {
        itsRows.push_back(row.data());
    }
}

reference::MeshArrays MeshPointers::arrays()
{
    return {itsMesh.nbElements(),   itsMesh.nbNodes(),        coords(),
            connectivity(),         itsMesh.types.data(),     static_cast<int>(itsMesh.matlStates.size()),
            itsMesh.matlIds.data(), itsMesh.matlStates.data()};
}

const std::vector<CellKind>& volumeKinds()
{
    static const std::vector<CellKind> kinds = {CellKind::hexahedron,    CellKind::wedges,
                                                CellKind::pyramids,      CellKind::fiveTetrahedra,
                                                CellKind::sixTetrahedra, CellKind::quadraticTetrahedra};
    return kinds;
}

MeshModel cut(Random& random, const Cutting& cutting)
{
    return Cutter(random, cutting).run();
}

void renumber(Random& random, MeshModel& mesh)
{
    moveNodes(mesh, random.permutation(mesh.nbNodes()), mesh.nbNodes());
    MeshModel ordered;
    ordered.nodes = mesh.nodes;
    ordered.matlStates = mesh.matlStates;
    for (const int e : random.permutation(mesh.nbElements()))
    {
        ordered.add(mesh.types[index(e)], mesh.connectivity[index(e)], mesh.matlIds[index(e)]);
    }
    mesh = ordered;
}

void addUnusedNodes(Random& random, MeshModel& mesh, int count)
{
    const int total = mesh.nbNodes() + count;
    std::vector<int> numbers = random.permutation(total);
    const std::array<float, 3> somewhere = mesh.nodes.front();
    for (int i = 0; i < count; ++i)
    {
        mesh.nodes.push_back({somewhere[0] + static_cast<float>(random.real(-1.0, 1.0)), somewhere[1], somewhere[2]});
    }
    moveNodes(mesh, numbers, total);
}

MeshModel extract(const MeshModel& mesh, const std::vector<bool>& marks)
{
    MeshModel result;
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
        result.add(mesh.types[e], row, mesh.matlIds[e]);
    }
    return result;
}

} // namespace random_models
