// CGNS files. Zones are materials.
#include "BlockJoining.h"
#include "FormatList.h"
#include "SilentStandardError.h"
#include "VtkReading.h"

#include <vtkCGNSReader.h>
#include <vtkMultiBlockDataSet.h>

#include <array>

namespace veltrane
{
namespace
{

constexpr std::array<std::string_view, 1> endings{".cgns"};

void open(vtkCGNSReader& reader, const VtkMessages& messages, const std::filesystem::path& path)
{
    if (guarded(path, [&] { return reader.CanReadFile(path.c_str()); }) == 0)
    {
        throw BadFile(text("cannot read ", quoted(path), ": it is not a CGNS file, or damaged or cut off"));
    }
    reader.SetFileName(path.c_str());
    guarded(path, [&] { reader.UpdateInformation(); });
    throwIfFailed(messages, reader.GetErrorCode(), path);
    reader.EnableAllBases();
    reader.EnableAllFamilies();
    reader.EnableAllPointArrays();
    reader.EnableAllCellArrays();
}

FileData read(const std::filesystem::path& path, const FileReading& reading)
{
    const SilentStandardError silence;
    const VtkMessages messages;
    const vtkNew<vtkCGNSReader> reader;
    open(*reader, messages, path);
    return readBlocks(*reader, messages, reading, path);
}

std::vector<double> readTimes(const std::filesystem::path& path)
{
    const SilentStandardError silence;
    const VtkMessages messages;
    const vtkNew<vtkCGNSReader> reader;
    open(*reader, messages, path);
    return timesOf(*reader);
}

} // namespace

constinit const FileFormat formats::cgns{
    .name = "CGNS",
    .endings = endings,
    .reads = {.cells = true, .materials = true, .nodalFields = true, .cellFields = true, .steps = true},
    .read = read,
    .times = readTimes};

} // namespace veltrane
