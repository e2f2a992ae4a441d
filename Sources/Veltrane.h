/// The interface of the Veltrane library: what a host program loads and calls.
///
/// Usable from C and C++. From C, the point-cloud entry is out of reach by name: it is exported under its decorated C++
/// name, which encodes its parameter list.
///
/// Every computing function runs on the caller's thread, borrows the caller's arrays for the length of the call, and
/// reports its outcome in `errorCode` and `message`. Calls in one working directory must not overlap: each deletes
/// `interpoLog.txt` there and reads its tuning file.
#ifndef VELTRANE_H
#define VELTRANE_H

#if defined(_WIN32)
#    define VELTRANE_EXPORT __declspec(dllexport)
#else
#    define VELTRANE_EXPORT __attribute__((visibility("default")))
#endif

/// One field of a set. The records cross the binary interface: their layout is fixed.
///
/// The values lie location by location, component by component: component c of location k at k * nbComponents + c.
/// Locations are numbered as the mesh numbers them; Gauss points run over the elements in order, and over each
/// element's points in the order of its type.
typedef struct FieldStruct
{
    char name[100];           ///< NUL-terminated; serves messages only, fields are paired by position
    int matlStateFlag;        ///< 1: the field exists only on materials of state class 1; others: everywhere
    int location;             ///< 1 nodes, 2 Gauss points, 3 elements (not interpolated)
    int nbComponents;         ///< values per location
    int precision;            ///< 1: valuesFloat is used; 2: valuesDouble is used
    float* valuesFloat;       ///< the host's single-precision values
    double* valuesDouble;     ///< the host's double-precision values
    float defaultValueFloat;  ///< default of a single-precision field
    float defaultValueDouble; ///< default of a double-precision field (single precision here too)
} FieldStruct;

/// A set of fields: the source fields (read) or the target fields (written). Target field i receives source field i.
typedef struct FieldsSetStruct
{
    int nbFields;        ///< at least 1
    FieldStruct* fields; ///< that many records, one after another
} FieldsSetStruct;

/// The host's progress callback, called on the caller's thread: percent done, title of the computation, stage or notice
/// text, kind. Kind 1 reports progress and may be answered with 0 to cancel; kind 0 is a notice, its result is ignored.
typedef int (*VeltraneCallback)(int progress, char* title, char* stage, int kind);

#ifdef __cplusplus
extern "C"
{
#endif

    /// Transfers fields from a source mesh to a target mesh.
    ///
    /// Each mesh is a group of eight arguments: number of elements, number of nodes, coordinates float[nbNodes][3], per
    /// element its 0-based node numbers in the order of its type, per element its type code, number of materials (not
    /// 0), per element its 0-based material, per material its state code. A target point takes values only from source
    /// elements whose material has the same state code.
    ///
    /// \param interpoMode  what happens to target points far outside the source: 0 the call ends with code 2; 1 node
    /// fields
    ///                     take their default; 2 node fields are propagated from neighbouring nodes (in 1 and 2 values
    ///                     at far Gauss points become 0)
    /// \param defaultValue written to every value that was to be computed when the call ends with a positive code
    /// \param targetMatlMappingFlags per target material, 1: its nodes and Gauss points receive values
    /// \param message      receives one outcome text; room for 1000 characters
    /// \param errorCode    0 done, 1 failed, 2 target points outside the source in mode 0, -1 cancelled or done with
    /// the
    ///                     propagation warning
    /// \param callback     may be null
    ///
    /// Faults in the data (a model without materials, an empty field set, an unknown precision, a singular Jacobian)
    /// print a line on standard output and end the process with status 0.
    VELTRANE_EXPORT void FE3DMeshToFE3DMesh_VariablesInterpolation(
        int interpoMode, float defaultValue,                                                                 //
        int refNbElts, int refNbNodes, float (*refNodeCoords)[3], int** refConnectivity, int* refEltTypes,   //
        int refNbMatls, int* refMatlIdPerElt, int* refMatlTypes,                                             //
        int targetNbElts, int targetNbNodes, float (*targetNodeCoords)[3], int** targetConnectivity,         //
        int* targetEltTypes, int targetNbMatls, int* targetMatlIdPerElt, int* targetMatlTypes,               //
        int* targetMatlMappingFlags, FieldsSetStruct refFields, FieldsSetStruct targetFields, char* message, //
        int* errorCode, int (*callback)(int, char*, char*, int));

    /// Matches the nodes of a target mesh with those of a source mesh of the same geometry.
    ///
    /// The meshes, flags, message, errorCode and callback are those of FE3DMeshToFE3DMesh_VariablesInterpolation.
    ///
    /// \param nodeCorrespondence one entry per target node: the number, from 1, of the source node at the same place
    /// and in
    ///                           a material of the same state code. Entries of nodes whose material is not selected are
    ///                           not written; after a failure the selected ones are 0.
    VELTRANE_EXPORT void FE3DMeshToFE3DMesh_NodeToNodeMapping(
        int refNbElts, int refNbNodes, float (*refNodeCoords)[3], int** refConnectivity, int* refEltTypes, //
        int refNbMatls, int* refMatlIdPerElt, int* refMatlTypes,                                           //
        int targetNbElts, int targetNbNodes, float (*targetNodeCoords)[3], int** targetConnectivity,       //
        int* targetEltTypes, int targetNbMatls, int* targetMatlIdPerElt, int* targetMatlTypes,             //
        int* targetMatlMappingFlags, int* nodeCorrespondence, char* message, int* errorCode,               //
        int (*callback)(int, char*, char*, int));

    /// Matches the Gauss points of the selected target elements with those of a source mesh of the same geometry.
    ///
    /// \param gpCorrespondenceA [target element][Gauss point]: the number, from 1, of the source element
    /// \param gpCorrespondenceB the same: the number, from 1, of the Gauss point in that element. Entries of elements
    /// whose
    ///                          material is not selected are not written; after a failure the selected ones are 0.
    VELTRANE_EXPORT void FE3DMeshToFE3DMesh_GPToGPMapping(
        int refNbElts, int refNbNodes, float (*refNodeCoords)[3], int** refConnectivity, int* refEltTypes, //
        int refNbMatls, int* refMatlIdPerElt, int* refMatlTypes,                                           //
        int targetNbElts, int targetNbNodes, float (*targetNodeCoords)[3], int** targetConnectivity,       //
        int* targetEltTypes, int targetNbMatls, int* targetMatlIdPerElt, int* targetMatlTypes,             //
        int* targetMatlMappingFlags, int** gpCorrespondenceA, int** gpCorrespondenceB, char* message,      //
        int* errorCode, int (*callback)(int, char*, char*, int));

    /// Information about the module: 0 its kind, 1 its version, any other value a line that identifies the build.
    /// The texts are constant and stay valid while the library is loaded.
    VELTRANE_EXPORT const char* Veltrane_get_module_info(int what);

#ifdef __cplusplus
}

/// Transfers fields from a source mesh to a cloud of points: as FE3DMeshToFE3DMesh_VariablesInterpolation, with
/// coordinates and one 0-based material per point in the place of the target mesh. Modes 0 and 1 only.
VELTRANE_EXPORT void FE3DMEshToPtCloud_VariablesInterpolation(
    int interpoMode, float defaultValue,                                                               //
    int refNbElts, int refNbNodes, float (*refNodeCoords)[3], int** refConnectivity, int* refEltTypes, //
    int refNbMatls, int* refMatlIdPerElt, int* refMatlTypes,                                           //
    int nbPoints, float (*pointCoords)[3], int nbMatls, int* matlIdPerPoint, int* matlTypes,           //
    int* targetMatlMappingFlags, FieldsSetStruct refFields, FieldsSetStruct targetFields,              //
    char* message, int* errorCode, int (*callback)(int, char*, char*, int));
#endif

#endif
