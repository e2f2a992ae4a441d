// What the computations of the mapping object share: error texts, progress and cancellation,
// element boxes, the grid, counts.
#include "MappingClass.h"

#include <algorithm>
#include <cmath>

namespace
{
void copyText(char (&target)[256], const char* text)
{
    std::snprintf(target, sizeof target, "%s", text);
}
} // namespace

void MappingClass::adoptErrorText(char* text, int code)
{
    releaseString(itsErrorMessage);
    itsErrorMessage = text;
    itsErrorCode = code;
}

void MappingClass::fail(MessageBuffer& buffer, const char* text)
{
    formatMessage(buffer.text(), "%s", text);
    adoptErrorText(buffer.release(), failure);
}

/// Sets the title of a run and enters its first stage; false if the host cancels.
bool MappingClass::reportStart(ComputationRun& run)
{
    copyText(itsTitle, run.texts.title);
    return reportStage(run, "Pretreatment", 0);
}

/// Enters a stage of a run; false if the host cancels.
bool MappingClass::reportStage(ComputationRun& run, const char* stage, int progress)
{
    copyText(itsStage, stage);
    itsProgress = progress;
    return callBack(run);
}

/// Counts one point of a run, and reports if it is time; false if the host cancels.
bool MappingClass::reportProgress(ComputationRun& run, ProgressCounter& progress)
{
    if (!progress.advance())
    {
        return true;
    }
    itsProgress = progress.percent();
    return callBack(run);
}

/// Reports the end of a run that succeeded.
void MappingClass::reportTermination(const ComputationRun& run)
{
    itsProgress = 100;
    copyText(itsStage, run.texts.terminated);
    if (itsCallback != nullptr)
    {
        itsCallback(itsProgress, itsTitle, itsStage, 1);
    }
}

/// Reports title, stage and progress as they are. If the host answers 0, sets the outcome of a cancellation, notifies
/// the host of it and returns false.
bool MappingClass::callBack(ComputationRun& run)
{
    if (itsCallback == nullptr || itsCallback(itsProgress, itsTitle, itsStage, 1) != 0)
    {
        return true;
    }
    itsCancelled = 1;
    formatMessage(run.buffer.text(), "%s", run.texts.cancelled);
    copyText(itsStage, run.buffer.text());
    adoptErrorText(run.buffer.release(), cancelledOrWarned);
    itsCallback(0, itsTitle, itsStage, 0);
    return false;
}

/// Makes the inflated boxes of the source elements, and room for those of the target elements if the target is a mesh.
/// These are never written, so they take no memory: the grid makes each of them on the way, which costs less than to
/// fetch it. A host that runs out of room is told of them all the same.
bool MappingClass::createElementBoxes(ComputationRun& run)
{
    if (!allocateBoxes(itsRefMeshBoxPerElt, itsRefMesh, "itsRefMeshBoxPerElt", run))
    {
        return false;
    }
    for (int elt = 0; elt < itsRefMesh.itsNbElts; ++elt)
    {
        const BoxLanes box = boxLanesOfNodes(itsRefMesh, elt);
        const Box inflatedBox = boxOf(inflated(box, itsBoxMarginRatio));
        itsSurveyedBoxes.add(itsSurveyedBoxes.source, boxOf(box));
        storeBox(itsRefMeshBoxPerElt, elt, inflatedBox);
        for (const float extent : inflatedBox.extents())
        {
            itsRefBoxSizeSum += absoluteValue(extent);
        }
    }
    return itsTargetMesh.itsKind != ModelKind::mesh ||
           allocateBoxes(itsTargetMeshBoxPerElt, itsTargetMesh, "itsTargetMeshBoxPerElt", run);
}

// The texts of failed allocations name interpolation() in every computation; hosts know them so.
bool MappingClass::allocateBoxes(BoxTable& boxes, const ModelClass& model, const char* tableName, ComputationRun& run)
{
    const char* block = "";
    switch (boxes.allocate(model.itsNbElts, 2, 3))
    {
    case TableBlock::none: return true;
    case TableBlock::outerPointers: break;
    case TableBlock::innerPointers: block = "[0]"; break;
    case TableBlock::values: block = "[0][0]"; break;
    }
    formatMessage(run.buffer.text(), "Allocation of %s%s is not possible in MappingClass::interpolation() function.\n",
                  tableName, block);
    adoptErrorText(run.buffer.release(), failure);
    return false;
}

bool MappingClass::allocatePerNode(OwnedArray<int>& table, const ModelClass& model, const char* tableName,
                                   ComputationRun& run)
{
    if (table.allocate(model.itsNbNodes))
    {
        return true;
    }
    formatMessage(run.buffer.text(), "Allocation of %s is not possible in MappingClass::interpolation() function.\n",
                  tableName);
    adoptErrorText(run.buffer.release(), failure);
    return false;
}

/// Finds the box of the selected target elements, element by element.
void MappingClass::surveyTarget()
{
    for (int elt = 0; elt < itsTargetMesh.itsNbElts; ++elt)
    {
        if (isTargetEltSelected(elt))
        {
            itsSurveyedBoxes.add(itsSurveyedBoxes.selectedTarget, boxOfNodes(itsTargetMesh, elt));
        }
    }
}

/// The same with the nodes' mapping flags at hand: if all materials are selected, the nodes of elements are those that
/// are mapped.
void MappingClass::surveyTargetNodes()
{
    const int* flags = itsTargetMatlMappingFlags;
    if (!std::all_of(flags, flags + itsTargetMesh.itsNbMatls, [](int flag) { return flag == 1; }))
    {
        surveyTarget();
        return;
    }
    for (int node = 0; node < itsTargetMesh.itsNbNodes; ++node)
    {
        if (itsTargetMeshMappingAtNode[node] == 1)
        {
            itsSurveyedBoxes.addNode(itsSurveyedBoxes.selectedTarget, itsTargetMesh.itsNodeCoords[node]);
        }
    }
}

/// The mean extent of the inflated source boxes over elements and axes.
float MappingClass::meanRefBoxSize() const
{
    return itsRefBoxSizeSum / static_cast<float>(3 * static_cast<std::int64_t>(itsRefMesh.itsNbElts));
}

bool MappingClass::buildBucketSpace(BucketSpaceClass::Mode mode, float initialBucketSize)
{
    char* errorText =
        itsBucketSpace.build(mode, itsTargetMesh, itsRefMesh, itsRefMeshBoxPerElt, {}, itsTargetMatlMappingFlags,
                             initialBucketSize, itsBoxMarginRatio, itsBucketFactor, &itsSurveyedBoxes);
    if (errorText == nullptr)
    {
        return true;
    }
    adoptErrorText(errorText, failure);
    return false;
}

/// Of the selected target elements.
std::int64_t MappingClass::countTargetGaussPoints() const
{
    std::int64_t count = 0;
    for (int elt = 0; elt < itsTargetMesh.itsNbElts; ++elt)
    {
        count += isTargetEltSelected(elt) ? itsTargetMesh.nbGaussPointsOfElt(elt) : 0;
    }
    return count;
}
