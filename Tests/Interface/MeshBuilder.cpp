#include "MeshBuilder.h"

#include <cmath>
#include <cstdlib>
#include <map>
#include <utility>

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
    default: std::abort();
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

namespace
{
void addElement(Mesh& mesh, int type, std::vector<int> nodes)
{
    mesh.elements.push_back(std::move(nodes));
    mesh.types.push_back(type);
    mesh.materials.push_back(0);
}

/// Nodes between two others, each made once.
class MidNodes
{
public:
    explicit MidNodes(Mesh& mesh) : itsMesh(mesh) {}

    int between(int a, int b)
    {
        const auto [entry, isNew] = itsNumbers.try_emplace(std::minmax(a, b), itsMesh.nbNodes());
        if (isNew)
        {
            itsMesh.nodes.push_back(
                0.5F * (itsMesh.nodes[static_cast<std::size_t>(a)] + itsMesh.nodes[static_cast<std::size_t>(b)]));
        }
        return entry->second;
    }

private:
    Mesh& itsMesh;
    std::map<std::pair<int, int>, int> itsNumbers;
};

/// The elements of one cell, given its corners in the order of a hexahedron.
void addCell(Mesh& mesh, MidNodes& midNodes, int type, const std::array<int, 8>& corner)
{
    const auto nodesOf = [&](const std::vector<int>& corners)
    {
        std::vector<int> nodes;
        for (const int c : corners)
        {
            nodes.push_back(corner[static_cast<std::size_t>(c)]);
        }
        return nodes;
    };
    // Six tetrahedra around the diagonal from corner 0 to corner 6; neighbouring cells meet face to face.
    static const std::vector<std::vector<int>> tetrahedra = {{0, 1, 2, 6}, {0, 2, 3, 6}, {0, 3, 7, 6},
                                                             {0, 7, 4, 6}, {0, 4, 5, 6}, {0, 5, 1, 6}};
    switch (type)
    {
    case element::hexahedron: addElement(mesh, type, nodesOf({0, 1, 2, 3, 4, 5, 6, 7})); break;
    case element::wedge:
        addElement(mesh, type, nodesOf({0, 1, 2, 4, 5, 6}));
        addElement(mesh, type, nodesOf({0, 2, 3, 4, 6, 7}));
        break;
    case element::tetrahedron:
        for (const std::vector<int>& corners : tetrahedra)
        {
            addElement(mesh, type, nodesOf(corners));
        }
        break;
    case element::quadraticTetrahedron:
        for (const std::vector<int>& corners : tetrahedra)
        {
            const std::vector<int> n = nodesOf(corners);
            const auto mid = [&](std::size_t a, std::size_t b) { return midNodes.between(n[a], n[b]); };
            addElement(mesh, type,
                       {n[0], n[1], n[2], n[3], mid(0, 1), mid(1, 2), mid(0, 2), mid(0, 3), mid(1, 3), mid(2, 3)});
        }
        break;
    case element::pyramid:
    {
        const int apex = mesh.nbNodes();
        Point centre = {0.0F, 0.0F, 0.0F};
        for (const int node : corner)
        {
            centre = centre + 0.125F * mesh.nodes[static_cast<std::size_t>(node)];
        }
        mesh.nodes.push_back(centre);
        for (const std::vector<int>& corners : std::vector<std::vector<int>>{
                 {0, 1, 2, 3}, {7, 6, 5, 4}, {0, 4, 5, 1}, {1, 5, 6, 2}, {2, 6, 7, 3}, {3, 7, 4, 0}})
        {
            std::vector<int> nodes = nodesOf(corners);
            nodes.push_back(apex);
            addElement(mesh, type, nodes);
        }
        break;
    }
    default: std::abort();
    }
}
} // namespace

Mesh box(int type, Point minimum, Point maximum, std::array<int, 3> cells)
{
    Mesh mesh;
    mesh.stateCodes = {1};
    const auto at = [&](std::size_t axis, int i)
    {
        const float fraction = static_cast<float>(i) / static_cast<float>(cells[axis]);
        return i == cells[axis] ? maximum[axis] : minimum[axis] + fraction * (maximum[axis] - minimum[axis]);
    };
    for (int k = 0; k <= cells[2]; ++k)
    {
        for (int j = 0; j <= cells[1]; ++j)
        {
            for (int i = 0; i <= cells[0]; ++i)
            {
                mesh.nodes.push_back({at(0, i), at(1, j), at(2, k)});
            }
        }
    }
    const auto node = [&](int i, int j, int k) { return (k * (cells[1] + 1) + j) * (cells[0] + 1) + i; };
    MidNodes midNodes(mesh);
    for (int k = 0; k < cells[2]; ++k)
    {
        for (int j = 0; j < cells[1]; ++j)
        {
            for (int i = 0; i < cells[0]; ++i)
            {
                addCell(mesh, midNodes, type,
                        {node(i, j, k), node(i + 1, j, k), node(i + 1, j + 1, k), node(i, j + 1, k), node(i, j, k + 1),
                         node(i + 1, j, k + 1), node(i + 1, j + 1, k + 1), node(i, j + 1, k + 1)});
            }
        }
    }
    return mesh;
}

Mesh single(int type, std::vector<Point> nodes)
{
    Mesh mesh;
    mesh.stateCodes = {1};
    std::vector<int> numbers;
    for (int i = 0; i < static_cast<int>(nodes.size()); ++i)
    {
        numbers.push_back(i);
    }
    mesh.nodes = std::move(nodes);
    addElement(mesh, type, numbers);
    return mesh;
}

Mesh referenceElement(int type, float factor, Point origin)
{
    std::vector<Point> nodes;
    switch (type)
    {
    case element::hexahedron:
        nodes = {{-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1}, {-1, -1, 1}, {1, -1, 1}, {1, 1, 1}, {-1, 1, 1}};
        break;
    case element::tetrahedron: nodes = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}; break;
    case element::wedge: nodes = {{0, 0, -1}, {1, 0, -1}, {0, 1, -1}, {0, 0, 1}, {1, 0, 1}, {0, 1, 1}}; break;
    case element::quadraticTetrahedron:
        nodes = {{1, 0, 0},    {0, 1, 0},    {0, 0, 0},       {0, 0, 1},       {0.5F, 0.5F, 0},
                 {0, 0.5F, 0}, {0.5F, 0, 0}, {0.5F, 0, 0.5F}, {0, 0.5F, 0.5F}, {0, 0, 0.5F}};
        break;
    case element::pyramid: nodes = {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}, {0, 0, 1}}; break;
    case element::quadrilateral: nodes = {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}}; break;
    case element::triangle: nodes = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}; break;
    default: std::abort();
    }
    for (Point& node : nodes)
    {
        node = factor * node + origin;
    }
    return single(type, std::move(nodes));
}

Mesh cloud(std::vector<Point> points)
{
    Mesh mesh;
    mesh.materials.assign(points.size(), 0);
    mesh.nodes = std::move(points);
    mesh.stateCodes = {1};
    return mesh;
}

Mesh withStateCode(Mesh mesh, int stateCode)
{
    mesh.stateCodes = {stateCode};
    return mesh;
}

Mesh withMaterials(Mesh mesh, std::vector<int> materials, std::vector<int> stateCodes)
{
    mesh.materials = std::move(materials);
    mesh.stateCodes = std::move(stateCodes);
    return mesh;
}

Mesh reordered(const Mesh& mesh, const std::vector<int>& order)
{
    Mesh result = mesh;
    result.elements.clear();
    result.types.clear();
    result.materials.clear();
    for (const int old : order)
    {
        const auto e = static_cast<std::size_t>(old);
        result.elements.push_back(mesh.elements[e]);
        result.types.push_back(mesh.types[e]);
        result.materials.push_back(mesh.materials[e]);
    }
    return result;
}

Mesh joined(const Mesh& first, const Mesh& second)
{
    Mesh result = first;
    result.nodes.insert(result.nodes.end(), second.nodes.begin(), second.nodes.end());
    for (std::vector<int> nodes : second.elements)
    {
        for (int& node : nodes)
        {
            node += first.nbNodes();
        }
        result.elements.push_back(std::move(nodes));
    }
    result.types.insert(result.types.end(), second.types.begin(), second.types.end());
    for (const int material : second.materials)
    {
        result.materials.push_back(material + static_cast<int>(first.stateCodes.size()));
    }
    result.stateCodes.insert(result.stateCodes.end(), second.stateCodes.begin(), second.stateCodes.end());
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
