// Node-to-node correspondence of two meshes that share their nodes.
#include "Map/Matching.h"
#include "Map/Survey.h"
#include "MappingClass.h"

#include <algorithm>

namespace
{
constexpr ComputationTexts texts{"MappingClass::nodToNodCorrespondence()", "Node to node correspondence computation",
                                 "Node to node correspondence computation cancelled.\n",
                                 "Node to node correspondence computation terminated successfully."};
} // namespace

void MappingClass::nodToNodCorrespondence()
{
    nodTonodCorrTests();
    if (itsErrorCode != success)
    {
        return;
    }
    ComputationRun run(*this, texts);
    if (!run.start() || !createElementBoxes(run) || !assignStatesPerNode(run))
    {
        return;
    }
    const float meanSize = meanRefBoxSize();
    if (!buildBucketSpace(BucketSpaceClass::nodeBuckets, meanSize) || !run.enterStage("Computation", 5))
    {
        return;
    }
    const int* isSelected = itsTargetMeshMappingAtNode.get();
    const int nbNodes = itsTargetMesh.itsNbNodes;
    const auto nbSelected = std::count(isSelected, isSelected + std::max(nbNodes, 0), 1);
    if (nbSelected == 0)
    {
        run.fail("There is no target node.\n");
        return;
    }
    const NodeMatcher matcher{itsRefMesh, itsRefMeshMatlStatePerNode.get(), itsBucketSpace, single(meanSize * 0.001)};
    ProgressCounter progress(nbSelected);
    for (int node = 0; node < nbNodes; ++node)
    {
        if (isSelected[node] != 1)
        {
            continue;
        }
        const Vector3 point = itsTargetMesh.nodePosition(node);
        itsNodeCorrespondence[node] = matcher.find(point, itsTargetMeshMatlStatePerNode[node]);
        if (itsNodeCorrespondence[node] == 0)
        {
            // All matches are taken back.
            for (int i = 0; i < nbNodes; ++i)
            {
                if (isSelected[i] == 1)
                {
                    itsNodeCorrespondence[i] = 0;
                }
            }
            run.fail("%s", matcher.reasonFor(point));
            return;
        }
        if (!run.advance(progress))
        {
            return;
        }
    }
    run.terminate();
}

/// Gives the nodes of both meshes the state of their material, and surveys the target.
bool MappingClass::assignStatesPerNode(ComputationRun& run)
{
    if (!allocatePerNode(itsRefMeshMatlStatePerNode, itsRefMesh, "itsRefMeshMatlStatePerNode", run))
    {
        return false;
    }
    assignMaterialsToNodes(itsRefMesh, nullptr, {nullptr, itsRefMeshMatlStatePerNode.get(), nullptr});
    if (!allocatePerNode(itsTargetMeshMatlStatePerNode, itsTargetMesh, "itsTargetMeshMatlStatePerNode", run) ||
        !allocatePerNode(itsTargetMeshMappingAtNode, itsTargetMesh, "itsTargetMeshMappingAtNode", run))
    {
        return false;
    }
    assignMaterialsToNodes(itsTargetMesh, itsTargetMatlMappingFlags,
                           {nullptr, itsTargetMeshMatlStatePerNode.get(), itsTargetMeshMappingAtNode.get()});
    OneWorker worker;
    surveyTarget(target(), itsSurveyedBoxes, worker);
    return true;
}
