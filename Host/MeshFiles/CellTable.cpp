#include "CellTable.h"

#include "DataSetReader.h"
#include "Text.h"

#include <vtkCellArray.h>
#include <vtkNew.h>
#include <vtkTypeInt32Array.h>
#include <vtkTypeInt64Array.h>
#include <vtkUnsignedCharArray.h>
#include <vtkUnstructuredGrid.h>

#include <algorithm>
#include <climits>

namespace veltrane
{
namespace
{

template <typename Array> CellTable tableOf(Array& connectivity, Array& offsets, const std::filesystem::path& path)
{
    const vtkIdType size = connectivity.GetNumberOfValues();
    CellTable cells;
    cells.numberType = connectivity.GetDataType();
    cells.offsets.reserve(static_cast<std::size_t>(offsets.GetNumberOfValues()));
    vtkIdType previous = 0;
    for (vtkIdType i = 0; i < offsets.GetNumberOfValues(); ++i)
    {
        const auto offset = static_cast<vtkIdType>(offsets.GetValue(i));
        if (offset < previous || offset > size)
        {
            throw BadFile(text(quoted(path), ": the offset ", offset, " of cell ", std::max<vtkIdType>(i - 1, 0),
                               " does not delimit a part of the connectivity"));
        }
        previous = offset;
        cells.offsets.push_back(static_cast<std::size_t>(offset));
    }
    cells.connectivity.reserve(static_cast<std::size_t>(size));
    for (vtkIdType i = 0; i < size; ++i)
    {
        const auto point = static_cast<long long>(connectivity.GetValue(i));
        if (point < INT_MIN || point > INT_MAX)
        {
            const auto next = std::ranges::upper_bound(cells.offsets, static_cast<std::size_t>(i));
            throw BadFile(text(quoted(path), ": cell ", next - cells.offsets.begin() - 1, " refers to point ", point,
                               ", more than the ", INT_MAX, " that can be counted"));
        }
        cells.connectivity.push_back(static_cast<int>(point));
    }
    return cells;
}

template <typename Array> void setCells(vtkCellArray& array, const CellView& cells)
{
    vtkNew<Array> connectivity;
    connectivity->SetNumberOfValues(static_cast<vtkIdType>(cells.connectivity.size()));
    std::ranges::copy(cells.connectivity, connectivity->GetPointer(0));
    vtkNew<Array> offsets;
    offsets->SetNumberOfValues(static_cast<vtkIdType>(cells.cellCount()) + 1);
    for (std::size_t i = 0; i <= cells.cellCount(); ++i)
    {
        offsets->SetValue(static_cast<vtkIdType>(i), static_cast<typename Array::ValueType>(cells.offset(i)));
    }
    array.SetData(offsets, connectivity);
}

} // namespace

CellView viewOf(const CellTable& cells)
{
    return {.connectivity = cells.connectivity, .numberType = cells.numberType, .offsets = cells.offsets};
}

CellTable copyCells(vtkUnstructuredGrid& grid, const std::filesystem::path& path)
{
    vtkCellArray* cells = grid.GetCells();
    if (cells == nullptr)
    {
        return {.offsets = {0}};
    }
    return cells->IsStorage64Bit() ? tableOf(*cells->GetConnectivityArray64(), *cells->GetOffsetsArray64(), path)
                                   : tableOf(*cells->GetConnectivityArray32(), *cells->GetOffsetsArray32(), path);
}

void setCells(vtkUnstructuredGrid& grid, vtkUnsignedCharArray& types, const CellView& cells)
{
    vtkNew<vtkCellArray> array;
    if (cells.numberType == VTK_TYPE_INT32)
    {
        setCells<vtkTypeInt32Array>(*array, cells);
    }
    else
    {
        setCells<vtkTypeInt64Array>(*array, cells);
    }
    grid.SetCells(&types, array);
}

} // namespace veltrane
