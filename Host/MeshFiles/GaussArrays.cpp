#include "GaussArrays.h"

#include "GaussPoints.h"
#include "Text.h"
#include "VtkCells.h"

#include <vtkCellData.h>
#include <vtkFieldData.h>
#include <vtkIdTypeArray.h>
#include <vtkInformation.h>
#include <vtkInformationQuadratureSchemeDefinitionVectorKey.h>
#include <vtkInformationStringKey.h>
#include <vtkNew.h>
#include <vtkQuadratureSchemeDefinition.h>
#include <vtkUnstructuredGrid.h>

#include <algorithm>
#include <cmath>

namespace veltrane
{
namespace
{

bool areAlike(const std::vector<double>& a, const std::vector<double>& b)
{
    constexpr double rounding = 1e-5;
    return std::ranges::equal(a, b, [](double x, double y) { return std::abs(x - y) <= rounding; });
}

} // namespace

GaussScheme gaussSchemeOf(int cellType, GaussPointRule rule)
{
    GaussScheme scheme{.cellType = cellType};
    const VtkCellKind* cellKind = findVtkCellKind(cellType);
    if (cellKind == nullptr)
    {
        return scheme;
    }
    GaussRule points = gaussRuleOf(cellKind->kind, rule);
    for (const std::vector<double>& ofElement : points.shapeValues)
    {
        std::vector<double>& ofCell = scheme.shapeValues.emplace_back(ofElement.size());
        for (std::size_t node = 0; node < ofElement.size(); ++node)
        {
            ofCell[static_cast<std::size_t>(cellKind->nodeOrder[node])] = ofElement[node];
        }
    }
    scheme.weights = std::move(points.weights);
    return scheme;
}

bool isUsable(const GaussScheme& scheme)
{
    const auto isThere = [&](const std::vector<double>& values)
    {
        return std::ranges::any_of(scheme.shapeValues,
                                   [&](const std::vector<double>& found) { return areAlike(values, found); });
    };
    const auto isOf = [&](GaussPointRule rule)
    {
        const std::vector<std::vector<double>> wanted = gaussSchemeOf(scheme.cellType, rule).shapeValues;
        return !wanted.empty() && scheme.shapeValues.size() == wanted.size() && std::ranges::all_of(wanted, isThere);
    };
    return isOf(GaussPointRule::full) || isOf(GaussPointRule::reduced);
}

void addGaussOffsets(vtkUnstructuredGrid& grid, vtkIdTypeArray& offsets, const std::vector<GaussScheme>& schemes)
{
    vtkInformationQuadratureSchemeDefinitionVectorKey* key = vtkQuadratureSchemeDefinition::DICTIONARY();
    for (const GaussScheme& scheme : schemes)
    {
        std::vector<double> shapeValues;
        for (const std::vector<double>& ofPoint : scheme.shapeValues)
        {
            shapeValues.insert(shapeValues.end(), ofPoint.begin(), ofPoint.end());
        }
        std::vector<double> weights = scheme.weights;
        vtkNew<vtkQuadratureSchemeDefinition> definition;
        definition->Initialize(scheme.cellType, static_cast<int>(shapeValues.size() / weights.size()),
                               static_cast<int>(weights.size()), shapeValues.data(), weights.data());
        key->Set(offsets.GetInformation(), definition, scheme.cellType);
    }
    grid.GetCellData()->AddArray(&offsets);
}

void addGaussValues(vtkUnstructuredGrid& grid, vtkDataArray& values, const char* offsetsName)
{
    values.GetInformation()->Set(vtkQuadratureSchemeDefinition::QUADRATURE_OFFSET_ARRAY_NAME(), offsetsName);
    grid.GetFieldData()->AddArray(&values);
}

const char* gaussOffsetsName(vtkAbstractArray& values)
{
    vtkInformation* information = values.GetInformation();
    vtkInformationStringKey* key = vtkQuadratureSchemeDefinition::QUADRATURE_OFFSET_ARRAY_NAME();
    return information->Has(key) != 0 ? information->Get(key) : nullptr;
}

std::vector<std::pair<std::string, std::string>> gaussArraysOf(vtkUnstructuredGrid& grid)
{
    std::vector<std::pair<std::string, std::string>> arrays;
    for (int i = 0; i < grid.GetFieldData()->GetNumberOfArrays(); ++i)
    {
        vtkAbstractArray& array = *grid.GetFieldData()->GetAbstractArray(i);
        const char* offsets = gaussOffsetsName(array);
        if (offsets != nullptr && array.GetName() != nullptr)
        {
            arrays.emplace_back(array.GetName(), offsets);
        }
    }
    return arrays;
}

std::vector<std::string> gaussArrayTexts(vtkUnstructuredGrid& grid)
{
    std::vector<std::string> texts;
    for (const auto& [name, offsets] : gaussArraysOf(grid))
    {
        texts.push_back(text("the field '", name, "' at Gauss points"));
    }
    return texts;
}

vtkQuadratureSchemeDefinition* findScheme(vtkDataArray& offsets, int cellType)
{
    vtkInformationQuadratureSchemeDefinitionVectorKey* key = vtkQuadratureSchemeDefinition::DICTIONARY();
    vtkInformation* information = offsets.GetInformation();
    return information->Has(key) != 0 && cellType < key->Size(information) ? key->Get(information, cellType) : nullptr;
}

} // namespace veltrane
