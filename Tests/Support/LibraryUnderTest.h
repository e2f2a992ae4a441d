/// The library's functions, looked up in the built shared library as a host does.
#ifndef VELTRANE_TESTS_LIBRARY_UNDER_TEST_H
#define VELTRANE_TESTS_LIBRARY_UNDER_TEST_H

#include "Veltrane.h"

/// The point-cloud entry is exported under its C++ name, which encodes its parameter list; hosts rely on it.
constexpr const char* pointCloudEntryName = "_Z40FE3DMEshToPtCloud_VariablesInterpolation"
                                            "ifiiPA3_fPPiS1_iS1_S1_iS0_iS1_S1_S1_15FieldsSetStructS3_PcS1_PFiiS4_S4_iE";

struct LibraryUnderTest
{
    decltype(&FE3DMeshToFE3DMesh_VariablesInterpolation) meshToMesh;
    decltype(&FE3DMEshToPtCloud_VariablesInterpolation) meshToPointCloud;
    decltype(&FE3DMeshToFE3DMesh_NodeToNodeMapping) nodeToNode;
    decltype(&FE3DMeshToFE3DMesh_GPToGPMapping) gaussPointToGaussPoint;
    decltype(&Veltrane_get_module_info) moduleInfo;
};

/// The functions of a library that dlopen has loaded; ends the test program when one of them is missing.
LibraryUnderTest functionsOf(void* library);

/// Loads the library at the first use, the one that VELTRANE_LIBRARY_PATH names or else that of this build; ends the
/// test program when it or one of its functions is missing.
const LibraryUnderTest& libraryUnderTest();

#endif
