// Location of one target point in the source mesh: the search of its bucket, and the near-miss fallback.
#include "MappingClass.h"

#include <algorithm>

namespace
{
constexpr const char* pointFunctionName = "MappingClass::interpolationAtPoint()";
}

const PointLocator& MappingClass::pointLocator()
{
    if (!itsPointLocator)
    {
        itsPointLocator.emplace(itsRefMesh, itsRefMeshBoxPerElt, itsBucketSpace, itsRefCoordTolerance);
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
        float* centre = itsRefMeshBaryValues.get() + 3 * static_cast<std::int64_t>(elt);
        itsRefMeshBaryPerElt[elt] = centre;
        std::fill_n(centre, 3, 0.0F);
        const int nbNodes = itsRefMesh.nbNodesOfElt(elt);
        for (int i = 0; i < nbNodes; ++i)
        {
            const float(&coords)[3] = itsRefMesh.itsNodeCoords[itsRefMesh.itsConnectivity[elt][i]];
            for (int axis = 0; axis < 3; ++axis)
            {
                centre[axis] += coords[axis];
            }
        }
        for (int axis = 0; axis < 3; ++axis)
        {
            centre[axis] /= static_cast<float>(nbNodes);
        }
    }
    return nullptr;
}

/// The element of the point's bucket, whatever the bucket's state, whose centre is nearest; of equally near ones the
/// last. No element if the inversion there does not converge.
LocatedPoint MappingClass::nearestElement(const TargetPoint& point)
{
    int nearest = -1;
    float nearestDistance = 0.0F;
    for (const int elt : itsBucketSpace.items(itsBucketSpace.bucketOfPoint(point.position)))
    {
        if (itsRefMesh.matlStateOfItem(elt) != point.matlState)
        {
            continue;
        }
        const float distance = squaredDistance(point.position, itsRefMeshBaryPerElt[elt]);
        if (nearest == -1 || nearestDistance >= distance)
        {
            nearest = elt;
            nearestDistance = distance;
        }
    }
    if (nearest == -1)
    {
        return {};
    }
    const Inversion inversion = itsRefMesh.referenceCoordinates(nearest, boxValues(itsRefMeshBoxPerElt, nearest),
                                                                point.position, itsRefCoordTolerance);
    if (inversion.result == Inversion::notConverged)
    {
        return {};
    }
    return {.elt = nearest,
            .referenceCoords = inversion.referenceCoords,
            .nbIterations = inversion.nbIterations,
            .isNearMiss = true};
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
    ShapeValues shape = shapeValuesAt(located);
    if (located.isNearMiss && !normaliseNearMiss(shape))
    {
        return;
    }
    evaluateFields(pointKind, point.index, point.matlStateClass, itsRefMesh.itsConnectivity[located.elt], shape);
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
    located = nearestElement(point);
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
        zeroGaussPoint(point.index, point.matlStateClass);
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

ShapeValues MappingClass::shapeValuesAt(const LocatedPoint& located) const
{
    ShapeValues shape;
    shape.nbNodes = itsRefMesh.nbNodesOfElt(located.elt);
    FEUtilities::shapeFunctions(itsRefMesh.itsEltTypes[located.elt], located.referenceCoords, shape.values);
    return shape;
}

/// Brings the weights of a point outside its element back into [0, 1] with sum 1; false, and an error, if all are 0.
bool MappingClass::normaliseNearMiss(ShapeValues& shape)
{
    float sum = 0.0F;
    for (int i = 0; i < shape.nbNodes; ++i)
    {
        float& value = shape.values[i];
        value = value < 0.0F ? 0.0F : value;
        value = value > 1.0F ? 1.0F : value;
        sum += value;
    }
    if (sum == 0.0F)
    {
        MessageBuffer buffer(pointFunctionName);
        formatMessage(buffer.text(), "Error in %s file at line %d: division by zero .", "MappingClass", 1937);
        adoptErrorText(buffer.release(), failure);
        return false;
    }
    for (int i = 0; i < shape.nbNodes; ++i)
    {
        shape.values[i] /= sum;
    }
    return true;
}
