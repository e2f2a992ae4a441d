#include "MedWriting.h"

#include "GridMaterials.h"
#include "GroupNames.h"
#include "MedCells.h"
#include "MedFieldWriting.h"
#include "Text.h"

#include <vtkCellData.h>
#include <vtkDataArray.h>
#include <vtkIdList.h>
#include <vtkNew.h>
#include <vtkUnstructuredGrid.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <set>

namespace veltrane
{
namespace
{

constexpr const char* axes = "x               y               z               "; // 16 letters each
constexpr const char* units = "                                                ";

/// Writes the mesh of one grid.
class MeshWriter
{
public:
    MeshWriter(const MedFile& file, vtkUnstructuredGrid& grid) : file_(file.id()), grid_(grid) {}

    MedCellLists run()
    {
        MedCellLists lists = listCells();
        int dimension = 0;
        for (const MedCellList& list : lists)
        {
            dimension = std::max(dimension, list.cell->dimension);
        }
        checked(MEDmeshCr(file_, medMeshName, 3, dimension, MED_UNSTRUCTURED_MESH, "", "", MED_SORT_DTIT, MED_CARTESIAN,
                          axes, units),
                "the mesh");
        writeNodes();
        findMaterials();
        writeFamilies();
        for (const MedCellList& list : lists)
        {
            writeCells(list);
        }
        return lists;
    }

private:
    MedCellLists listCells() const
    {
        std::map<int, std::vector<vtkIdType>> cellsOfType;
        for (vtkIdType cell = 0; cell < grid_.GetNumberOfCells(); ++cell)
        {
            cellsOfType[grid_.GetCellType(cell)].push_back(cell);
        }
        MedCellLists lists;
        for (const MedCell& cell : medCells())
        {
            if (cellsOfType.contains(cell.cellType))
            {
                lists.push_back({&cell, std::move(cellsOfType[cell.cellType])});
            }
        }
        return lists;
    }

    void writeNodes()
    {
        std::vector<double> coordinates(static_cast<std::size_t>(grid_.GetNumberOfPoints()) * 3);
        for (vtkIdType point = 0; point < grid_.GetNumberOfPoints(); ++point)
        {
            grid_.GetPoint(point, coordinates.data() + 3 * point);
        }
        checked(MEDmeshNodeCoordinateWr(file_, medMeshName, MED_NO_DT, MED_NO_IT, 0, MED_FULL_INTERLACE,
                                        static_cast<med_int>(grid_.GetNumberOfPoints()), coordinates.data()),
                "the coordinates of the nodes");
    }

    /// Per cell; empty if there are none.
    void findMaterials()
    {
        vtkDataArray* array = findMaterialArray(*grid_.GetCellData(), std::nullopt, "");
        for (vtkIdType cell = 0; array != nullptr && cell < grid_.GetNumberOfCells(); ++cell)
        {
            const double number = array->GetComponent(cell, 0);
            constexpr double largest = 2147483647.0;
            if (!(std::abs(number) <= largest) || number != std::floor(number))
            {
                materials_.clear(); // it tells no materials
                return;
            }
            materials_.push_back(static_cast<med_int>(number));
        }
    }

    /// Families of cells have negative numbers. Groups that a family has in common were joined by commas.
    void writeFamilies()
    {
        checked(MEDfamilyCr(file_, medMeshName, "FAMILLE_ZERO", 0, 0, MED_NO_GROUP), "a family");
        const GroupNames names = groupNames(grid_);
        for (const med_int material : std::set<med_int>(materials_.begin(), materials_.end()))
        {
            if (material == 0)
            {
                continue;
            }
            const auto found = names.find(material);
            std::string rest = found == names.end() ? std::to_string(material) : found->second;
            std::string groups;
            med_int groupCount = 0;
            while (!rest.empty())
            {
                const std::size_t end = std::min(rest.find(", "), rest.size());
                std::string group = rest.substr(0, end);
                group.resize(MED_LNAME_SIZE, '\0');
                groups += group;
                ++groupCount;
                rest.erase(0, end + 2);
            }
            checked(
                MEDfamilyCr(file_, medMeshName, text("FAM_", -material).c_str(), -material, groupCount, groups.c_str()),
                "a family");
        }
    }

    void writeCells(const MedCellList& list)
    {
        const std::size_t size = list.cell->order.size();
        std::vector<med_int> connectivity(list.cells.size() * size);
        std::vector<med_int> families;
        const vtkNew<vtkIdList> points;
        for (std::size_t i = 0; i < list.cells.size(); ++i)
        {
            grid_.GetCellPoints(list.cells[i], points);
            for (std::size_t node = 0; node < size; ++node)
            {
                connectivity[i * size + static_cast<std::size_t>(list.cell->order[node])] =
                    static_cast<med_int>(points->GetId(static_cast<vtkIdType>(node)) + 1);
            }
            families.push_back(materials_.empty() ? 0 : -materials_[static_cast<std::size_t>(list.cells[i])]);
        }
        const auto count = static_cast<med_int>(list.cells.size());
        checked(MEDmeshElementConnectivityWr(file_, medMeshName, MED_NO_DT, MED_NO_IT, 0, MED_CELL, list.cell->type,
                                             MED_NODAL, MED_FULL_INTERLACE, count, connectivity.data()),
                "the cells");
        checked(MEDmeshEntityFamilyNumberWr(file_, medMeshName, MED_NO_DT, MED_NO_IT, MED_CELL, list.cell->type, count,
                                            families.data()),
                "the families");
    }

    med_idt file_;
    vtkUnstructuredGrid& grid_;
    std::vector<med_int> materials_;
};

} // namespace

void writeMed(const MedFile& file, vtkUnstructuredGrid& grid, LeftOut& leftOut)
{
    const MedCellLists lists = MeshWriter(file, grid).run();
    writeMedFields(file, grid, lists, leftOut);
}

} // namespace veltrane
