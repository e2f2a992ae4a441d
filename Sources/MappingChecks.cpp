// What each computation admits: modes, field locations, element types.
#include "MappingClass.h"

#include <algorithm>

namespace
{
bool isTargetType(int typeCode)
{
    constexpr int linearQuadrilateral = 6;
    constexpr int linearTriangle = 7;
    return hasShapeFunctions(typeCode) || typeCode == linearQuadrilateral || typeCode == linearTriangle;
}

bool hasFieldAtElements(const FieldsSetClass& set)
{
    return std::ranges::any_of(set.fields(), [](const FieldClass& field) { return field.itsLocation == atElements; });
}

/// Element types between whose meshes points can be matched one to one. A pyramid is looked for in the target, at the
/// index of the source element: a source pyramid passes only where the target has one too, and where it has one every
/// source element passes. Hosts rely on it as it is.
bool allMatchable(const ModelClass& source, const ModelClass& target)
{
    for (int elt = 0; elt < source.itsNbElts; ++elt)
    {
        const int type = source.itsEltTypes[elt];
        const bool isMatchable = hasShapeFunctions(type) && type != LinearPyramid::typeCode;
        const bool isTargetPyramid = elt < target.itsNbElts && target.itsEltTypes[elt] == LinearPyramid::typeCode;
        if (!isMatchable && !isTargetPyramid)
        {
            return false;
        }
    }
    return true;
}

/// Whether every element of a model has a type that is admitted.
bool allTypes(const ModelClass& model, bool (*isAdmitted)(int))
{
    return std::all_of(model.itsEltTypes, model.itsEltTypes + std::max(model.itsNbElts, 0), isAdmitted);
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
    else if (!allTypes(itsRefMesh, hasShapeFunctions))
    {
        fail(buffer, "Error: Interpolation from a mesh containing elements different from linear or quadratic "
                     "tetrahedrons, linear hexahedrons, linear wedges and linear pyramids is not possible.");
    }
    else if (!allTypes(itsTargetMesh, isTargetType))
    {
        fail(buffer, "Error: Interpolation on a mesh containing elements different from\nlinear or quadratic "
                     "tetrahedrons, linear hexahedrons, linear wedges, linear pyramids,\nlinear triangular elements, "
                     "linear quadrilateral element\nis not possible.");
    }
}

void MappingClass::nodTonodCorrTests()
{
    MessageBuffer buffer("MappingClass::nodTonodCorrTests()");
    if (!allMatchable(itsRefMesh, itsTargetMesh))
    {
        fail(buffer, "Error: node to node correspondence computation from a mesh containing elements different from "
                     "linear or quadratic tetrahedrons, linear hexahedrons, linear wedges or linear pyramids is not "
                     "possible yet.");
    }
    else if (!allTypes(itsTargetMesh, isTargetType))
    {
        fail(buffer, "Error: node to node correspondence computation to\n a mesh containing elements different "
                     "from\n linear or quadratic tetrahedrons, linear hexahedrons, linear wedges or linear pyramids\n "
                     "linear triangular elements, linear quadrilateral element\n is not possible.");
    }
}

void MappingClass::GPToGPCorrTests()
{
    MessageBuffer buffer("MappingClass::GPToGPCorrTests()");
    if (!allMatchable(itsRefMesh, itsTargetMesh))
    {
        fail(buffer, "Error: GP to GP correspondence computation from a mesh containing elements different from linear "
                     "or quadratic tetrahedrons, linear hexahedrons, linear wedges or linear pyramids is not possible "
                     "yet.");
    }
    else if (!allTypes(itsTargetMesh, isTargetType))
    {
        fail(buffer, "Error: GP to GP correspondence computation to\n a mesh containing elements different from\n "
                     "linear or quadratic tetrahedrons, linear hexahedrons, linear wedges, linear pyramids\n linear "
                     "triangular elements, linear quadrilateral element\n is not possible.");
    }
}
