#include "FieldArrays.h"

#include "DataSetReader.h"
#include "Text.h"

#include <vtkCellData.h>
#include <vtkCellDataToPointData.h>
#include <vtkDoubleArray.h>
#include <vtkFloatArray.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkPointSet.h>
#include <vtkUnstructuredGrid.h>

#include <algorithm>
#include <utility>

namespace veltrane
{
namespace
{

void checkTupleCounts(vtkFieldData& data, vtkIdType expected, std::string_view where, const std::filesystem::path& path)
{
    for (int i = 0; i < data.GetNumberOfArrays(); ++i)
    {
        vtkAbstractArray& array = *data.GetAbstractArray(i);
        if (array.GetNumberOfTuples() != expected)
        {
            const char* name = array.GetName();
            throw BadFile(text(quoted(path), ": array '", name == nullptr ? "" : name, "' has values for ",
                               array.GetNumberOfTuples(), " ", where, "s, but there are ", expected));
        }
    }
}

/// The values of an array of this type.
template <typename Array> auto valuesOf(Array& array)
{
    const auto* begin = array.GetPointer(0);
    return std::vector(begin, begin + array.GetNumberOfValues());
}

template <typename Array, typename Value>
vtkSmartPointer<vtkDataArray> toArray(const Field& field, const std::vector<Value>& values)
{
    vtkNew<Array> array;
    array->SetName(field.name().c_str());
    array->SetNumberOfComponents(field.componentCount());
    constexpr int isBorrowed = 1;
    array->SetArray(const_cast<Value*>(values.data()), static_cast<vtkIdType>(values.size()), isBorrowed);
    return array;
}

} // namespace

std::vector<PointArray> listArrays(vtkFieldData& data)
{
    std::vector<PointArray> arrays;
    for (int i = 0; i < data.GetNumberOfArrays(); ++i)
    {
        vtkAbstractArray& array = *data.GetAbstractArray(i);
        if (array.GetName() != nullptr)
        {
            const bool isFloatingPoint = array.GetDataType() == VTK_FLOAT || array.GetDataType() == VTK_DOUBLE;
            arrays.push_back({array.GetName(), array.GetNumberOfComponents(), isFloatingPoint});
        }
    }
    return arrays;
}

void checkTupleCounts(vtkPointSet& dataSet, vtkIdType cellCount, const std::filesystem::path& path)
{
    checkTupleCounts(*dataSet.GetPointData(), dataSet.GetNumberOfPoints(), "point", path);
    checkTupleCounts(*dataSet.GetCellData(), cellCount, "cell", path);
}

void checkTupleCounts(vtkPointSet& dataSet, const std::filesystem::path& path)
{
    checkTupleCounts(dataSet, dataSet.GetNumberOfCells(), path);
}

void averageCellsAtNodes(vtkUnstructuredGrid& grid, const std::filesystem::path& path)
{
    vtkNew<vtkUnstructuredGrid> cells;
    cells->CopyStructure(&grid);
    for (const PointArray& array : listArrays(*grid.GetCellData()))
    {
        if (!array.isFloatingPoint)
        {
            continue;
        }
        if (grid.GetPointData()->HasArray(array.name.c_str()) != 0)
        {
            throw BadFile(text(quoted(path), " has point data and cell data of the name '", array.name,
                               "'; --cells-as-nodes cannot make point data of the latter"));
        }
        cells->GetCellData()->AddArray(grid.GetCellData()->GetAbstractArray(array.name.c_str()));
    }
    vtkNew<vtkCellDataToPointData> filter;
    filter->SetInputData(cells);
    filter->SetContributingCellOption(vtkCellDataToPointData::DataSetMax);
    filter->Update();
    vtkPointData& averages = *filter->GetOutput()->GetPointData();
    for (int i = 0; i < averages.GetNumberOfArrays(); ++i)
    {
        grid.GetPointData()->AddArray(averages.GetAbstractArray(i));
    }
}

Field toField(vtkAbstractArray* array, const std::string& name, const std::string& newName,
              const std::filesystem::path& path)
{
    if (array == nullptr)
    {
        throw BadFile(text(quoted(path), " has no point-data array '", name, "'"));
    }
    FieldValues values;
    if (auto* floats = vtkArrayDownCast<vtkFloatArray>(array))
    {
        values = valuesOf(*floats);
    }
    else if (auto* doubles = vtkArrayDownCast<vtkDoubleArray>(array))
    {
        values = valuesOf(*doubles);
    }
    else
    {
        throw BadFile(text(quoted(path), ": point-data array '", name, "' is not of floating-point numbers"));
    }
    try
    {
        return Field(newName, Location::nodes, array->GetNumberOfComponents(), std::move(values));
    }
    catch (const InvalidData& error)
    {
        throw BadFile(text(quoted(path), ": ", error.what()));
    }
}

vtkSmartPointer<vtkDataArray> toArray(const Field& field)
{
    if (const auto* floats = std::get_if<std::vector<float>>(&field.values()))
    {
        return toArray<vtkFloatArray>(field, *floats);
    }
    return toArray<vtkDoubleArray>(field, std::get<std::vector<double>>(field.values()));
}

} // namespace veltrane
