// Results of LS-DYNA (d3plot), with the files d3plot01, d3plot02 ... beside it. Nodes stand where they were at first;
// parts are materials.
#include "BlockJoining.h"
#include "FormatList.h"
#include "SilentStandardError.h"
#include "VtkReading.h"

#include <vtkLSDynaReader.h>
#include <vtkMultiBlockDataSet.h>

#include <array>

namespace veltrane
{
namespace
{

constexpr std::array<std::string_view, 1> endings{".d3plot"};

bool isPlot(std::string_view name)
{
    return name == "d3plot";
}

void open(vtkLSDynaReader& reader, const VtkMessages& messages, const std::filesystem::path& path)
{
    const std::filesystem::path absolute = std::filesystem::absolute(path);
    if (guarded(path, [&] { return reader.CanReadFile(absolute.c_str()); }) == 0)
    {
        throw BadFile(text("cannot read ", quoted(path), ": it is not a result of LS-DYNA"));
    }
    reader.SetFileName(absolute.string());
    reader.SetDeformedMesh(0);
    guarded(path, [&] { reader.UpdateInformation(); });
    throwIfFailed(messages, reader.GetErrorCode(), path);
    for (int part = 0; part < reader.GetNumberOfPartArrays(); ++part)
    {
        reader.SetPartArrayStatus(reader.GetPartArrayName(part), 1);
    }
}

FileData read(const std::filesystem::path& path, const FileReading& reading)
{
    const SilentStandardError silence;
    const VtkMessages messages;
    const vtkNew<vtkLSDynaReader> reader;
    open(*reader, messages, path);
    return readBlocks(*reader, messages, reading, path);
}

std::vector<double> readTimes(const std::filesystem::path& path)
{
    const SilentStandardError silence;
    const VtkMessages messages;
    const vtkNew<vtkLSDynaReader> reader;
    open(*reader, messages, path);
    return timesOf(*reader);
}

} // namespace

constinit const FileFormat formats::lsDyna{
    .name = "LS-DYNA result",
    .endings = endings,
    .isNamed = isPlot,
    .reads = {.cells = true, .materials = true, .nodalFields = true, .cellFields = true, .steps = true},
    .read = read,
    .times = readTimes};

} // namespace veltrane
