#include "Veltrane.h"

#include "BuildIdentification.h"
#include "MappingClass.h"

#include <cstddef>
#include <cstring>

static_assert(sizeof(FieldsSetStruct) == 16 && offsetof(FieldsSetStruct, fields) == 8);
static_assert(sizeof(FieldStruct) == 144 && offsetof(FieldStruct, matlStateFlag) == 100 &&
              offsetof(FieldStruct, precision) == 112 && offsetof(FieldStruct, valuesFloat) == 120 &&
              offsetof(FieldStruct, valuesDouble) == 128 && offsetof(FieldStruct, defaultValueFloat) == 136 &&
              offsetof(FieldStruct, defaultValueDouble) == 140);

namespace
{
constexpr const char* moduleKind = "Dynamic linked library";
constexpr const char* moduleVersion = "24.0.0.79dbf165755";
/// The first eight characters mark the line for tools that search a binary for it.
constexpr const char* moduleIdentification =
    "@(#)MOD Veltrane 24.0.0.79dbf165755, built on " VELTRANE_BUILD_MACHINE ", " VELTRANE_BUILD_DATE;
constexpr std::size_t identificationMarkerLength = 8;

/// What the host hands over for a transfer beside the two models.
struct TransferArguments
{
    int interpoMode;
    float defaultValue;
    int* targetMatlMappingFlags;
    FieldsSetStruct refFields;
    FieldsSetStruct targetFields;
    int (*callback)(int, char*, char*, int);
};

/// Tells the host that the library is leaving, and hands out the outcome of a computation.
void reportOutcome(MappingClass& mapping, const char* successText, char* message, int* errorCode)
{
    if (mapping.itsCallback != nullptr)
    {
        char notice[] = "Mapping library exit.";
        mapping.itsCallback(0, mapping.itsTitle, notice, 0);
    }
    *errorCode = mapping.itsErrorCode;
    const char* text = mapping.itsErrorCode != success ? mapping.itsErrorMessage : successText;
    std::memcpy(message, text, std::strlen(text) + 1);
}

/// The part of a transfer that follows the loading of its models.
void runInterpolation(MappingClass& mapping, const TransferArguments& arguments, const char* successText, char* message,
                      int* errorCode)
{
    mapping.itsRefFields.init(arguments.refFields);
    mapping.itsTargetFields.init(arguments.targetFields);
    mapping.itsTargetMatlMappingFlags = arguments.targetMatlMappingFlags;
    mapping.itsCallback = arguments.callback;
    mapping.itsInterpoMode = arguments.interpoMode;
    mapping.itsDefaultValue = arguments.defaultValue;
    mapping.readMappingInputs();
    mapping.interpolation();
    reportOutcome(mapping, successText, message, errorCode);
    if (mapping.itsErrorCode > success)
    {
        mapping.fillTargetsWithDefault();
    }
    else if (mapping.itsCancelled == 0)
    {
        mapping.writeInterpoLog();
    }
}
} // namespace

void FE3DMeshToFE3DMesh_VariablesInterpolation(
    int interpoMode, float defaultValue,                                                                 //
    int refNbElts, int refNbNodes, float (*refNodeCoords)[3], int** refConnectivity, int* refEltTypes,   //
    int refNbMatls, int* refMatlIdPerElt, int* refMatlTypes,                                             //
    int targetNbElts, int targetNbNodes, float (*targetNodeCoords)[3], int** targetConnectivity,         //
    int* targetEltTypes, int targetNbMatls, int* targetMatlIdPerElt, int* targetMatlTypes,               //
    int* targetMatlMappingFlags, FieldsSetStruct refFields, FieldsSetStruct targetFields, char* message, //
    int* errorCode, int (*callback)(int, char*, char*, int))
{
    MappingClass mapping;
    mapping.itsTransferType = meshToMesh;
    mapping.itsRefMesh.init(ModelKind::mesh, refNbElts, refNbNodes, refNodeCoords, refConnectivity, refEltTypes,
                            refNbMatls, refMatlIdPerElt, refMatlTypes);
    mapping.itsTargetMesh.init(ModelKind::mesh, targetNbElts, targetNbNodes, targetNodeCoords, targetConnectivity,
                               targetEltTypes, targetNbMatls, targetMatlIdPerElt, targetMatlTypes);
    runInterpolation(mapping, {interpoMode, defaultValue, targetMatlMappingFlags, refFields, targetFields, callback},
                     "FE 3D Mesh to FE 3D Mesh interpolation normal termination.", message, errorCode);
}

void FE3DMEshToPtCloud_VariablesInterpolation(int interpoMode, float defaultValue, //
                                              int refNbElts, int refNbNodes, float (*refNodeCoords)[3],
                                              int** refConnectivity, int* refEltTypes,                 //
                                              int refNbMatls, int* refMatlIdPerElt, int* refMatlTypes, //
                                              int nbPoints, float (*pointCoords)[3], int nbMatls, int* matlIdPerPoint,
                                              int* matlTypes, //
                                              int* targetMatlMappingFlags, FieldsSetStruct refFields,
                                              FieldsSetStruct targetFields, //
                                              char* message, int* errorCode, int (*callback)(int, char*, char*, int))
{
    MappingClass mapping;
    mapping.itsTransferType = meshToPointCloud;
    mapping.itsRefMesh.init(ModelKind::mesh, refNbElts, refNbNodes, refNodeCoords, refConnectivity, refEltTypes,
                            refNbMatls, refMatlIdPerElt, refMatlTypes);
    mapping.itsTargetMesh.init(ModelKind::pointCloud, 0, nbPoints, pointCoords, nullptr, nullptr, nbMatls,
                               matlIdPerPoint, matlTypes);
    runInterpolation(mapping, {interpoMode, defaultValue, targetMatlMappingFlags, refFields, targetFields, callback},
                     "FE 3D Mesh to point cloud interpolation normal termination.", message, errorCode);
}

void FE3DMeshToFE3DMesh_NodeToNodeMapping(
    int refNbElts, int refNbNodes, float (*refNodeCoords)[3], int** refConnectivity, int* refEltTypes, //
    int refNbMatls, int* refMatlIdPerElt, int* refMatlTypes,                                           //
    int targetNbElts, int targetNbNodes, float (*targetNodeCoords)[3], int** targetConnectivity,       //
    int* targetEltTypes, int targetNbMatls, int* targetMatlIdPerElt, int* targetMatlTypes,             //
    int* targetMatlMappingFlags, int* nodeCorrespondence, char* message, int* errorCode,               //
    int (*callback)(int, char*, char*, int))
{
    MappingClass mapping;
    mapping.itsRefMesh.init(ModelKind::mesh, refNbElts, refNbNodes, refNodeCoords, refConnectivity, refEltTypes,
                            refNbMatls, refMatlIdPerElt, refMatlTypes);
    mapping.itsTargetMesh.init(ModelKind::mesh, targetNbElts, targetNbNodes, targetNodeCoords, targetConnectivity,
                               targetEltTypes, targetNbMatls, targetMatlIdPerElt, targetMatlTypes);
    mapping.itsTargetMatlMappingFlags = targetMatlMappingFlags;
    mapping.itsCallback = callback;
    mapping.itsNodeCorrespondence = nodeCorrespondence;
    mapping.readNodToNodInputs();
    mapping.nodToNodCorrespondence();
    reportOutcome(mapping, "Node to Node correspondence computation normal termination.", message, errorCode);
}

void FE3DMeshToFE3DMesh_GPToGPMapping(
    int refNbElts, int refNbNodes, float (*refNodeCoords)[3], int** refConnectivity, int* refEltTypes, //
    int refNbMatls, int* refMatlIdPerElt, int* refMatlTypes,                                           //
    int targetNbElts, int targetNbNodes, float (*targetNodeCoords)[3], int** targetConnectivity,       //
    int* targetEltTypes, int targetNbMatls, int* targetMatlIdPerElt, int* targetMatlTypes,             //
    int* targetMatlMappingFlags, int** gpCorrespondenceA, int** gpCorrespondenceB, char* message,      //
    int* errorCode, int (*callback)(int, char*, char*, int))
{
    MappingClass mapping;
    mapping.itsRefMesh.init(ModelKind::mesh, refNbElts, refNbNodes, refNodeCoords, refConnectivity, refEltTypes,
                            refNbMatls, refMatlIdPerElt, refMatlTypes);
    mapping.itsTargetMesh.init(ModelKind::mesh, targetNbElts, targetNbNodes, targetNodeCoords, targetConnectivity,
                               targetEltTypes, targetNbMatls, targetMatlIdPerElt, targetMatlTypes);
    mapping.itsTargetMatlMappingFlags = targetMatlMappingFlags;
    mapping.itsCallback = callback;
    mapping.itsGPCorrespondenceA = gpCorrespondenceA;
    mapping.itsGPCorrespondenceB = gpCorrespondenceB;
    mapping.readGPToGPInputs();
    mapping.GPToGPCorrespondence();
    reportOutcome(mapping, "Gauss point to Gauss point correspondence computation normal termination.", message,
                  errorCode);
}

const char* Veltrane_get_module_info(int what)
{
    switch (what)
    {
    case 0: return moduleKind;
    case 1: return moduleVersion;
    default: return moduleIdentification + identificationMarkerLength;
    }
}
