// What the computations of the mapping object share: error texts, element boxes, the grid.
#include "Map/Survey.h"
#include "MappingClass.h"

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

/// Makes the inflated boxes of the source elements, and room for those of the target elements if the target is a mesh.
/// These are never written, so they take no memory: the grid makes each of them on the way, which costs less than to
/// fetch it. A host that runs out of room is told of them all the same.
bool MappingClass::createElementBoxes(ComputationRun& run)
{
    if (!allocateBoxes(itsRefMeshBoxPerElt, itsRefMesh, "itsRefMeshBoxPerElt", run))
    {
        return false;
    }
    OneWorker worker;
    surveySource(itsRefMesh, itsBoxMarginRatio, itsRefMeshBoxPerElt, itsSurveyedBoxes, itsRefBoxSizeSum, worker);
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
    return run.fail("Allocation of %s%s is not possible in MappingClass::interpolation() function.\n", tableName,
                    block);
}

bool MappingClass::allocatePerNode(OwnedArray<int>& table, const ModelClass& model, const char* tableName,
                                   ComputationRun& run)
{
    return table.allocate(model.itsNbNodes) ||
           run.fail("Allocation of %s is not possible in MappingClass::interpolation() function.\n", tableName);
}

Target MappingClass::target() const
{
    return {itsTargetMesh,
            itsTargetMatlMappingFlags,
            {itsTargetMeshMatlIdPerNode.get(), itsTargetMeshMatlStatePerNode.get(), itsTargetMeshMappingAtNode.get()}};
}

/// The mean extent of the inflated source boxes over elements and axes.
float MappingClass::meanRefBoxSize() const
{
    return itsRefBoxSizeSum / static_cast<float>(3 * static_cast<std::int64_t>(itsRefMesh.itsNbElts));
}

bool MappingClass::buildBucketSpace(BucketSpaceClass::Mode mode, float initialBucketSize)
{
    itsBucketSpace.itsRefusesOverhang = asExported().refusesOverhang;
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

bool MappingClass::allocateBatch(PointBatch& batch, std::int64_t nbPoints, ComputationRun& run)
{
    return batch.allocate(nbPoints) ||
           run.fail("Allocation of the target points is not possible in MappingClass::interpolation() function.\n");
}

/// Where the point lies whose turn has come. If its search has met a singular Jacobian, the computation is left now.
LocatedPoint MappingClass::takeLocated(const PointBatch& batch, std::size_t i)
{
    if (batch.located(i).isSingular)
    {
        pointLocator().search(batch.point(i).position, batch.point(i).matlState); // leaves
    }
    return batch.located(i);
}
