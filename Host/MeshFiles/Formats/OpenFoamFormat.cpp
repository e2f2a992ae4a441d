// OpenFOAM cases, named by an empty .foam file in their directory or by their controlDict. Values are those of cells;
// regions are materials.
#include "BlockJoining.h"
#include "FormatList.h"
#include "VtkReading.h"

#include <vtkMultiBlockDataSet.h>
#include <vtkOpenFOAMReader.h>
#include <vtkUnstructuredGrid.h>

#include <array>

namespace veltrane
{
namespace
{

constexpr std::array<std::string_view, 2> endings{".foam", ".openfoam"};

bool isControlDict(std::string_view name)
{
    return name == "controldict";
}

void open(vtkOpenFOAMReader& reader, const VtkMessages& messages, const std::filesystem::path& path)
{
    reader.SetFileName(std::filesystem::absolute(path).c_str());
    guarded(path, [&] { reader.UpdateInformation(); });
    throwIfFailed(messages, reader.GetErrorCode(), path);
    reader.EnableAllCellArrays();
    reader.EnableAllPointArrays();
    reader.DisableAllPatchArrays();
    reader.SetPatchArrayStatus("internalMesh", 1);
    reader.DisableAllLagrangianArrays();
    reader.CreateCellToPointOff();
    reader.DecomposePolyhedraOff();
}

FileData read(const std::filesystem::path& path, const FileReading& reading)
{
    const VtkMessages messages;
    const vtkNew<vtkOpenFOAMReader> reader;
    open(*reader, messages, path);
    return readBlocks(*reader, messages, reading, path);
}

std::vector<double> readTimes(const std::filesystem::path& path)
{
    const VtkMessages messages;
    const vtkNew<vtkOpenFOAMReader> reader;
    open(*reader, messages, path);
    return timesOf(*reader);
}

} // namespace

constinit const FileFormat formats::openFoam{
    .name = "OpenFOAM case",
    .endings = endings,
    .isNamed = isControlDict,
    .reads = {.cells = true, .materials = true, .nodalFields = true, .cellFields = true, .steps = true},
    .mayBeEmpty = true,
    .read = read,
    .times = readTimes};

} // namespace veltrane
