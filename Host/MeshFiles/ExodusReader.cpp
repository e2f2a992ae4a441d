#include "ExodusReader.h"

#include "DataSetReader.h"
#include "FileDescriptor.h"
#include "NetcdfStructure.h"
#include "Text.h"
#include "VtkMessages.h"

#include <vtkCellArray.h>
#include <vtkCellData.h>
#include <vtkCompositeDataIterator.h>
#include <vtkDataArray.h>
#include <vtkExodusIIReader.h>
#include <vtkFieldData.h>
#include <vtkIdList.h>
#include <vtkInformation.h>
#include <vtkMultiBlockDataSet.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkStreamingDemandDrivenPipeline.h>
#include <vtkUnstructuredGrid.h>

#include <fcntl.h>
#include <unistd.h>

#include <limits>

namespace veltrane
{
namespace
{

using Blocks = std::vector<vtkUnstructuredGrid*>;

/// The Exodus library writes its errors to standard error, whatever it is told; the reader repeats them.
class SilentStandardError
{
public:
    SilentStandardError() : usersErrors_(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1))
    {
        const FileDescriptor nowhere(::open("/dev/null", O_WRONLY | O_CLOEXEC));
        if (usersErrors_.isValid() && nowhere.isValid())
        {
            ::dup2(nowhere.get(), STDERR_FILENO);
        }
    }
    ~SilentStandardError()
    {
        if (usersErrors_.isValid())
        {
            ::dup2(usersErrors_.get(), STDERR_FILENO);
        }
    }
    SilentStandardError(const SilentStandardError&) = delete;
    SilentStandardError& operator=(const SilentStandardError&) = delete;

private:
    FileDescriptor usersErrors_;
};

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

std::vector<double> timesOf(vtkExodusIIReader& reader)
{
    vtkInformation& information = *reader.GetOutputInformation(0);
    vtkInformationDoubleVectorKey* key = vtkStreamingDemandDrivenPipeline::TIME_STEPS();
    if (information.Has(key) == 0)
    {
        return {};
    }
    const double* times = information.Get(key);
    return std::vector<double>(times, times + information.Length(key));
}

void throwIfFailed(const VtkMessages& messages, vtkExodusIIReader& reader, const std::filesystem::path& path)
{
    if (const auto reason = messages.failureReason(reader.GetErrorCode()))
    {
        throw BadFile(text("cannot read ", quoted(path), ": ", *reason));
    }
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

Blocks blocksOf(vtkMultiBlockDataSet& dataSet)
{
    Blocks blocks;
    const auto iterator = vtkSmartPointer<vtkCompositeDataIterator>::Take(dataSet.NewIterator());
    for (iterator->InitTraversal(); iterator->IsDoneWithTraversal() == 0; iterator->GoToNextItem())
    {
        if (auto* block = vtkUnstructuredGrid::SafeDownCast(iterator->GetCurrentDataObject()))
        {
            blocks.push_back(block);
        }
    }
    return blocks;
}

/// Values of all cells, "not a number" or 0 where a block does not have the array.
vtkSmartPointer<vtkDataArray> joinedArray(const Blocks& blocks, vtkDataArray& model, vtkIdType cellCount)
{
    const auto joined = vtkSmartPointer<vtkDataArray>::Take(model.NewInstance());
    joined->SetName(model.GetName());
    joined->SetNumberOfComponents(model.GetNumberOfComponents());
    joined->SetNumberOfTuples(cellCount);
    joined->Fill(std::numeric_limits<double>::quiet_NaN());
    vtkIdType first = 0;
    for (vtkUnstructuredGrid* block : blocks)
    {
        vtkDataArray* array = block->GetCellData()->GetArray(model.GetName());
        if (array != nullptr && array->GetNumberOfComponents() == model.GetNumberOfComponents())
        {
            joined->InsertTuples(first, array->GetNumberOfTuples(), 0, array);
        }
        first += block->GetNumberOfCells();
    }
    return joined;
}

vtkSmartPointer<vtkUnstructuredGrid> join(const Blocks& blocks)
{
    vtkNew<vtkUnstructuredGrid> grid;
    grid->SetPoints(blocks.front()->GetPoints());
    grid->GetPointData()->ShallowCopy(blocks.front()->GetPointData());
    grid->GetFieldData()->ShallowCopy(blocks.front()->GetFieldData());
    grid->Allocate();
    vtkNew<vtkIdList> points;
    for (vtkUnstructuredGrid* block : blocks)
    {
        for (vtkIdType cell = 0; cell < block->GetNumberOfCells(); ++cell)
        {
            block->GetCellPoints(cell, points);
            grid->InsertNextCell(block->GetCellType(cell), points);
        }
    }
    for (vtkUnstructuredGrid* block : blocks)
    {
        for (int i = 0; i < block->GetCellData()->GetNumberOfArrays(); ++i)
        {
            vtkDataArray* array = block->GetCellData()->GetArray(i);
            if (array != nullptr && grid->GetCellData()->HasArray(array->GetName()) == 0)
            {
                grid->GetCellData()->AddArray(joinedArray(blocks, *array, grid->GetNumberOfCells()));
            }
        }
    }
    return grid;
}

} // namespace

vtkSmartPointer<vtkUnstructuredGrid> readExodus(const std::filesystem::path& path, std::optional<int> step)
{
    const SilentStandardError silence;
    const VtkMessages messages;
    const vtkSmartPointer<vtkExodusIIReader> reader = open(path);
    throwIfFailed(messages, *reader, path);
    selectEverything(*reader);
    const auto stepCount = static_cast<int>(timesOf(*reader).size());
    if (step && (*step < 0 || *step >= stepCount))
    {
        throw BadFile(text(quoted(path), " has ", stepCount, " steps; there is no step ", *step + 1));
    }
    if (stepCount > 0)
    {
        reader->SetTimeStep(step.value_or(stepCount - 1));
    }
    reader->Update();
    throwIfFailed(messages, *reader, path);
    const Blocks blocks = blocksOf(*reader->GetOutput());
    if (blocks.empty())
    {
        throw BadFile(text(quoted(path), " has no cells"));
    }
    return join(blocks);
}

std::vector<double> readExodusTimes(const std::filesystem::path& path)
{
    const SilentStandardError silence;
    const VtkMessages messages;
    const vtkSmartPointer<vtkExodusIIReader> reader = open(path);
    throwIfFailed(messages, *reader, path);
    return timesOf(*reader);
}

} // namespace veltrane
