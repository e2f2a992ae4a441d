#include "MedFields.h"

#include "MedCells.h"
#include "MedFieldHead.h"
#include "MedGauss.h"
#include "Text.h"

#include <vtkCellData.h>
#include <vtkDoubleArray.h>
#include <vtkFloatArray.h>
#include <vtkIdTypeArray.h>
#include <vtkIntArray.h>
#include <vtkLongLongArray.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkUnstructuredGrid.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>

namespace veltrane
{
namespace
{

bool isFloatingPoint(const MedFieldHead& field)
{
    return field.type == MED_FLOAT64 || field.type == MED_FLOAT32;
}

/// The place of each component in VTK's order: of symmetric tensors xx, yy, zz, xy, yz, xz, whatever the letters
/// before.
std::vector<std::size_t> componentOrder(const MedFieldHead& field)
{
    constexpr std::array<std::string_view, 6> tensor{"XX", "YY", "ZZ", "XY", "YZ", "XZ"};
    std::vector<std::size_t> order(field.components.size());
    for (std::size_t component = 0; component < order.size(); ++component)
    {
        order[component] = component;
    }
    if (order.size() != tensor.size())
    {
        return order;
    }
    std::set<std::size_t> found;
    for (std::size_t component = 0; component < tensor.size(); ++component)
    {
        const std::string& name = field.components[component];
        const auto place = std::ranges::find_if(tensor, [&](std::string_view axes) { return name.ends_with(axes); });
        found.insert(static_cast<std::size_t>(place - tensor.begin()));
        order[component] = static_cast<std::size_t>(place - tensor.begin());
    }
    if (found.size() != tensor.size() || found.contains(tensor.size()))
    {
        std::ranges::generate(order, [next = std::size_t{0}]() mutable { return next++; });
    }
    return order;
}

/// Rows that are "not a number", or 0 of whole numbers.
vtkSmartPointer<vtkDataArray> emptyArray(const MedFieldHead& field, vtkIdType rowCount)
{
    vtkSmartPointer<vtkDataArray> array;
    switch (field.type)
    {
    case MED_FLOAT64: array = vtkSmartPointer<vtkDoubleArray>::New(); break;
    case MED_FLOAT32: array = vtkSmartPointer<vtkFloatArray>::New(); break;
    case MED_INT64: array = vtkSmartPointer<vtkLongLongArray>::New(); break;
    case MED_INT32: array = vtkSmartPointer<vtkIntArray>::New(); break;
    default:
        array = vtkSmartPointer<vtkDataArray>::Take(
            vtkDataArray::CreateDataArray(sizeof(med_int) == 4 ? VTK_INT : VTK_LONG_LONG));
    }
    array->SetName(field.name.c_str());
    array->SetNumberOfComponents(static_cast<int>(field.components.size()));
    array->SetNumberOfTuples(rowCount);
    array->Fill(isFloatingPoint(field) ? std::numeric_limits<double>::quiet_NaN() : 0);
    const std::vector<std::size_t> order = componentOrder(field);
    for (std::size_t component = 0; component < order.size(); ++component)
    {
        if (!field.components[component].empty())
        {
            array->SetComponentName(static_cast<vtkIdType>(order[component]), field.components[component].c_str());
        }
    }
    return array;
}

/// Values of items become rows of the array, those of the first item from row `begin` on.
void setRows(vtkDataArray& array, vtkIdType begin, const MedValues& values, const MedFieldHead& field)
{
    const std::vector<std::size_t> order = componentOrder(field);
    const auto size = static_cast<std::size_t>(array.GetDataTypeSize());
    auto* bytes = static_cast<unsigned char*>(array.GetVoidPointer(0));
    const unsigned char* next = values.bytes.data();
    for (const std::size_t item : values.items)
    {
        for (std::size_t point = 0; point < values.pointCount; ++point)
        {
            const std::size_t row = static_cast<std::size_t>(begin) + item * values.pointCount + point;
            for (const std::size_t component : order)
            {
                std::memcpy(bytes + (row * order.size() + component) * size, next, size);
                next += size;
            }
        }
    }
}

/// Reads the fields of a step into a grid.
class FieldReader
{
public:
    FieldReader(const MedFile& file, const MedMesh& mesh, LeftOut& leftOut)
        : file_(file), mesh_(mesh), leftOut_(leftOut)
    {
    }

    void read(const MedFieldHead& field, const MedFieldStep& step)
    {
        readNodes(field, step);
        readCells(field, step);
        for (const MedCellRange& range : mesh_.ranges)
        {
            if (hasMedValues(file_, field, step, MED_NODE_ELEMENT, range.cell->type))
            {
                leftOut_.push_back(text("the field '", field.name, "' at the nodes of each cell"));
                return;
            }
        }
    }

private:
    struct RangeValues
    {
        const MedCellRange* range;
        std::vector<MedValues> values;
    };

    void readNodes(const MedFieldHead& field, const MedFieldStep& step)
    {
        const vtkIdType nodeCount = mesh_.grid->GetNumberOfPoints();
        const std::vector<MedValues> all =
            readMedValues(file_, field, step, MED_NODE, MED_NONE, static_cast<std::size_t>(nodeCount));
        if (!all.empty())
        {
            const vtkSmartPointer<vtkDataArray> array = emptyArray(field, nodeCount);
            for (const MedValues& values : all)
            {
                setRows(*array, 0, values, field);
            }
            mesh_.grid->GetPointData()->AddArray(array);
        }
    }

    void readCells(const MedFieldHead& field, const MedFieldStep& step)
    {
        std::vector<RangeValues> all;
        bool areOnePerCell = true;
        for (const MedCellRange& range : mesh_.ranges)
        {
            RangeValues ofRange{&range, readMedValues(file_, field, step, MED_CELL, range.cell->type,
                                                      static_cast<std::size_t>(range.count))};
            for (const MedValues& values : ofRange.values)
            {
                const std::optional<GaussScheme> scheme = schemeOf(values, *range.cell);
                const bool isAtCentre = values.pointCount == 1 && (!scheme || !isUsable(*scheme));
                areOnePerCell = areOnePerCell && (values.localization.empty() || isAtCentre);
            }
            if (!ofRange.values.empty())
            {
                all.push_back(std::move(ofRange));
            }
        }
        if (all.empty())
        {
            return;
        }
        if (!areOnePerCell)
        {
            addGauss(field, all);
        }
        else if (mesh_.grid->GetCellData()->HasArray(field.name.c_str()) != 0)
        {
            leftOut_.push_back(text("the field '", field.name, "' of cells, which has the name of the groups"));
        }
        else
        {
            addCells(field, all);
        }
    }

    /// A value of a cell is that of the only Gauss point of those that have one.
    std::optional<GaussScheme> schemeOf(const MedValues& values, const MedCell& cell) const
    {
        if (values.localization.empty())
        {
            return gaussSchemeOf(cell.cellType);
        }
        return values.localization == MED_GAUSS_ELNO ? std::nullopt : readMedScheme(file_, values.localization, cell);
    }

    void addCells(const MedFieldHead& field, const std::vector<RangeValues>& all)
    {
        const vtkSmartPointer<vtkDataArray> array = emptyArray(field, mesh_.grid->GetNumberOfCells());
        for (const RangeValues& ofRange : all)
        {
            for (const MedValues& values : ofRange.values)
            {
                setRows(*array, ofRange.range->begin, values, field);
            }
        }
        mesh_.grid->GetCellData()->AddArray(array);
    }

    /// Of several localizations for cells of one type none can be told; they are left out.
    void addGauss(const MedFieldHead& field, const std::vector<RangeValues>& all)
    {
        std::vector<GaussScheme> schemes;
        std::string key;
        for (const RangeValues& ofRange : all)
        {
            const MedValues& first = ofRange.values.front();
            const bool isOneRule = std::ranges::all_of(ofRange.values, [&](const MedValues& values)
                                                       { return values.localization == first.localization; });
            const std::optional<GaussScheme> scheme = !isOneRule ? std::nullopt : schemeOf(first, *ofRange.range->cell);
            if (!scheme || !isUsable(*scheme) || !isFloatingPoint(field) || scheme->weights.size() != first.pointCount)
            {
                leftOut_.push_back(text("the field '", field.name, "' at Gauss points, since those in cells ",
                                        ofRange.range->cell->name, " are others than can be used"));
                return;
            }
            schemes.push_back(*scheme);
            key += text(ofRange.range->cell->name, ' ', first.localization, '\n');
        }
        addRows(field, all, offsetsOf(key, all, schemes));
    }

    /// Fields at the same points have the same offsets.
    std::string offsetsOf(const std::string& key, const std::vector<RangeValues>& all,
                          const std::vector<GaussScheme>& schemes)
    {
        const auto [known, isNew] =
            offsets_.try_emplace(key, offsets_.empty() ? "GaussOffset" : text("GaussOffset", offsets_.size() + 1));
        if (isNew)
        {
            vtkNew<vtkIdTypeArray> offsets;
            offsets->SetName(known->second.c_str());
            offsets->SetNumberOfValues(mesh_.grid->GetNumberOfCells());
            offsets->Fill(0);
            vtkIdType next = 0;
            for (const RangeValues& ofRange : all)
            {
                for (vtkIdType i = 0; i < ofRange.range->count; ++i)
                {
                    offsets->SetValue(ofRange.range->begin + i, next);
                    next += static_cast<vtkIdType>(ofRange.values.front().pointCount);
                }
            }
            addGaussOffsets(*mesh_.grid, *offsets, schemes);
        }
        return known->second;
    }

    void addRows(const MedFieldHead& field, const std::vector<RangeValues>& all, const std::string& offsetsName)
    {
        vtkIdType rowCount = 0;
        for (const RangeValues& ofRange : all)
        {
            rowCount += ofRange.range->count * static_cast<vtkIdType>(ofRange.values.front().pointCount);
        }
        const vtkSmartPointer<vtkDataArray> array = emptyArray(field, rowCount);
        vtkIdType begin = 0;
        for (const RangeValues& ofRange : all)
        {
            for (const MedValues& values : ofRange.values)
            {
                setRows(*array, begin, values, field);
            }
            begin += ofRange.range->count * static_cast<vtkIdType>(ofRange.values.front().pointCount);
        }
        addGaussValues(*mesh_.grid, *array, offsetsName.c_str());
    }

    const MedFile& file_;
    const MedMesh& mesh_;
    LeftOut& leftOut_;
    std::map<std::string, std::string> offsets_; ///< names of arrays by what they are for
};

} // namespace

std::vector<MedStep> readMedSteps(const MedFile& file)
{
    std::set<MedStep> steps;
    for (const MedFieldHead& field : readMedFieldHeads(file))
    {
        for (const MedFieldStep& step : field.steps)
        {
            if (!step.isForAllTimes)
            {
                steps.insert(step.step);
            }
        }
    }
    return {steps.begin(), steps.end()};
}

void readMedFields(const MedFile& file, const MedMesh& mesh, const std::optional<MedStep>& step, LeftOut& leftOut)
{
    FieldReader reader(file, mesh, leftOut);
    for (const MedFieldHead& field : readMedFieldHeads(file))
    {
        const std::optional<MedFieldStep> own = field.at(step);
        if (field.meshName != mesh.name)
        {
            leftOut.push_back(text("the field '", field.name, "', which is one of another mesh"));
        }
        else if (!own)
        {
            leftOut.push_back(text("the field '", field.name, "', which has no values at this step"));
        }
        else
        {
            reader.read(field, *own);
        }
    }
}

} // namespace veltrane
