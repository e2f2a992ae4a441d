#include "GmshWriting.h"

#include "CellNames.h"
#include "GaussFields.h"
#include "GmshCells.h"
#include "GridElements.h"
#include "GridMaterials.h"
#include "GroupNames.h"
#include "LowerGroups.h"
#include "NodeLabels.h"
#include "Text.h"
#include "TextFile.h"
#include "VtkWriting.h"

#include <vtkCellArray.h>
#include <vtkCellData.h>
#include <vtkDataArray.h>
#include <vtkFieldData.h>
#include <vtkIdList.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkUnstructuredGrid.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

namespace veltrane
{
namespace
{

constexpr std::array<std::int8_t, 8> voxel{0, 1, 3, 2, 4, 5, 7, 6};
constexpr std::array<std::int8_t, 4> pixel{0, 1, 3, 2};
constexpr CellOrder voxelOrder{5, VTK_VOXEL, 8, voxel};
constexpr CellOrder pixelOrder{3, VTK_PIXEL, 4, pixel};

const CellOrder* orderOf(int cellType)
{
    if (cellType == VTK_VOXEL)
    {
        return &voxelOrder;
    }
    if (cellType == VTK_PIXEL)
    {
        return &pixelOrder;
    }
    const auto found = std::ranges::find(gmsh::cellOrders, cellType, &CellOrder::cellType);
    return found == gmsh::cellOrders.end() ? nullptr : &*found;
}

/// Cells of one kind and one material.
struct Block
{
    int dimension;
    int material;
    int kind; ///< Gmsh's number
    bool operator<(const Block& other) const
    {
        return std::tie(dimension, material, kind) < std::tie(other.dimension, other.material, other.kind);
    }
};

struct Box
{
    std::array<double, 3> low{};
    std::array<double, 3> high{};
};

class GmshWriter
{
public:
    GmshWriter(vtkUnstructuredGrid& grid, const std::filesystem::path& path)
        : grid_(grid), file_(path), numbers_(nodeNumbers(grid)),
          materials_(findGroups(grid) != nullptr ? findGroups(grid)
                                                 : findMaterialArray(*grid.GetCellData(), std::nullopt, path)),
          box_(boxOf(grid))
    {
    }

    LeftOut run()
    {
        sortCells();
        file_ << "$MeshFormat\n4.1 0 8\n$EndMeshFormat\n";
        writeNames();
        writeEntities();
        writeNodes();
        writeElements();
        writeFields(*grid_.GetPointData(), "Node", numbers_);
        writeFields(*grid_.GetCellData(), "Element", elementNumbers_);
        file_.close();
        for (const std::string& name : listGaussFields(grid_))
        {
            leftOut_.push_back(text("the field '", name, "' at Gauss points"));
        }
        return std::move(leftOut_);
    }

private:
    static Box boxOf(vtkUnstructuredGrid& grid)
    {
        double bounds[6];
        grid.GetBounds(bounds);
        return {{bounds[0], bounds[2], bounds[4]}, {bounds[1], bounds[3], bounds[5]}};
    }

    void sortCells()
    {
        CellCounts unknown;
        elementNumbers_.assign(static_cast<std::size_t>(grid_.GetNumberOfCells()), 0);
        for (vtkIdType cell = 0; cell < grid_.GetNumberOfCells(); ++cell)
        {
            const int cellType = grid_.GetCellType(cell);
            const CellOrder* order = orderOf(cellType);
            if (order == nullptr || grid_.GetCells()->GetCellSize(cell) != order->nodeCount)
            {
                ++unknown[cellType];
                continue;
            }
            const int material = materialOf(cell);
            const int dimension = cellDimension(cellType).value_or(0);
            cells_[{dimension, material, order->number}].push_back(cell);
            entities_.try_emplace({dimension, material}, 0);
        }
        std::map<int, int> count;
        for (auto& [group, entity] : entities_)
        {
            entity = ++count[group.first];
        }
        if (!unknown.empty())
        {
            leftOut_.push_back(cellCountText(unknown));
        }
    }

    /// 0 for those that no group of Gmsh can have.
    int materialOf(vtkIdType cell) const
    {
        const double number = materials_ == nullptr ? 0 : materials_->GetComponent(cell, 0);
        return number >= 1 && number <= std::numeric_limits<int>::max() ? static_cast<int>(number) : 0;
    }

    void writeNames()
    {
        const GroupNames materials = groupNames(grid_);
        const LowerGroupNames others = lowerGroupNames(grid_);
        std::vector<std::pair<std::pair<int, int>, std::string>> known;
        for (const auto& [group, entity] : entities_)
        {
            const auto material = materials.find(group.second);
            const auto other = others.find(group);
            if (group.first == entities_.rbegin()->first.first && material != materials.end())
            {
                known.emplace_back(group, material->second);
            }
            else if (other != others.end())
            {
                known.emplace_back(group, other->second);
            }
        }
        if (known.empty())
        {
            return;
        }
        file_ << "$PhysicalNames\n" << known.size() << '\n';
        for (auto& [group, name] : known)
        {
            std::erase(name, '"');
            std::ranges::replace(name, '\n', ' ');
            file_ << group.first << ' ' << group.second << " \"" << name << "\"\n";
        }
        file_ << "$EndPhysicalNames\n";
    }

    void writePosition(const std::array<double, 3>& position)
    {
        for (const double coordinate : position)
        {
            file_ << coordinate << ' ';
        }
    }

    /// One for the cells of each material and dimension, as large as the whole mesh.
    void writeEntities()
    {
        file_ << "$Entities\n";
        for (int dimension = 0; dimension < 4; ++dimension)
        {
            const auto isOf = [&](const auto& entity) { return entity.first.first == dimension; };
            file_ << std::ranges::count_if(entities_, isOf) << (dimension < 3 ? ' ' : '\n');
        }
        for (const auto& [group, entity] : entities_)
        {
            const auto [dimension, material] = group;
            file_ << entity << ' ';
            writePosition(box_.low);
            if (dimension > 0)
            {
                writePosition(box_.high);
            }
            file_ << (material > 0 ? 1 : 0);
            if (material > 0)
            {
                file_ << ' ' << material;
            }
            file_ << (dimension > 0 ? " 0\n" : "\n");
        }
        file_ << "$EndEntities\n";
    }

    void writeNodes()
    {
        const auto [low, high] = std::ranges::minmax(numbers_);
        const auto& [group, entity] = *entities_.rbegin();
        file_ << "$Nodes\n1 " << numbers_.size() << ' ' << low << ' ' << high << '\n';
        file_ << group.first << ' ' << entity << " 0 " << numbers_.size() << '\n';
        for (const long long number : numbers_)
        {
            file_ << number << '\n';
        }
        vtkDataArray& points = *grid_.GetPoints()->GetData();
        const bool isSingle = points.GetDataType() == VTK_FLOAT;
        for (vtkIdType point = 0; point < grid_.GetNumberOfPoints(); ++point)
        {
            for (int axis = 0; axis < 3; ++axis)
            {
                writeReal(points.GetComponent(point, axis), isSingle);
                file_ << (axis < 2 ? ' ' : '\n');
            }
        }
        file_ << "$EndNodes\n";
    }

    /// Digits that single precision does not have tell nothing.
    void writeReal(double value, bool isSingle)
    {
        if (isSingle)
        {
            file_ << static_cast<float>(value);
        }
        else
        {
            file_ << value;
        }
    }

    void writeElements()
    {
        long long count = 0;
        for (const auto& [block, cells] : cells_)
        {
            count += static_cast<long long>(cells.size());
        }
        file_ << "$Elements\n" << cells_.size() << ' ' << count << " 1 " << count << '\n';
        long long number = 0;
        vtkNew<vtkIdList> points;
        for (const auto& [block, cells] : cells_)
        {
            file_ << block.dimension << ' ' << entities_.at({block.dimension, block.material}) << ' ' << block.kind
                  << ' ' << cells.size() << '\n';
            for (const vtkIdType cell : cells)
            {
                elementNumbers_[static_cast<std::size_t>(cell)] = ++number;
                grid_.GetCellPoints(cell, points);
                writeElement(number, *orderOf(grid_.GetCellType(cell)), *points);
            }
        }
        file_ << "$EndElements\n";
    }

    void writeElement(long long number, const CellOrder& order, vtkIdList& points)
    {
        std::array<vtkIdType, mostNodesPerCell> nodes{};
        for (int i = 0; i < order.nodeCount; ++i)
        {
            const auto place = order.order.empty() ? i : order.order[static_cast<std::size_t>(i)];
            nodes[static_cast<std::size_t>(place)] = points.GetId(i);
        }
        file_ << number;
        for (int i = 0; i < order.nodeCount; ++i)
        {
            file_ << ' ' << numbers_[static_cast<std::size_t>(nodes[static_cast<std::size_t>(i)])];
        }
        file_ << '\n';
    }

    void writeFields(vtkFieldData& data, const std::string& place, const std::vector<long long>& numbers)
    {
        for (int i = 0; i < data.GetNumberOfArrays(); ++i)
        {
            vtkDataArray* array = data.GetArray(i);
            const std::string name = data.GetAbstractArray(i)->GetName() == nullptr ? "" : data.GetArrayName(i);
            if (name == nodeNumberArray || (array != nullptr && array == materials_) ||
                (findGroups(grid_) != nullptr && name == "material"))
            {
                continue;
            }
            const int componentCount = array == nullptr ? 0 : array->GetNumberOfComponents();
            if (array == nullptr || name.empty() || tensorOf(componentCount).empty())
            {
                leftOut_.push_back(text("the array '", name, "'"));
                continue;
            }
            writeField(*array, name, place, numbers);
        }
    }

    /// Which of an array's components each of Gmsh's is, -1 for 0; none if it cannot be shown.
    static std::span<const int> tensorOf(int componentCount)
    {
        static constexpr std::array scalar{0};
        static constexpr std::array plane{0, 1, -1};
        static constexpr std::array vector{0, 1, 2};
        static constexpr std::array symmetric{0, 3, 5, 3, 1, 4, 5, 4, 2};
        static constexpr std::array full{0, 1, 2, 3, 4, 5, 6, 7, 8};
        switch (componentCount)
        {
        case 1: return scalar;
        case 2: return plane;
        case 3: return vector;
        case 6: return symmetric;
        case 9: return full;
        default: return {};
        }
    }

    bool hasRow(vtkDataArray& array, vtkIdType row, const std::vector<long long>& numbers) const
    {
        bool isComplete = numbers[static_cast<std::size_t>(row)] > 0;
        for (int i = 0; i < array.GetNumberOfComponents() && isComplete; ++i)
        {
            isComplete = !std::isnan(array.GetComponent(row, i));
        }
        return isComplete;
    }

    void writeField(vtkDataArray& array, std::string name, const std::string& place,
                    const std::vector<long long>& numbers)
    {
        const std::span<const int> components = tensorOf(array.GetNumberOfComponents());
        const bool isSingle = array.GetDataType() == VTK_FLOAT;
        const auto rowCount = static_cast<vtkIdType>(numbers.size());
        vtkIdType count = 0;
        for (vtkIdType row = 0; row < rowCount; ++row)
        {
            count += hasRow(array, row, numbers) ? 1 : 0;
        }
        std::erase(name, '"');
        file_ << '$' << place << "Data\n1\n\"" << name << "\"\n1\n"
              << time() << "\n3\n0\n"
              << components.size() << '\n'
              << count << '\n';
        for (vtkIdType row = 0; row < rowCount; ++row)
        {
            if (!hasRow(array, row, numbers))
            {
                continue;
            }
            file_ << numbers[static_cast<std::size_t>(row)];
            for (const int component : components)
            {
                file_ << ' ';
                writeReal(component < 0 ? 0 : array.GetComponent(row, component), isSingle);
            }
            file_ << '\n';
        }
        file_ << "$End" << place << "Data\n";
    }

    double time() const
    {
        vtkDataArray* array = grid_.GetFieldData()->GetArray("TimeValue");
        return array == nullptr || array->GetNumberOfTuples() == 0 ? 0.0 : array->GetComponent(0, 0);
    }

    vtkUnstructuredGrid& grid_;
    TextFile file_;
    std::vector<long long> numbers_; ///< of the nodes
    vtkDataArray* materials_;
    Box box_;
    std::map<Block, std::vector<vtkIdType>> cells_{};
    std::map<std::pair<int, int>, int> entities_{}; ///< their numbers, by dimension and material
    std::vector<long long> elementNumbers_{};       ///< per cell; 0 if it is left out
    LeftOut leftOut_{};
};

} // namespace

LeftOut writeGmsh(vtkPointSet& dataSet, const std::filesystem::path& path, const FileWriting&)
{
    const vtkSmartPointer<vtkUnstructuredGrid> grid = asGrid(dataSet);
    return GmshWriter(*grid, path).run();
}

} // namespace veltrane
