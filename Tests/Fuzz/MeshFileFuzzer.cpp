// libFuzzer target: the readers of mesh and point files. The first byte of an input names the format, the rest is the
// file. A reader gives what the file holds or throws an exception of the host side; nothing else may come of a file.
#include "MeshFile.h"
#include "PointFile.h"
#include "TemporaryDirectory.h"
#include "VtuFile.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <optional>
#include <string>
#include <string_view>

namespace
{
using namespace veltrane;

void readMesh(const std::filesystem::path& path)
{
    for (const bool skipUnsupported : {false, true})
    {
        const MeshFile file(path, MeshReading{.role = MeshRole::target, .skipUnsupported = skipUnsupported});
        for (const PointArray& array : file.pointArrays())
        {
            if (array.isFloatingPoint && array.componentCount >= 1 && array.componentCount <= maxComponentCount)
            {
                static_cast<void>(file.field(array.name));
            }
        }
    }
}

/// Our own reader alone, which survives what VTK's does not.
void readVtuFile(const std::filesystem::path& path)
{
    static_cast<void>(readVtu(path, 1));
}

void readPoints(const std::filesystem::path& path)
{
    static_cast<void>(PointFile(path).points());
}

struct Format
{
    char letter;
    const char* ending;
    void (*read)(const std::filesystem::path& path);
};

/// The legacy format is not among them: VTK 9.1 itself overruns its memory where the number of node numbers that such a
/// file announces is too small.
constexpr Format formats[] = {
    {'u', ".vtu", readMesh},
    {'c', ".csv", readPoints},
    {'p', ".vtp", readPoints},
    {'o', ".vtu", readVtuFile},
};

/// VTK 9.1 itself divides by the size of a compressed block, which may be 0 in a damaged file.
bool isLeftOut(std::string_view file)
{
    return !file.starts_with('o') && file.find("compressor") != std::string_view::npos;
}

/// For the files, removed at the end.
const TemporaryDirectory directory;
} // namespace

/// Files that say that they are enormous meet the end of the memory, as they do without sanitizers, whose own operator
/// would end the process.
void* operator new(std::size_t size)
{
    void* block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr)
    {
        throw std::bad_alloc();
    }
    return block;
}
void* operator new[](std::size_t size)
{
    return operator new(size);
}

/// Readers that end with an exception leave memory behind.
extern "C" const char* __asan_default_options()
{
    return "allocator_may_return_null=1:max_allocation_size_mb=1024:alloc_dealloc_mismatch=0:detect_leaks=0";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view file(reinterpret_cast<const char*>(data), size);
    for (const Format& format : formats)
    {
        if (!isLeftOut(file) && file.starts_with(format.letter))
        {
            const std::filesystem::path path = directory / (std::string("input") + format.ending);
            writeFile(path, std::string(file.substr(1)));
            try
            {
                format.read(path);
            }
            catch (const Error&)
            {
            }
            return 0;
        }
    }
    return -1;
}
