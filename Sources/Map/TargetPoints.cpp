#include "TargetPoints.h"

#include <algorithm>
#include <atomic>

namespace
{
constexpr int notAssigned = -1;
constexpr Stage materialStage{"Pretreatment", 2, 3};

/// Where all elements say the same it does not matter which one is the first; it is enough to know which nodes are part
/// of any. `isPart` has room for a mark per node.
void assignOneMaterial(const ModelClass& mesh, const int* matlMappingFlags, const NodeMaterials& tables,
                       Workers& workers, unsigned char* isPart)
{
    std::fill_n(isPart, mesh.itsNbNodes, static_cast<unsigned char>(0));
    const bool isAlone = workers.nbWorkers() == 1;
    const auto visitElt = [&](std::int64_t elt)
    {
        const int* nodes = mesh.itsConnectivity[elt];
        const int nbNodes = mesh.nbNodesOfElt(static_cast<int>(elt));
        for (int i = 0; i < nbNodes; ++i)
        {
            // Workers would take each other's memory away if they wrote what stands there already.
            const std::atomic_ref mark(isPart[nodes[i]]);
            if (isAlone || mark.load(std::memory_order_relaxed) == 0)
            {
                mark.store(1, std::memory_order_relaxed);
            }
        }
    };
    forEachItem(workers, materialStage, mesh.itsNbElts, visitElt);
    const auto visitNode = [&](std::int64_t node)
    {
        const bool isAssigned = isPart[node] != 0;
        tables.matlIds[node] = isAssigned ? 0 : notAssigned;
        tables.matlStates[node] = isAssigned ? mesh.itsMatlStates[0] : notAssigned;
        tables.mappingFlags[node] = isAssigned ? matlMappingFlags[0] : 0;
    };
    forEachItem(workers, materialStage, mesh.itsNbNodes, visitNode);
}

/// The mean of an element's nodes; where an element is curved, and this may lie outside it, a place in its middle.
Vector3 middleOf(const ModelClass& model, int elt)
{
    Vector3 middle{};
    const int type = model.itsEltTypes[elt];
    if (type >= nbTypeCodes && model.itsAdmitsAllKinds)
    {
        visitElementKind(type,
                         [&]<class Kind>(Kind)
                         {
                             middle = physicalPosition<Kind>(
                                 gatherNodes<Kind>(model.itsConnectivity[elt], model.itsNodeCoords),
                                 Kind::initialGuess);
                         });
        return middle;
    }
    const int nbNodes = model.nbNodesOfElt(elt);
    for (int i = 0; i < nbNodes; ++i)
    {
        const Vector3 node = model.nodePosition(model.itsConnectivity[elt][i]);
        middle = {middle[0] + node[0], middle[1] + node[1], middle[2] + node[2]};
    }
    const float weight = single(1.0 / nbNodes);
    return {middle[0] * weight, middle[1] * weight, middle[2] * weight};
}
} // namespace

void assignMaterialsToNodes(const ModelClass& mesh, const int* matlMappingFlags, const NodeMaterials& tables,
                            Workers& workers)
{
    OwnedArray<unsigned char> isPart;
    if (mesh.itsNbMatls == 1 && isPart.allocate(mesh.itsNbNodes))
    {
        assignOneMaterial(mesh, matlMappingFlags, tables, workers, isPart.get());
        return;
    }
    assignMaterialsToNodes(mesh, matlMappingFlags, tables);
}

void assignMaterialsToNodes(const ModelClass& mesh, const int* matlMappingFlags, const NodeMaterials& tables)
{
    std::fill_n(tables.matlStates, mesh.itsNbNodes, notAssigned);
    if (tables.matlIds != nullptr)
    {
        std::fill_n(tables.matlIds, mesh.itsNbNodes, notAssigned);
    }
    if (tables.mappingFlags != nullptr)
    {
        std::fill_n(tables.mappingFlags, mesh.itsNbNodes, 0);
    }
    for (int elt = 0; elt < mesh.itsNbElts; ++elt)
    {
        const int matlId = mesh.itsMatlIdPerItem[elt];
        const int matlState = mesh.itsMatlStates[matlId];
        const int nbNodes = mesh.nbNodesOfElt(elt);
        for (int i = 0; i < nbNodes; ++i)
        {
            const int node = mesh.itsConnectivity[elt][i];
            if (tables.matlStates[node] != notAssigned)
            {
                continue;
            }
            tables.matlStates[node] = matlState;
            if (tables.matlIds != nullptr)
            {
                tables.matlIds[node] = matlId;
            }
            if (tables.mappingFlags != nullptr)
            {
                tables.mappingFlags[node] = matlMappingFlags[matlId];
            }
        }
    }
}

void takeMaterialsOfNodes(const ModelClass& mesh, const int* matlMappingFlags, const int* matlIdPerNode,
                          const NodeMaterials& tables)
{
    for (int node = 0; node < mesh.itsNbNodes; ++node)
    {
        const int matlId = matlIdPerNode[node];
        const bool isAssigned = matlId != notAssigned;
        tables.matlIds[node] = matlId;
        tables.matlStates[node] = isAssigned ? mesh.itsMatlStates[matlId] : notAssigned;
        tables.mappingFlags[node] = isAssigned ? matlMappingFlags[matlId] : 0;
    }
}

std::int64_t Target::nbMappedNodes() const
{
    std::int64_t count = 0;
    for (int node = 0; node < model.itsNbNodes; ++node)
    {
        count += isNodeMapped(node) ? 1 : 0;
    }
    return count;
}

std::int64_t Target::nbSelectedGaussPoints() const
{
    std::int64_t count = 0;
    for (int elt = 0; elt < model.itsNbElts; ++elt)
    {
        count += isEltSelected(elt) ? model.nbGaussPointsOfElt(elt) : 0;
    }
    return count;
}

bool NodeCursor::next(TargetPoint& point)
{
    while (itsNext < itsEnd && !itsTarget.isNodeMapped(itsNext))
    {
        ++itsNext;
    }
    if (itsNext >= itsEnd)
    {
        return false;
    }
    point = {.index = itsNext,
             .position = itsTarget.model.nodePosition(static_cast<int>(itsNext)),
             .matlStateClass = itsTarget.matlStateClassOfNode(itsNext),
             .matlState = itsTarget.matlStateOfNode(itsNext)};
    ++itsNext;
    return true;
}

bool GaussPointCursor::next(TargetPoint& point)
{
    const ModelClass& model = itsTarget.model;
    for (; itsElt < itsEnd; ++itsElt)
    {
        const int nbGaussPoints = model.nbGaussPointsOfElt(itsElt);
        if (itsTarget.isEltSelected(itsElt) && itsGaussPoint < nbGaussPoints)
        {
            point = {.index = itsFirstGaussPoint + itsGaussPoint,
                     .position = model.gaussPointPosition(itsElt, itsGaussPoint),
                     .matlStateClass = model.matlStateClassOfItem(itsElt),
                     .matlState = model.matlStateOfItem(itsElt)};
            ++itsGaussPoint;
            return true;
        }
        itsFirstGaussPoint += nbGaussPoints;
        itsGaussPoint = 0;
    }
    return false;
}

bool CentreCursor::next(TargetPoint& point)
{
    const ModelClass& model = itsTarget.model;
    while (itsElt < model.itsNbElts && !itsTarget.isEltSelected(itsElt))
    {
        ++itsElt;
    }
    if (itsElt >= model.itsNbElts)
    {
        return false;
    }
    point = {.index = itsElt,
             .position = middleOf(model, itsElt),
             .matlStateClass = model.matlStateClassOfItem(itsElt),
             .matlState = model.matlStateOfItem(itsElt)};
    ++itsElt;
    return true;
}
