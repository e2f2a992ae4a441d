#include "MappingClass.h"

#include <algorithm>
#include <cstdio>

namespace
{
bool isInterpolationTarget(int typeCode)
{
    constexpr int linearQuadrilateral = 6;
    constexpr int linearTriangle = 7;
    return hasShapeFunctions(typeCode) || typeCode == linearQuadrilateral || typeCode == linearTriangle;
}

bool hasFieldAtElements(const FieldsSetClass& set)
{
    return std::ranges::any_of(set.fields(), [](const FieldClass& field) { return field.itsLocation == atElements; });
}

/// Whether every element of a model has a type that is admitted.
bool allTypes(const ModelClass& model, bool (*isAdmitted)(int))
{
    return std::all_of(model.itsEltTypes, model.itsEltTypes + std::max(model.itsNbElts, 0), isAdmitted);
}
} // namespace

MappingClass::MappingClass()
{
    std::remove("interpoLog.txt");
}

MappingClass::~MappingClass()
{
    releaseString(itsErrorMessage);
}

void MappingClass::checkInterpo()
{
    MessageBuffer buffer("MappingClass::checkInterpo()");
    const bool isKnownForClouds = itsInterpoMode == refuseFarPoints || itsInterpoMode == defaultAtFarNodes;
    const bool isKnownForMeshes = isKnownForClouds || itsInterpoMode == propagateToFarNodes;
    if (itsTransferType == meshToMesh && !isKnownForMeshes)
    {
        formatMessage(buffer.text(), "Error: interpolation mode number %d is unknown for 3D FE to 3D FE transfer.",
                      itsInterpoMode);
        adoptErrorText(buffer.release(), failure);
    }
    else if (itsTransferType == meshToPointCloud && !isKnownForClouds)
    {
        formatMessage(buffer.text(),
                      "Error: interpolation mode number %d is unknown for 3D FE to points cloud transfer.",
                      itsInterpoMode);
        adoptErrorText(buffer.release(), failure);
    }
}

void MappingClass::interpoTests()
{
    MessageBuffer buffer("MappingClass::interpoTests()");
    if (hasFieldAtElements(itsRefFields))
    {
        fail(buffer, "Error: interpolation from a field defined at elements is not implemented yet.");
    }
    else if (hasFieldAtElements(itsTargetFields))
    {
        fail(buffer, "Error: interpolation at elements is not implemented yet.");
    }
    else if (!allTypes(itsRefMesh, hasShapeFunctions))
    {
        fail(buffer, "Error: Interpolation from a mesh containing elements different from linear or quadratic "
                     "tetrahedrons, linear hexahedrons, linear wedges and linear pyramids is not possible.");
    }
    else if (!allTypes(itsTargetMesh, isInterpolationTarget))
    {
        fail(buffer, "Error: Interpolation on a mesh containing elements different from\nlinear or quadratic "
                     "tetrahedrons, linear hexahedrons, linear wedges, linear pyramids,\nlinear triangular elements, "
                     "linear quadrilateral element\nis not possible.");
    }
}
