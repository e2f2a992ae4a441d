// EnSight cases (.case), which name the files of geometry and variables. Parts are materials.
#include "BlockJoining.h"
#include "FormatList.h"
#include "VtkReading.h"

#include <vtkDataArray.h>
#include <vtkDataArrayCollection.h>
#include <vtkGenericEnSightReader.h>
#include <vtkMultiBlockDataSet.h>

#include <array>

namespace veltrane
{
namespace
{

constexpr std::array<std::string_view, 1> endings{".case"};

void open(vtkGenericEnSightReader& reader, const VtkMessages& messages, const std::filesystem::path& path)
{
    if (vtkGenericEnSightReader::IsEnSightFile(path.c_str()))
    {
        reader.SetCaseFileName(path.c_str());
        reader.ReadAllVariablesOn();
        reader.UpdateInformation();
        throwIfFailed(messages, reader.GetErrorCode(), path);
        return;
    }
    throw BadFile(text("cannot read ", quoted(path), ": it is not an EnSight case"));
}

FileData read(const std::filesystem::path& path, const FileReading& reading)
{
    const VtkMessages messages;
    const vtkNew<vtkGenericEnSightReader> reader;
    open(*reader, messages, path);
    return readBlocks(*reader, messages, reading, path);
}

std::vector<double> readTimes(const std::filesystem::path& path)
{
    const VtkMessages messages;
    const vtkNew<vtkGenericEnSightReader> reader;
    open(*reader, messages, path);
    return timesOf(*reader);
}

} // namespace

constinit const FileFormat formats::enSight{
    .name = "EnSight case",
    .endings = endings,
    .reads = {.cells = true, .materials = true, .nodalFields = true, .cellFields = true, .steps = true},
    .read = read,
    .times = readTimes};

} // namespace veltrane
