#include "GaussFields.h"

#include "CellNames.h"
#include "DataSetReader.h"
#include "FieldArrays.h"
#include "GaussArrays.h"
#include "Text.h"

#include <vtkCellData.h>
#include <vtkFieldData.h>
#include <vtkIdTypeArray.h>
#include <vtkInformation.h>
#include <vtkInformationQuadratureSchemeDefinitionVectorKey.h>
#include <vtkNew.h>
#include <vtkQuadratureSchemeDefinition.h>
#include <vtkUnsignedCharArray.h>
#include <vtkUnstructuredGrid.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>

namespace veltrane
{
namespace
{

constexpr const char* offsetArrayName = "QuadratureOffset";

/// The number of the scheme's point at each Gauss point of the element.
using PointOrder = std::vector<int>;

/// Nothing unless the scheme has just the Gauss points of the element by a rule.
std::optional<PointOrder> matchPoints(vtkQuadratureSchemeDefinition& scheme, int cellType, GaussPointRule rule)
{
    const std::vector<std::vector<double>> wanted = gaussSchemeOf(cellType, rule).shapeValues;
    if (static_cast<std::size_t>(scheme.GetNumberOfQuadraturePoints()) != wanted.size() || wanted.empty() ||
        static_cast<std::size_t>(scheme.GetNumberOfNodes()) != wanted.front().size())
    {
        return std::nullopt;
    }
    PointOrder order;
    for (const std::vector<double>& values : wanted)
    {
        for (int point = 0; point < scheme.GetNumberOfQuadraturePoints(); ++point)
        {
            const double* found = scheme.GetShapeFunctionWeights(point);
            constexpr double rounding = 1e-5;
            if (std::equal(values.begin(), values.end(), found,
                           [](double a, double b) { return std::abs(a - b) <= rounding; }))
            {
                order.push_back(point);
                break;
            }
        }
    }
    return order.size() == wanted.size() ? std::optional(order) : std::nullopt;
}

/// The offsets of an array with the order of the points of each cell type.
class Schemes
{
public:
    Schemes(vtkUnstructuredGrid& grid, vtkUnsignedCharArray& types, const std::string& name, vtkAbstractArray& values,
            const std::filesystem::path& path)
        : types_(types), place_(text(quoted(path), ": Gauss-point array '", name, "' ")),
          offsets_(grid.GetCellData()->GetArray(gaussOffsetsName(values)))
    {
        if (offsets_ == nullptr || offsets_->GetInformation()->Has(vtkQuadratureSchemeDefinition::DICTIONARY()) == 0)
        {
            throw BadFile(text(place_, "names the offsets '", gaussOffsetsName(values),
                               "', but there is no such cell-data array with quadrature schemes"));
        }
    }

    /// Where the values of a cell are, one number per Gauss point.
    std::vector<vtkIdType> rowsOf(vtkIdType cell)
    {
        const auto first = static_cast<vtkIdType>(offsets_->GetComponent(cell, 0));
        std::vector<vtkIdType> rows;
        for (const int point : orderOf(types_.GetValue(cell)))
        {
            rows.push_back(first + point);
        }
        return rows;
    }

    const std::string& place() const { return place_; }

private:
    const PointOrder& orderOf(int cellType)
    {
        const auto known = orders_.find(cellType);
        if (known != orders_.end())
        {
            return known->second;
        }
        vtkQuadratureSchemeDefinition* scheme = findScheme(*offsets_, cellType);
        std::optional<PointOrder> order;
        for (const GaussPointRule rule : {GaussPointRule::full, GaussPointRule::reduced})
        {
            if (scheme != nullptr && !order)
            {
                order = matchPoints(*scheme, cellType, rule);
            }
        }
        if (!order)
        {
            throw BadFile(text(place_,
                               scheme == nullptr ? "has no quadrature scheme for "
                                                 : "has other Gauss points than can be used in ",
                               cellNameOf(cellType).more));
        }
        return orders_.emplace(cellType, *order).first->second;
    }

    vtkUnsignedCharArray& types_;
    std::string place_;
    vtkDataArray* offsets_;
    std::map<int, PointOrder> orders_;
};

template <typename Value>
FieldValues inElementOrder(const std::vector<Value>& values, int componentCount, Schemes& schemes,
                           const ItemNumbers& cells)
{
    const auto rowLength = static_cast<std::size_t>(componentCount);
    const auto rowCount = static_cast<vtkIdType>(values.size() / rowLength);
    std::vector<Value> ordered;
    for (std::size_t element = 0; element < cells.size(); ++element)
    {
        const vtkIdType cell = cells[element];
        for (const vtkIdType row : schemes.rowsOf(cell))
        {
            if (row < 0 || row >= rowCount)
            {
                throw BadFile(text(schemes.place(), "has ", rowCount, " rows, but cell ", cell, " needs row ", row,
                                   ", counted from 0"));
            }
            const auto begin = values.begin() + static_cast<std::ptrdiff_t>(static_cast<std::size_t>(row) * rowLength);
            ordered.insert(ordered.end(), begin, begin + componentCount);
        }
    }
    return ordered;
}

/// What is added for all fields of a grid.
void addSchemes(vtkUnstructuredGrid& grid, const FileElements& elements)
{
    const ItemNumbers& cells = elements.cells;
    vtkNew<vtkIdTypeArray> offsets;
    offsets->SetName(offsetArrayName);
    offsets->SetNumberOfValues(elements.types.GetNumberOfValues());
    offsets->Fill(0);
    std::map<int, GaussScheme> known;
    vtkIdType offset = 0;
    for (std::size_t element = 0; element < cells.size(); ++element)
    {
        offsets->SetValue(cells[element], offset);
        offset += elements.mesh.gaussPointCountOf(static_cast<int>(element));
        const int cellType = elements.types.GetValue(cells[element]);
        if (!known.contains(cellType))
        {
            known.emplace(cellType, gaussSchemeOf(cellType, elements.mesh.gaussPointRule()));
        }
    }
    std::vector<GaussScheme> schemes;
    for (const auto& [cellType, scheme] : known)
    {
        schemes.push_back(scheme);
    }
    addGaussOffsets(grid, *offsets, schemes);
}

} // namespace

std::vector<std::string> listGaussFields(vtkUnstructuredGrid& grid)
{
    std::vector<std::string> names;
    for (const PointArray& array : listArrays(*grid.GetFieldData()))
    {
        if (array.isFloatingPoint &&
            gaussOffsetsName(*grid.GetFieldData()->GetAbstractArray(array.name.c_str())) != nullptr)
        {
            names.push_back(array.name);
        }
    }
    return names;
}

Field readGaussField(vtkUnstructuredGrid& grid, const FileElements& elements, const std::string& name,
                     const std::string& newName, const std::filesystem::path& path)
{
    vtkAbstractArray* array = grid.GetFieldData()->GetAbstractArray(name.c_str());
    const Field inFile = toField(array, name, newName, path);
    Schemes schemes(grid, elements.types, name, *array, path);
    FieldValues values =
        std::visit([&](const auto& inFileOrder) -> FieldValues
                   { return inElementOrder(inFileOrder, inFile.componentCount(), schemes, elements.cells); },
                   inFile.values());
    Field field(newName, Location::gaussPoints, inFile.componentCount(), std::move(values));
    const std::size_t count = field.locationCount();
    if (count != elements.mesh.gaussPointCount(GaussPointRule::full) &&
        count != elements.mesh.gaussPointCount(GaussPointRule::reduced))
    {
        throw BadFile(text(schemes.place(), "does not have values for all Gauss points"));
    }
    return field;
}

void addGaussFields(vtkUnstructuredGrid& grid, const FileElements& elements, std::span<const Field> fields)
{
    if (std::ranges::find(fields, Location::gaussPoints, &Field::location) == fields.end())
    {
        return;
    }
    addSchemes(grid, elements);
    for (const Field& field : fields)
    {
        if (field.location() == Location::gaussPoints)
        {
            const vtkSmartPointer<vtkDataArray> array = toArray(field);
            addGaussValues(grid, *array, offsetArrayName);
        }
    }
}

} // namespace veltrane
