#include "NodeLabels.h"

#include "Solver/NodeNumbers.h"
#include "Text.h"

#include <vtkDataArray.h>
#include <vtkFieldData.h>
#include <vtkPointData.h>
#include <vtkPointSet.h>
#include <vtkStringArray.h>

#include <limits>
#include <numeric>

namespace veltrane
{

std::string nodeLabel(vtkPointSet& dataSet, vtkIdType point)
{
    vtkDataArray* numbers = dataSet.GetPointData()->GetArray(nodeNumberArray);
    vtkDataArray* instances = dataSet.GetPointData()->GetArray(nodeInstanceArray);
    auto* names = vtkStringArray::SafeDownCast(dataSet.GetFieldData()->GetAbstractArray(instanceNameArray));
    const auto number = numbers == nullptr ? point + 1 : static_cast<vtkIdType>(numbers->GetComponent(point, 0));
    const double instance = instances == nullptr ? -1 : instances->GetComponent(point, 0);
    if (names == nullptr || !(instance >= 0 && instance < static_cast<double>(names->GetNumberOfValues())))
    {
        return std::to_string(number);
    }
    const std::string& name = names->GetValue(static_cast<vtkIdType>(instance));
    return name.empty() ? std::to_string(number) : text(name, ".", number);
}

std::vector<long long> nodeNumbers(vtkPointSet& dataSet)
{
    std::vector<long long> numbers(static_cast<std::size_t>(dataSet.GetNumberOfPoints()));
    std::iota(numbers.begin(), numbers.end(), 1LL);
    vtkDataArray* array = dataSet.GetPointData()->GetArray(nodeNumberArray);
    if (array == nullptr || array->GetNumberOfTuples() != dataSet.GetNumberOfPoints())
    {
        return numbers;
    }
    std::vector<long long> ofFile(numbers.size());
    for (std::size_t i = 0; i < numbers.size(); ++i)
    {
        const double number = array->GetComponent(static_cast<vtkIdType>(i), 0);
        if (!(number >= 1 && number <= std::numeric_limits<int>::max()))
        {
            return numbers;
        }
        ofFile[i] = static_cast<long long>(number);
    }
    return NodeNumbers(ofFile).hasRepeated() ? numbers : ofFile;
}

} // namespace veltrane
