// The driver of a transfer: preparation, the visit to every target node and Gauss point, far nodes.
#include "MappingClass.h"

#include <algorithm>

namespace
{
constexpr ComputationTexts meshTexts{"MappingClass::interpolation()", "FE 3D mesh to FE 3D mesh interpolation",
                                     "Interpolation cancelled.\n", "Interpolation terminated successfully."};
constexpr ComputationTexts pointCloudTexts{"MappingClass::interpolation()", "FE 3D mesh to points cloud interpolation",
                                           "Interpolation cancelled.\n", "Interpolation terminated successfully."};
} // namespace

void MappingClass::interpolation()
{
    checkInterpo();
    if (itsErrorCode == success)
    {
        interpoTests();
    }
    if (itsErrorCode != success)
    {
        return;
    }
    ComputationRun run(itsTransferType == meshToPointCloud ? pointCloudTexts : meshTexts);
    if (!reportStage(run, "Pretreatment", 0) || !createElementBoxes(run) || !averageGaussPointFields())
    {
        return;
    }
    scanTargetLocations();
    if (!assignTargetMaterials(run) || !buildBucketSpace(BucketSpaceClass::elementBuckets, meanRefBoxSize()) ||
        !reportStage(run, "Computation", 5))
    {
        return;
    }
    const std::int64_t nbPoints = countTargetPoints();
    if (nbPoints == 0)
    {
        fail(run.buffer, "There is no target point where fields should be interpolated.\n");
        return;
    }
    ProgressCounter progress(nbPoints);
    if (!interpolateAtNodes(run, progress) || !treatFarNodes() || !interpolateAtGaussPoints(run, progress))
    {
        return;
    }
    itsMeanIterations = itsMeanIterations / static_cast<float>(itsNbInterpolatedPoints);
    reportTermination(run);
}

/// Gives every source field at Gauss points its values at nodes.
bool MappingClass::averageGaussPointFields()
{
    for (FieldClass& field : itsRefFields.fields())
    {
        if (field.itsLocation == atGaussPoints)
        {
            if (char* errorText = field.interpoAtNodes(itsRefMesh))
            {
                adoptErrorText(errorText, failure);
                return false;
            }
        }
    }
    return true;
}

void MappingClass::scanTargetLocations()
{
    for (const FieldClass& field : itsTargetFields.fields())
    {
        switch (field.itsLocation)
        {
        case atNodes: itsInterpoAtNodes = 1; break;
        case atGaussPoints: itsInterpoAtGPs = 1; break;
        case atElements: itsInterpoAtElts = 1; break;
        default: break;
        }
    }
}

/// Gives every target node, or point of a cloud, its material, if there are fields at nodes.
bool MappingClass::assignTargetMaterials(ComputationRun& run)
{
    if (itsInterpoAtNodes == 0)
    {
        return true;
    }
    if (!allocatePerNode(itsTargetMeshMatlIdPerNode, itsTargetMesh, "itsTargetMeshMatlIdPerNode", run) ||
        !allocatePerNode(itsTargetMeshMatlStatePerNode, itsTargetMesh, "itsTargetMeshMatlStatePerNode", run) ||
        !allocatePerNode(itsTargetMeshMappingAtNode, itsTargetMesh, "itsTargetMeshMappingAtNode", run))
    {
        return false;
    }
    const int nbNodes = itsTargetMesh.itsNbNodes;
    std::fill_n(itsTargetMeshMatlIdPerNode.get(), nbNodes, -1);
    std::fill_n(itsTargetMeshMappingAtNode.get(), nbNodes, 0);
    const auto assign = [this](int node, int item)
    {
        itsTargetMeshMatlIdPerNode[node] = itsTargetMesh.itsMatlIdPerItem[item];
        itsTargetMeshMappingAtNode[node] = itsTargetMatlMappingFlags[itsTargetMesh.itsMatlIdPerItem[item]];
    };
    if (itsTargetMesh.itsKind == ModelKind::mesh)
    {
        assignMaterials(itsTargetMesh, itsTargetMeshMatlStatePerNode.get(), assign);
        return true;
    }
    for (int point = 0; point < nbNodes; ++point)
    {
        itsTargetMeshMatlStatePerNode[point] = itsTargetMesh.matlStateOfItem(point);
        assign(point, point);
    }
    return true;
}

std::int64_t MappingClass::countTargetPoints() const
{
    std::int64_t count = 0;
    if (itsInterpoAtNodes != 0)
    {
        const int* flags = itsTargetMeshMappingAtNode.get();
        count += std::count(flags, flags + std::max(itsTargetMesh.itsNbNodes, 0), 1);
    }
    return itsInterpoAtGPs != 0 ? count + countTargetGaussPoints() : count;
}

bool MappingClass::interpolateAtNodes(ComputationRun& run, ProgressCounter& progress)
{
    if (itsInterpoAtNodes == 0)
    {
        return true;
    }
    for (int node = 0; node < itsTargetMesh.itsNbNodes; ++node)
    {
        if (itsTargetMeshMappingAtNode[node] != 1)
        {
            continue;
        }
        int farOutside = 0;
        interpolationAtPoint(atNodes, node, itsTargetMesh.nodePosition(node),
                             itsTargetMesh.itsMatlStateClasses[itsTargetMeshMatlIdPerNode[node]],
                             itsTargetMeshMatlStatePerNode[node], farOutside);
        if (itsErrorCode != success || (farOutside != 0 && !markFarNode(run, node)) || !reportProgress(run, progress))
        {
            return false;
        }
    }
    return true;
}

bool MappingClass::markFarNode(ComputationRun& run, int node)
{
    ++itsNbTargetNodesFarOutside;
    if (!itsTargetNodesFarOutside)
    {
        if (!itsTargetNodesFarOutside.allocate(itsTargetMesh.itsNbNodes))
        {
            // The blank and the other function's name are part of the text that hosts know.
            fail(run.buffer, "Allocation of itsTargetNodesFarOutside is not possible in MappingClass:: "
                             "interpolationAtPoint() function.\n");
            return false;
        }
        std::fill_n(itsTargetNodesFarOutside.get(), itsTargetMesh.itsNbNodes, static_cast<unsigned char>(0));
    }
    itsTargetNodesFarOutside[node] = 1;
    return true;
}

bool MappingClass::treatFarNodes()
{
    if (itsNbTargetNodesFarOutside > 0)
    {
        if (itsInterpoMode == defaultAtFarNodes)
        {
            fillFarNodesWithDefaults();
        }
        else if (itsInterpoMode == propagateToFarNodes)
        {
            nodeFieldsPropagation();
        }
    }
    return itsErrorCode == success;
}

void MappingClass::fillFarNodesWithDefaults()
{
    for (int node = 0; node < itsTargetMesh.itsNbNodes; ++node)
    {
        if (itsTargetNodesFarOutside[node] == 1 && itsTargetMeshMappingAtNode[node] == 1)
        {
            fillNodeFields(node, [](const FieldClass& field) { return field.defaultValue(); });
        }
    }
}

/// Writes a value into every field at nodes that exists on the node's material.
void MappingClass::fillNodeFields(int node, float (*valueFor)(const FieldClass&))
{
    const int matlStateClass = itsTargetMesh.itsMatlStateClasses[itsTargetMeshMatlIdPerNode[node]];
    for (FieldClass& field : itsTargetFields.fields())
    {
        if (field.itsLocation == atNodes && field.existsOn(matlStateClass))
        {
            field.fillLocation(node, valueFor(field));
        }
    }
}

bool MappingClass::interpolateAtGaussPoints(ComputationRun& run, ProgressCounter& progress)
{
    if (itsInterpoAtGPs == 0)
    {
        return true;
    }
    std::int64_t firstGaussPoint = 0;
    for (int elt = 0; elt < itsTargetMesh.itsNbElts; ++elt)
    {
        const int nbGaussPoints = itsTargetMesh.nbGaussPointsOfElt(elt);
        if (isTargetEltSelected(elt))
        {
            for (int i = 0; i < nbGaussPoints; ++i)
            {
                int farOutside = 0;
                interpolationAtPoint(atGaussPoints, firstGaussPoint + i, itsTargetMesh.gaussPointPosition(elt, i),
                                     itsTargetMesh.matlStateClassOfItem(elt), itsTargetMesh.matlStateOfItem(elt),
                                     farOutside);
                if (itsErrorCode != success)
                {
                    return false;
                }
                itsNbTargetGPsFarOutside += farOutside;
                if (!reportProgress(run, progress))
                {
                    return false;
                }
            }
        }
        firstGaussPoint += nbGaussPoints;
    }
    return true;
}

/// Gauss points are numbered here over the selected elements alone, unlike everywhere else: with unselected elements
/// among them the default lands on the first Gauss points of the field. Hosts rely on it as it is.
void MappingClass::fillTargetsWithDefault()
{
    const std::int64_t nbSelectedGaussPoints = countTargetGaussPoints();
    for (FieldClass& field : itsTargetFields.fields())
    {
        if (field.itsLocation == atNodes && itsInterpoAtNodes != 0 && itsTargetMeshMappingAtNode)
        {
            for (int node = 0; node < itsTargetMesh.itsNbNodes; ++node)
            {
                if (itsTargetMeshMappingAtNode[node] == 1)
                {
                    field.fillLocation(node, itsDefaultValue);
                }
            }
        }
        else if (field.itsLocation == atGaussPoints && itsInterpoAtGPs != 0)
        {
            for (std::int64_t gaussPoint = 0; gaussPoint < nbSelectedGaussPoints; ++gaussPoint)
            {
                field.fillLocation(gaussPoint, itsDefaultValue);
            }
        }
    }
}
