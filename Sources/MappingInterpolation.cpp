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
    if (!reportStart(run) || !createElementBoxes(run) || !averageGaussPointFields())
    {
        return;
    }
    scanTargetLocations();
    if (!allocateTargetMaterials(run))
    {
        return;
    }
    assignTargetMaterials();
    if (!buildBucketSpace(BucketSpaceClass::elementBuckets, meanRefBoxSize()) || !reportStage(run, "Computation", 5))
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

/// Room for the material of every target node, if there are fields at nodes.
bool MappingClass::allocateTargetMaterials(ComputationRun& run)
{
    return itsInterpoAtNodes == 0 ||
           (allocatePerNode(itsTargetMeshMatlIdPerNode, itsTargetMesh, "itsTargetMeshMatlIdPerNode", run) &&
            allocatePerNode(itsTargetMeshMatlStatePerNode, itsTargetMesh, "itsTargetMeshMatlStatePerNode", run) &&
            allocatePerNode(itsTargetMeshMappingAtNode, itsTargetMesh, "itsTargetMeshMappingAtNode", run));
}

/// Surveys a target mesh: the box of what is selected, and the material of every node if there are fields at nodes.
void MappingClass::assignTargetMaterials()
{
    if (isCloudTarget())
    {
        return;
    }
    if (itsInterpoAtNodes == 0)
    {
        surveyTarget();
        return;
    }
    const int nbNodes = itsTargetMesh.itsNbNodes;
    std::fill_n(itsTargetMeshMatlIdPerNode.get(), nbNodes, -1);
    std::fill_n(itsTargetMeshMatlStatePerNode.get(), nbNodes, -1);
    std::fill_n(itsTargetMeshMappingAtNode.get(), nbNodes, 0);
    for (int elt = 0; elt < itsTargetMesh.itsNbElts; ++elt)
    {
        const int matlId = itsTargetMesh.itsMatlIdPerItem[elt];
        assignMaterials(itsTargetMesh, elt, itsTargetMeshMatlStatePerNode.get(),
                        [&](int node)
                        {
                            itsTargetMeshMatlIdPerNode[node] = matlId;
                            itsTargetMeshMappingAtNode[node] = itsTargetMatlMappingFlags[matlId];
                        });
    }
    surveyTargetNodes();
}

std::int64_t MappingClass::countTargetPoints() const
{
    std::int64_t count = 0;
    for (int node = 0; itsInterpoAtNodes != 0 && node < itsTargetMesh.itsNbNodes; ++node)
    {
        count += isTargetNodeMapped(node) ? 1 : 0;
    }
    return itsInterpoAtGPs != 0 ? count + countTargetGaussPoints() : count;
}

/// Locates points, and then gives each of them its values in the order of the points. False if the run has ended.
template <class ForEachPoint>
bool MappingClass::interpolateAt(Location pointKind, ComputationRun& run, ProgressCounter& progress,
                                 ForEachPoint forEachPoint)
{
    return locateInBatches(run, progress.total(), forEachPoint,
                           [&](const TargetPoint& point, const LocatedPoint& located)
                           {
                               int farOutside = 0;
                               interpolateLocatedPoint(pointKind, point, located, farOutside);
                               return itsErrorCode == success &&
                                      (farOutside == 0 || countFarPoint(pointKind, run, point.index)) &&
                                      reportProgress(run, progress);
                           });
}

bool MappingClass::interpolateAtNodes(ComputationRun& run, ProgressCounter& progress)
{
    const auto forEachNode = [this](auto visit)
    {
        for (int node = 0; node < itsTargetMesh.itsNbNodes; ++node)
        {
            if (isTargetNodeMapped(node) &&
                !visit(TargetPoint{.index = node,
                                   .position = itsTargetMesh.nodePosition(node),
                                   .matlStateClass = itsTargetMesh.itsMatlStateClasses[matlIdOfTargetNode(node)],
                                   .matlState = matlStateOfTargetNode(node)}))
            {
                return false;
            }
        }
        return true;
    };
    return itsInterpoAtNodes == 0 || interpolateAt(atNodes, run, progress, forEachNode);
}

/// Gauss points are numbered over all target elements, whether they are selected or not.
bool MappingClass::interpolateAtGaussPoints(ComputationRun& run, ProgressCounter& progress)
{
    const auto forEachGaussPoint = [this](auto visit)
    {
        std::int64_t firstGaussPoint = 0;
        for (int elt = 0; elt < itsTargetMesh.itsNbElts; ++elt)
        {
            const int nbGaussPoints = itsTargetMesh.nbGaussPointsOfElt(elt);
            const bool isSelected = isTargetEltSelected(elt);
            for (int i = 0; isSelected && i < nbGaussPoints; ++i)
            {
                if (!visit(TargetPoint{.index = firstGaussPoint + i,
                                       .position = itsTargetMesh.gaussPointPosition(elt, i),
                                       .matlStateClass = itsTargetMesh.matlStateClassOfItem(elt),
                                       .matlState = itsTargetMesh.matlStateOfItem(elt)}))
                {
                    return false;
                }
            }
            firstGaussPoint += nbGaussPoints;
        }
        return true;
    };
    return itsInterpoAtGPs == 0 || interpolateAt(atGaussPoints, run, progress, forEachGaussPoint);
}

bool MappingClass::countFarPoint(Location pointKind, ComputationRun& run, std::int64_t index)
{
    if (pointKind == atGaussPoints)
    {
        ++itsNbTargetGPsFarOutside;
        return true;
    }
    return markFarNode(run, index);
}

bool MappingClass::markFarNode(ComputationRun& run, std::int64_t node)
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
        if (itsTargetNodesFarOutside[node] == 1 && isTargetNodeMapped(node))
        {
            fillNodeFields(node, [](const FieldClass& field) { return field.defaultValue(); });
        }
    }
}

/// Writes a value into every field at nodes that exists on the node's material.
void MappingClass::fillNodeFields(int node, float (*valueFor)(const FieldClass&))
{
    const int matlStateClass = itsTargetMesh.itsMatlStateClasses[matlIdOfTargetNode(node)];
    for (FieldClass& field : itsTargetFields.fields())
    {
        if (field.itsLocation == atNodes && field.existsOn(matlStateClass))
        {
            field.fillLocation(node, valueFor(field));
        }
    }
}

/// Gauss points are numbered here over the selected elements alone, unlike everywhere else: with unselected elements
/// among them the default lands on the first Gauss points of the field. Hosts rely on it as it is.
void MappingClass::fillTargetsWithDefault()
{
    const std::int64_t nbSelectedGaussPoints = itsInterpoAtGPs != 0 ? countTargetGaussPoints() : 0;
    for (FieldClass& field : itsTargetFields.fields())
    {
        if (field.itsLocation == atNodes && itsInterpoAtNodes != 0 && itsTargetMeshMappingAtNode)
        {
            for (int node = 0; node < itsTargetMesh.itsNbNodes; ++node)
            {
                if (isTargetNodeMapped(node))
                {
                    field.fillLocation(node, itsDefaultValue);
                }
            }
        }
        else if (field.itsLocation == atGaussPoints)
        {
            for (std::int64_t gaussPoint = 0; gaussPoint < nbSelectedGaussPoints; ++gaussPoint)
            {
                field.fillLocation(gaussPoint, itsDefaultValue);
            }
        }
    }
}
