// What each computation admits: modes, field locations, element types.
#include "Map/Admission.h"
#include "MappingClass.h"

#include <algorithm>

namespace
{
bool hasFieldAtElements(const FieldsSetClass& set)
{
    return std::ranges::any_of(set.fields(), [](const FieldClass& field) { return field.itsLocation == atElements; });
}
} // namespace

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
    else if (const char* text = interpolationRefusal(itsRefMesh, itsTargetMesh))
    {
        fail(buffer, text);
    }
}

void MappingClass::nodTonodCorrTests()
{
    MessageBuffer buffer("MappingClass::nodTonodCorrTests()");
    if (const char* text = nodeMatchingRefusal(itsRefMesh, itsTargetMesh))
    {
        fail(buffer, text);
    }
}

void MappingClass::GPToGPCorrTests()
{
    MessageBuffer buffer("MappingClass::GPToGPCorrTests()");
    if (const char* text = gaussPointMatchingRefusal(itsRefMesh, itsTargetMesh))
    {
        fail(buffer, text);
    }
}
