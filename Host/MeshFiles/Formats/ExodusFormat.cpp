// Exodus files.
#include "BlockJoining.h"
#include "DataSetReader.h"
#include "FormatList.h"
#include "GroupNames.h"
#include "NetcdfStructure.h"
#include "SilentStandardError.h"
#include "Text.h"
#include "VtkReading.h"

#include <vtkExodusIIReader.h>
#include <vtkMultiBlockDataSet.h>
#include <vtkNew.h>
#include <vtkUnstructuredGrid.h>

#include <array>
#include <string_view>
#include <vector>

namespace veltrane
{
namespace
{

constexpr std::array<std::string_view, 3> endings{".e", ".exo", ".ex2"};

vtkSmartPointer<vtkExodusIIReader> open(const std::filesystem::path& path)
{
    checkNetcdfSize(path);
    vtkNew<vtkExodusIIReader> reader;
    if (reader->CanReadFile(path.c_str()) == 0)
    {
        throw BadFile(text("cannot read ", quoted(path), ": it is not an Exodus file",
                           isHdf5(path) ? ", or damaged or cut off" : ""));
    }
    reader->SetFileName(path.c_str());
    reader->UpdateInformation();
    return reader;
}

void selectEverything(vtkExodusIIReader& reader)
{
    for (int block = 0; block < reader.GetNumberOfObjects(vtkExodusIIReader::ELEM_BLOCK); ++block)
    {
        reader.SetObjectStatus(vtkExodusIIReader::ELEM_BLOCK, block, 1);
    }
    for (const int kind : {vtkExodusIIReader::NODAL, vtkExodusIIReader::ELEM_BLOCK})
    {
        reader.SetAllArrayStatus(kind, 1);
    }
    reader.GenerateObjectIdCellArrayOn();
    reader.ApplyDisplacementsOff();
    reader.SetSqueezePoints(false); // all blocks have all points, so that their point numbers are the file's
}

/// The names of element blocks that have any.
GroupNames blockNames(vtkExodusIIReader& reader)
{
    constexpr std::string_view standIn = "Unnamed block";
    GroupNames names;
    for (int block = 0; block < reader.GetNumberOfObjects(vtkExodusIIReader::ELEM_BLOCK); ++block)
    {
        const char* name = reader.GetObjectName(vtkExodusIIReader::ELEM_BLOCK, block);
        if (name != nullptr && !std::string_view(name).starts_with(standIn))
        {
            names[reader.GetObjectId(vtkExodusIIReader::ELEM_BLOCK, block)] = name;
        }
    }
    return names;
}

/// All element blocks in one grid, with the cell array ObjectId telling their numbers, and all results at one step.
/// Nodes stand where the file says, whatever displacements it holds.
FileData read(const std::filesystem::path& path, const FileReading& reading)
{
    const SilentStandardError silence;
    const VtkMessages messages;
    const vtkSmartPointer<vtkExodusIIReader> reader = open(path);
    throwIfFailed(messages, reader->GetErrorCode(), path);
    selectEverything(*reader);
    if (const auto step = chosenStep(reading, timesOf(*reader).size(), path))
    {
        reader->SetTimeStep(*step);
    }
    reader->Update();
    throwIfFailed(messages, reader->GetErrorCode(), path);
    const std::vector<Block> blocks = blocksOf(*reader->GetOutput());
    if (blocks.empty())
    {
        throw BadFile(text(quoted(path), " has no cells"));
    }
    const vtkSmartPointer<vtkUnstructuredGrid> grid = joinBlocksOfSamePoints(blocks);
    setGroupNames(*grid, blockNames(*reader));
    return {grid};
}

std::vector<double> readTimes(const std::filesystem::path& path)
{
    const SilentStandardError silence;
    const VtkMessages messages;
    const vtkSmartPointer<vtkExodusIIReader> reader = open(path);
    throwIfFailed(messages, reader->GetErrorCode(), path);
    return timesOf(*reader);
}

} // namespace

constinit const FileFormat formats::exodus{
    .name = "Exodus",
    .endings = endings,
    .reads = {.cells = true, .materials = true, .nodalFields = true, .cellFields = true, .steps = true},
    .read = read,
    .times = readTimes};

} // namespace veltrane
