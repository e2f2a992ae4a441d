#include "ReferenceCorrespondence.h"

#include "ReferenceElements.h"
#include "ReferenceGrid.h"
#include "ReferenceLocation.h"

#include <cmath>
#include <cstddef>
#include <functional>

namespace reference
{

namespace
{

/// A source pyramid passes only where the target has a pyramid at the same index, and there every type passes.
bool isSourceTypeAdmitted(const CorrespondenceRequest& request, int e)
{
    const int type = request.source.eltTypes[e];
    return type == 1 || type == 2 || type == 3 || type == 10 ||
           (e < request.target.nbElts && request.target.eltTypes[e] == 12);
}

bool isTargetTypeAdmitted(int type)
{
    return type == 1 || type == 2 || type == 3 || type == 10 || type == 6 || type == 7 || type == 12;
}

void checkTypes(const CorrespondenceRequest& request, const char* sourceMessage, const char* targetMessage)
{
    for (int e = 0; e < request.source.nbElts; ++e)
    {
        if (!isSourceTypeAdmitted(request, e))
        {
            throw Stopped{1, sourceMessage};
        }
    }
    for (int e = 0; e < request.target.nbElts; ++e)
    {
        if (!isTargetTypeAdmitted(request.target.eltTypes[e]))
        {
            throw Stopped{1, targetMessage};
        }
    }
}

bool isSelected(const CorrespondenceRequest& request, int element)
{
    return request.targetMatlMappingFlags[request.target.matlIdPerElt[element]] == 1;
}

/// The call frame of both computations.
Outcome run(const CorrespondenceRequest& request, Conversation& conversation, const std::string& success,
            const std::function<void(Observations&)>& computation)
{
    checkMaterials(request.source);
    checkMaterials(request.target);
    Outcome outcome;
    try
    {
        computation(outcome.seen);
        outcome.message = success;
    }
    catch (const Stopped& stopped)
    {
        outcome.errorCode = stopped.errorCode;
        outcome.message = stopped.message;
        outcome.seen.cancelled = stopped.cancelled;
    }
    conversation.notice("Mapping library exit.");
    outcome.transcript = conversation.transcript();
    return outcome;
}

/// Material state code and mapping flag per node, taken from the first element that reaches the node. A code of -1 also
/// means "not assigned".
struct NodeMaterials
{
    std::vector<int> states;
    std::vector<int> flags;
};

NodeMaterials nodeMaterials(const MeshArrays& mesh, const int* mappingFlags)
{
    NodeMaterials result;
    result.states.assign(index(mesh.nbNodes), -1);
    result.flags.assign(index(mesh.nbNodes), 0);
    for (int e = 0; e < mesh.nbElts; ++e)
    {
        const int matl = mesh.matlIdPerElt[e];
        for (int n = 0; n < nodeCount(mesh.eltTypes[e]); ++n)
        {
            const std::size_t node = index(mesh.connectivity[e][n]);
            if (result.states[node] == -1)
            {
                result.states[node] = mesh.matlTypes[matl];
                if (mappingFlags != nullptr)
                {
                    result.flags[node] = mappingFlags[matl];
                }
            }
        }
    }
    return result;
}

/// Whether two points coincide: within the tolerance on every axis and in distance.
bool coincide(const Vec3& a, const Vec3& b, float tolerance)
{
    const float dx = std::fabs(a[0] - b[0]);
    const float dy = std::fabs(a[1] - b[1]);
    const float dz = std::fabs(a[2] - b[2]);
    if (dx > tolerance || dy > tolerance || dz > tolerance)
    {
        return false;
    }
    return dx * dx + dy * dy + dz * dz <= tolerance * tolerance;
}

/// 1-based number of the first source node at a point with that state code (-1: any), or 0.
int matchingNode(const Grid& grid, const MeshArrays& source, const std::vector<int>& sourceStates, const Vec3& point,
                 int state, float tolerance)
{
    const Bucket* bucket = grid.bucketOf(point);
    if (bucket == nullptr || bucket->state != 1)
    {
        return 0;
    }
    for (const int n : bucket->items)
    {
        if (state != -1 && sourceStates[index(n)] != state)
        {
            continue;
        }
        if (coincide(point, nodePosition(source, n), tolerance))
        {
            return n + 1;
        }
    }
    return 0;
}

void matchAllNodes(const CorrespondenceRequest& request, Conversation& conversation, Observations& seen,
                   int* nodeCorrespondence)
{
    const MeshArrays& source = request.source;
    const MeshArrays& target = request.target;
    checkTypes(request,
               "Error: node to node correspondence computation from a mesh containing elements different from linear "
               "or quadratic tetrahedrons, linear hexahedrons, linear wedges or linear pyramids is not possible yet.",
               "Error: node to node correspondence computation to\n a mesh containing elements different from\n linear "
               "or quadratic tetrahedrons, linear hexahedrons, linear wedges or linear pyramids\n linear triangular "
               "elements, linear quadrilateral element\n is not possible.");
    conversation.begin("Node to node correspondence computation");
    conversation.report(0, "Pretreatment");

    const std::vector<Box> refBoxes = elementBoxes(source);
    const std::vector<Box> targetBoxes = elementBoxes(target);
    const NodeMaterials sourceNodes = nodeMaterials(source, nullptr);
    const NodeMaterials targetNodes = nodeMaterials(target, request.targetMatlMappingFlags);
    const float meanSize = meanBoxSize(refBoxes);
    const Grid grid = buildGrid(GridItems::nodes, TargetKind::mesh, target, source, refBoxes, targetBoxes,
                                request.targetMatlMappingFlags, meanSize, request.tuning);
    seen.gridDoublings = grid.nbDoublings;

    conversation.report(5, "Computation");
    int total = 0;
    for (const int flag : targetNodes.flags)
    {
        if (flag == 1)
        {
            ++total;
        }
    }
    if (total == 0)
    {
        throw Stopped{1, "There is no target node.\n"};
    }
    const float tolerance = static_cast<float>(meanSize * 0.001);
    for (int i = 0; i < target.nbNodes; ++i)
    {
        if (targetNodes.flags[index(i)] != 1)
        {
            continue;
        }
        const Vec3 point = nodePosition(target, i);
        nodeCorrespondence[i] =
            matchingNode(grid, source, sourceNodes.states, point, targetNodes.states[index(i)], tolerance);
        if (nodeCorrespondence[i] == 0)
        {
            const int anyState = matchingNode(grid, source, sourceNodes.states, point, -1, tolerance);
            for (int j = 0; j < target.nbNodes; ++j)
            {
                if (targetNodes.flags[index(j)] == 1)
                {
                    nodeCorrespondence[j] = 0;
                }
            }
            if (anyState == 0)
            {
                throw Stopped{1, "At least one node of the target mesh does not correspond to one of the nodes of the "
                                 "source mesh. Please try with the Mapping option\n"};
            }
            throw Stopped{1, "Extract operation is failed due to following reasons. Please try with the Mapping "
                             "option:\n At least one node located in a COINC interface was not correctly detached.\n "
                             "Volume type of at least one of the corresponding nodes of source and target is not "
                             "matching."};
        }
        conversation.pointDone(total);
    }
    conversation.reportEnd("Node to node correspondence computation terminated successfully.");
}

Vec3 centre(const MeshArrays& mesh, int element)
{
    const int nbNodes = nodeCount(mesh.eltTypes[element]);
    Vec3 sum = {0.0F, 0.0F, 0.0F};
    for (int n = 0; n < nbNodes; ++n)
    {
        const Vec3 node = nodePosition(mesh, mesh.connectivity[element][n]);
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            sum[axis] = sum[axis] + node[axis];
        }
    }
    const float factor = static_cast<float>(1.0 / nbNodes);
    for (float& value : sum)
    {
        value = value * factor;
    }
    return sum;
}

void clearSelected(const CorrespondenceRequest& request, int** sourceElements, int** sourceGaussPoints)
{
    for (int e = 0; e < request.target.nbElts; ++e)
    {
        if (!isSelected(request, e))
        {
            continue;
        }
        for (int g = 0; g < gaussPointCount(request.target.eltTypes[e]); ++g)
        {
            sourceElements[e][g] = 0;
            sourceGaussPoints[e][g] = 0;
        }
    }
}

void matchAllGaussPoints(const CorrespondenceRequest& request, Conversation& conversation, Observations& seen,
                         int** sourceElements, int** sourceGaussPoints)
{
    const MeshArrays& target = request.target;
    checkTypes(request,
               "Error: GP to GP correspondence computation from a mesh containing elements different from linear or "
               "quadratic tetrahedrons, linear hexahedrons, linear wedges or linear pyramids is not possible yet.",
               "Error: GP to GP correspondence computation to\n a mesh containing elements different from\n linear or "
               "quadratic tetrahedrons, linear hexahedrons, linear wedges, linear pyramids\n linear triangular "
               "elements, linear quadrilateral element\n is not possible.");
    conversation.begin("Gauss point to Gauss point correspondence computation");
    conversation.report(0, "Pretreatment");

    SearchableMesh source;
    source.mesh = request.source;
    source.boxes = elementBoxes(request.source);
    source.precision = request.tuning.refCoordTolerance;
    const std::vector<Box> targetBoxes = elementBoxes(target);
    const float meanSize = meanBoxSize(source.boxes);
    source.grid = buildGrid(GridItems::elements, TargetKind::mesh, target, request.source, source.boxes, targetBoxes,
                            request.targetMatlMappingFlags, meanSize, request.tuning);
    seen.gridDoublings = source.grid.nbDoublings;

    conversation.report(5, "Computation");
    int total = 0;
    for (int e = 0; e < target.nbElts; ++e)
    {
        if (isSelected(request, e))
        {
            total += gaussPointCount(target.eltTypes[e]);
        }
    }
    if (total == 0)
    {
        throw Stopped{1, "There is no target gauss point.\n"};
    }
    const float tolerance = meanSize * 0.001F;
    const Stopped noPartner{1, "At least one gauss point of the target mesh does not correspond to one gauss point of "
                               "the source mesh.\n"};
    for (int e = 0; e < target.nbElts; ++e)
    {
        if (!isSelected(request, e))
        {
            continue;
        }
        const int state = target.matlTypes[target.matlIdPerElt[e]];
        const Location location = locate(source, centre(target, e), state);
        if (location.element == -1)
        {
            clearSelected(request, sourceElements, sourceGaussPoints);
            throw noPartner;
        }
        for (int g = 0; g < gaussPointCount(target.eltTypes[e]); ++g)
        {
            const Vec3 point = gaussPointPosition(target, e, g);
            sourceElements[e][g] = 0;
            sourceGaussPoints[e][g] = 0;
            for (int h = 0; h < gaussPointCount(request.source.eltTypes[location.element]); ++h)
            {
                if (coincide(point, gaussPointPosition(request.source, location.element, h), tolerance))
                {
                    sourceElements[e][g] = location.element + 1;
                    sourceGaussPoints[e][g] = h + 1;
                    break;
                }
            }
            if (sourceElements[e][g] == 0)
            {
                clearSelected(request, sourceElements, sourceGaussPoints);
                throw noPartner;
            }
            conversation.pointDone(total);
        }
    }
    conversation.reportEnd("Gauss point to Gauss point correspondence computation terminated successfully.");
}

} // namespace

Outcome matchNodes(const CorrespondenceRequest& request, int* nodeCorrespondence)
{
    Conversation conversation(request.callback, "Node to node correspondence computation cancelled.\n");
    return run(request, conversation, "Node to Node correspondence computation normal termination.",
               [&](Observations& seen) { matchAllNodes(request, conversation, seen, nodeCorrespondence); });
}

Outcome matchGaussPoints(const CorrespondenceRequest& request, int** sourceElements, int** sourceGaussPoints)
{
    Conversation conversation(request.callback, "Gauss point to Gauss point correspondence computation cancelled.\n");
    return run(request, conversation, "Gauss point to Gauss point correspondence computation normal termination.",
               [&](Observations& seen)
               { matchAllGaussPoints(request, conversation, seen, sourceElements, sourceGaussPoints); });
}

} // namespace reference
