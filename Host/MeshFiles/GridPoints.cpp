#include "GridPoints.h"

#include "DataSetReader.h"
#include "Text.h"

#include <vtkDataArray.h>
#include <vtkDoubleArray.h>
#include <vtkNew.h>
#include <vtkPoints.h>
#include <vtkUnstructuredGrid.h>

#include <cfloat>
#include <cmath>

namespace veltrane
{
namespace
{

/// Numbers as coordinates; the position of the first that is none, or how many there are.
template <typename Number> std::size_t convert(const Number* numbers, std::vector<float>& coordinates)
{
    for (std::size_t i = 0; i < coordinates.size(); ++i)
    {
        if (!(std::abs(static_cast<double>(numbers[i])) <= double{FLT_MAX}))
        {
            return i;
        }
        coordinates[i] = static_cast<float>(numbers[i]);
    }
    return coordinates.size();
}

} // namespace

void place(vtkUnstructuredGrid& grid, const Placement& placement)
{
    if (placement.isIdentity() || grid.GetPoints() == nullptr)
    {
        return;
    }
    vtkNew<vtkPoints> points;
    points->SetDataTypeToDouble();
    points->SetNumberOfPoints(grid.GetNumberOfPoints());
    for (vtkIdType point = 0; point < grid.GetNumberOfPoints(); ++point)
    {
        Point3 position{};
        grid.GetPoint(point, position.data());
        points->SetPoint(point, placement(position).data());
    }
    grid.SetPoints(points);
}

std::vector<float> readCoordinates(vtkPointSet& points, const std::filesystem::path& path)
{
    std::vector<float> coordinates;
    if (points.GetPoints() == nullptr)
    {
        return coordinates;
    }
    vtkDataArray& data = *points.GetPoints()->GetData();
    coordinates.resize(static_cast<std::size_t>(data.GetNumberOfTuples()) * 3);
    std::size_t end = 0;
    if (data.HasStandardMemoryLayout() && data.GetDataType() == VTK_FLOAT)
    {
        end = convert(static_cast<const float*>(data.GetVoidPointer(0)), coordinates);
    }
    else if (data.HasStandardMemoryLayout() && data.GetDataType() == VTK_DOUBLE)
    {
        end = convert(static_cast<const double*>(data.GetVoidPointer(0)), coordinates);
    }
    else
    {
        std::vector<double> numbers(coordinates.size());
        for (std::size_t i = 0; i < numbers.size(); ++i)
        {
            numbers[i] = data.GetComponent(static_cast<vtkIdType>(i / 3), static_cast<int>(i % 3));
        }
        end = convert(numbers.data(), coordinates);
    }
    if (end < coordinates.size())
    {
        throw BadFile(text(quoted(path), ": point ", end / 3, " has the coordinate ",
                           data.GetComponent(static_cast<vtkIdType>(end / 3), static_cast<int>(end % 3)),
                           ", which is not a finite single-precision number"));
    }
    return coordinates;
}

std::vector<double> readExactCoordinates(vtkPointSet& points)
{
    auto* data = points.GetPoints() == nullptr ? nullptr : vtkDoubleArray::SafeDownCast(points.GetPoints()->GetData());
    return data == nullptr ? std::vector<double>()
                           : std::vector(data->GetPointer(0), data->GetPointer(data->GetNumberOfValues()));
}

} // namespace veltrane
