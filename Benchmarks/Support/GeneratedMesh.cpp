#include "GeneratedMesh.h"

#include "CellGrid.h"
#include "Elements/ElementKinds.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <numeric>
#include <span>
#include <utility>

namespace benchmarks
{
namespace
{
constexpr double midEdgeDistortion = 0.2; // of the corner nodes' distortion

using meshes::CellGrid;
using meshes::Filling;
using meshes::Position;

/// What the cells at one x position of the grid are made of.
Filling fillingAt(MeshKind kind, int nbCells, int i)
{
    switch (kind)
    {
    case MeshKind::tetrahedra: return Filling::tetrahedra;
    case MeshKind::hexahedra: return Filling::hexahedron;
    case MeshKind::wedges: return Filling::wedges;
    case MeshKind::pyramids: return Filling::pyramids;
    case MeshKind::quadraticTetrahedra: return Filling::quadraticTetrahedra;
    case MeshKind::mix: break;
    }
    const auto slab = [&](int cell) { return 5 * cell / nbCells; };
    switch (slab(i))
    {
    case 0: return Filling::hexahedron;
    case 1: return Filling::wedges;
    case 2: return slab(i + 1) == 2 ? Filling::pyramids : Filling::pyramidsBesideTetrahedra;
    case 3: return Filling::tetrahedra;
    default: return Filling::quadraticTetrahedra;
    }
}

/// The cells of the grid count along y first, then z, then x: slabs of a mix follow each other.
class MeshGenerator : public meshes::MeshSink
{
public:
    explicit MeshGenerator(const MeshOptions& options)
        : itsOptions(options), itsNbCells(options.nbCellsPerAxis), itsRandom(options.seed)
    {
    }

    GeneratedMesh generate()
    {
        CellGrid grid;
        grid.cells = {itsNbCells, itsNbCells, itsNbCells};
        grid.corner = [this](int j, int k, int i)
        {
            const auto at = [&](int index) { return static_cast<double>(index) / itsNbCells; };
            return moved({at(i), at(j), at(k)}, isInner(i) && isInner(j) && isInner(k));
        };
        grid.filling = [this](int, int, int i) { return fillingAt(itsOptions.kind, itsNbCells, i); };
        grid.matl = [this](int, int, int i) { return i < itsOptions.secondMaterial * itsNbCells ? 1 : 0; };
        grid.apex = [this](const Position& centre) { return moved(centre, true); };
        grid.midEdge = [this](const Position& middle, int a, int b)
        { return moved(middle, isCurved(gridIndex(a), gridIndex(b)), midEdgeDistortion); };
        meshes::cut(grid, *this);
        if (itsOptions.secondMaterial > 0.0)
        {
            itsMesh.matlStates = {1, 4};
        }
        linkElements();
        return std::move(itsMesh);
    }

    void addNode(const Position& position) override
    {
        for (const double coordinate : position)
        {
            itsMesh.coords.push_back(static_cast<float>(coordinate));
        }
    }

    void addElement(int typeCode, std::span<const int> nodes, int matl) override
    {
        itsMesh.eltTypes.push_back(typeCode);
        itsMesh.matlIdPerElt.push_back(matl);
        itsFirstNode.push_back(itsMesh.connectivity.size());
        itsMesh.connectivity.insert(itsMesh.connectivity.end(), nodes.begin(), nodes.end());
    }

private:
    using GridIndex = std::array<int, 3>;

    bool isInner(int index) const { return 0 < index && index < itsNbCells; }

    Position moved(Position position, bool isMoved, double factor = 1.0)
    {
        for (double& coordinate : position)
        {
            const double way = itsRandom.real(-1.0, 1.0) * factor * itsOptions.distortion / itsNbCells;
            coordinate += isMoved ? way : 0.0;
        }
        return position;
    }

    /// Inner edges are curved; those on the cube's faces, or on a face that linear tetrahedra share, stay straight.
    bool isCurved(const GridIndex& from, const GridIndex& to) const
    {
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            if (from[axis] == to[axis] && !isInner(from[axis]))
            {
                return false;
            }
        }
        return from[0] != to[0] || fillingAt(itsOptions.kind, itsNbCells, from[0] - 1) == Filling::quadraticTetrahedra;
    }

    /// Of a corner of cells, along x, y and z.
    GridIndex gridIndex(int corner) const
    {
        const int row = itsNbCells + 1;
        return {corner / (row * row), corner % row, corner / row % row};
    }

    void linkElements()
    {
        itsMesh.coords.shrink_to_fit();
        itsMesh.connectivity.shrink_to_fit();
        itsMesh.eltTypes.shrink_to_fit();
        itsMesh.matlIdPerElt.shrink_to_fit();
        itsMesh.eltNodes.reserve(itsFirstNode.size());
        for (const std::size_t first : itsFirstNode)
        {
            itsMesh.eltNodes.push_back(itsMesh.connectivity.data() + first);
        }
    }

    MeshOptions itsOptions;
    int itsNbCells;
    Random itsRandom;
    GeneratedMesh itsMesh;
    std::vector<std::size_t> itsFirstNode;
};

/// Nodes and Gauss points of a type code.
struct TypeCounts
{
    int nbNodes = 0;
    int nbGaussPoints = 0;
};

TypeCounts countsOf(int typeCode)
{
    TypeCounts counts;
    visitElementKind(typeCode, [&](auto kind) { counts = {decltype(kind)::nbNodes, decltype(kind)::nbGaussPoints}; });
    return counts;
}

/// What one layer of cells adds, over and above its corner nodes.
struct LayerCounts
{
    std::int64_t nbNodes = 0;
    std::int64_t nbElts = 0;
    std::int64_t nbGaussPoints = 0;
};

LayerCounts layerCounts(Filling filling, std::int64_t n)
{
    const std::int64_t nbCells = n * n;
    // Corners and mid-edge nodes together form a grid of half the spacing: two of its planes per layer of cells.
    const std::int64_t nbMidEdgeNodes = 2 * (2 * n + 1) * (2 * n + 1) - (n + 1) * (n + 1);
    switch (filling)
    {
    case Filling::hexahedron: return {0, nbCells, 8 * nbCells};
    case Filling::wedges: return {0, 2 * nbCells, 12 * nbCells};
    case Filling::pyramids: return {nbCells, 6 * nbCells, 48 * nbCells};
    case Filling::pyramidsBesideTetrahedra: return {nbCells, 7 * nbCells, 42 * nbCells};
    case Filling::tetrahedra: return {0, 6 * nbCells, 6 * nbCells};
    case Filling::quadraticTetrahedra: return {nbMidEdgeNodes, 6 * nbCells, 30 * nbCells};
    default: return {};
    }
}

std::int64_t approximateCount(MeshKind kind, MeshCount count, int nbCells)
{
    const std::int64_t nbCorners = nbCells + 1;
    LayerCounts sum{nbCorners * nbCorners * nbCorners, 0, 0};
    for (int i = 0; i < nbCells; ++i)
    {
        const LayerCounts layer = layerCounts(fillingAt(kind, nbCells, i), nbCells);
        sum = {sum.nbNodes + layer.nbNodes, sum.nbElts + layer.nbElts, sum.nbGaussPoints + layer.nbGaussPoints};
    }
    switch (count)
    {
    case MeshCount::nodes: return sum.nbNodes;
    case MeshCount::elements: return sum.nbElts;
    case MeshCount::gaussPoints: return sum.nbGaussPoints;
    }
    return 0;
}
} // namespace

std::int64_t GeneratedMesh::nbGaussPoints() const
{
    return std::accumulate(eltTypes.begin(), eltTypes.end(), std::int64_t{0},
                           [](std::int64_t sum, int type) { return sum + countsOf(type).nbGaussPoints; });
}

GeneratedMesh generateMesh(const MeshOptions& options)
{
    return MeshGenerator(options).generate();
}

RenumberedMesh renumber(const GeneratedMesh& mesh, std::uint32_t seed)
{
    Random random(seed);
    RenumberedMesh renumbered;
    renumbered.originalNode = random.permutation(mesh.nbNodes());
    renumbered.originalElt = random.permutation(mesh.nbElts());
    const bool hasOneType = std::ranges::count(mesh.eltTypes, mesh.eltTypes.front()) == mesh.nbElts();
    if (!hasOneType)
    {
        std::iota(renumbered.originalElt.begin(), renumbered.originalElt.end(), 0);
    }

    GeneratedMesh& result = renumbered.mesh;
    result.matlStates = mesh.matlStates;
    std::vector<int> newNode(renumbered.originalNode.size());
    result.coords.reserve(mesh.coords.size());
    for (std::size_t node = 0; node < newNode.size(); ++node)
    {
        const auto original = static_cast<std::size_t>(renumbered.originalNode[node]);
        newNode[original] = static_cast<int>(node);
        result.coords.insert(result.coords.end(), &mesh.coords[3 * original], &mesh.coords[3 * original] + 3);
    }
    result.connectivity.reserve(mesh.connectivity.size());
    for (const int originalElt : renumbered.originalElt)
    {
        const auto original = static_cast<std::size_t>(originalElt);
        result.eltTypes.push_back(mesh.eltTypes[original]);
        result.matlIdPerElt.push_back(mesh.matlIdPerElt[original]);
        result.eltNodes.push_back(result.connectivity.data() + result.connectivity.size());
        const int nbNodes = countsOf(mesh.eltTypes[original]).nbNodes;
        for (int i = 0; i < nbNodes; ++i)
        {
            result.connectivity.push_back(newNode[static_cast<std::size_t>(mesh.eltNodes[original][i])]);
        }
    }
    return renumbered;
}

int nbCellsFor(MeshKind kind, MeshCount count, std::int64_t wanted)
{
    const int fewest = kind == MeshKind::mix ? 5 : 2;
    int nbCells = fewest;
    while (approximateCount(kind, count, nbCells) < wanted)
    {
        ++nbCells;
    }
    const bool isLowerNearer = nbCells > fewest && wanted - approximateCount(kind, count, nbCells - 1) <
                                                       approximateCount(kind, count, nbCells) - wanted;
    return isLowerNearer ? nbCells - 1 : nbCells;
}

std::string_view nameOf(MeshKind kind)
{
    switch (kind)
    {
    case MeshKind::tetrahedra: return "tetrahedra";
    case MeshKind::hexahedra: return "hexahedra";
    case MeshKind::wedges: return "wedges";
    case MeshKind::pyramids: return "pyramids";
    case MeshKind::quadraticTetrahedra: return "quadratic-tetrahedra";
    case MeshKind::mix: return "mix";
    }
    return "";
}
} // namespace benchmarks
