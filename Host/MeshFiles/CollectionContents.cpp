#include "CollectionContents.h"

#include "DataSetReader.h"
#include "FieldArrays.h"

#include <vtkCellData.h>
#include <vtkDataArray.h>
#include <vtkFieldData.h>
#include <vtkIdList.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkPointSet.h>

#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <tuple>

namespace veltrane
{
namespace
{

bool haveSamePoints(vtkPointSet& first, vtkPointSet& second)
{
    bool areSame = first.GetNumberOfPoints() == second.GetNumberOfPoints();
    for (vtkIdType point = 0; areSame && point < first.GetNumberOfPoints(); ++point)
    {
        std::array<double, 3> firstPlace;
        std::array<double, 3> secondPlace;
        first.GetPoint(point, firstPlace.data());
        second.GetPoint(point, secondPlace.data());
        areSame = firstPlace == secondPlace;
    }
    return areSame;
}

bool haveSameCells(vtkPointSet& first, vtkPointSet& second)
{
    bool areSame = first.GetNumberOfCells() == second.GetNumberOfCells();
    const vtkNew<vtkIdList> firstPoints;
    const vtkNew<vtkIdList> secondPoints;
    for (vtkIdType cell = 0; areSame && cell < first.GetNumberOfCells(); ++cell)
    {
        first.GetCellPoints(cell, firstPoints);
        second.GetCellPoints(cell, secondPoints);
        areSame = first.GetCellType(cell) == second.GetCellType(cell) &&
                  std::equal(firstPoints->begin(), firstPoints->end(), secondPoints->begin(), secondPoints->end());
    }
    return areSame;
}

/// The order of arrays does not count.
using Arrays = std::multiset<std::tuple<std::string, int, int>>;

Arrays arraysOf(vtkFieldData& data)
{
    Arrays arrays;
    for (int i = 0; i < data.GetNumberOfArrays(); ++i)
    {
        vtkAbstractArray& array = *data.GetAbstractArray(i);
        arrays.emplace(array.GetName() == nullptr ? "" : array.GetName(), array.GetDataType(),
                       array.GetNumberOfComponents());
    }
    return arrays;
}

bool haveSameArrays(vtkPointSet& first, vtkPointSet& second)
{
    return arraysOf(*first.GetPointData()) == arraysOf(*second.GetPointData()) &&
           arraysOf(*first.GetCellData()) == arraysOf(*second.GetCellData());
}

} // namespace

CollectionContents readCollectionContents(const std::filesystem::path& path)
{
    const std::vector<Step> steps = readSteps(path);
    const FileData firstData = readPoints(steps.front().file, 0);
    const vtkSmartPointer<vtkPointSet> first = firstData.dataSet;
    CollectionContents contents{
        .steps = steps, .first = describeContents(firstData, steps.front().file), .otherMeshes = {}, .otherArrays = {}};
    for (std::size_t i = 1; i < steps.size(); ++i)
    {
        const vtkSmartPointer<vtkPointSet> other = readPoints(steps[i].file, 0).dataSet;
        checkTupleCounts(*other, steps[i].file);
        if (!haveSamePoints(*first, *other) || !haveSameCells(*first, *other))
        {
            contents.otherMeshes.push_back(i);
        }
        if (!haveSameArrays(*first, *other))
        {
            contents.otherArrays.push_back(i);
        }
    }
    return contents;
}

} // namespace veltrane
