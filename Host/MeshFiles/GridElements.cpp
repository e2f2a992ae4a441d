#include "GridElements.h"

#include "CellNames.h"
#include "DataSetReader.h"
#include "Text.h"
#include "VtkCells.h"

#include <vtkCellArray.h>
#include <vtkCellType.h>
#include <vtkDataArray.h>
#include <vtkDataSetAttributes.h>
#include <vtkDoubleArray.h>
#include <vtkPoints.h>
#include <vtkUnsignedCharArray.h>
#include <vtkUnstructuredGrid.h>

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>
#include <string_view>

namespace veltrane
{
namespace
{

constexpr std::array materialArrayNames{"material", "Material", "MaterialIds", "MaterialId",    "materialId", "part",
                                        "Part",     "PartId",   "partId",      "gmsh:physical", "ObjectId"};

/// Points and lines, which meshes hold for all sorts of purposes beside their elements.
bool isPointOrLine(int cellType)
{
    constexpr std::array types{VTK_VERTEX,     VTK_POLY_VERTEX,    VTK_LINE,         VTK_POLY_LINE, VTK_QUADRATIC_EDGE,
                               VTK_CUBIC_LINE, VTK_LAGRANGE_CURVE, VTK_BEZIER_CURVE, VTK_EMPTY_CELL};
    return std::ranges::find(types, cellType) != types.end();
}

/// The cell types, after a check that there are types and offsets for all cells and that these hold together.
vtkUnsignedCharArray& checkedCellTypes(vtkUnstructuredGrid& grid, const std::filesystem::path& path)
{
    const vtkIdType cellCount = grid.GetNumberOfCells();
    vtkUnsignedCharArray* types = grid.GetCellTypesArray();
    if (types == nullptr || types->GetNumberOfValues() != cellCount)
    {
        throw BadFile(text(quoted(path), " does not have one cell type for each of its ", cellCount, " cells"));
    }
    vtkDataArray& offsets = *grid.GetCells()->GetOffsetsArray();
    const vtkIdType connectivitySize = grid.GetCells()->GetConnectivityArray()->GetNumberOfValues();
    auto previous = 0.0;
    for (vtkIdType i = 0; i <= cellCount; ++i)
    {
        const double offset = offsets.GetComponent(i, 0);
        if (offset < previous || offset > static_cast<double>(connectivitySize))
        {
            throw BadFile(text(quoted(path), ": the offset ", offset, " of cell ", std::max<vtkIdType>(i - 1, 0),
                               " does not delimit a part of the connectivity"));
        }
        previous = offset;
    }
    return *types;
}

/// The points of a cell. A check that they exist, and that there are as many as its kind needs, if there is one.
std::span<const vtkIdType> checkedPoints(vtkUnstructuredGrid& grid, vtkIdType cell, const VtkCellKind* cellKind,
                                         const std::filesystem::path& path)
{
    vtkIdType size = 0;
    const vtkIdType* begin = nullptr;
    grid.GetCells()->GetCellAtId(cell, size, begin);
    const std::span points(begin, static_cast<std::size_t>(size));
    const ElementKindInfo* kind = cellKind == nullptr ? nullptr : findElementKind(cellKind->kind);
    if (kind != nullptr && size != kind->nodeCount)
    {
        throw BadFile(text(quoted(path), ": cell ", cell, " is a ", kind->name, " of ", size, " points instead of ",
                           kind->nodeCount));
    }
    const vtkIdType pointCount = grid.GetNumberOfPoints();
    const auto isMissing = [&](vtkIdType point) { return point < 0 || point >= pointCount; };
    const auto missing = std::ranges::find_if(points, isMissing);
    if (missing != points.end())
    {
        throw BadFile(text(quoted(path), ": cell ", cell, " refers to point ", *missing, ", but there are ", pointCount,
                           " points, counted from 0"));
    }
    return points;
}

/// Adds a cell's element to the mesh data.
void addElement(MeshData& data, const VtkCellKind& cellKind, std::span<const vtkIdType> points)
{
    for (const int place : cellKind.nodeOrder)
    {
        data.connectivity.push_back(static_cast<int>(points[static_cast<std::size_t>(place)]));
    }
    data.kinds.push_back(cellKind.kind);
    data.offsets.push_back(data.connectivity.size());
}

std::string_view needOf(MeshRole role)
{
    switch (role)
    {
    case MeshRole::source: return "volume cells, which a source needs";
    case MeshRole::target: return "volume or surface cells, which a target needs";
    case MeshRole::gaussPointTarget: break;
    }
    return "volume cells, which have the Gauss points to be matched";
}

long long materialNumber(vtkDataArray& array, vtkIdType item, std::string_view itemName,
                         const std::filesystem::path& path)
{
    constexpr double largest = 9007199254740992.0; // beyond it doubles skip whole numbers
    const double number = array.GetComponent(item, 0);
    if (!(std::abs(number) <= largest) || number != std::floor(number))
    {
        throw BadFile(text(quoted(path), ": ", itemName, " array '", array.GetName(), "' numbers the material of ",
                           itemName, " ", item, " with ", number, ", which is not a whole number"));
    }
    return static_cast<long long>(number);
}

} // namespace

GridElements readElements(vtkUnstructuredGrid& grid, const MeshReading& reading, const std::filesystem::path& path)
{
    if (grid.GetNumberOfCells() == 0)
    {
        throw BadFile(text(quoted(path), " has no cells"));
    }
    const vtkUnsignedCharArray& types = checkedCellTypes(grid, path);
    GridElements elements;
    elements.data.offsets.push_back(0);
    for (vtkIdType cell = 0; cell < grid.GetNumberOfCells(); ++cell)
    {
        const int cellType = types.GetValue(cell);
        if (isPointOrLine(cellType))
        {
            continue;
        }
        const VtkCellKind* cellKind = findVtkCellKind(cellType);
        if (cellKind == nullptr)
        {
            ++elements.skipped[cellType];
            continue;
        }
        if (reading.role != MeshRole::target && !findElementKind(cellKind->kind)->isVolume)
        {
            continue;
        }
        addElement(elements.data, *cellKind, checkedPoints(grid, cell, cellKind, path));
        elements.cells.push_back(cell);
    }
    if (!elements.skipped.empty() && !reading.skipUnsupported)
    {
        throw BadFile(text(quoted(path), " has cells that cannot be used: ", cellCountText(elements.skipped),
                           "; --skip-unsupported leaves them out"));
    }
    if (elements.cells.empty())
    {
        throw BadFile(text(quoted(path), " has no ", needOf(reading.role)));
    }
    return elements;
}

void checkCells(vtkUnstructuredGrid& grid, const std::filesystem::path& path)
{
    if (grid.GetNumberOfCells() == 0)
    {
        return;
    }
    const vtkUnsignedCharArray& types = checkedCellTypes(grid, path);
    for (vtkIdType cell = 0; cell < grid.GetNumberOfCells(); ++cell)
    {
        checkedPoints(grid, cell, findVtkCellKind(types.GetValue(cell)), path);
    }
}

std::vector<float> readCoordinates(vtkPointSet& points, const std::filesystem::path& path)
{
    std::vector<float> coordinates;
    if (points.GetPoints() == nullptr)
    {
        return coordinates;
    }
    vtkDataArray& data = *points.GetPoints()->GetData();
    const vtkIdType pointCount = data.GetNumberOfTuples();
    coordinates.reserve(static_cast<std::size_t>(pointCount) * 3);
    for (vtkIdType point = 0; point < pointCount; ++point)
    {
        double position[3];
        data.GetTuple(point, position);
        for (const double coordinate : position)
        {
            if (!(std::abs(coordinate) <= double{FLT_MAX}))
            {
                throw BadFile(text(quoted(path), ": point ", point, " has the coordinate ", coordinate,
                                   ", which is not a finite single-precision number"));
            }
            coordinates.push_back(static_cast<float>(coordinate));
        }
    }
    return coordinates;
}

std::vector<double> readExactCoordinates(vtkPointSet& points)
{
    auto* data = points.GetPoints() == nullptr ? nullptr : vtkDoubleArray::SafeDownCast(points.GetPoints()->GetData());
    return data == nullptr ? std::vector<double>()
                           : std::vector(data->GetPointer(0), data->GetPointer(data->GetNumberOfValues()));
}

std::span<const char* const> usualMaterialArrays()
{
    return materialArrayNames;
}

vtkDataArray* findMaterialArray(vtkDataSetAttributes& data, const std::optional<std::string>& name,
                                const std::filesystem::path& path)
{
    if (name)
    {
        vtkDataArray* array = data.GetArray(name->c_str());
        if (array == nullptr || array->GetNumberOfComponents() != 1)
        {
            throw BadFile(text(quoted(path), " has no array '", *name, "' of one number each to tell the materials"));
        }
        return array;
    }
    for (const char* usualName : usualMaterialArrays())
    {
        vtkDataArray* array = data.GetArray(usualName);
        if (array != nullptr && array->GetNumberOfComponents() == 1)
        {
            return array;
        }
    }
    return nullptr;
}

MaterialNumbers readMaterials(vtkDataArray* array, const std::vector<vtkIdType>& items, const std::string& itemName,
                              const std::filesystem::path& path)
{
    MaterialNumbers result;
    if (array == nullptr)
    {
        result.materials.push_back({"all", 0});
        result.materialPerItem.assign(items.size(), 0);
        return result;
    }
    std::map<long long, int> indices; // of the numbers in the file
    for (const vtkIdType item : items)
    {
        indices.try_emplace(materialNumber(*array, item, itemName, path), 0);
    }
    for (auto& [number, index] : indices)
    {
        index = static_cast<int>(result.materials.size());
        result.materials.push_back({std::to_string(number), 0});
    }
    for (const vtkIdType item : items)
    {
        result.materialPerItem.push_back(indices.at(materialNumber(*array, item, itemName, path)));
    }
    return result;
}

std::string cellCountText(const CellCounts& counts)
{
    std::string list;
    for (const auto& [cellType, count] : counts)
    {
        const CellName name = cellNameOf(cellType);
        list += text(list.empty() ? "" : ", ", count, " ", count == 1 ? name.one : name.more);
    }
    return list;
}

} // namespace veltrane
