#include "MeshParts.h"

#include "CellGrid.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace mesh_parts
{
namespace
{

class Building : public meshes::MeshSink
{
public:
    explicit Building(double offset) : offset_(offset) { data_.offsets = {0}; }

    void addNode(const meshes::Position& position) override
    {
        for (const double coordinate : position)
        {
            data_.exactCoordinates.push_back(coordinate + offset_);
        }
    }

    void addElement(int type, std::span<const int> nodes, int matl) override
    {
        data_.kinds.push_back(static_cast<veltrane::ElementKind>(type));
        data_.connectivity.insert(data_.connectivity.end(), nodes.begin(), nodes.end());
        data_.offsets.push_back(data_.connectivity.size());
        data_.materialPerElement.push_back(matl);
    }

    veltrane::Mesh finish(int materialCount)
    {
        for (int material = 0; material < materialCount; ++material)
        {
            data_.materials.push_back({std::to_string(material), 11 * material + 1});
        }
        return veltrane::Mesh(std::move(data_));
    }

private:
    double offset_;
    veltrane::MeshData data_;
};

/// Between -0.5 and 0.5, always the same.
double wobble(int i, int j, int k, int axis)
{
    const auto mixed = static_cast<std::uint32_t>(i * 73856093) ^ static_cast<std::uint32_t>(j * 19349663) ^
                       static_cast<std::uint32_t>(k * 83492791) ^ static_cast<std::uint32_t>(axis * 2654435);
    return static_cast<double>(mixed * 2246822519U % 1000U) / 1000.0 - 0.5;
}

veltrane::Box boxOf(const veltrane::Mesh& mesh, const std::vector<int>& elements)
{
    veltrane::Box box;
    for (const int element : elements)
    {
        box.add(mesh.nodePosition(mesh.nodesOf(element)[0]));
    }
    return box;
}

/// The elements of a rank when all are halved along the longest side until there is a part for each.
std::vector<int> halved(const veltrane::Mesh& mesh, std::vector<int> elements, int rank, int rankCount)
{
    while (rankCount > 1)
    {
        const veltrane::Box box = boxOf(mesh, elements);
        std::size_t longest = 0;
        for (std::size_t axis = 1; axis < 3; ++axis)
        {
            const auto side = [&](std::size_t a) { return box.max[a] - box.min[a]; };
            longest = side(axis) > side(longest) ? axis : longest;
        }
        std::ranges::stable_sort(elements, {},
                                 [&](int element) { return mesh.nodePosition(mesh.nodesOf(element)[0])[longest]; });
        const int lower = rankCount / 2;
        const auto cut = elements.begin() + static_cast<std::ptrdiff_t>(elements.size()) * lower / rankCount;
        elements = rank < lower ? std::vector(elements.begin(), cut) : std::vector(cut, elements.end());
        rankCount = rank < lower ? lower : rankCount - lower;
        rank = rank < lower ? rank : rank - lower;
    }
    return elements;
}

std::vector<int> elementsOf(const veltrane::Mesh& whole, Cutting cutting, int rank, int rankCount)
{
    std::vector<int> all(static_cast<std::size_t>(whole.elementCount()));
    std::iota(all.begin(), all.end(), 0);
    const auto count = static_cast<std::ptrdiff_t>(all.size());
    switch (cutting)
    {
    case Cutting::inOrder:
        return {all.begin() + count * rank / rankCount, all.begin() + count * (rank + 1) / rankCount};
    case Cutting::halves: return halved(whole, all, rank, rankCount);
    case Cutting::scattered:
        std::erase_if(all, [&](int element) { return element % rankCount != rank; });
        std::ranges::reverse(all);
        return all;
    case Cutting::oneHasAll: return rank == rankCount - 1 ? all : std::vector<int>{};
    }
    return {};
}

} // namespace

veltrane::Mesh meshOf(const Body& body)
{
    meshes::CellGrid grid;
    grid.cells = body.cells;
    const auto [nx, ny, nz] = body.cells;
    grid.corner = [&body](int i, int j, int k)
    {
        const std::array<int, 3> index{i, j, k};
        meshes::Position position{};
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            const bool isInside = index[axis] > 0 && index[axis] < body.cells[axis];
            const double moved = isInside ? body.distortion * wobble(i, j, k, static_cast<int>(axis)) : 0.0;
            position[axis] = body.low[axis] + (body.high[axis] - body.low[axis]) *
                                                  (static_cast<double>(index[axis]) + moved) / body.cells[axis];
        }
        return position;
    };
    grid.filling = [&body](int, int, int k)
    { return meshes::fillingWith(body.kinds[static_cast<std::size_t>(k) % body.kinds.size()]); };
    grid.matl = [&body, nx = nx](int i, int, int) { return i * body.materialCount / nx; };
    grid.midEdge = [&body](const meshes::Position& middle, int nodeA, int nodeB)
    {
        const double way = (nodeA + nodeB) % 2 == 0 ? body.bend : -body.bend;
        return meshes::Position{middle[0] + way, middle[1], middle[2]};
    };
    Building building(body.offset);
    meshes::cut(grid, building);
    return building.finish(body.materialCount);
}

Part partOf(const veltrane::Mesh& whole, Cutting cutting, int rank, int rankCount)
{
    const std::vector<int> elements = elementsOf(whole, cutting, rank, rankCount);
    std::vector<int> places(static_cast<std::size_t>(whole.nodeCount()), -1);
    veltrane::MeshData data{.offsets = {0}, .materials = whole.materials()};
    std::vector<std::int64_t> nodeNumbers;
    std::vector<std::int64_t> elementNumbers(elements.begin(), elements.end());
    for (const int element : elements)
    {
        data.kinds.push_back(whole.kinds()[static_cast<std::size_t>(element)]);
        data.materialPerElement.push_back(whole.materialOf(element));
        for (const int node : whole.nodesOf(element))
        {
            int& place = places[static_cast<std::size_t>(node)];
            if (place == -1)
            {
                place = static_cast<int>(nodeNumbers.size());
                nodeNumbers.push_back(node);
                for (std::size_t axis = 0; axis < 3; ++axis)
                {
                    const std::size_t i = 3 * static_cast<std::size_t>(node) + axis;
                    data.exactCoordinates.push_back(whole.exactCoordinates().empty() ? double{whole.coordinates()[i]}
                                                                                     : whole.exactCoordinates()[i]);
                }
            }
            data.connectivity.push_back(place);
        }
        data.offsets.push_back(data.connectivity.size());
    }
    return {veltrane::Mesh(std::move(data), veltrane::Extent::part), std::move(elementNumbers), std::move(nodeNumbers)};
}

veltrane::Field restricted(const veltrane::Field& field, const veltrane::Mesh& whole, const Part& part)
{
    std::vector<std::size_t> rows(part.nodeNumbers.begin(), part.nodeNumbers.end());
    if (field.location() == veltrane::Location::gaussPoints)
    {
        std::vector<std::size_t> first(1, 0);
        for (int element = 0; element < whole.elementCount(); ++element)
        {
            first.push_back(first.back() + static_cast<std::size_t>(whole.gaussPointCountOf(element)));
        }
        rows.clear();
        for (const std::int64_t element : part.elementNumbers)
        {
            const auto i = static_cast<std::size_t>(element);
            for (std::size_t row = first[i]; row < first[i + 1]; ++row)
            {
                rows.push_back(row);
            }
        }
    }
    const auto width = static_cast<std::size_t>(field.componentCount());
    return std::visit(
        [&](const auto& values)
        {
            std::decay_t<decltype(values)> ofPart;
            for (const std::size_t row : rows)
            {
                const auto begin = values.begin() + static_cast<std::ptrdiff_t>(row * width);
                ofPart.insert(ofPart.end(), begin, begin + field.componentCount());
            }
            return veltrane::Field(field.name(), field.location(), field.componentCount(), std::move(ofPart));
        },
        field.values());
}

} // namespace mesh_parts
