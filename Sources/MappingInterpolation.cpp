// The driver of a transfer: preparation, the visit to every target node and Gauss point, far nodes.
#include "Map/FieldsAtPoints.h"
#include "Map/Propagation.h"
#include "Map/Survey.h"
#include "MappingClass.h"
#include "Search/Prefetch.h"

#include <algorithm>
#include <array>

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
    ComputationRun run(*this, itsTransferType == meshToPointCloud ? pointCloudTexts : meshTexts);
    if (!run.start() || !createElementBoxes(run) || !averageGaussPointFields())
    {
        return;
    }
    scanTargetLocations();
    if (!assignTargetMaterials(run))
    {
        return;
    }
    if (!buildBucketSpace(BucketSpaceClass::elementBuckets, meanRefBoxSize()) || !run.enterStage("Computation", 5))
    {
        return;
    }
    const std::int64_t nbPoints = countTargetPoints();
    if (nbPoints == 0)
    {
        run.fail("There is no target point where fields should be interpolated.\n");
        return;
    }
    ProgressCounter progress(nbPoints);
    const Target wholeTarget = target();
    if ((itsInterpoAtNodes != 0 && !interpolateAt(atNodes, run, progress, NodeCursor(wholeTarget))) ||
        !treatFarNodes() ||
        (itsInterpoAtGPs != 0 && !interpolateAt(atGaussPoints, run, progress, GaussPointCursor(wholeTarget))))
    {
        return;
    }
    itsMeanIterations = itsMeanIterations / static_cast<float>(itsNbInterpolatedPoints);
    run.terminate();
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

/// The material of every node of a target mesh, if there are fields at nodes, and the box of what is selected. For a
/// cloud, whose points have materials of their own, the tables are room that is taken and not filled.
bool MappingClass::assignTargetMaterials(ComputationRun& run)
{
    if (itsInterpoAtNodes != 0 &&
        (!allocatePerNode(itsTargetMeshMatlIdPerNode, itsTargetMesh, "itsTargetMeshMatlIdPerNode", run) ||
         !allocatePerNode(itsTargetMeshMatlStatePerNode, itsTargetMesh, "itsTargetMeshMatlStatePerNode", run) ||
         !allocatePerNode(itsTargetMeshMappingAtNode, itsTargetMesh, "itsTargetMeshMappingAtNode", run)))
    {
        return false;
    }
    const Target wholeTarget = target();
    if (wholeTarget.isCloud())
    {
        return true;
    }
    if (itsInterpoAtNodes != 0)
    {
        assignMaterialsToNodes(itsTargetMesh, itsTargetMatlMappingFlags, wholeTarget.nodes);
    }
    OneWorker worker;
    surveyTarget(wholeTarget, itsSurveyedBoxes, worker);
    return true;
}

std::int64_t MappingClass::countTargetPoints() const
{
    return (itsInterpoAtNodes != 0 ? target().nbMappedNodes() : 0) +
           (itsInterpoAtGPs != 0 ? target().nbSelectedGaussPoints() : 0);
}

/// Locates points batch by batch, and gives each of them its values in the order of the points. False if the run has
/// ended.
template <class Cursor>
bool MappingClass::interpolateAt(Location pointKind, ComputationRun& run, ProgressCounter& progress, Cursor cursor)
{
    PointBatch batch;
    if (!allocateBatch(batch, progress.total(), run))
    {
        return false;
    }
    while (batch.fill(cursor))
    {
        batch.locate(pointLocator());
        for (std::size_t i = 0; i < batch.size(); ++i)
        {
            if (batch.isJumping())
            {
                prefetchAhead(batch.locatedFrom(i));
            }
            int farOutside = 0;
            interpolateLocatedPoint(pointKind, batch.point(i), takeLocated(batch, i), farOutside);
            if (itsErrorCode != success || (farOutside != 0 && !countFarPoint(pointKind, run, batch.point(i).index)) ||
                !run.advance(progress))
            {
                return false;
            }
        }
    }
    return true;
}

/// Asks, step by step, for what the points that follow the first of `located` need: each step finds the address that
/// the next one reads.
void MappingClass::prefetchAhead(std::span<const LocatedPoint> located) const
{
    constexpr std::size_t step = 6;
    const auto eltAhead = [&](std::size_t nbSteps)
    { return nbSteps * step < located.size() ? located[nbSteps * step].elt : -1; };
    if (const int elt = eltAhead(3); elt != -1)
    {
        prefetch(itsRefMesh.itsConnectivity + elt);
        prefetch(itsRefMesh.itsEltTypes + elt);
    }
    if (const int elt = eltAhead(2); elt != -1)
    {
        const auto nodes = nodesOfElt(itsRefMesh, elt);
        prefetchRange(nodes.data(), nodes.data() + nodes.size());
    }
    if (const int elt = eltAhead(1); elt != -1)
    {
        prefetchFields(itsRefFields, nodesOfElt(itsRefMesh, elt));
    }
}

bool MappingClass::countFarPoint(Location pointKind, ComputationRun& run, std::int64_t index)
{
    if (pointKind == atGaussPoints)
    {
        ++itsNbTargetGPsFarOutside;
        return true;
    }
    ++itsNbTargetNodesFarOutside;
    if (!itsTargetNodesFarOutside)
    {
        if (!itsTargetNodesFarOutside.allocate(itsTargetMesh.itsNbNodes))
        {
            // The blank and the other function's name are part of the text that hosts know.
            return run.fail("Allocation of itsTargetNodesFarOutside is not possible in MappingClass:: "
                            "interpolationAtPoint() function.\n");
        }
        std::fill_n(itsTargetNodesFarOutside.get(), itsTargetMesh.itsNbNodes, static_cast<unsigned char>(0));
    }
    itsTargetNodesFarOutside[index] = 1;
    return true;
}

bool MappingClass::treatFarNodes()
{
    if (itsNbTargetNodesFarOutside > 0)
    {
        if (itsInterpoMode == defaultAtFarNodes)
        {
            fillFarNodes([](const FieldClass& field) { return field.defaultValue(); });
        }
        else if (itsInterpoMode == propagateToFarNodes)
        {
            nodeFieldsPropagation();
        }
    }
    return itsErrorCode == success;
}

/// Writes a value into every field at nodes that exists on the material of a node that is still far.
void MappingClass::fillFarNodes(float (*valueFor)(const FieldClass&))
{
    const Target wholeTarget = target();
    for (int node = 0; node < itsTargetMesh.itsNbNodes; ++node)
    {
        if (itsTargetNodesFarOutside[node] == 1 && wholeTarget.isNodeMapped(node))
        {
            fillFields(itsTargetFields, atNodes, node, wholeTarget.matlStateClassOfNode(node), valueFor);
        }
    }
}

void MappingClass::nodeFieldsPropagation()
{
    MessageBuffer buffer("MappingClass::nodeFieldsPropagation()");
    unsigned char* isFar = itsTargetNodesFarOutside.get();
    const int nbOpen = listOpenElements(target(), isFar, nullptr);
    OwnedArray<int> openElts;
    if (!openElts.allocate(nbOpen))
    {
        fail(buffer, "Allocation of the open elements is not possible in MappingClass::nodeFieldsPropagation() "
                     "function.\n");
        return;
    }
    listOpenElements(target(), isFar, openElts.get());
    const auto fillElement = [&](int elt, const ElementFront& front)
    {
        // In the order of the element, one that it names twice twice.
        std::array<int, maxNbNodes> filled;
        std::array<int, maxNbNodes> far;
        const auto nodes = nodesOfElt(itsTargetMesh, elt);
        std::ranges::partition_copy(nodes, filled.data(), far.data(), [&](int node) { return isFar[node] != 1; });
        for (FieldClass& field : itsTargetFields.fields())
        {
            // A field that does not exist on the element's material keeps its values.
            const bool isConcerned =
                field.itsLocation == atNodes && field.existsOn(itsTargetMesh.matlStateClassOfItem(elt));
            for (int component = 0; isConcerned && component < field.itsNbComponents; ++component)
            {
                const auto indexOf = [&](int node)
                { return static_cast<std::int64_t>(node) * field.itsNbComponents + component; };
                spreadMean<float>(
                    {filled.data(), static_cast<std::size_t>(front.nbFilled)},
                    {far.data(), static_cast<std::size_t>(front.nbFar)},
                    [&](int node) { return field.value(indexOf(node)); },
                    [&](int node, float mean) { field.setValue(indexOf(node), mean); });
            }
        }
    };
    const int remaining = propagate(itsTargetMesh, isFar, itsNbTargetNodesFarOutside,
                                    {openElts.get(), static_cast<std::size_t>(nbOpen)}, fillElement);
    if (remaining != 0)
    {
        fillFarNodes([](const FieldClass&) { return 0.0F; });
        formatMessage(buffer.text(), "Warning: propagation is not possible for nodes located in a region\nthat is not "
                                     "connected to an already interpolated region.\nFields are set to zero in these "
                                     "regions.\n");
        adoptErrorText(buffer.release(), cancelledOrWarned);
    }
}

/// Gauss points are numbered here over the selected elements alone, unlike everywhere else: with unselected elements
/// among them the default lands on the first Gauss points of the field. Hosts rely on it as it is.
void MappingClass::fillTargetsWithDefault()
{
    const Target wholeTarget = target();
    const std::int64_t nbSelectedGaussPoints = itsInterpoAtGPs != 0 ? wholeTarget.nbSelectedGaussPoints() : 0;
    for (FieldClass& field : itsTargetFields.fields())
    {
        if (field.itsLocation == atNodes && itsInterpoAtNodes != 0 && itsTargetMeshMappingAtNode)
        {
            for (int node = 0; node < itsTargetMesh.itsNbNodes; ++node)
            {
                if (wholeTarget.isNodeMapped(node))
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
