/// \file
/// The interface of the Veltrane library: what a host program loads and calls.
///
/// Usable from C and C++. From C, the point-cloud entry is out of reach by name: it is exported under its decorated C++
/// name, which encodes its parameter list.
///
/// Every computing function runs on the caller's thread, borrows the caller's arrays for the length of the call, and
/// reports its outcome in `errorCode` and `message`. Calls in one working directory must not overlap: each deletes
/// `interpoLog.txt` there and reads its tuning file.
///
/// **Meshes.** Eight arguments describe a mesh: the number of elements; the number of nodes; their coordinates,
/// `float[nbNodes][3]`; per element the numbers of its nodes, from 0, in the order of its type; per element its type
/// code; the number of materials, at least 1; per element its material, from 0; per material its state code. A target
/// point takes values only from source elements whose material has the same state code.
///
/// **Type codes.** 1 hexahedron (8 nodes), 2 tetrahedron (4), 3 wedge (6), 10 quadratic tetrahedron (10), 12 pyramid
/// (5); in target meshes also 6 quadrilateral (4) and 7 triangle (3), whose nodes receive values.
///
/// **Units.** Source and target coordinates are in the same length unit, whichever it is. Values keep theirs.
///
/// **Undefined values.** A source value of -8.888e13 or less is undefined. What is interpolated with it becomes
/// -9.999e13.
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
    /// \param interpoMode what happens to target points far outside the source. 0: the call ends with code 2. 1: node
    /// fields take their default. 2: node fields are propagated from neighbouring nodes. In 1 and 2 values at far Gauss
    /// points become 0.
    /// \param defaultValue written to every value that was to be computed when the call ends with a positive code
    /// \param refNbElts number of source elements
    /// \param refNbNodes number of source nodes
    /// \param refNodeCoords coordinates of the source nodes, `float[refNbNodes][3]`
    /// \param refConnectivity per source element the numbers of its nodes, from 0
    /// \param refEltTypes per source element its type code
    /// \param refNbMatls number of source materials, at least 1
    /// \param refMatlIdPerElt per source element its material, from 0
    /// \param refMatlTypes per source material its state code
    /// \param targetNbElts number of target elements
    /// \param targetNbNodes number of target nodes
    /// \param targetNodeCoords coordinates of the target nodes, `float[targetNbNodes][3]`
    /// \param targetConnectivity per target element the numbers of its nodes, from 0
    /// \param targetEltTypes per target element its type code
    /// \param targetNbMatls number of target materials, at least 1
    /// \param targetMatlIdPerElt per target element its material, from 0
    /// \param targetMatlTypes per target material its state code
    /// \param targetMatlMappingFlags per target material, 1: its nodes and Gauss points receive values
    /// \param refFields the source fields, which are read
    /// \param targetFields the target fields, which are written; field i receives source field i
    /// \param message receives one outcome text; room for 1000 characters
    /// \param errorCode 0 done, 1 failed, 2 target points outside the source in mode 0, -1 cancelled or done with the
    /// propagation warning
    /// \param callback may be null
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
    /// \param refNbElts number of source elements
    /// \param refNbNodes number of source nodes
    /// \param refNodeCoords coordinates of the source nodes, `float[refNbNodes][3]`
    /// \param refConnectivity per source element the numbers of its nodes, from 0
    /// \param refEltTypes per source element its type code
    /// \param refNbMatls number of source materials, at least 1
    /// \param refMatlIdPerElt per source element its material, from 0
    /// \param refMatlTypes per source material its state code
    /// \param targetNbElts number of target elements
    /// \param targetNbNodes number of target nodes
    /// \param targetNodeCoords coordinates of the target nodes, `float[targetNbNodes][3]`
    /// \param targetConnectivity per target element the numbers of its nodes, from 0
    /// \param targetEltTypes per target element its type code
    /// \param targetNbMatls number of target materials, at least 1
    /// \param targetMatlIdPerElt per target element its material, from 0
    /// \param targetMatlTypes per target material its state code
    /// \param targetMatlMappingFlags per target material, 1: partners of its nodes are looked for
    /// \param nodeCorrespondence one entry per target node: the number, from 1, of the source node at the same place
    /// and in a material of the same state code. Entries of nodes whose material is not selected are not written;
    /// after a failure the selected ones are 0.
    /// \param message receives one outcome text; room for 1000 characters
    /// \param errorCode 0 done, 1 failed, -1 cancelled
    /// \param callback may be null
    VELTRANE_EXPORT void FE3DMeshToFE3DMesh_NodeToNodeMapping(
        int refNbElts, int refNbNodes, float (*refNodeCoords)[3], int** refConnectivity, int* refEltTypes, //
        int refNbMatls, int* refMatlIdPerElt, int* refMatlTypes,                                           //
        int targetNbElts, int targetNbNodes, float (*targetNodeCoords)[3], int** targetConnectivity,       //
        int* targetEltTypes, int targetNbMatls, int* targetMatlIdPerElt, int* targetMatlTypes,             //
        int* targetMatlMappingFlags, int* nodeCorrespondence, char* message, int* errorCode,               //
        int (*callback)(int, char*, char*, int));

    /// Matches the Gauss points of the selected target elements with those of a source mesh of the same geometry.
    ///
    /// \param refNbElts number of source elements
    /// \param refNbNodes number of source nodes
    /// \param refNodeCoords coordinates of the source nodes, `float[refNbNodes][3]`
    /// \param refConnectivity per source element the numbers of its nodes, from 0
    /// \param refEltTypes per source element its type code
    /// \param refNbMatls number of source materials, at least 1
    /// \param refMatlIdPerElt per source element its material, from 0
    /// \param refMatlTypes per source material its state code
    /// \param targetNbElts number of target elements
    /// \param targetNbNodes number of target nodes
    /// \param targetNodeCoords coordinates of the target nodes, `float[targetNbNodes][3]`
    /// \param targetConnectivity per target element the numbers of its nodes, from 0
    /// \param targetEltTypes per target element its type code
    /// \param targetNbMatls number of target materials, at least 1
    /// \param targetMatlIdPerElt per target element its material, from 0
    /// \param targetMatlTypes per target material its state code
    /// \param targetMatlMappingFlags per target material, 1: partners of its Gauss points are looked for
    /// \param gpCorrespondenceA [target element][Gauss point]: the number, from 1, of the source element
    /// \param gpCorrespondenceB the same: the number, from 1, of the Gauss point in that element. Entries of elements
    /// whose material is not selected are not written; after a failure the selected ones are 0.
    /// \param message receives one outcome text; room for 1000 characters
    /// \param errorCode 0 done, 1 failed, -1 cancelled
    /// \param callback may be null
    VELTRANE_EXPORT void FE3DMeshToFE3DMesh_GPToGPMapping(
        int refNbElts, int refNbNodes, float (*refNodeCoords)[3], int** refConnectivity, int* refEltTypes, //
        int refNbMatls, int* refMatlIdPerElt, int* refMatlTypes,                                           //
        int targetNbElts, int targetNbNodes, float (*targetNodeCoords)[3], int** targetConnectivity,       //
        int* targetEltTypes, int targetNbMatls, int* targetMatlIdPerElt, int* targetMatlTypes,             //
        int* targetMatlMappingFlags, int** gpCorrespondenceA, int** gpCorrespondenceB, char* message,      //
        int* errorCode, int (*callback)(int, char*, char*, int));

    /// Information about the module.
    ///
    /// \param what 0: its kind; 1: its version; any other value: a line that identifies the build
    /// \return a constant text, which stays valid while the library is loaded
    VELTRANE_EXPORT const char* Veltrane_get_module_info(int what);

#ifdef __cplusplus
}

/// Transfers fields from a source mesh to a cloud of points, as FE3DMeshToFE3DMesh_VariablesInterpolation does to a
/// mesh.
///
/// \param interpoMode 0 or 1, as there
/// \param defaultValue as there
/// \param refNbElts number of source elements
/// \param refNbNodes number of source nodes
/// \param refNodeCoords coordinates of the source nodes, `float[refNbNodes][3]`
/// \param refConnectivity per source element the numbers of its nodes, from 0
/// \param refEltTypes per source element its type code
/// \param refNbMatls number of source materials, at least 1
/// \param refMatlIdPerElt per source element its material, from 0
/// \param refMatlTypes per source material its state code
/// \param nbPoints number of points
/// \param pointCoords their coordinates, `float[nbPoints][3]`
/// \param nbMatls number of the points' materials, at least 1
/// \param matlIdPerPoint per point its material, from 0
/// \param matlTypes per material of the points its state code
/// \param targetMatlMappingFlags per material of the points, 1: its points receive values
/// \param refFields the source fields, which are read
/// \param targetFields the target fields, which are written; field i receives source field i
/// \param message receives one outcome text; room for 1000 characters
/// \param errorCode 0 done, 1 failed, 2 points outside the source in mode 0, -1 cancelled
/// \param callback may be null
VELTRANE_EXPORT void FE3DMEshToPtCloud_VariablesInterpolation(
    int interpoMode, float defaultValue,                                                               //
    int refNbElts, int refNbNodes, float (*refNodeCoords)[3], int** refConnectivity, int* refEltTypes, //
    int refNbMatls, int* refMatlIdPerElt, int* refMatlTypes,                                           //
    int nbPoints, float (*pointCoords)[3], int nbMatls, int* matlIdPerPoint, int* matlTypes,           //
    int* targetMatlMappingFlags, FieldsSetStruct refFields, FieldsSetStruct targetFields,              //
    char* message, int* errorCode, int (*callback)(int, char*, char*, int));
#endif

#endif
