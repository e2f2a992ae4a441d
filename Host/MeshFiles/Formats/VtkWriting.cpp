#include "VtkWriting.h"

#include "BlockJoining.h"
#include "GridElements.h"
#include "VtkMessages.h"

#include <vtkCellArray.h>
#include <vtkCellData.h>
#include <vtkCellType.h>
#include <vtkFieldData.h>
#include <vtkIdList.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkPolyData.h>
#include <vtkUnstructuredGrid.h>
#include <vtkWriter.h>
#include <vtkXMLWriter.h>

#include <cerrno>

namespace veltrane
{
namespace
{

template <typename Writer> void run(Writer& writer)
{
    const VtkMessages messages;
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

vtkSmartPointer<vtkCellArray> onePointCells(vtkIdType pointCount)
{
    vtkNew<vtkCellArray> cells;
    for (vtkIdType point = 0; point < pointCount; ++point)
    {
        cells->InsertNextCell({point});
    }
    return cells;
}

/// The points alone, still without cells.
template <typename DataSet> vtkSmartPointer<DataSet> pointsAs(vtkPointSet& original)
{
    vtkNew<DataSet> points;
    points->SetPoints(original.GetPoints());
    points->GetPointData()->ShallowCopy(original.GetPointData());
    points->GetFieldData()->ShallowCopy(original.GetFieldData());
    return points;
}

} // namespace

vtkSmartPointer<vtkUnstructuredGrid> asGrid(vtkPointSet& dataSet)
{
    auto* grid = vtkUnstructuredGrid::SafeDownCast(&dataSet);
    if (grid != nullptr && grid->GetNumberOfCells() > 0)
    {
        return grid;
    }
    auto points = pointsAs<vtkUnstructuredGrid>(dataSet);
    points->SetCells(VTK_VERTEX, onePointCells(dataSet.GetNumberOfPoints()));
    return points;
}

vtkSmartPointer<vtkUnstructuredGrid> asGridOf(vtkPointSet& dataSet, bool (*isWritten)(int cellType), LeftOut& leftOut)
{
    const vtkSmartPointer<vtkUnstructuredGrid> all = asGrid(dataSet);
    const vtkNew<vtkIdList> written;
    const vtkNew<vtkIdList> points;
    vtkNew<vtkUnstructuredGrid> grid;
    grid->SetPoints(all->GetPoints());
    grid->Allocate();
    CellCounts others;
    for (vtkIdType cell = 0; cell < all->GetNumberOfCells(); ++cell)
    {
        all->GetCellPoints(cell, points);
        const int cellType = plainCellType(all->GetCellType(cell), *points);
        if (isWritten(cellType))
        {
            grid->InsertNextCell(cellType, points);
            written->InsertNextId(cell);
        }
        else
        {
            ++others[cellType];
        }
    }
    if (!others.empty())
    {
        leftOut.push_back(cellCountText(others));
    }
    grid->GetPointData()->ShallowCopy(all->GetPointData());
    grid->GetFieldData()->ShallowCopy(all->GetFieldData());
    for (int i = 0; i < all->GetCellData()->GetNumberOfArrays(); ++i)
    {
        vtkAbstractArray& array = *all->GetCellData()->GetAbstractArray(i);
        if (others.empty())
        {
            grid->GetCellData()->AddArray(&array);
            continue;
        }
        const auto some = vtkSmartPointer<vtkAbstractArray>::Take(array.NewInstance());
        some->CopyInformation(array.GetInformation());
        some->SetName(array.GetName());
        some->SetNumberOfComponents(array.GetNumberOfComponents());
        some->SetNumberOfTuples(written->GetNumberOfIds());
        array.GetTuples(written, some);
        grid->GetCellData()->AddArray(some);
    }
    return grid;
}

vtkSmartPointer<vtkPolyData> asPolyData(vtkPointSet& dataSet)
{
    auto* polyData = vtkPolyData::SafeDownCast(&dataSet);
    if (polyData != nullptr && polyData->GetNumberOfCells() > 0)
    {
        return polyData;
    }
    auto points = pointsAs<vtkPolyData>(dataSet);
    points->SetVerts(onePointCells(dataSet.GetNumberOfPoints()));
    return points;
}

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

void runWriter(vtkWriter& writer)
{
    run(writer);
}

void runWriter(vtkXMLWriter& writer)
{
    run(writer);
}

} // namespace veltrane
