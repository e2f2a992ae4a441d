#include "GroupNames.h"

#include <vtkDataObject.h>
#include <vtkFieldData.h>
#include <vtkNew.h>
#include <vtkStringArray.h>

#include <charconv>

namespace veltrane
{
namespace
{

constexpr const char* arrayName = "material_names";

} // namespace

void setGroupNames(vtkDataObject& dataSet, const GroupNames& names)
{
    dataSet.GetFieldData()->RemoveArray(arrayName);
    if (names.empty())
    {
        return;
    }
    vtkNew<vtkStringArray> array;
    array->SetName(arrayName);
    array->SetNumberOfComponents(2);
    for (const auto& [number, name] : names)
    {
        array->InsertNextValue(std::to_string(number));
        array->InsertNextValue(name);
    }
    dataSet.GetFieldData()->AddArray(array);
}

GroupNames groupNames(vtkDataObject& dataSet)
{
    GroupNames names;
    auto* array = vtkStringArray::SafeDownCast(dataSet.GetFieldData()->GetAbstractArray(arrayName));
    if (array == nullptr)
    {
        return names;
    }
    for (vtkIdType i = 0; i + 1 < array->GetNumberOfValues(); i += 2)
    {
        const std::string& digits = array->GetValue(i);
        const char* end = digits.data() + digits.size();
        long long number = 0;
        if (std::from_chars(digits.data(), end, number).ptr == end)
        {
            names[number] = array->GetValue(i + 1);
        }
    }
    return names;
}

} // namespace veltrane
