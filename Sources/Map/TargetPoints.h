/// The points of a target one after another: its mapped nodes, the Gauss points of its selected elements, the centres
/// of these elements.
#ifndef VELTRANE_TARGET_POINTS_H
#define VELTRANE_TARGET_POINTS_H

#include "../ModelClass.h"
#include "../Search/PointLocator.h"
#include "Workers.h"

#include <cstdint>

/// Per node of a mesh what the material of its first element says, each table of nbNodes entries or null.
struct NodeMaterials
{
    int* matlIds;      ///< -1 for a node in no element
    int* matlStates;   ///< the same
    int* mappingFlags; ///< 0 for a node in no element
};

/// Gives every node the material of the first element that reaches it. A material of state -1 leaves the node open to
/// later elements, since -1 also means not assigned. `matlMappingFlags`, per material, may be null where the table of
/// flags is.
void assignMaterialsToNodes(const ModelClass& mesh, const int* matlMappingFlags, const NodeMaterials& tables);

/// The same by workers, with all tables. Takes memory of its own, but does without if there is none.
void assignMaterialsToNodes(const ModelClass& mesh, const int* matlMappingFlags, const NodeMaterials& tables,
                            Workers& workers);

/// The same where the materials are known; -1 is none.
void takeMaterialsOfNodes(const ModelClass& mesh, const int* matlMappingFlags, const int* matlIdPerNode,
                          const NodeMaterials& tables);

/// The target of a transfer: a mesh, or a cloud, whose points have materials of their own.
struct Target
{
    const ModelClass& model;
    const int* matlMappingFlags; ///< per material, 1: map it
    NodeMaterials nodes;         ///< of a mesh with fields at nodes

    bool isCloud() const { return model.itsKind == ModelKind::pointCloud; }
    int matlIdOfNode(std::int64_t node) const { return isCloud() ? model.itsMatlIdPerItem[node] : nodes.matlIds[node]; }
    int matlStateOfNode(std::int64_t node) const
    {
        return isCloud() ? model.matlStateOfItem(static_cast<int>(node)) : nodes.matlStates[node];
    }
    /// State class, 1 or 2, of a mapped node's material.
    int matlStateClassOfNode(std::int64_t node) const { return model.itsMatlStateClasses[matlIdOfNode(node)]; }
    bool isNodeMapped(std::int64_t node) const
    {
        return (isCloud() ? matlMappingFlags[model.itsMatlIdPerItem[node]] : nodes.mappingFlags[node]) == 1;
    }
    bool isEltSelected(int elt) const { return matlMappingFlags[model.itsMatlIdPerItem[elt]] == 1; }

    std::int64_t nbMappedNodes() const;
    std::int64_t nbSelectedGaussPoints() const;
};

/// The mapped nodes in a range of node numbers, in order.
class NodeCursor
{
public:
    NodeCursor(const Target& target, std::int64_t first, std::int64_t end)
        : itsTarget(target), itsNext(first), itsEnd(end)
    {
    }
    explicit NodeCursor(const Target& target) : NodeCursor(target, 0, target.model.itsNbNodes) {}

    /// False when there is none any more.
    bool next(TargetPoint& point);

private:
    const Target& itsTarget;
    std::int64_t itsNext;
    std::int64_t itsEnd;
};

/// The Gauss points of the selected elements in a range of elements. They are numbered over all target elements,
/// whether these are selected or not.
class GaussPointCursor
{
public:
    /// `firstGaussPoint` is the number of the first Gauss point of element `firstElt`.
    GaussPointCursor(const Target& target, int firstElt, int endElt, std::int64_t firstGaussPoint)
        : itsTarget(target), itsElt(firstElt), itsEnd(endElt), itsFirstGaussPoint(firstGaussPoint)
    {
    }
    explicit GaussPointCursor(const Target& target) : GaussPointCursor(target, 0, target.model.itsNbElts, 0) {}

    bool next(TargetPoint& point);

private:
    const Target& itsTarget;
    int itsElt;
    int itsEnd;
    int itsGaussPoint = 0; ///< of the element
    std::int64_t itsFirstGaussPoint;
};

/// Places in the middle of the selected elements, where not curved the means of their nodes; a point's index is its
/// element.
class CentreCursor
{
public:
    explicit CentreCursor(const Target& target) : itsTarget(target) {}

    bool next(TargetPoint& point);

private:
    const Target& itsTarget;
    int itsElt = 0;
};

#endif
