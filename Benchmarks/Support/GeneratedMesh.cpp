#include "GeneratedMesh.h"

#include "Elements/ElementKinds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <initializer_list>
#include <numeric>
#include <utility>

namespace benchmarks
{
namespace
{
constexpr double midEdgeDistortion = 0.2; // of the corner nodes' distortion

/// What the cells at one x position of the grid are made of. All kinds fit together on common faces: a face of a cell
/// is one quadrilateral, or two triangles that meet in the diagonal from its lowest to its highest corner.
enum class Filling
{
    hexahedron,
    wedges,
    pyramids,
    pyramidsBesideTetrahedra, ///< pyramids, but two tetrahedra on the face towards higher x
    tetrahedra,
    quadraticTetrahedra
};

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

/// A cell's corners are numbered by bits: 1 is the step in x, 2 in y, 4 in z.
using Corners = std::array<int, 8>;

/// The faces' corners, counter-clockwise seen from the cell's centre.
constexpr std::array<std::array<std::size_t, 4>, 6> faces{
    {{0, 1, 3, 2}, {4, 6, 7, 5}, {0, 2, 6, 4}, {1, 5, 7, 3}, {0, 4, 5, 1}, {2, 3, 7, 6}}};
constexpr std::size_t faceTowardsHigherX = 3;

/// Six tetrahedra per cell around the diagonal from corner 0 to corner 7, one per order of the axes.
constexpr std::array<std::array<std::size_t, 4>, 6> tetrahedraOfCell{
    {{0, 1, 3, 7}, {0, 3, 2, 7}, {0, 2, 6, 7}, {0, 6, 4, 7}, {0, 4, 5, 7}, {0, 5, 1, 7}}};

class MeshGenerator
{
public:
    explicit MeshGenerator(const MeshOptions& options)
        : itsOptions(options), itsNbCells(options.nbCellsPerAxis), itsRandom(options.seed)
    {
    }

    GeneratedMesh generate()
    {
        placeCorners();
        for (int i = 0; i < itsNbCells; ++i)
        {
            itsMaterial = i < itsOptions.secondMaterial * itsNbCells ? 1 : 0;
            const Filling filling = fillingAt(itsOptions.kind, itsNbCells, i);
            for (int j = 0; j < itsNbCells; ++j)
            {
                for (int k = 0; k < itsNbCells; ++k)
                {
                    fillCell(filling, i, j, k);
                }
            }
        }
        if (itsOptions.secondMaterial > 0.0)
        {
            itsMesh.matlStates = {1, 4};
        }
        linkElements();
        return std::move(itsMesh);
    }

private:
    using Position = std::array<double, 3>;

    int cornerNode(int i, int j, int k) const { return (i * (itsNbCells + 1) + j) * (itsNbCells + 1) + k; }
    bool isInner(int index) const { return 0 < index && index < itsNbCells; }

    double displacement(double factor)
    {
        return (2.0 * itsRandom() - 1.0) * factor * itsOptions.distortion / itsNbCells;
    }

    int addNode(Position position, bool isMoved, double factor = 1.0)
    {
        for (double& coordinate : position)
        {
            const double moved = coordinate + displacement(factor);
            itsMesh.coords.push_back(static_cast<float>(isMoved ? moved : coordinate));
        }
        return itsMesh.nbNodes() - 1;
    }

    void placeCorners()
    {
        for (int i = 0; i <= itsNbCells; ++i)
        {
            for (int j = 0; j <= itsNbCells; ++j)
            {
                for (int k = 0; k <= itsNbCells; ++k)
                {
                    const auto at = [&](int index) { return static_cast<double>(index) / itsNbCells; };
                    addNode({at(i), at(j), at(k)}, isInner(i) && isInner(j) && isInner(k));
                }
            }
        }
    }

    void fillCell(Filling filling, int i, int j, int k)
    {
        Corners corners;
        for (std::size_t corner = 0; corner < corners.size(); ++corner)
        {
            const auto bits = static_cast<int>(corner);
            corners[corner] = cornerNode(i + (bits & 1), j + ((bits >> 1) & 1), k + ((bits >> 2) & 1));
        }
        const auto& c = corners;
        switch (filling)
        {
        case Filling::hexahedron:
            addElement(LinearHexahedron::typeCode, {c[0], c[1], c[3], c[2], c[4], c[5], c[7], c[6]});
            break;
        case Filling::wedges:
            addElement(LinearWedge::typeCode, {c[0], c[1], c[3], c[4], c[5], c[7]});
            addElement(LinearWedge::typeCode, {c[0], c[3], c[2], c[4], c[7], c[6]});
            break;
        case Filling::pyramids: addPyramids(c, i, j, k, false); break;
        case Filling::pyramidsBesideTetrahedra: addPyramids(c, i, j, k, true); break;
        case Filling::tetrahedra:
            for (const auto& t : tetrahedraOfCell)
            {
                addElement(LinearTetrahedron::typeCode, {c[t[0]], c[t[1]], c[t[2]], c[t[3]]});
            }
            break;
        case Filling::quadraticTetrahedra:
            for (const auto& t : tetrahedraOfCell)
            {
                addQuadraticTetrahedron({c[t[0]], c[t[1]], c[t[2]], c[t[3]]});
            }
            break;
        }
    }

    void addPyramids(const Corners& c, int i, int j, int k, bool isBesideTetrahedra)
    {
        const auto middle = [&](int index) { return (index + 0.5) / itsNbCells; };
        const int centre = addNode({middle(i), middle(j), middle(k)}, true);
        for (std::size_t face = 0; face < faces.size(); ++face)
        {
            const auto& f = faces[face];
            if (isBesideTetrahedra && face == faceTowardsHigherX)
            {
                addElement(LinearTetrahedron::typeCode, {c[f[0]], c[f[1]], c[f[2]], centre});
                addElement(LinearTetrahedron::typeCode, {c[f[0]], c[f[2]], c[f[3]], centre});
                continue;
            }
            addElement(LinearPyramid::typeCode, {c[f[0]], c[f[1]], c[f[2]], c[f[3]], centre});
        }
    }

    void addQuadraticTetrahedron(const std::array<int, 4>& c)
    {
        addElement(QuadraticTetrahedron::typeCode,
                   {c[0], c[1], c[2], c[3], midEdgeNode(c[0], c[1]), midEdgeNode(c[1], c[2]), midEdgeNode(c[0], c[2]),
                    midEdgeNode(c[0], c[3]), midEdgeNode(c[1], c[3]), midEdgeNode(c[2], c[3])});
    }

    /// The node in the middle of the edge between two corners of a cell, made when it is first asked for. Inner edges
    /// are curved; those on the cube's faces, or on a face that linear tetrahedra share, stay straight.
    int midEdgeNode(int a, int b)
    {
        const int low = std::min(a, b);
        const int high = std::max(a, b);
        const auto from = gridIndex(low);
        const auto to = gridIndex(high);
        const auto direction =
            static_cast<std::size_t>((to[0] - from[0]) + 2 * (to[1] - from[1]) + 4 * (to[2] - from[2]));
        if (itsMidEdgeNodes.empty())
        {
            const auto nbCorners = static_cast<std::size_t>(itsNbCells + 1);
            itsMidEdgeNodes.assign(nbCorners * nbCorners * nbCorners, {-1, -1, -1, -1, -1, -1, -1, -1});
        }
        int& node = itsMidEdgeNodes[static_cast<std::size_t>(low)][direction];
        if (node == -1)
        {
            bool isStraight = false;
            Position position;
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                const bool isInPlane = from[axis] == to[axis];
                isStraight = isStraight || (isInPlane && !isInner(from[axis]));
                position[axis] = 0.5 * (coordinate(low, axis) + coordinate(high, axis));
            }
            isStraight = isStraight || (from[0] == to[0] && touchesOtherKind(from[0]));
            node = addNode(position, !isStraight, midEdgeDistortion);
        }
        return node;
    }

    bool touchesOtherKind(int i) const
    {
        return fillingAt(itsOptions.kind, itsNbCells, i - 1) != Filling::quadraticTetrahedra;
    }

    std::array<int, 3> gridIndex(int corner) const
    {
        const int row = itsNbCells + 1;
        return {corner / (row * row), corner / row % row, corner % row};
    }

    double coordinate(int node, std::size_t axis) const
    {
        return static_cast<double>(itsMesh.coords[3 * static_cast<std::size_t>(node) + axis]);
    }

    void addElement(int typeCode, std::initializer_list<int> nodes)
    {
        itsMesh.eltTypes.push_back(typeCode);
        itsMesh.matlIdPerElt.push_back(itsMaterial);
        itsFirstNode.push_back(itsMesh.connectivity.size());
        itsMesh.connectivity.insert(itsMesh.connectivity.end(), nodes);
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
    UniformRandom itsRandom;
    int itsMaterial = 0;
    GeneratedMesh itsMesh;
    std::vector<std::size_t> itsFirstNode;
    std::vector<std::array<int, 8>> itsMidEdgeNodes; ///< per lower corner and direction of the edge
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
    }
    return {};
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

std::vector<int> randomOrder(int n, UniformRandom& random)
{
    std::vector<int> order(static_cast<std::size_t>(n));
    std::iota(order.begin(), order.end(), 0);
    for (int i = n - 1; i > 0; --i)
    {
        std::swap(order[static_cast<std::size_t>(i)], order[static_cast<std::size_t>(random.below(i + 1))]);
    }
    return order;
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
    UniformRandom random(seed);
    RenumberedMesh renumbered;
    renumbered.originalNode = randomOrder(mesh.nbNodes(), random);
    renumbered.originalElt = randomOrder(mesh.nbElts(), random);
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
