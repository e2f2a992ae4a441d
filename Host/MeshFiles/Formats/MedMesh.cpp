#include "MedMesh.h"

#include "DataSetReader.h"
#include "GroupNames.h"
#include "MedCells.h"
#include "Text.h"

#include <vtkCellData.h>
#include <vtkIntArray.h>
#include <vtkNew.h>
#include <vtkPoints.h>
#include <vtkUnstructuredGrid.h>

#include <algorithm>
#include <array>
#include <set>
#include <utility>
#include <vector>

namespace veltrane
{
namespace
{

/// Reads from the file's first mesh.
class MeshReader
{
public:
    MeshReader(const MedFile& file, const std::filesystem::path& path, LeftOut& leftOut)
        : file_(file.id()), path_(path), leftOut_(leftOut)
    {
    }

    MedMesh run()
    {
        findMesh();
        mesh_.grid = vtkSmartPointer<vtkUnstructuredGrid>::New();
        mesh_.grid->SetPoints(readPoints());
        mesh_.grid->Allocate();
        families_->SetName("material");
        for (const MedCell& cell : medCells())
        {
            readCells(cell);
        }
        nameOthers();
        addFamilies();
        return std::move(mesh_);
    }

private:
    void findMesh()
    {
        const med_int count = checked(MEDnMesh(file_), "the meshes");
        if (count == 0)
        {
            throw BadFile(text(quoted(path_), " has no mesh"));
        }
        for (int i = static_cast<int>(count); i >= 1; --i)
        {
            const std::string name = readHead(i);
            if (i == 1)
            {
                mesh_.name = name;
            }
            else
            {
                leftOut_.push_back(text("the mesh '", name, "', since another one comes first"));
            }
        }
        if (type_ != MED_UNSTRUCTURED_MESH)
        {
            throw BadFile(
                text("cannot read ", quoted(path_), ": its mesh is a structured one of MED, which is not read"));
        }
        if (axes_ != MED_CARTESIAN)
        {
            throw BadFile(text("cannot read ", quoted(path_), ": the coordinates of its mesh are not Cartesian"));
        }
        checked(MEDmeshComputationStepInfo(file_, mesh_.name.c_str(), 1, &step_, &iteration_, &time_), "the mesh");
    }

    std::string readHead(int number)
    {
        const auto axisCount = static_cast<std::size_t>(checked(MEDmeshnAxis(file_, number), "the axes"));
        std::array<char, MED_NAME_SIZE + 1> name{};
        std::array<char, MED_COMMENT_SIZE + 1> description{};
        std::array<char, MED_SNAME_SIZE + 1> timeUnit{};
        std::vector<char> axisNames(axisCount * MED_SNAME_SIZE + 1);
        std::vector<char> axisUnits(axisCount * MED_SNAME_SIZE + 1);
        med_int meshDimension = 0;
        med_int stepCount = 0;
        med_sorting_type sorting{};
        checked(MEDmeshInfo(file_, number, name.data(), &dimension_, &meshDimension, &type_, description.data(),
                            timeUnit.data(), &sorting, &stepCount, &axes_, axisNames.data(), axisUnits.data()),
                "the mesh");
        return name.data();
    }

    /// Of nodes, cells or their connectivity.
    std::size_t count(med_entity_type entity, med_geometry_type type, med_data_type data, med_connectivity_mode mode)
    {
        med_bool hasChanged{};
        med_bool hasMoved{};
        return static_cast<std::size_t>(checked(MEDmeshnEntity(file_, mesh_.name.c_str(), step_, iteration_, entity,
                                                               type, data, mode, &hasChanged, &hasMoved),
                                                "the number of nodes and cells"));
    }

    vtkSmartPointer<vtkPoints> readPoints()
    {
        const auto axisCount = static_cast<std::size_t>(dimension_);
        const std::size_t nodeCount = count(MED_NODE, MED_NONE, MED_COORDINATE, MED_NO_CMODE);
        std::vector<double> coordinates(nodeCount * axisCount);
        if (nodeCount > 0)
        {
            checked(MEDmeshNodeCoordinateRd(file_, mesh_.name.c_str(), step_, iteration_, MED_FULL_INTERLACE,
                                            coordinates.data()),
                    "the coordinates of the nodes");
        }
        vtkNew<vtkPoints> points;
        points->SetDataTypeToDouble();
        points->SetNumberOfPoints(static_cast<vtkIdType>(nodeCount));
        for (std::size_t node = 0; node < nodeCount; ++node)
        {
            std::array<double, 3> place{};
            std::copy_n(coordinates.begin() + static_cast<std::ptrdiff_t>(node * axisCount),
                        std::min<std::size_t>(axisCount, 3), place.begin());
            points->SetPoint(static_cast<vtkIdType>(node), place.data());
        }
        return points;
    }

    void readCells(const MedCell& cell)
    {
        const std::size_t cellCount = count(MED_CELL, cell.type, MED_CONNECTIVITY, MED_NODAL);
        if (cellCount == 0)
        {
            return;
        }
        const std::size_t size = cell.order.size();
        std::vector<med_int> connectivity(cellCount * size);
        checked(MEDmeshElementConnectivityRd(file_, mesh_.name.c_str(), step_, iteration_, MED_CELL, cell.type,
                                             MED_NODAL, MED_FULL_INTERLACE, connectivity.data()),
                text("the nodes of the cells ", cell.name));
        mesh_.ranges.push_back({&cell, mesh_.grid->GetNumberOfCells(), static_cast<vtkIdType>(cellCount)});
        std::vector<vtkIdType> nodes(size);
        for (std::size_t i = 0; i < cellCount; ++i)
        {
            for (std::size_t node = 0; node < size; ++node)
            {
                nodes[node] = connectivity[i * size + static_cast<std::size_t>(cell.order[node])] - 1;
            }
            mesh_.grid->InsertNextCell(cell.cellType, static_cast<vtkIdType>(size), nodes.data());
        }
        readFamilies(cell, cellCount);
    }

    /// Families of cells are negative in files of most programs; materials are positive.
    void readFamilies(const MedCell& cell, std::size_t cellCount)
    {
        std::vector<med_int> numbers(cellCount, 0);
        if (count(MED_CELL, cell.type, MED_FAMILY_NUMBER, MED_NODAL) == cellCount)
        {
            checked(MEDmeshEntityFamilyNumberRd(file_, mesh_.name.c_str(), step_, iteration_, MED_CELL, cell.type,
                                                numbers.data()),
                    text("the families of the cells ", cell.name));
        }
        for (const med_int number : numbers)
        {
            families_->InsertNextValue(-static_cast<int>(number));
        }
    }

    void nameOthers()
    {
        const std::array<std::pair<med_geometry_type, const char*>, 3> others{
            {{MED_POLYGON, "polygons"}, {MED_POLYGON2, "curved polygons"}, {MED_POLYHEDRON, "polyhedra"}}};
        for (const auto& [type, name] : others)
        {
            if (count(MED_CELL, type, type == MED_POLYHEDRON ? MED_INDEX_FACE : MED_INDEX_NODE, MED_NODAL) > 0)
            {
                leftOut_.push_back(name);
            }
        }
    }

    void addFamilies()
    {
        std::set<int> used;
        for (vtkIdType cell = 0; cell < families_->GetNumberOfValues(); ++cell)
        {
            used.insert(families_->GetValue(cell));
        }
        GroupNames names;
        const auto familyCount = static_cast<int>(checked(MEDnFamily(file_, mesh_.name.c_str()), "the families"));
        for (int i = 1; i <= familyCount; ++i)
        {
            readFamily(i, used, names);
        }
        if (std::ranges::any_of(used, [](int material) { return material != 0; }))
        {
            mesh_.grid->GetCellData()->AddArray(families_);
            setGroupNames(*mesh_.grid, names);
        }
    }

    /// The groups that have a family in common are its name.
    void readFamily(int number, const std::set<int>& used, GroupNames& names)
    {
        const auto groupCount = static_cast<std::size_t>(
            checked(MEDnFamilyGroup(file_, mesh_.name.c_str(), number), "the groups of a family"));
        std::array<char, MED_NAME_SIZE + 1> name{};
        std::vector<char> groups(groupCount * MED_LNAME_SIZE + 1);
        med_int family = 0;
        checked(MEDfamilyInfo(file_, mesh_.name.c_str(), number, name.data(), &family, groups.data()), "a family");
        std::string joined;
        for (std::size_t group = 0; group < groupCount; ++group)
        {
            const std::string groupName = medName(groups.data(), group, MED_LNAME_SIZE);
            joined += (group == 0 ? "" : ", ") + groupName;
            if (family > 0 && !used.contains(-static_cast<int>(family)) && nodeGroups_.insert(groupName).second)
            {
                leftOut_.push_back(text("the group '", groupName, "' of nodes"));
            }
        }
        const int material = -static_cast<int>(family);
        if (used.contains(material) && !joined.empty() && joined != std::to_string(material))
        {
            names[material] = joined;
        }
    }

    med_idt file_;
    const std::filesystem::path& path_;
    LeftOut& leftOut_;
    MedMesh mesh_;
    med_int dimension_ = 0;
    med_mesh_type type_{};
    med_axis_type axes_{};
    med_int step_ = MED_NO_DT;
    med_int iteration_ = MED_NO_IT;
    med_float time_ = 0;
    vtkNew<vtkIntArray> families_;
    std::set<std::string> nodeGroups_;
};

} // namespace

MedMesh readMedMesh(const MedFile& file, const std::filesystem::path& path, LeftOut& leftOut)
{
    return MeshReader(file, path, leftOut).run();
}

} // namespace veltrane
