#include "GridElements.h"

#include "CellNames.h"
#include "DataSetReader.h"
#include "NodeGroups.h"
#include "RepeatedNodes.h"
#include "Text.h"
#include "VtkCells.h"

#include <vtkCellArray.h>
#include <vtkCellType.h>
#include <vtkDataArray.h>
#include <vtkDataSetAttributes.h>
#include <vtkDoubleArray.h>
#include <vtkNew.h>
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

constexpr std::array materialArrayNames{
    "material",      "Material",      "MaterialIds", "MaterialId",   "materialId", "MaterialID",
    "material_id",   "MatId",         "part",        "Part",         "PartId",     "partId",
    "gmsh:physical", "CellEntityIds", "PhysicalIds", "PhysicalId",   "physical",   "PhysicalGroup",
    "medit:ref",     "cell_tags",     "attribute",   "subdomain_id", "BlockId",    "ElementBlockIds",
    "ObjectId"};

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

/// Goes through the cells of a grid.
class ElementCollector
{
public:
    ElementCollector(vtkUnstructuredGrid& grid, const MeshReading& reading, const std::filesystem::path& path)
        : grid_(grid), reading_(reading), path_(path), isUsed_(static_cast<std::size_t>(grid.GetNumberOfPoints()))
    {
        elements_.data.offsets.push_back(0);
    }

    GridElements run()
    {
        if (grid_.GetNumberOfCells() == 0)
        {
            addLoosePoints();
            return finished();
        }
        types_ = &checkedCellTypes(grid_, path_);
        ghosts_ = grid_.GetCellGhostArray();
        for (vtkIdType cell = 0; cell < grid_.GetNumberOfCells(); ++cell)
        {
            take(cell);
        }
        // Lines and the like along other cells have numbers of materials of their own, and no node that is missing.
        for (const int dimension : {3, 2, 1, 0})
        {
            addNodeGroups(dimension);
        }
        return finished();
    }

private:
    GridElements finished()
    {
        elements_.cells = ItemNumbers(std::move(cells_));
        return std::move(elements_);
    }

    void take(vtkIdType cell)
    {
        if (ghosts_ != nullptr && (ghosts_->GetValue(cell) & vtkDataSetAttributes::DUPLICATECELL) != 0)
        {
            return; // it is a cell of another piece
        }
        const int cellType = types_->GetValue(cell);
        const VtkCellKind* cellKind = findVtkCellKind(cellType);
        const std::optional<int> dimension = cellDimension(cellType);
        const bool isVolume = cellKind == nullptr ? dimension == 3 : findElementKind(cellKind->kind)->isVolume;
        if (dimension == -1 || (reading_.role != MeshRole::target && !isVolume && dimension))
        {
            return;
        }
        if (cellKind != nullptr)
        {
            addCell(cell, cellType, *cellKind);
        }
        else if (reading_.role == MeshRole::target && dimension)
        {
            others_.push_back(cell);
        }
        else
        {
            ++elements_.skipped[cellType];
        }
    }

    void addCell(vtkIdType cell, int cellType, const VtkCellKind& cellKind)
    {
        const std::span<const vtkIdType> points = checkedPoints(grid_, cell, &cellKind, path_);
        const auto plain =
            cellType == VTK_HEXAHEDRON && !reading_.keepsRepeatedNodes ? withoutRepeatedNodes(points) : std::nullopt;
        if (plain)
        {
            addElement(elements_.data, *findVtkCellKind(plain->cellType), plain->points);
        }
        else
        {
            addElement(elements_.data, cellKind, points);
        }
        use(cell, points, 1);
    }

    void addNodeGroups(int dimension)
    {
        for (const vtkIdType cell : others_)
        {
            const int cellType = types_->GetValue(cell);
            if (cellDimension(cellType) != dimension)
            {
                continue;
            }
            const std::span<const vtkIdType> points = checkedPoints(grid_, cell, nullptr, path_);
            const auto isUnused = [&](vtkIdType point) { return !isUsed_[static_cast<std::size_t>(point)]; };
            if (std::ranges::any_of(points, isUnused))
            {
                const int count = addNodeGroup(elements_.data, points);
                ++elements_.nodeGroups[cellType];
                elements_.nodeGroupElementCount += count;
                use(cell, points, count);
            }
        }
    }

    void addLoosePoints()
    {
        for (vtkIdType point = 0; point < grid_.GetNumberOfPoints(); ++point)
        {
            elements_.nodeGroupElementCount += addNodeGroup(elements_.data, {&point, 1});
            cells_.push_back(point);
        }
    }

    void use(vtkIdType cell, std::span<const vtkIdType> points, int elementCount)
    {
        cells_.insert(cells_.end(), static_cast<std::size_t>(elementCount), cell);
        ++elements_.usedCellCount;
        for (const vtkIdType point : points)
        {
            isUsed_[static_cast<std::size_t>(point)] = true;
        }
    }

    vtkUnstructuredGrid& grid_;
    const MeshReading& reading_;
    const std::filesystem::path& path_;
    const vtkUnsignedCharArray* types_ = nullptr;
    const vtkUnsignedCharArray* ghosts_ = nullptr; ///< null if the file knows none
    std::vector<bool> isUsed_;                     ///< per point, whether an element has it
    std::vector<vtkIdType> others_;                ///< cells without a counterpart
    std::vector<vtkIdType> cells_;                 ///< of the elements
    GridElements elements_;
};

std::string_view needOf(MeshRole role)
{
    switch (role)
    {
    case MeshRole::source: return "volume cells, which a source needs";
    case MeshRole::target: return "cells with nodes, which a target needs";
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
    if (grid.GetNumberOfCells() == 0 && (reading.role != MeshRole::target || grid.GetNumberOfPoints() == 0))
    {
        throw BadFile(text(quoted(path), " has no cells"));
    }
    GridElements elements = ElementCollector(grid, reading, path).run();
    if (!elements.skipped.empty() && !reading.skipUnsupported)
    {
        throw BadFile(text(quoted(path), " has cells that cannot be used: ", cellCountText(elements.skipped),
                           "; --skip-unsupported leaves them out"));
    }
    if (elements.cells.size() == 0)
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

MaterialNumbers readMaterials(vtkDataArray* array, const ItemNumbers& items, const std::string& itemName,
                              const std::filesystem::path& path)
{
    MaterialNumbers result;
    if (array == nullptr)
    {
        result.materials.push_back({"all", 0});
        result.materialPerItem.assign(items.size(), 0);
        return result;
    }
    std::map<long long, int> indices; // of the numbers in the file, at first in the order of their first items
    result.materialPerItem.reserve(items.size());
    auto last = indices.end();
    for (std::size_t i = 0; i < items.size(); ++i)
    {
        const long long number = materialNumber(*array, items[i], itemName, path);
        if (last == indices.end() || last->first != number) // neighbours are often alike
        {
            last = indices.try_emplace(number, static_cast<int>(indices.size())).first;
        }
        result.materialPerItem.push_back(last->second);
    }
    std::vector<int> inOrder(indices.size());
    for (const auto& [number, first] : indices)
    {
        inOrder[static_cast<std::size_t>(first)] = static_cast<int>(result.materials.size());
        result.materials.push_back({std::to_string(number), 0});
    }
    for (int& material : result.materialPerItem)
    {
        material = inOrder[static_cast<std::size_t>(material)];
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
