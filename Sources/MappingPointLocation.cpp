// One target point of a transfer: where it lies, the fallbacks if it is in no element, its values.
#include "Map/FieldsAtPoints.h"
#include "Map/NearestElement.h"
#include "MappingClass.h"

namespace
{
constexpr const char* pointFunctionName = "MappingClass::interpolationAtPoint()";
}

const PointLocator& MappingClass::pointLocator()
{
    if (!itsPointLocator)
    {
        itsPointLocator.emplace(itsRefMesh, itsRefMeshBoxPerElt, itsBucketSpace, itsRefCoordTolerance,
                                asExported().singularElements);
    }
    return *itsPointLocator;
}

/// Counts an accepted inversion. The sum is a single-precision one, in the order of the points.
void MappingClass::countInversion(const LocatedPoint& located)
{
    itsMeanIterations += static_cast<float>(located.nbIterations);
    ++itsNbInterpolatedPoints;
}

char* MappingClass::createBaryPerRefElt()
{
    MessageBuffer buffer("MappingClass::createBaryPerRefElt()");
    if (itsRefMeshBaryPerElt)
    {
        formatMessage(buffer.text(), "Barycenters of FE of the source mesh have been already calculated by "
                                     "MappingClass::createBaryPerRefElt() function.\n");
        return buffer.release();
    }
    const std::int64_t nbElts = itsRefMesh.itsNbElts;
    if (!itsRefMeshBaryPerElt.allocate(nbElts))
    {
        formatMessage(buffer.text(), "Allocation of itsRefMeshBaryPerElt is not possible in "
                                     "MappingClass::createBaryPerRefElt() function.\n");
        return buffer.release();
    }
    if (!itsRefMeshBaryValues.allocate(3 * nbElts))
    {
        formatMessage(buffer.text(), "Allocation of itsRefMeshBaryPerElt[0] is not possible in "
                                     "MappingClass::createBaryPerRefElt() function.\n");
        return buffer.release();
    }
    for (int elt = 0; elt < nbElts; ++elt)
    {
        itsRefMeshBaryPerElt[elt] = itsRefMeshBaryValues.get() + 3 * static_cast<std::int64_t>(elt);
        computeCentre(itsRefMesh, elt, itsRefMeshBaryPerElt[elt]);
    }
    return nullptr;
}

void MappingClass::interpolationAtPoint(Location pointKind, std::int64_t pointIndex, const Vector3& point,
                                        int matlStateClass, int matlState, int& farOutside)
{
    const TargetPoint targetPoint{
        .index = pointIndex, .position = point, .matlStateClass = matlStateClass, .matlState = matlState};
    interpolateLocatedPoint(pointKind, targetPoint, pointLocator().search(point, matlState), farOutside);
}

/// What follows the search for a point: the fallback, the count, the values.
void MappingClass::interpolateLocatedPoint(Location pointKind, const TargetPoint& point, LocatedPoint located,
                                           int& farOutside)
{
    farOutside = 0;
    const bool isFound = itsTargetMesh.itsKind == ModelKind::pointCloud
                             ? locateInCloud(located, farOutside)
                             : locateInMesh(located, pointKind, point, farOutside);
    if (!isFound)
    {
        return;
    }
    countInversion(located);
    ShapeValues shape = shapeValuesAt(itsRefMesh, located);
    if (located.isNearMiss && !normaliseNearMiss(shape))
    {
        MessageBuffer buffer(pointFunctionName);
        formatMessage(buffer.text(), "Error in %s file at line %d: division by zero .", "MappingClass", 1937);
        adoptErrorText(buffer.release(), failure);
        return;
    }
    evaluateFields(itsRefFields, itsTargetFields, pointKind, point.index, point.matlStateClass,
                   {itsRefMesh.itsConnectivity[located.elt], shape.values, shape.nbNodes});
}

/// What follows the search for a point of a mesh: a point in no element goes to the nearest one of its bucket, or is
/// outside. True if there is an element.
bool MappingClass::locateInMesh(LocatedPoint& located, Location pointKind, const TargetPoint& point, int& farOutside)
{
    if (located.elt != -1)
    {
        return true;
    }
    ++(pointKind == atNodes ? itsNbTargetNodesOutside : itsNbTargetGPsOutside);
    if (!itsRefMeshBaryPerElt)
    {
        if (char* errorText = createBaryPerRefElt())
        {
            adoptErrorText(errorText, failure);
            return false;
        }
    }
    const NearestElement nearest(itsRefMesh, itsRefMeshBoxPerElt, itsBucketSpace, itsRefCoordTolerance,
                                 itsRefMeshBaryValues.get(), asExported().singularElements);
    located = nearest.find(point.position, point.matlState);
    if (located.isSingular)
    {
        leaveOnSingularJacobian(located.elt);
    }
    if (located.elt != -1)
    {
        return true;
    }
    if (itsInterpoMode == refuseFarPoints)
    {
        MessageBuffer buffer(pointFunctionName);
        formatMessage(buffer.text(), "Some regions of the target model are outside the source model.");
        adoptErrorText(buffer.release(), targetOutside);
        return false;
    }
    if (pointKind == atGaussPoints)
    {
        // A node's number has no meaning in fields at Gauss points, and far nodes are filled later.
        fillFields(itsTargetFields, atGaussPoints, point.index, point.matlStateClass,
                   [](const FieldClass&) { return 0.0F; });
    }
    farOutside = 1;
    return false;
}

/// What follows the search for a point of a cloud, which has no near misses. True if there is an element.
bool MappingClass::locateInCloud(const LocatedPoint& located, int& farOutside)
{
    if (located.elt != -1)
    {
        return true;
    }
    if (itsInterpoMode == refuseFarPoints)
    {
        MessageBuffer buffer(pointFunctionName);
        formatMessage(buffer.text(), "Some points of the points cloud target model are outside the source model.");
        adoptErrorText(buffer.release(), targetOutside);
        return false;
    }
    farOutside = 1;
    return false;
}
