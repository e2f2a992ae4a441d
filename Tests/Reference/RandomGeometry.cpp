#include "RandomGeometry.h"

#include "ReferenceElements.h"

#include <algorithm>

namespace random_models
{

namespace
{

using reference::index;
using Point = std::array<double, 3>;

std::vector<CellKind> randomKinds(Random& random)
{
    if (random.chance(0.6))
    {
        return {random.pick(volumeKinds())};
    }
    std::vector<CellKind> kinds;
    for (const CellKind kind : volumeKinds())
    {
        if (random.chance(0.5))
        {
            kinds.push_back(kind);
        }
    }
    return kinds.empty() ? volumeKinds() : kinds;
}

/// Some slabs or a block of inner cells are missing; the cells at both ends remain.
std::function<bool(int, int, int)> randomHole(Random& random, const std::array<int, 3>& cells)
{
    int axis = 0;
    for (int other = 1; other < 3; ++other)
    {
        if (cells[index(other)] > cells[index(axis)])
        {
            axis = other;
        }
    }
    const int count = cells[index(axis)];
    const int first = random.integer(1, std::max(1, count / 2 - 1));
    const int last = random.integer(std::min(first + 1, count - 2), std::max(first, count - 2));
    return [axis, first, last](int i, int j, int k)
    {
        const int layer = axis == 0 ? i : axis == 1 ? j : k;
        return layer < first || layer > last;
    };
}

/// State codes of a target: those of the source, some of them exchanged for codes that the source may not have.
std::vector<int> targetStates(Random& random, const std::vector<int>& sourceStates, int count, double foreign)
{
    std::vector<int> states;
    for (int i = 0; i < count; ++i)
    {
        states.push_back(random.chance(foreign) ? random.pick(stateCodes) : random.pick(sourceStates));
    }
    return states;
}

/// Places a target's box within that of the source, or so that it may reach over it by less than the inclusion test
/// allows.
void placeTarget(Random& random, Cutting& target, const Body& body, bool inside)
{
    target.shear = body.shear;
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        double low = random.real(0.0, 0.4);
        double high = random.real(0.6, 1.0);
        if (!inside)
        {
            low = random.pick<double>({0.0, -0.02, -0.035, random.real(0.0, 0.3)});
            high = 1.0 - random.pick<double>({0.0, -0.02, -0.035, random.real(0.0, 0.3)});
        }
        target.origin[axis] = body.origin[axis] + low * body.size[axis];
        target.size[axis] = (high - low) * body.size[axis];
    }
}

std::array<float, 3> mean(const Mesh& mesh, int element, int nbNodes)
{
    Point sum{};
    for (int n = 0; n < nbNodes; ++n)
    {
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            sum[axis] += mesh.nodes[index(mesh.connectivity[index(element)][index(n)])][axis];
        }
    }
    return {static_cast<float>(sum[0] / nbNodes), static_cast<float>(sum[1] / nbNodes),
            static_cast<float>(sum[2] / nbNodes)};
}

/// A point inside, on a node, on an edge or face, near the boundary, or far away.
std::array<float, 3> randomPoint(Random& random, const Mesh& source, const Body& body, double outside)
{
    const int element = random.integer(0, source.nbElts() - 1);
    const int nbNodes = reference::nodeCount(source.types[index(element)]);
    if (random.chance(outside))
    {
        std::array<float, 3> p{};
        const double reach = random.pick<double>({0.02, 0.2, 1.0, 3.0});
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            p[axis] = static_cast<float>(body.origin[axis] + body.size[axis] * random.real(-reach, 1.0 + reach));
        }
        return p;
    }
    switch (random.integer(0, 3))
    {
    case 0: return source.nodes[index(source.connectivity[index(element)][index(random.integer(0, nbNodes - 1))])];
    case 1: return mean(source, element, random.integer(2, 4));
    case 2: return mean(source, element, nbNodes);
    default:
    {
        Point p{};
        double total = 0.0;
        for (int n = 0; n < nbNodes; ++n)
        {
            const double weight = random.real(0.0, 1.0);
            total += weight;
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                p[axis] += weight * source.nodes[index(source.connectivity[index(element)][index(n)])][axis];
            }
        }
        return {static_cast<float>(p[0] / total), static_cast<float>(p[1] / total), static_cast<float>(p[2] / total)};
    }
    }
}

/// Some cells' materials differ from element to element.
void scatterMaterials(Random& random, Mesh& mesh)
{
    for (int& matl : mesh.matlIds)
    {
        if (random.chance(0.05))
        {
            matl = random.integer(0, static_cast<int>(mesh.matlStates.size()) - 1);
        }
    }
}

} // namespace

Body randomBody(Random& random)
{
    Body body;
    const double scale = random.pick<double>({1.0, 1.0, 1.0, 0.01, 100.0});
    const double offset = random.pick<double>({0.0, 0.0, 1.0, 10.0});
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        body.size[axis] = scale * random.real(0.5, 4.0);
        body.origin[axis] = scale * offset * random.real(-1.0, 1.0);
        if (random.chance(0.3))
        {
            // Numbers that single precision holds exactly put target points on the boundaries of elements and buckets.
            body.size[axis] = random.integer(1, 4);
            body.origin[axis] = random.integer(-2, 2);
        }
    }
    if (random.chance(0.3))
    {
        body.shear = {random.real(-0.3, 0.3), random.real(-0.3, 0.3)};
    }
    return body;
}

std::vector<int> randomStates(Random& random, int count)
{
    std::vector<int> states;
    for (int i = 0; i < count; ++i)
    {
        states.push_back(random.pick(stateCodes));
    }
    return states;
}

std::function<int(int, int, int)> randomMaterials(Random& random, int nbMatls, const std::array<int, 3>& cells)
{
    switch (random.integer(0, 3))
    {
    case 0: return [](int, int, int) { return 0; };
    case 1: return [&random, nbMatls](int, int, int) { return random.integer(0, nbMatls - 1); };
    default:
    {
        const int axis = random.integer(0, 2);
        const int count = cells[index(axis)];
        return [axis, count, nbMatls](int i, int j, int k)
        {
            const int layer = axis == 0 ? i : axis == 1 ? j : k;
            return layer * nbMatls / count;
        };
    }
    }
}

Cutting randomSource(Random& random, const Body& body, SourceStyle style)
{
    Cutting cutting;
    cutting.origin = body.origin;
    cutting.size = body.size;
    cutting.shear = body.shear;
    for (int& count : cutting.cells)
    {
        count = style == SourceStyle::fine ? random.integer(6, 10) : random.integer(1, 5);
    }
    if (style == SourceStyle::withHole)
    {
        cutting.cells[index(random.integer(0, 2))] = random.integer(6, 9);
        cutting.keep = randomHole(random, cutting.cells);
    }
    cutting.kinds = randomKinds(random);
    cutting.distortion = random.pick<double>({0.0, 0.05, 0.15, 0.25});
    cutting.curvature = random.pick<double>({0.0, 0.05});
    cutting.detached = random.chance(0.2);
    cutting.turned = random.chance(0.3);
    return cutting;
}

Mesh randomSourceMesh(Random& random, const Body& body, SourceStyle style)
{
    Cutting cutting = randomSource(random, body, style);
    const int nbMatls = random.integer(1, 4);
    cutting.matl = randomMaterials(random, nbMatls, cutting.cells);
    Mesh source = cut(random, cutting);
    source.matlStates = randomStates(random, nbMatls);
    if (random.chance(0.2))
    {
        scatterMaterials(random, source);
    }
    if (random.chance(0.5))
    {
        renumber(random, source);
    }
    if (random.chance(0.15))
    {
        addUnusedNodes(random, source, random.integer(1, 4));
    }
    return source;
}

Mesh randomTargetMesh(Random& random, const Mesh& source, const Body& body, const TargetStyle& style)
{
    Cutting cutting;
    placeTarget(random, cutting, body, style.inside);
    for (int& count : cutting.cells)
    {
        count = random.integer(1, style.isFine ? 9 : 4);
    }
    cutting.kinds = randomKinds(random);
    if (random.chance(0.2))
    {
        cutting.kinds.push_back(CellKind::quadrilateral);
        cutting.kinds.push_back(CellKind::triangles);
    }
    cutting.distortion = random.pick<double>({0.0, 0.1, 0.25});
    cutting.curvature = random.pick<double>({0.0, 0.05});
    if (style.isSkin)
    {
        cutting.cells[2] = 1;
        cutting.kinds = {CellKind::quadrilateral, CellKind::triangles};
    }
    const int nbMatls = random.integer(1, 4);
    cutting.matl = randomMaterials(random, nbMatls, cutting.cells);
    cutting.detached = random.chance(style.detached);
    if (random.chance(0.1))
    {
        cutting.keep = [&random](int i, int j, int k) { return i + j + k == 0 || random.chance(0.7); };
    }
    Mesh target = cut(random, cutting);
    target.matlStates = targetStates(random, source.matlStates, nbMatls, style.foreign);
    if (random.chance(0.2))
    {
        scatterMaterials(random, target);
    }
    if (random.chance(0.5))
    {
        renumber(random, target);
    }
    if (random.chance(0.2))
    {
        addUnusedNodes(random, target, random.integer(1, 4));
    }
    return target;
}

Mesh randomPointCloud(Random& random, const Mesh& source, const Body& body, double outside)
{
    Mesh cloud;
    cloud.matlStates = targetStates(random, source.matlStates, random.integer(1, 3), 0.1);
    const int nbPoints = random.integer(1, random.chance(0.3) ? 250 : 40);
    for (int i = 0; i < nbPoints; ++i)
    {
        cloud.nodes.push_back(randomPoint(random, source, body, outside));
        cloud.matlIds.push_back(random.integer(0, static_cast<int>(cloud.matlStates.size()) - 1));
    }
    return cloud;
}

void makeLattice(Random& random, Mesh& source, Mesh& target)
{
    Cutting cutting;
    cutting.origin = {random.integer(-4, 4) * 1.0, random.integer(-4, 4) * 1.0, random.integer(-4, 4) * 1.0};
    cutting.cells = {random.integer(3, 6), random.integer(2, 4), random.integer(2, 4)};
    cutting.kinds = randomKinds(random);
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        cutting.size[axis] = cutting.cells[axis];
    }
    const int first = random.integer(1, cutting.cells[0] - 2);
    const int last = random.integer(first, cutting.cells[0] - 2);
    cutting.keep = [first, last](int i, int, int) { return i < first || i > last; };
    source = cut(random, cutting);
    source.matlStates = {1};
    if (random.chance(0.5))
    {
        renumber(random, source);
    }
    cutting.keep = [](int, int, int) { return true; };
    cutting.kinds = randomKinds(random);
    const int refinement = random.pick<int>({1, 2, 2, 4});
    for (int& count : cutting.cells)
    {
        count *= refinement;
    }
    target = cut(random, cutting);
    target.matlStates = {1};
}

} // namespace random_models
