#include "MedFieldWriting.h"

#include "GaussArrays.h"
#include "MedCells.h"
#include "MedGauss.h"
#include "Text.h"
#include "VtkCells.h"

#include <vtkCellData.h>
#include <vtkDataArray.h>
#include <vtkFieldData.h>
#include <vtkPointData.h>
#include <vtkQuadratureSchemeDefinition.h>
#include <vtkUnstructuredGrid.h>
#include <vtkVariant.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <string_view>

namespace veltrane
{
namespace
{

med_field_type typeOf(vtkDataArray& array)
{
    switch (array.GetDataType())
    {
    case VTK_DOUBLE: return MED_FLOAT64;
    case VTK_FLOAT: return MED_FLOAT32;
    default: return array.GetDataTypeSize() > 4 || array.GetDataType() == VTK_UNSIGNED_INT ? MED_INT64 : MED_INT32;
    }
}

template <typename Number> void append(std::vector<unsigned char>& bytes, Number number)
{
    const std::size_t end = bytes.size();
    bytes.resize(end + sizeof number);
    std::memcpy(bytes.data() + end, &number, sizeof number);
}

void appendRow(std::vector<unsigned char>& bytes, vtkDataArray& array, vtkIdType row)
{
    const int componentCount = array.GetNumberOfComponents();
    for (int component = 0; component < componentCount; ++component)
    {
        const auto whole = [&] { return array.GetVariantValue(row * componentCount + component).ToLongLong(); };
        switch (typeOf(array))
        {
        case MED_FLOAT64: append(bytes, array.GetComponent(row, component)); break;
        case MED_FLOAT32: append(bytes, static_cast<float>(array.GetComponent(row, component))); break;
        case MED_INT64: append(bytes, static_cast<std::int64_t>(whole())); break;
        default: append(bytes, static_cast<std::int32_t>(whole())); break;
        }
    }
}

/// A scheme of VTK; nothing if the offsets have none for the cells, or these are no elements.
std::optional<GaussScheme> schemeOf(vtkDataArray& offsets, int cellType)
{
    vtkQuadratureSchemeDefinition* definition = findScheme(offsets, cellType);
    if (definition == nullptr || gaussSchemeOf(cellType).shapeValues.empty())
    {
        return std::nullopt;
    }
    GaussScheme scheme{.cellType = cellType};
    for (int point = 0; point < definition->GetNumberOfQuadraturePoints(); ++point)
    {
        const double* values = definition->GetShapeFunctionWeights(point);
        scheme.shapeValues.emplace_back(values, values + definition->GetNumberOfNodes());
        scheme.weights.push_back(definition->GetQuadratureWeights()[point]);
    }
    return scheme;
}

/// Writes the fields of a grid.
class FieldWriter
{
public:
    FieldWriter(const MedFile& file, vtkUnstructuredGrid& grid, const MedCellLists& lists, LeftOut& leftOut)
        : file_(file), grid_(grid), lists_(lists), leftOut_(leftOut)
    {
    }

    void run()
    {
        for (const auto& [name, offsets] : gaussArraysOf(grid_))
        {
            offsetNames_.insert(offsets);
        }
        writeAll(*grid_.GetPointData(), &FieldWriter::writeNodes);
        writeAll(*grid_.GetCellData(), &FieldWriter::writeCells);
        writeAll(*grid_.GetFieldData(), &FieldWriter::writeGauss);
    }

private:
    void writeAll(vtkFieldData& data, void (FieldWriter::*write)(vtkDataArray&))
    {
        for (int i = 0; i < data.GetNumberOfArrays(); ++i)
        {
            vtkAbstractArray& array = *data.GetAbstractArray(i);
            const std::string name = array.GetName() == nullptr ? "" : array.GetName();
            const bool isOfGroups = name == "material_names" || name == "material" || offsetNames_.contains(name);
            if (isOfGroups)
            {
                continue;
            }
            auto* numbers = vtkDataArray::SafeDownCast(&array);
            if (numbers == nullptr)
            {
                leftOut_.push_back(text("the texts '", name, "'"));
            }
            else if (name.empty() || name.size() > MED_NAME_SIZE || name.find('/') != std::string::npos)
            {
                leftOut_.push_back(text("the array '", name, "', since names have 1 to 64 letters and no slash"));
            }
            else
            {
                (this->*write)(*numbers);
            }
        }
    }

    /// A field of one name at nodes and cells is one field; it must be of one sort.
    bool open(vtkDataArray& array)
    {
        const auto componentCount = static_cast<std::size_t>(array.GetNumberOfComponents());
        const auto [known, isNew] = written_.try_emplace(array.GetName(), typeOf(array), componentCount);
        if (!isNew)
        {
            const bool fits = known->second == std::pair(typeOf(array), componentCount);
            if (!fits)
            {
                leftOut_.push_back(text("one of the two arrays '", array.GetName(), "'"));
            }
            return fits;
        }
        std::string names(componentCount * MED_SNAME_SIZE, ' ');
        for (std::size_t component = 0; component < componentCount; ++component)
        {
            const char* name = array.GetComponentName(static_cast<vtkIdType>(component));
            const std::string_view letters = std::string_view(name == nullptr ? "" : name).substr(0, MED_SNAME_SIZE);
            names.replace(component * MED_SNAME_SIZE, letters.size(), letters);
        }
        const std::string units(componentCount * MED_SNAME_SIZE, ' ');
        checked(MEDfieldCr(file_.id(), array.GetName(), typeOf(array), static_cast<med_int>(componentCount),
                           names.c_str(), units.c_str(), "", medMeshName),
                text("the field '", array.GetName(), "'"));
        return true;
    }

    void writeValues(vtkDataArray& array, med_entity_type entity, med_geometry_type type,
                     const std::string& localization, std::size_t count, const std::vector<unsigned char>& bytes)
    {
        checked(MEDfieldValueWithProfileWr(file_.id(), array.GetName(), MED_NO_DT, MED_NO_IT, 0, entity, type,
                                           MED_COMPACT_STMODE, MED_NO_PROFILE, localization.c_str(), MED_FULL_INTERLACE,
                                           MED_ALL_CONSTITUENT, static_cast<med_int>(count), bytes.data()),
                text("the values of the field '", array.GetName(), "'"));
    }

    void writeNodes(vtkDataArray& array)
    {
        if (array.GetNumberOfTuples() == 0 || !open(array))
        {
            return;
        }
        std::vector<unsigned char> bytes;
        for (vtkIdType row = 0; row < array.GetNumberOfTuples(); ++row)
        {
            appendRow(bytes, array, row);
        }
        writeValues(array, MED_NODE, MED_NONE, "", static_cast<std::size_t>(array.GetNumberOfTuples()), bytes);
    }

    void writeCells(vtkDataArray& array)
    {
        if (lists_.empty() || !open(array))
        {
            return;
        }
        for (const MedCellList& list : lists_)
        {
            std::vector<unsigned char> bytes;
            for (const vtkIdType cell : list.cells)
            {
                appendRow(bytes, array, cell);
            }
            writeValues(array, MED_CELL, list.cell->type, "", list.cells.size(), bytes);
        }
    }

    void writeGauss(vtkDataArray& array)
    {
        const char* offsetsName = gaussOffsetsName(array);
        vtkDataArray* offsets = offsetsName == nullptr ? nullptr : grid_.GetCellData()->GetArray(offsetsName);
        if (offsets == nullptr)
        {
            leftOut_.push_back(text("the array '", array.GetName(), "' of the whole file"));
            return;
        }
        if (!open(array))
        {
            return;
        }
        for (const MedCellList& list : lists_)
        {
            const std::optional<GaussScheme> scheme = schemeOf(*offsets, list.cell->cellType);
            if (scheme && !writeGaussOf(array, *offsets, list, *scheme))
            {
                leftOut_.push_back(text("the Gauss-point field '", array.GetName(), "' in cells ", list.cell->name));
            }
        }
    }

    /// False, and nothing is written, if values are missing.
    bool writeGaussOf(vtkDataArray& array, vtkDataArray& offsets, const MedCellList& list, const GaussScheme& scheme)
    {
        const auto pointCount = static_cast<vtkIdType>(scheme.weights.size());
        std::vector<unsigned char> bytes;
        for (const vtkIdType cell : list.cells)
        {
            const auto first = static_cast<vtkIdType>(offsets.GetComponent(cell, 0));
            if (first < 0 || first + pointCount > array.GetNumberOfTuples())
            {
                return false;
            }
            for (vtkIdType point = 0; point < pointCount; ++point)
            {
                appendRow(bytes, array, first + point);
            }
        }
        const std::string localization = text(offsets.GetName(), '_', list.cell->name);
        if (localizations_.insert(localization).second)
        {
            writeMedScheme(file_, localization, *list.cell, scheme);
        }
        writeValues(array, MED_CELL, list.cell->type, localization, list.cells.size(), bytes);
        return true;
    }

    const MedFile& file_;
    vtkUnstructuredGrid& grid_;
    const MedCellLists& lists_;
    LeftOut& leftOut_;
    std::set<std::string> offsetNames_;
    std::set<std::string> localizations_;
    std::map<std::string, std::pair<med_field_type, std::size_t>> written_;
};

} // namespace

void writeMedFields(const MedFile& file, vtkUnstructuredGrid& grid, const MedCellLists& lists, LeftOut& leftOut)
{
    FieldWriter(file, grid, lists, leftOut).run();
}

} // namespace veltrane
