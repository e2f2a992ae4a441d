#include "FileContents.h"

#include "ArrayRange.h"
#include "CellNames.h"
#include "DataSetReader.h"
#include "FieldArrays.h"
#include "GridElements.h"
#include "GridMaterials.h"
#include "GridPoints.h"

#include <vtkCellData.h>
#include <vtkDataArray.h>
#include <vtkFieldData.h>
#include <vtkPointData.h>
#include <vtkPointSet.h>
#include <vtkUnstructuredGrid.h>

#include <algorithm>
#include <limits>
#include <map>

namespace veltrane
{
namespace
{

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

ArrayContents contentsOf(vtkAbstractArray& array)
{
    ArrayContents contents{.name = array.GetName() == nullptr ? "" : array.GetName(),
                           .type = array.GetDataTypeAsString(),
                           .componentCount = array.GetNumberOfComponents(),
                           .tupleCount = array.GetNumberOfTuples(),
                           .min = notANumber,
                           .max = notANumber,
                           .notANumberCount = 0};
    if (auto* numbers = vtkDataArray::SafeDownCast(&array))
    {
        const ArrayRange range = rangeOf(*numbers, 0);
        contents.min = range.min;
        contents.max = range.max;
        contents.notANumberCount = range.notANumberCount;
    }
    return contents;
}

std::vector<ArrayContents> contentsOf(vtkFieldData& data)
{
    std::vector<ArrayContents> contents;
    for (int i = 0; i < data.GetNumberOfArrays(); ++i)
    {
        contents.push_back(contentsOf(*data.GetAbstractArray(i)));
    }
    return contents;
}

/// Types of one name are one.
std::vector<CellContents> countCells(vtkPointSet& dataSet)
{
    std::map<int, long long> counts;
    for (vtkIdType cell = 0; cell < dataSet.GetNumberOfCells(); ++cell)
    {
        ++counts[dataSet.GetCellType(cell)];
    }
    std::vector<CellContents> cells;
    for (const auto& [cellType, count] : counts)
    {
        const CellName name = cellNameOf(cellType);
        const auto found = std::ranges::find(cells, name.one, &CellContents::name);
        if (found != cells.end())
        {
            found->count += count;
        }
        else
        {
            cells.push_back({name.one, name.more, count});
        }
    }
    return cells;
}

std::optional<std::string> materialArrayOf(vtkPointSet& dataSet, const std::filesystem::path& path)
{
    for (vtkDataSetAttributes* data : {static_cast<vtkDataSetAttributes*>(dataSet.GetCellData()),
                                       static_cast<vtkDataSetAttributes*>(dataSet.GetPointData())})
    {
        if (vtkDataArray* array = findMaterialArray(*data, std::nullopt, path))
        {
            return array->GetName();
        }
    }
    return std::nullopt;
}

} // namespace

FileContents describeContents(const FileData& data, const std::filesystem::path& path)
{
    vtkPointSet& dataSet = *data.dataSet;
    checkTupleCounts(dataSet, path);
    if (auto* grid = vtkUnstructuredGrid::SafeDownCast(&dataSet))
    {
        checkCells(*grid, path);
    }
    readCoordinates(dataSet, path); // refuses those that no transfer takes
    const FileFormat* format = formatOf(path);
    FileContents contents{.format = std::string(format == nullptr ? "" : format->name),
                          .pointCount = dataSet.GetNumberOfPoints(),
                          .cellCount = dataSet.GetNumberOfCells(),
                          .cells = countCells(dataSet),
                          .min = {},
                          .max = {},
                          .pointArrays = contentsOf(*dataSet.GetPointData()),
                          .cellArrays = contentsOf(*dataSet.GetCellData()),
                          .otherArrays = contentsOf(*dataSet.GetFieldData()),
                          .materialArray = materialArrayOf(dataSet, path),
                          .materialNames = groupNames(dataSet),
                          .stepTimes = readStepTimes(path),
                          .leftOut = data.leftOut};
    double bounds[6];
    dataSet.GetBounds(bounds);
    for (int axis = 0; axis < 3; ++axis)
    {
        contents.min[axis] = bounds[2 * axis];
        contents.max[axis] = bounds[2 * axis + 1];
    }
    return contents;
}

FileContents readContents(const std::filesystem::path& path)
{
    return describeContents(readPoints(path, 0), path);
}

} // namespace veltrane
