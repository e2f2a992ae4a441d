// Node-to-node correspondence of two meshes that share their nodes.
#include "MappingClass.h"

#include <algorithm>

namespace
{
constexpr ComputationTexts texts{"MappingClass::nodToNodCorrespondence()", "Node to node correspondence computation",
                                 "Node to node correspondence computation cancelled.\n",
                                 "Node to node correspondence computation terminated successfully."};

constexpr int anyMatlState = -1;
} // namespace

void MappingClass::nodToNodCorrespondence()
{
    nodTonodCorrTests();
    if (itsErrorCode != success)
    {
        return;
    }
    ComputationRun run(texts);
    if (!reportStart(run) || !createElementBoxes(run) || !assignStatesPerNode(run))
    {
        return;
    }
    const float meanSize = meanRefBoxSize();
    if (!buildBucketSpace(BucketSpaceClass::nodeBuckets, meanSize) || !reportStage(run, "Computation", 5))
    {
        return;
    }
    const int* isSelected = itsTargetMeshMappingAtNode.get();
    const int nbNodes = itsTargetMesh.itsNbNodes;
    const auto nbSelected = std::count(isSelected, isSelected + std::max(nbNodes, 0), 1);
    if (nbSelected == 0)
    {
        fail(run.buffer, "There is no target node.\n");
        return;
    }
    const float tolerance = single(meanSize * 0.001);
    ProgressCounter progress(nbSelected);
    for (int node = 0; node < nbNodes; ++node)
    {
        if (isSelected[node] != 1)
        {
            continue;
        }
        itsNodeCorrespondence[node] =
            matchingNode(itsTargetMesh.nodePosition(node), itsTargetMeshMatlStatePerNode[node], tolerance);
        if (itsNodeCorrespondence[node] == 0)
        {
            failNodeMatching(run, node, tolerance);
            return;
        }
        if (!reportProgress(run, progress))
        {
            return;
        }
    }
    reportTermination(run);
}

/// Gives the nodes of both meshes the state of their material, and surveys the target.
bool MappingClass::assignStatesPerNode(ComputationRun& run)
{
    if (!allocatePerNode(itsRefMeshMatlStatePerNode, itsRefMesh, "itsRefMeshMatlStatePerNode", run))
    {
        return false;
    }
    std::fill_n(itsRefMeshMatlStatePerNode.get(), itsRefMesh.itsNbNodes, -1);
    for (int elt = 0; elt < itsRefMesh.itsNbElts; ++elt)
    {
        assignMaterials(itsRefMesh, elt, itsRefMeshMatlStatePerNode.get(), [](int) {});
    }
    if (!allocatePerNode(itsTargetMeshMatlStatePerNode, itsTargetMesh, "itsTargetMeshMatlStatePerNode", run) ||
        !allocatePerNode(itsTargetMeshMappingAtNode, itsTargetMesh, "itsTargetMeshMappingAtNode", run))
    {
        return false;
    }
    std::fill_n(itsTargetMeshMatlStatePerNode.get(), itsTargetMesh.itsNbNodes, -1);
    std::fill_n(itsTargetMeshMappingAtNode.get(), itsTargetMesh.itsNbNodes, 0);
    for (int elt = 0; elt < itsTargetMesh.itsNbElts; ++elt)
    {
        const int mappingFlag = itsTargetMatlMappingFlags[itsTargetMesh.itsMatlIdPerItem[elt]];
        assignMaterials(itsTargetMesh, elt, itsTargetMeshMatlStatePerNode.get(),
                        [&](int node) { itsTargetMeshMappingAtNode[node] = mappingFlag; });
    }
    surveyTargetNodes();
    return true;
}

/// The number, from 1, of the first source node in the list of the point's bucket that is within the tolerance, or 0.
/// One bucket suffices: a source node is listed in every bucket that its tolerance reaches.
int MappingClass::matchingNode(const Vector3& point, int matlState, float tolerance) const
{
    const std::int64_t bucket = itsBucketSpace.bucketOfPoint(point);
    if (bucket < 0 || itsBucketSpace.state(bucket) != filledDirectly)
    {
        return 0;
    }
    for (const int node : itsBucketSpace.items(bucket))
    {
        if ((matlState == anyMatlState || itsRefMeshMatlStatePerNode[node] == matlState) &&
            isWithin(point, itsRefMesh.nodePosition(node), tolerance))
        {
            return node + 1;
        }
    }
    return 0;
}

/// Takes all matches back and tells why the node has no partner: nothing is there, or only nodes of other materials.
void MappingClass::failNodeMatching(ComputationRun& run, int node, float tolerance)
{
    const int partnerOfAnyMatl = matchingNode(itsTargetMesh.nodePosition(node), anyMatlState, tolerance);
    for (int i = 0; i < itsTargetMesh.itsNbNodes; ++i)
    {
        if (itsTargetMeshMappingAtNode[i] == 1)
        {
            itsNodeCorrespondence[i] = 0;
        }
    }
    if (partnerOfAnyMatl == 0)
    {
        fail(run.buffer, "At least one node of the target mesh does not correspond to one of the nodes of the source "
                         "mesh. Please try with the Mapping option\n");
    }
    else
    {
        fail(run.buffer, "Extract operation is failed due to following reasons. Please try with the Mapping option:\n "
                         "At least one node located in a COINC interface was not correctly detached.\n Volume type of "
                         "at least one of the corresponding nodes of source and target is not matching.");
    }
}
