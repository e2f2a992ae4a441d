#include "DataSetWriter.h"

#include "FileFormat.h"
#include "PointTable.h"
#include "Text.h"
#include "VtkMessages.h"
#include "VtuWriter.h"

#include <vtkCellArray.h>
#include <vtkCellType.h>
#include <vtkFieldData.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkPolyData.h>
#include <vtkUnstructuredGrid.h>
#include <vtkUnstructuredGridWriter.h>
#include <vtkXMLPolyDataWriter.h>
#include <vtkXMLUnstructuredGridWriter.h>

#include <cerrno>
#include <type_traits>

namespace veltrane
{
namespace
{

template <typename Writer> void write(vtkPointSet& dataSet, const std::filesystem::path& path, Writer& writer)
{
    const VtkMessages messages;
    writer.SetFileName(path.c_str());
    writer.SetInputData(&dataSet);
    errno = 0;
    const bool written = writer.Write() != 0;
    const std::optional<std::string> reason =
        errno == ENOSPC || errno == EDQUOT || errno == EFBIG // the legacy writer only says at which part it failed
            ? "there is not enough disk space"
            : messages.failureReason(writer.GetErrorCode());
    if (!written || reason)
    {
        throw CannotWrite(reason.value_or("VTK gives no reason"));
    }
}

/// Lets VTK's own writer append raw bytes, too.
void configure(vtkXMLWriter& writer, Compression compression)
{
    constexpr int fastest = 1;
    constexpr int small = 6;
    writer.SetDataModeToAppended();
    writer.EncodeAppendedDataOff();
    writer.SetHeaderTypeToUInt64();
    if (compression == Compression::none)
    {
        writer.SetCompressorTypeToNone();
        return;
    }
    writer.SetCompressionLevel(compression == Compression::small ? small : fastest);
}

vtkSmartPointer<vtkCellArray> onePointCells(vtkIdType pointCount)
{
    vtkNew<vtkCellArray> cells;
    for (vtkIdType point = 0; point < pointCount; ++point)
    {
        cells->InsertNextCell({point});
    }
    return cells;
}

/// The points alone, as another sort of data set.
template <typename DataSet> vtkSmartPointer<DataSet> pointsAs(vtkPointSet& original)
{
    vtkNew<DataSet> points;
    points->SetPoints(original.GetPoints());
    points->GetPointData()->ShallowCopy(original.GetPointData());
    points->GetFieldData()->ShallowCopy(original.GetFieldData());
    const auto cells = onePointCells(original.GetNumberOfPoints());
    if constexpr (std::is_same_v<DataSet, vtkPolyData>)
    {
        points->SetVerts(cells);
    }
    else
    {
        points->SetCells(VTK_VERTEX, cells);
    }
    return points;
}

/// A data set of this sort and with cells, without which no program shows the points.
template <typename DataSet> vtkSmartPointer<vtkPointSet> as(vtkPointSet& dataSet)
{
    if (DataSet::SafeDownCast(&dataSet) != nullptr && dataSet.GetNumberOfCells() > 0)
    {
        return &dataSet;
    }
    return pointsAs<DataSet>(dataSet);
}

} // namespace

void writeDataSet(vtkPointSet& dataSet, const std::filesystem::path& path, const FileWriting& writing)
{
    switch (formatOf(path).value_or(FileFormat::unstructuredGrid))
    {
    case FileFormat::table: writePointTable(dataSet, path); return;
    case FileFormat::polyData:
    {
        vtkNew<vtkXMLPolyDataWriter> writer;
        configure(*writer, writing.compression);
        write(*as<vtkPolyData>(dataSet), path, *writer);
        return;
    }
    case FileFormat::legacyUnstructuredGrid:
    {
        vtkNew<vtkUnstructuredGridWriter> writer;
        writer->SetFileTypeToBinary(); // its texts are rounded
        write(*as<vtkUnstructuredGrid>(dataSet), path, *writer);
        return;
    }
    default:
    {
        const vtkSmartPointer<vtkPointSet> cells = as<vtkUnstructuredGrid>(dataSet);
        auto& grid = *vtkUnstructuredGrid::SafeDownCast(cells);
        if (grid.GetFaces() == nullptr && canWriteVtu(grid))
        {
            const CellTable table = copyCells(grid, path);
            writeVtu(grid, *grid.GetCellTypesArray(), viewOf(table), path, writing);
            return;
        }
        vtkNew<vtkXMLUnstructuredGridWriter> writer;
        configure(*writer, writing.compression);
        write(grid, path, *writer);
        return;
    }
    }
}

void writeGrid(vtkUnstructuredGrid& grid, vtkUnsignedCharArray& types, const CellView& cells,
               const std::filesystem::path& path, const FileWriting& writing)
{
    if (formatOf(path).value_or(FileFormat::unstructuredGrid) == FileFormat::unstructuredGrid && canWriteVtu(grid))
    {
        writeVtu(grid, types, cells, path, writing);
        return;
    }
    vtkNew<vtkUnstructuredGrid> whole;
    whole->ShallowCopy(&grid);
    setCells(*whole, types, cells);
    writeDataSet(*whole, path, writing);
}

} // namespace veltrane
