// VTK's legacy files (.vtk): unstructured grids, structured ones as hexahedra, and points with lines and polygons.
#include "BlockJoining.h"
#include "FormatList.h"
#include "GaussArrays.h"
#include "LegacyStructure.h"
#include "VtkReading.h"
#include "VtkWriting.h"

#include <vtkDataSet.h>
#include <vtkDataSetReader.h>
#include <vtkPolyData.h>
#include <vtkUnstructuredGrid.h>
#include <vtkUnstructuredGridWriter.h>

#include <array>

namespace veltrane
{
namespace
{

constexpr std::array<std::string_view, 1> endings{".vtk"};
constexpr FormatContents contents{.cells = true, .materials = true, .nodalFields = true, .cellFields = true};

FileData read(const std::filesystem::path& path, const FileReading&)
{
    checkLegacyStructure(path);
    const VtkMessages messages;
    vtkNew<vtkDataSetReader> reader; // of all sorts
    reader->SetFileName(path.c_str());
    // Of each sort the reader takes but the first one unless told otherwise.
    reader->ReadAllScalarsOn();
    reader->ReadAllVectorsOn();
    reader->ReadAllNormalsOn();
    reader->ReadAllTensorsOn();
    reader->ReadAllColorScalarsOn();
    reader->ReadAllTCoordsOn();
    reader->ReadAllFieldsOn();
    guarded(path, [&] { reader->Update(); });
    throwIfFailed(messages, reader->GetErrorCode(), path);
    vtkDataSet& dataSet = *reader->GetOutput();
    if (auto* polyData = vtkPolyData::SafeDownCast(&dataSet))
    {
        return {polyData};
    }
    return {toGrid(dataSet)};
}

LeftOut write(vtkPointSet& dataSet, const std::filesystem::path& path, const FileWriting&)
{
    vtkNew<vtkUnstructuredGridWriter> writer;
    writer->SetFileTypeToBinary(); // its texts are rounded
    writer->SetFileName(path.c_str());
    const vtkSmartPointer<vtkUnstructuredGrid> grid = asGrid(dataSet);
    writer->SetInputData(grid);
    runWriter(*writer);
    return gaussArrayTexts(*grid);
}

} // namespace

constinit const FileFormat formats::legacy{
    .name = "VTK legacy file", .endings = endings, .reads = contents, .writes = contents, .read = read, .write = write};

} // namespace veltrane
