#include "HostMeshes.h"

#include "GaussPoints.h"

#include <random>
#include <utility>

namespace host_meshes
{
namespace
{
using veltrane::ElementKind;

/// A mesh under construction.
class Building
{
public:
    explicit Building(int stateCode)
    {
        itsData.offsets = {0};
        itsData.materials = {{"all", stateCode}};
    }

    int addNode(const Point& position)
    {
        itsData.coordinates.insert(itsData.coordinates.end(), position.begin(), position.end());
        return static_cast<int>(itsData.coordinates.size() / 3) - 1;
    }

    int addMiddle(int first, int second)
    {
        Point middle{};
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            middle[axis] = (at(first, axis) + at(second, axis)) / 2;
        }
        return addNode(middle);
    }

    void addElement(ElementKind kind, const std::vector<int>& nodes)
    {
        itsData.kinds.push_back(kind);
        itsData.connectivity.insert(itsData.connectivity.end(), nodes.begin(), nodes.end());
        itsData.offsets.push_back(itsData.connectivity.size());
        itsData.materialPerElement.push_back(0);
    }

    veltrane::Mesh finish() { return veltrane::Mesh(std::move(itsData)); }

private:
    float at(int node, std::size_t axis) const
    {
        return itsData.coordinates[3 * static_cast<std::size_t>(node) + axis];
    }

    veltrane::MeshData itsData;
};

/// The corners of a unit cube, in the order of a hexahedron.
std::array<int, 8> addCube(Building& building, float x)
{
    constexpr std::array<Point, 8> corners{
        {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}}};
    std::array<int, 8> nodes{};
    for (std::size_t i = 0; i < 8; ++i)
    {
        nodes[i] = building.addNode({corners[i][0] + x, corners[i][1], corners[i][2]});
    }
    return nodes;
}

/// A cube in five tetrahedra, each with its first corner first.
std::array<std::array<int, 4>, 5> tetrahedraOf(const std::array<int, 8>& c)
{
    return {{{c[0], c[1], c[3], c[4]},
             {c[2], c[3], c[1], c[6]},
             {c[5], c[4], c[6], c[1]},
             {c[7], c[6], c[4], c[3]},
             {c[1], c[3], c[4], c[6]}}};
}
} // namespace

veltrane::Mesh block(std::array<int, 3> counts, Point low, Point high, int stateCode)
{
    Building building(stateCode);
    const auto [nx, ny, nz] = counts;
    for (int i = 0; i <= nx; ++i)
    {
        for (int j = 0; j <= ny; ++j)
        {
            for (int k = 0; k <= nz; ++k)
            {
                const auto along = [&](std::size_t axis, int step, int count)
                { return low[axis] + (high[axis] - low[axis]) * static_cast<float>(step) / static_cast<float>(count); };
                building.addNode({along(0, i, nx), along(1, j, ny), along(2, k, nz)});
            }
        }
    }
    const auto node = [ny = ny, nz = nz](int i, int j, int k) { return (i * (ny + 1) + j) * (nz + 1) + k; };
    for (int i = 0; i < nx; ++i)
    {
        for (int j = 0; j < ny; ++j)
        {
            for (int k = 0; k < nz; ++k)
            {
                building.addElement(ElementKind::hexahedron,
                                    {node(i, j, k), node(i + 1, j, k), node(i + 1, j + 1, k), node(i, j + 1, k),
                                     node(i, j, k + 1), node(i + 1, j, k + 1), node(i + 1, j + 1, k + 1),
                                     node(i, j + 1, k + 1)});
            }
        }
    }
    return building.finish();
}

veltrane::Mesh cubesOfAllKinds()
{
    Building building(1);
    const auto hexahedron = addCube(building, 0);
    building.addElement(ElementKind::hexahedron, {hexahedron.begin(), hexahedron.end()});
    const auto w = addCube(building, 1);
    building.addElement(ElementKind::wedge, {w[0], w[1], w[2], w[4], w[5], w[6]});
    building.addElement(ElementKind::wedge, {w[0], w[2], w[3], w[4], w[6], w[7]});
    for (const auto& [a, b, c, d] : tetrahedraOf(addCube(building, 2)))
    {
        building.addElement(ElementKind::tetrahedron, {a, b, c, d});
    }
    for (const auto& [a, b, c, d] : tetrahedraOf(addCube(building, 3)))
    {
        // The third corner is the origin of the reference element.
        building.addElement(ElementKind::quadraticTetrahedron,
                            {b, c, a, d, building.addMiddle(b, c), building.addMiddle(c, a), building.addMiddle(b, a),
                             building.addMiddle(b, d), building.addMiddle(c, d), building.addMiddle(a, d)});
    }
    const auto p = addCube(building, 4);
    const int centre = building.addMiddle(p[0], p[6]);
    for (const auto& face :
         {std::array{0, 1, 2, 3}, {4, 7, 6, 5}, {0, 4, 5, 1}, {1, 5, 6, 2}, {2, 6, 7, 3}, {3, 7, 4, 0}})
    {
        std::vector<int> nodes;
        for (const int corner : face)
        {
            nodes.push_back(p[static_cast<std::size_t>(corner)]);
        }
        nodes.push_back(centre);
        building.addElement(ElementKind::pyramid, nodes);
    }
    return building.finish();
}

std::vector<float> scattered(int count, Point low, Point high, std::uint64_t seed)
{
    std::mt19937_64 random(seed);
    std::vector<float> coordinates;
    for (int i = 0; i < count; ++i)
    {
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            // The same numbers with any standard library.
            const auto share = static_cast<float>(random() >> 40) / static_cast<float>(1 << 24);
            coordinates.push_back(low[axis] + share * (high[axis] - low[axis]));
        }
    }
    return coordinates;
}

veltrane::PointCloud cloud(std::vector<float> coordinates, int stateCode)
{
    const std::size_t count = coordinates.size() / 3;
    return {std::move(coordinates), std::vector<int>(count, 0), {{"all", stateCode}}};
}

std::vector<Point> nodePositions(const veltrane::Mesh& mesh)
{
    std::vector<Point> positions;
    for (int node = 0; node < mesh.nodeCount(); ++node)
    {
        const auto position = mesh.nodePosition(node);
        positions.push_back({position[0], position[1], position[2]});
    }
    return positions;
}

std::vector<Point> gaussPointPositions(const veltrane::Mesh& mesh)
{
    std::vector<Point> positions;
    for (int element = 0; element < mesh.elementCount(); ++element)
    {
        const auto nodes = mesh.nodesOf(element);
        for (const auto& shape : veltrane::gaussRuleOf(mesh.kindOf(element).kind).shapeValues)
        {
            std::array<double, 3> sum{};
            for (std::size_t i = 0; i < nodes.size(); ++i)
            {
                for (std::size_t axis = 0; axis < 3; ++axis)
                {
                    sum[axis] += shape[i] * static_cast<double>(mesh.nodePosition(nodes[i])[axis]);
                }
            }
            positions.push_back({static_cast<float>(sum[0]), static_cast<float>(sum[1]), static_cast<float>(sum[2])});
        }
    }
    return positions;
}

veltrane::Field fieldOf(const std::vector<Point>& positions, veltrane::Location location, int componentCount,
                        const std::function<double(const Point&)>& function)
{
    std::vector<double> values;
    for (const Point& position : positions)
    {
        for (int component = 0; component < componentCount; ++component)
        {
            values.push_back((component + 1) * function(position));
        }
    }
    return {"field", location, componentCount, std::move(values)};
}

std::span<const double> doublesOf(const veltrane::Field& field)
{
    return std::get<std::vector<double>>(field.values());
}
} // namespace host_meshes
