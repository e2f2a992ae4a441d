#include "ExodusReading.h"

#include "BlockJoining.h"
#include "DataSetReader.h"
#include "GroupNames.h"
#include "NetcdfStructure.h"
#include "SilentStandardError.h"
#include "Text.h"
#include "VtkReading.h"

#include <vtkExodusIIReader.h>
#include <vtkIdTypeArray.h>
#include <vtkMultiBlockDataSet.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkUnstructuredGrid.h>
#include <vtk_exodusII.h>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace veltrane
{
namespace
{

vtkSmartPointer<vtkExodusIIReader> open(const std::filesystem::path& path)
{
    checkNetcdfSize(path);
    vtkNew<vtkExodusIIReader> reader;
    if (guarded(path, [&] { return reader->CanReadFile(path.c_str()); }) == 0)
    {
        throw BadFile(text("cannot read ", quoted(path), ": it is not an Exodus file",
                           isHdf5(path) ? ", or damaged or cut off" : ""));
    }
    reader->SetFileName(path.c_str());
    guarded(path, [&] { reader->UpdateInformation(); });
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

/// Whether a file numbers its nodes; the library makes numbers up for others. Names stand as they are in files of all
/// kinds.
bool hasNodeNumbers(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    return bytes.find("node_num_map") != std::string::npos;
}

/// By the library, since VTK's reader does not survive to be asked for them.
vtkSmartPointer<vtkIdTypeArray> readNodeNumbers(const std::filesystem::path& path, vtkIdType nodeCount)
{
    std::vector<std::int64_t> numbers(static_cast<std::size_t>(nodeCount));
    int hostSize = sizeof(double);
    int fileSize = 0;
    float version = 0;
    const int file = ex_open(path.c_str(), EX_READ, &hostSize, &fileSize, &version);
    const bool isRead = file >= 0 && ex_set_int64_status(file, EX_MAPS_INT64_API) >= 0 &&
                        ex_get_id_map(file, EX_NODE_MAP, numbers.data()) >= 0;
    if (file >= 0)
    {
        ex_close(file);
    }
    if (!isRead)
    {
        throw BadFile(text("cannot read ", quoted(path), ": the numbers of its nodes are damaged"));
    }
    vtkNew<vtkIdTypeArray> array;
    array->SetName(globalNodesName);
    for (const std::int64_t number : numbers)
    {
        array->InsertNextValue(number);
    }
    return array;
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

} // namespace

FileData readExodus(const std::filesystem::path& path, const FileReading& reading, bool withGlobalNodes)
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
    guarded(path, [&] { reader->Update(); });
    throwIfFailed(messages, reader->GetErrorCode(), path);
    const std::vector<Block> blocks = blocksOf(*reader->GetOutput());
    if (blocks.empty())
    {
        throw BadFile(text(quoted(path), " has no cells"));
    }
    const vtkSmartPointer<vtkUnstructuredGrid> grid = joinBlocksOfSamePoints(blocks);
    setGroupNames(*grid, blockNames(*reader));
    if (withGlobalNodes && hasNodeNumbers(path))
    {
        grid->GetPointData()->AddArray(readNodeNumbers(path, grid->GetNumberOfPoints()));
    }
    return {grid};
}

std::vector<double> readExodusTimes(const std::filesystem::path& path)
{
    const SilentStandardError silence;
    const VtkMessages messages;
    const vtkSmartPointer<vtkExodusIIReader> reader = open(path);
    throwIfFailed(messages, reader->GetErrorCode(), path);
    return timesOf(*reader);
}

} // namespace veltrane
