#include "Meshes.h"

#include <cmath>
#include <stdexcept>
#include <utility>

namespace meshes
{

Point operator+(const Point& a, const Point& b)
{
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}

Point operator*(float factor, const Point& a)
{
    return {factor * a[0], factor * a[1], factor * a[2]};
}

int gaussPointsOfType(int type)
{
    switch (type)
    {
    case element::hexahedron:
    case element::unknownWith8Nodes:
    case element::pyramid: return 8;
    case element::tetrahedron: return 1;
    case element::wedge: return 6;
    case element::quadrilateral: return 4;
    case element::triangle: return 3;
    case element::quadraticTetrahedron: return 5;
    case element::quadraticHexahedron:
    case element::triquadraticHexahedron: return 27;
    case element::quadraticWedge:
    case element::biquadraticWedge: return 9;
    case element::quadraticPyramid: return 8;
    default: throw std::invalid_argument("no such element type");
    }
}

std::size_t gaussPointsOf(const Mesh& mesh)
{
    std::size_t count = 0;
    for (const int type : mesh.types)
    {
        count += static_cast<std::size_t>(gaussPointsOfType(type));
    }
    return count;
}

void Mesh::addElement(int type, std::vector<int> nodeNumbers, int matl)
{
    types.push_back(type);
    connectivity.push_back(std::move(nodeNumbers));
    matlIds.push_back(matl);
}

void Mesh::addElement(int type, const std::vector<Point>& positions, int matl)
{
    std::vector<int> nodeNumbers;
    for (const Point& position : positions)
    {
        nodeNumbers.push_back(nbNodes());
        nodes.push_back(position);
    }
    addElement(type, std::move(nodeNumbers), matl);
}

namespace
{
class MeshFilling : public MeshSink
{
public:
    void addNode(const Position& p) override
    {
        mesh.nodes.push_back({static_cast<float>(p[0]), static_cast<float>(p[1]), static_cast<float>(p[2])});
    }
    void addElement(int type, std::span<const int> nodes, int matl) override
    {
        mesh.addElement(type, std::vector<int>(nodes.begin(), nodes.end()), matl);
    }

    Mesh mesh;
};
} // namespace

Mesh cut(const CellGrid& grid)
{
    MeshFilling result;
    cut(grid, result);
    return std::move(result.mesh);
}

Mesh box(int type, Point minimum, Point maximum, std::array<int, 3> cells)
{
    const auto at = [&](std::size_t axis, int i)
    {
        const float fraction = static_cast<float>(i) / static_cast<float>(cells[axis]);
        return static_cast<double>(i == cells[axis] ? maximum[axis]
                                                    : minimum[axis] + fraction * (maximum[axis] - minimum[axis]));
    };
    CellGrid grid;
    grid.cells = cells;
    grid.corner = [&](int i, int j, int k) { return Position{at(0, i), at(1, j), at(2, k)}; };
    grid.filling = [filling = fillingWith(type)](int, int, int) { return filling; };
    return cut(grid);
}

Mesh single(int type, std::vector<Point> nodes)
{
    Mesh mesh;
    mesh.addElement(type, nodes);
    return mesh;
}

namespace
{
/// The nodes, then the middles of those in the groups.
std::vector<Point> withMiddles(std::vector<Point> nodes, const std::vector<std::vector<std::size_t>>& groups)
{
    for (const auto& group : groups)
    {
        Point sum{};
        for (const std::size_t node : group)
        {
            sum = sum + nodes[node];
        }
        nodes.push_back(1.0F / static_cast<float>(group.size()) * sum);
    }
    return nodes;
}

/// The groups of corners that the nodes of second order lie between. They may be asked for before main() begins.
using Groups = std::vector<std::vector<std::size_t>>;

Groups edgesOfHexahedron()
{
    return {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {4, 5}, {5, 6}, {6, 7}, {7, 4}, {0, 4}, {1, 5}, {2, 6}, {3, 7}};
}

Groups centresOfHexahedron()
{
    return {
        {0, 3, 7, 4}, {1, 2, 6, 5}, {0, 1, 5, 4}, {3, 2, 6, 7}, {0, 1, 2, 3}, {4, 5, 6, 7}, {0, 1, 2, 3, 4, 5, 6, 7}};
}

Groups edgesOfWedge()
{
    return {{0, 1}, {1, 2}, {2, 0}, {3, 4}, {4, 5}, {5, 3}, {0, 3}, {1, 4}, {2, 5}};
}

Groups centresOfWedge()
{
    return {{0, 1, 4, 3}, {1, 2, 5, 4}, {2, 0, 3, 5}};
}

Groups edgesOfPyramid()
{
    return {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {0, 4}, {1, 4}, {2, 4}, {3, 4}};
}
} // namespace

std::vector<Point> referenceNodes(int type)
{
    switch (type)
    {
    case element::hexahedron: return cornersOf({-1, -1, -1}, {1, 1, 1});
    case element::tetrahedron: return {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    case element::wedge: return {{0, 0, -1}, {1, 0, -1}, {0, 1, -1}, {0, 0, 1}, {1, 0, 1}, {0, 1, 1}};
    case element::quadraticTetrahedron:
        return {{1, 0, 0},    {0, 1, 0},    {0, 0, 0},       {0, 0, 1},       {0.5F, 0.5F, 0},
                {0, 0.5F, 0}, {0.5F, 0, 0}, {0.5F, 0, 0.5F}, {0, 0.5F, 0.5F}, {0, 0, 0.5F}};
    case element::pyramid: return {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}, {0, 0, 1}};
    case element::quadraticHexahedron: return withMiddles(referenceNodes(element::hexahedron), edgesOfHexahedron());
    case element::triquadraticHexahedron:
        return withMiddles(referenceNodes(element::quadraticHexahedron), centresOfHexahedron());
    case element::quadraticWedge: return withMiddles(referenceNodes(element::wedge), edgesOfWedge());
    case element::biquadraticWedge: return withMiddles(referenceNodes(element::quadraticWedge), centresOfWedge());
    case element::quadraticPyramid: return withMiddles(referenceNodes(element::pyramid), edgesOfPyramid());
    case element::quadrilateral: return {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}};
    case element::triangle: return {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    default: throw std::invalid_argument("no reference nodes");
    }
}

std::vector<Point> cornersOf(const Point& low, const Point& high)
{
    return {{low[0], low[1], low[2]},    {high[0], low[1], low[2]}, {high[0], high[1], low[2]},
            {low[0], high[1], low[2]},   {low[0], low[1], high[2]}, {high[0], low[1], high[2]},
            {high[0], high[1], high[2]}, {low[0], high[1], high[2]}};
}

Mesh referenceElement(int type, float factor, Point origin)
{
    std::vector<Point> nodes = referenceNodes(type);
    for (Point& node : nodes)
    {
        node = factor * node + origin;
    }
    return single(type, std::move(nodes));
}

Mesh cloud(std::vector<Point> points)
{
    Mesh mesh;
    mesh.matlIds.assign(points.size(), 0);
    mesh.nodes = std::move(points);
    return mesh;
}

Mesh withStateCode(Mesh mesh, int stateCode)
{
    mesh.matlStates = {stateCode};
    return mesh;
}

Mesh withMaterials(Mesh mesh, std::vector<int> matlIds, std::vector<int> matlStates)
{
    mesh.matlIds = std::move(matlIds);
    mesh.matlStates = std::move(matlStates);
    return mesh;
}

Mesh reordered(const Mesh& mesh, const std::vector<int>& order)
{
    Mesh result = mesh;
    result.connectivity.clear();
    result.types.clear();
    result.matlIds.clear();
    for (const int old : order)
    {
        const auto e = static_cast<std::size_t>(old);
        result.connectivity.push_back(mesh.connectivity[e]);
        result.types.push_back(mesh.types[e]);
        result.matlIds.push_back(mesh.matlIds[e]);
    }
    return result;
}

Mesh joined(const Mesh& first, const Mesh& second)
{
    Mesh result = first;
    result.nodes.insert(result.nodes.end(), second.nodes.begin(), second.nodes.end());
    for (std::vector<int> nodes : second.connectivity)
    {
        for (int& node : nodes)
        {
            node += first.nbNodes();
        }
        result.connectivity.push_back(std::move(nodes));
    }
    result.types.insert(result.types.end(), second.types.begin(), second.types.end());
    for (const int material : second.matlIds)
    {
        result.matlIds.push_back(material + static_cast<int>(first.matlStates.size()));
    }
    result.matlStates.insert(result.matlStates.end(), second.matlStates.begin(), second.matlStates.end());
    return result;
}

Mesh moved(Mesh mesh, Point offset)
{
    for (Point& node : mesh.nodes)
    {
        node = node + offset;
    }
    return mesh;
}

Mesh distorted(Mesh mesh, Point minimum, Point maximum, float amount)
{
    std::size_t draw = 0;
    for (Point& node : mesh.nodes)
    {
        bool inside = true;
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            inside = inside && node[axis] > minimum[axis] && node[axis] < maximum[axis];
        }
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            ++draw;
            // The fractional part of multiples of an irrational number scatters evenly over 0 to 1.
            const double scattered = std::fmod(static_cast<double>(draw) * 0.6180339887498949, 1.0);
            if (inside)
            {
                node[axis] += amount * static_cast<float>(2.0 * scattered - 1.0);
            }
        }
    }
    return mesh;
}

Mesh withNodesAt(Mesh mesh, const std::vector<int>& newNumbers, int newCount)
{
    std::vector<Point> nodes(static_cast<std::size_t>(newCount));
    for (std::size_t n = 0; n < mesh.nodes.size(); ++n)
    {
        nodes[static_cast<std::size_t>(newNumbers[n])] = mesh.nodes[n];
    }
    mesh.nodes = std::move(nodes);
    for (std::vector<int>& row : mesh.connectivity)
    {
        for (int& node : row)
        {
            node = newNumbers[static_cast<std::size_t>(node)];
        }
    }
    return mesh;
}

std::vector<double> atNodes(const Mesh& mesh, const std::function<double(const Point&)>& function)
{
    std::vector<double> values;
    for (const Point& node : mesh.nodes)
    {
        values.push_back(function(node));
    }
    return values;
}

std::vector<double> constant(std::size_t count, double value)
{
    return std::vector<double>(count, value);
}

} // namespace meshes
