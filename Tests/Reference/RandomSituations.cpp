#include "RandomSituations.h"

#include "RandomGeometry.h"
#include "ReferenceElements.h"
#include "ReferenceGrid.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace random_models
{

namespace
{

using reference::index;

float shifted(float value, int steps)
{
    for (; steps > 0; --steps)
    {
        value = std::nextafter(value, std::numeric_limits<float>::infinity());
    }
    for (; steps < 0; ++steps)
    {
        value = std::nextafter(value, -std::numeric_limits<float>::infinity());
    }
    return value;
}

} // namespace

void addDegenerateElement(Random& random, TransferProblem& problem, bool isPoint)
{
    const auto place = problem.target.nodes[index(random.integer(0, problem.target.nbNodes() - 1))];
    const float size = isPoint ? 0.0F : 0.5F * (problem.source.nodes.front()[0] - problem.source.nodes.back()[0]);
    const int first = problem.source.nbNodes();
    problem.source.nodes.push_back({place[0] - size, place[1] - size, place[2]});
    problem.source.nodes.push_back({place[0] + size, place[1] - size, place[2]});
    problem.source.nodes.push_back({place[0] - size, place[1] + size, place[2]});
    problem.source.nodes.push_back({place[0] + size, place[1] + size, place[2]});
    problem.source.addElement(2, {first, first + 1, first + 2, first + 3},
                              random.integer(0, static_cast<int>(problem.source.matlStates.size()) - 1));
    if (random.chance(0.7))
    {
        // First of all elements, so that it is the first candidate of its buckets.
        std::rotate(problem.source.connectivity.rbegin(), problem.source.connectivity.rbegin() + 1,
                    problem.source.connectivity.rend());
        std::rotate(problem.source.types.rbegin(), problem.source.types.rbegin() + 1, problem.source.types.rend());
        std::rotate(problem.source.matlIds.rbegin(), problem.source.matlIds.rbegin() + 1,
                    problem.source.matlIds.rend());
    }
}

void spoilRequest(Random& random, TransferProblem& problem)
{
    switch (random.integer(0, 9))
    {
    case 0:
        if (random.chance(0.5))
        {
            // Nothing at all in the target.
            problem.target.types.clear();
            problem.target.connectivity.clear();
            problem.target.matlIds.clear();
            if (problem.toPointCloud)
            {
                problem.target.nodes.clear();
            }
            break;
        }
        [[fallthrough]];
    case 1: problem.interpoMode = random.pick<int>({3, -1, 17, 2}); break;
    case 2:
        problem.refFields[0].location = 3;
        problem.targetFields[0].location = random.integer(1, 3);
        break;
    case 3: problem.targetFields.back().location = 3; break;
    case 4:
        problem.source.types[index(random.integer(0, problem.source.nbElts() - 1))] =
            random.pick<int>({0, 4, 5, 6, 7, 8, 9, 11, 13, 14, 15, -3});
        break;
    case 5:
        if (!problem.toPointCloud)
        {
            problem.target.types[index(random.integer(0, problem.target.nbElts() - 1))] =
                random.pick<int>({0, 4, 5, 8, 9, 11, 13, 14, 15, -3});
        }
        break;
    case 6: problem.mappingFlags.assign(problem.mappingFlags.size(), 0); break;
    case 7:
        (random.chance(0.5) ? problem.announcedRefFields : problem.announcedTargetFields) = random.chance(0.7) ? 0 : -1;
        break;
    case 8:
        (random.chance(0.5) ? problem.refFields : problem.targetFields).back().precision = random.pick<int>({0, 3});
        break;
    default: (random.chance(0.5) ? problem.source : problem.target).matlStates.clear(); break;
    }
}

void shadow(Random& random, Mesh& mesh, std::vector<int>& mappingFlags)
{
    Mesh result;
    result.nodes = mesh.nodes;
    result.matlStates = mesh.matlStates;
    result.matlStates.push_back(random.pick(stateCodes));
    mappingFlags.push_back(random.pick<int>({0, 2}));
    const double share = random.pick<double>({0.3, 1.0});
    for (std::size_t e = 0; e < mesh.types.size(); ++e)
    {
        if (random.chance(share))
        {
            result.addElement(mesh.types[e], mesh.connectivity[e], static_cast<int>(mesh.matlStates.size()));
        }
    }
    for (std::size_t e = 0; e < mesh.types.size(); ++e)
    {
        result.addElement(mesh.types[e], mesh.connectivity[e], mesh.matlIds[e]);
    }
    mesh = result;
}

void moveNodesByTolerance(Random& random, Mesh& source, Mesh& target)
{
    MeshPointers pointers(source);
    const float meanSize = reference::meanBoxSize(reference::elementBoxes(pointers.arrays()));
    const float tolerance = static_cast<float>(0.001 * static_cast<double>(meanSize));
    if (random.chance(0.5))
    {
        const std::size_t axis = index(random.integer(0, 2));
        const float offset = shifted(tolerance, random.integer(-1, 1));
        for (auto& node : target.nodes)
        {
            if (node[axis] == 0.0F)
            {
                node[axis] = random.chance(0.5) ? offset : -offset;
            }
        }
        return;
    }
    const double share = random.pick<double>({0.05, 1.0});
    const double factor = random.pick<double>({0.3, 0.57, 0.9, 0.9999, 1.0, 1.0001, 1.1, 5.0});
    const int axes = random.integer(1, 3);
    for (auto& node : target.nodes)
    {
        if (random.chance(share))
        {
            for (int axis = 0; axis < axes; ++axis)
            {
                node[index(axis)] +=
                    static_cast<float>(random.pick<double>({-1.0, 1.0}) * factor * static_cast<double>(tolerance));
            }
        }
    }
}

void snapToBuckets(Random& random, TransferProblem& problem)
{
    MeshPointers sourcePointers(problem.source);
    MeshPointers targetPointers(problem.target);
    const auto kind = problem.toPointCloud ? reference::TargetKind::pointCloud : reference::TargetKind::mesh;
    const reference::MeshArrays source = sourcePointers.arrays();
    const reference::MeshArrays target = targetPointers.arrays();
    const std::vector<reference::Box> boxes = reference::elementBoxes(source);
    reference::Grid grid;
    try
    {
        grid = reference::buildGrid(reference::GridItems::elements, kind, target, source, boxes, {},
                                    problem.mappingFlags.data(), reference::meanBoxSize(boxes), {});
    }
    catch (const reference::Stopped&)
    {
        return;
    }
    const float reach = reference::boxMarginRatio * grid.bucketSize;
    for (auto& node : problem.target.nodes)
    {
        const std::size_t axis = index(random.integer(0, 2));
        const float margin = 0.02F * (grid.max[axis] - grid.min[axis]);
        const int plane = random.integer(0, grid.nbBuckets[axis]);
        const float at =
            grid.min[axis] + static_cast<float>(plane) * grid.bucketSize + random.pick<float>({0.0F, reach, -reach});
        const bool isInner = node[axis] > grid.min[axis] + margin && node[axis] < grid.max[axis] - margin;
        const bool staysInner = at > grid.min[axis] + margin && at < grid.max[axis] - margin;
        if (isInner && staysInner && random.chance(0.7))
        {
            node[axis] = shifted(at, random.integer(-2, 2));
        }
    }
}

void touchInclusionLimit(Random& random, TransferProblem& problem)
{
    const std::size_t axis = index(random.integer(0, 2));
    const auto isLower = [axis](const auto& a, const auto& b) { return a[axis] < b[axis]; };
    const auto [sourceLow, sourceHigh] =
        std::minmax_element(problem.source.nodes.begin(), problem.source.nodes.end(), isLower);
    const auto [low, high] = std::minmax_element(problem.target.nodes.begin(), problem.target.nodes.end(), isLower);
    const float extent = (*sourceHigh)[axis] - (*sourceLow)[axis];
    const float limit = static_cast<float>((*sourceLow)[axis] - 0.05 * extent);
    const float top = (*high)[axis];
    const float estimate = (limit + reference::boxMarginRatio * top) / (1.0F + reference::boxMarginRatio);
    for (int step = -20; step <= 20; ++step)
    {
        const float candidate = shifted(estimate, step);
        if (candidate - reference::boxMarginRatio * (top - candidate) == limit)
        {
            (*low)[axis] = shifted(candidate, random.integer(-1, 1));
            return;
        }
    }
}

void turnElements(Random& random, Mesh& mesh)
{
    for (std::size_t e = 0; e < mesh.types.size(); ++e)
    {
        std::vector<int>& row = mesh.connectivity[e];
        if (!random.chance(0.5))
        {
            continue;
        }
        switch (mesh.types[e])
        {
        case 1:
            std::rotate(row.begin(), row.begin() + 1, row.begin() + 4);
            std::rotate(row.begin() + 4, row.begin() + 5, row.end());
            break;
        case 2: std::rotate(row.begin(), row.begin() + 1, row.begin() + 3); break;
        case 3:
            std::rotate(row.begin(), row.begin() + 1, row.begin() + 3);
            std::rotate(row.begin() + 3, row.begin() + 4, row.end());
            break;
        case 12: std::rotate(row.begin(), row.begin() + 1, row.begin() + 4); break;
        default: break;
        }
    }
}

} // namespace random_models
