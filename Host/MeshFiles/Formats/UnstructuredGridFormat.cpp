// Unstructured grids in VTK's XML files (.vtu). Most are read and written by functions of our own, see VtuFile.h and
// VtuWriter.h; VTK's are for the others.
#include "FormatList.h"
#include "VtkReading.h"
#include "VtkWriting.h"
#include "VtuWriter.h"

#include <vtkCellArray.h>
#include <vtkUnstructuredGrid.h>
#include <vtkXMLUnstructuredGridReader.h>
#include <vtkXMLUnstructuredGridWriter.h>

#include <array>

namespace veltrane
{
namespace
{

constexpr std::array<std::string_view, 1> endings{".vtu"};
constexpr FormatContents everything{
    .cells = true, .materials = true, .nodalFields = true, .cellFields = true, .gaussFields = true};

FileData read(const std::filesystem::path& path, const FileReading&)
{
    return {readXml<vtkXMLUnstructuredGridReader>(path)};
}

LeftOut write(vtkPointSet& dataSet, const std::filesystem::path& path, const FileWriting& writing)
{
    const vtkSmartPointer<vtkUnstructuredGrid> grid = asGrid(dataSet);
    if (grid->GetFaces() == nullptr && canWriteVtu(*grid))
    {
        const CellTable table = copyCells(*grid, path);
        writeVtu(*grid, *grid->GetCellTypesArray(), viewOf(table), path, writing);
        return {};
    }
    vtkNew<vtkXMLUnstructuredGridWriter> writer;
    configure(*writer, writing.compression);
    writer->SetFileName(path.c_str());
    writer->SetInputData(grid);
    runWriter(*writer);
    return {};
}

} // namespace

constinit const FileFormat formats::unstructuredGrid{.name = "VTK unstructured grid",
                                                     .endings = endings,
                                                     .reads = everything,
                                                     .writes = everything,
                                                     .isCompressed = true,
                                                     .read = read,
                                                     .write = write};

} // namespace veltrane
