#include "LibraryUnderTest.h"

#include <cstdio>
#include <cstdlib>

#include <dlfcn.h>

namespace
{
template <typename Function> void look(void* library, const char* name, Function& function)
{
    function = reinterpret_cast<Function>(dlsym(library, name));
    if (function == nullptr)
    {
        std::fprintf(stderr, "%s is not exported\n", name);
        std::abort();
    }
}

LibraryUnderTest load()
{
    const char* path = std::getenv("VELTRANE_LIBRARY_PATH");
    void* library = dlopen(path != nullptr ? path : VELTRANE_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr)
    {
        std::fprintf(stderr, "%s\n", dlerror());
        std::abort();
    }
    return functionsOf(library);
}
} // namespace

LibraryUnderTest functionsOf(void* library)
{
    LibraryUnderTest functions{};
    look(library, "FE3DMeshToFE3DMesh_VariablesInterpolation", functions.meshToMesh);
    look(library, pointCloudEntryName, functions.meshToPointCloud);
    look(library, "FE3DMeshToFE3DMesh_NodeToNodeMapping", functions.nodeToNode);
    look(library, "FE3DMeshToFE3DMesh_GPToGPMapping", functions.gaussPointToGaussPoint);
    look(library, "Veltrane_get_module_info", functions.moduleInfo);
    return functions;
}

const LibraryUnderTest& libraryUnderTest()
{
    static const LibraryUnderTest functions = load();
    return functions;
}
