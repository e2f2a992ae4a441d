#include "DataSetWriter.h"

#include "FormatList.h"
#include "VtuWriter.h"

#include <vtkNew.h>
#include <vtkUnsignedCharArray.h>
#include <vtkUnstructuredGrid.h>

namespace veltrane
{
namespace
{

const FileFormat& outputFormatOf(const std::filesystem::path& path)
{
    const FileFormat* format = formatOf(path);
    return isPointOutput(format) ? *format : formats::unstructuredGrid;
}

} // namespace

LeftOut writeDataSet(vtkPointSet& dataSet, const std::filesystem::path& path, const FileWriting& writing)
{
    return outputFormatOf(path).write(dataSet, path, writing);
}

LeftOut writeGrid(vtkUnstructuredGrid& grid, vtkUnsignedCharArray& types, const CellView& cells,
                  const std::filesystem::path& path, const FileWriting& writing, const StoredArrays* stored)
{
    if (&outputFormatOf(path) == &formats::unstructuredGrid && canWriteVtu(grid))
    {
        writeVtu(grid, types, cells, path, writing, stored);
        return {};
    }
    vtkNew<vtkUnstructuredGrid> whole;
    whole->ShallowCopy(&grid);
    setCells(*whole, types, cells);
    return writeDataSet(*whole, path, writing);
}

} // namespace veltrane
