// libFuzzer target: the readers of files of Gmsh, CalculiX, Abaqus and Nastran, in memory. The first byte of an input
// names the format, the rest is the file. A reader gives a mesh that holds together or throws an exception of the host
// side; nothing else may come of a file.
#include "Solver/AbaqusFile.h"
#include "Solver/FrdFile.h"
#include "Solver/GmshFile.h"
#include "Solver/NastranFile.h"

#include <cstdint>
#include <cstdlib>
#include <new>
#include <string>

namespace
{
using namespace veltrane;

const std::string* current = nullptr;

/// A file that includes another one includes itself.
SourceText openAgain(const std::filesystem::path& path)
{
    return {*current, path};
}

ParsedMesh parse(char format, const SourceText& source)
{
    switch (format)
    {
    case 'g': return parseGmsh(source, std::nullopt);
    case 'f': return parseFrd(source, std::nullopt);
    case 'a': return parseAbaqus(source, openAgain);
    default: return parseNastran(source, openAgain);
    }
}

void require(bool holds)
{
    if (!holds)
    {
        std::abort();
    }
}

void checkMesh(const ParsedMesh& mesh)
{
    const std::size_t nodeCount = mesh.nodeNumbers.size();
    const std::size_t cellCount = mesh.cellTypes.size();
    require(mesh.coordinates.size() == 3 * nodeCount);
    require(mesh.nodeInstances.empty() || mesh.nodeInstances.size() == nodeCount);
    require(mesh.offsets.size() == cellCount + 1 && mesh.offsets.front() == 0);
    require(mesh.offsets.back() == static_cast<std::int64_t>(mesh.connectivity.size()));
    require(mesh.materials.empty() || mesh.materials.size() == cellCount);
    for (const std::int64_t node : mesh.connectivity)
    {
        require(node >= 0 && node < static_cast<std::int64_t>(nodeCount));
    }
    for (const ParsedField& field : mesh.fields)
    {
        const std::size_t rows = field.isPerCell ? cellCount : nodeCount;
        require(field.values.size() == rows * static_cast<std::size_t>(field.componentCount));
    }
}
} // namespace

/// What a small file says must not need much memory.
extern "C" const char* __asan_default_options()
{
    return "max_allocation_size_mb=256:detect_leaks=0";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0 || std::string("gfan").find(static_cast<char>(data[0])) == std::string::npos)
    {
        return -1;
    }
    const std::string file(reinterpret_cast<const char*>(data) + 1, size - 1);
    current = &file;
    try
    {
        checkMesh(parse(static_cast<char>(data[0]), SourceText(file, "input")));
    }
    catch (const Error&)
    {
    }
    return 0;
}
