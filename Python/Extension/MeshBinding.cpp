#include "Arguments.h"
#include "Bindings.h"
#include "CellKinds.h"
#include "CellMesh.h"

#include "Errors.h"
#include "Text.h"

#include <nanobind/stl/pair.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/vector.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace veltrane
{
namespace
{

/// Materials are their numbers; one that stands for all if there are none.
std::vector<Material> materialsOf(const ArrayIn<int>& numbers)
{
    std::vector<Material> materials;
    for (const int number : spanOf(numbers))
    {
        materials.push_back({.name = std::to_string(number), .stateCode = number});
    }
    return materials.empty() ? std::vector<Material>(1) : materials;
}

template <class Number>
CellMesh makeMesh(const ArrayIn<Number>& points, const ArrayIn<std::int64_t>& connectivity,
                  const ArrayIn<std::int64_t>& offsets, const ArrayIn<std::int64_t>& types,
                  const ArrayIn<int>& materialPerCell, const ArrayIn<int>& materials, bool skipsUnsupported)
{
    CellArrays arrays{.points = {},
                      .exactPoints = {},
                      .connectivity = spanOf(connectivity),
                      .offsets = spanOf(offsets),
                      .types = spanOf(types),
                      .materialPerCell = spanOf(materialPerCell)};
    if constexpr (std::is_same_v<Number, float>)
    {
        arrays.points = spanOf(points);
    }
    else
    {
        arrays.exactPoints = spanOf(points);
    }
    const nb::gil_scoped_release noGil;
    return meshOfCells(arrays, materialsOf(materials), skipsUnsupported);
}

template <class Number>
PointCloud makePoints(const ArrayIn<Number>& points, const ArrayIn<int>& materialPerPoint,
                      const ArrayIn<int>& materials)
{
    const std::span<const Number> coordinates = spanOf(points);
    std::vector<int> perPoint(coordinates.size() / 3, 0);
    if (materialPerPoint.size() > 0)
    {
        perPoint.assign(materialPerPoint.data(), materialPerPoint.data() + materialPerPoint.size());
    }
    std::vector<Number> numbers(coordinates.begin(), coordinates.end());
    if constexpr (std::is_same_v<Number, float>)
    {
        return PointCloud(std::move(numbers), std::move(perPoint), materialsOf(materials));
    }
    else
    {
        return PointCloud({}, std::move(numbers), std::move(perPoint), materialsOf(materials));
    }
}

std::vector<std::int64_t> gaussPointOffsets(const CellMesh& mesh)
{
    std::vector<std::int64_t> offsets{0};
    for (int element = 0; element < mesh.mesh.elementCount(); ++element)
    {
        offsets.push_back(offsets.back() + mesh.mesh.gaussPointCountOf(element));
    }
    return offsets;
}

nb::list listOfCellKinds()
{
    nb::list list;
    for (const CellKind& cell : cellKinds())
    {
        const ElementKindInfo& info = *findElementKind(cell.kind);
        list.append(nb::make_tuple(cell.cellType, nb::str(info.name.data(), info.name.size()), info.nodeCount,
                                   info.gaussPointCount, info.isVolume));
    }
    return list;
}

std::vector<std::pair<std::string, int>> kindCounts(const CellMesh& mesh)
{
    std::vector<std::pair<std::string, int>> counts;
    for (const ElementKindInfo& info : elementKinds)
    {
        const auto& kinds = mesh.mesh.kinds();
        const auto count = std::count(kinds.begin(), kinds.end(), info.kind);
        if (count > 0)
        {
            counts.emplace_back(count == 1 ? info.name : info.plural, static_cast<int>(count));
        }
    }
    return counts;
}

/// Takes apart cells whose number of points stands before their points.
nb::tuple splitCells(const ArrayIn<std::int64_t>& cells)
{
    const std::span<const std::int64_t> numbers = spanOf(cells);
    std::vector<std::int64_t> connectivity;
    std::vector<std::int64_t> offsets{0};
    connectivity.reserve(numbers.size());
    for (std::size_t i = 0; i < numbers.size();)
    {
        const std::int64_t count = numbers[i];
        const std::size_t left = numbers.size() - i - 1;
        if (count < 0 || static_cast<std::uint64_t>(count) > left)
        {
            throw InvalidData(text("cell ", offsets.size() - 1, " says that it has ", count, " points, but ", left,
                                   " numbers are left of the cells"));
        }
        const auto points = numbers.subspan(i + 1, static_cast<std::size_t>(count));
        connectivity.insert(connectivity.end(), points.begin(), points.end());
        offsets.push_back(static_cast<std::int64_t>(connectivity.size()));
        i += 1 + points.size();
    }
    return nb::make_tuple(arrayOf(std::move(connectivity)), arrayOf(std::move(offsets)));
}

template <class Number> ArrayOut<Number> rowsOfThree(std::vector<Number> numbers)
{
    const std::size_t count = numbers.size() / 3;
    return arrayOf(std::move(numbers), {count, 3}, static_cast<Number*>(nullptr));
}

template <class Model> void bindPositions(nb::class_<Model>& model, auto positions)
{
    model.def("points", [=](const Model& self) { return rowsOfThree(positions(self).coordinates()); });
    model.def(
        "exact_points", [=](const Model& self) { return rowsOfThree(positions(self).exactCoordinates()); },
        "No rows if `points` says it all.");
}

template <class Number> void bindMaking(nb::module_& module)
{
    module.def("make_mesh", &makeMesh<Number>, nb::arg("points").noconvert(), nb::arg("connectivity").noconvert(),
               nb::arg("offsets").noconvert(), nb::arg("types").noconvert(), nb::arg("material_per_cell").noconvert(),
               nb::arg("materials").noconvert(), nb::arg("skip_unsupported"));
    module.def("make_points", &makePoints<Number>, nb::arg("points").noconvert(),
               nb::arg("material_per_point").noconvert(), nb::arg("materials").noconvert());
}

} // namespace

void bindMeshes(nb::module_& module)
{
    module.def("cell_kinds", &listOfCellKinds,
               "Per cell type that can be used: its number, name, number of nodes and of Gauss points, whether it is a "
               "volume.");
    nb::class_<CellMesh> meshes(module, "Mesh");
    bindPositions(meshes, [](const CellMesh& self) -> const Mesh& { return self.mesh; });
    meshes.def_prop_ro("node_count", [](const CellMesh& mesh) { return mesh.mesh.nodeCount(); })
        .def_prop_ro("element_count", [](const CellMesh& mesh) { return mesh.mesh.elementCount(); })
        .def_prop_ro("cell_count", [](const CellMesh& mesh) { return mesh.cellCount; })
        .def_prop_ro("gauss_point_count", [](const CellMesh& mesh) { return mesh.mesh.gaussPointCount(); })
        .def_prop_rw(
            "is_gauss_rule_reduced",
            [](const CellMesh& mesh) { return mesh.mesh.gaussPointRule() == GaussPointRule::reduced; },
            [](CellMesh& mesh, bool isReduced)
            { mesh.mesh.setGaussPointRule(isReduced ? GaussPointRule::reduced : GaussPointRule::full); })
        .def_ro("has_surfaces", &CellMesh::hasSurfaces)
        .def_prop_ro("is_whole",
                     [](const CellMesh& mesh) { return mesh.cells.size() == static_cast<std::size_t>(mesh.cellCount); })
        .def("cells", [](const CellMesh& mesh) { return arrayOf(mesh.cells); })
        .def("gauss_point_offsets", [](const CellMesh& mesh) { return arrayOf(gaussPointOffsets(mesh)); })
        .def("kind_counts", &kindCounts)
        .def("volumes", &volumesOf, nb::call_guard<nb::gil_scoped_release>());
    nb::class_<PointCloud> points(module, "Points");
    bindPositions(points, [](const PointCloud& self) -> const PointCloud& { return self; });
    points.def_prop_ro("point_count", &PointCloud::pointCount);

    bindMaking<float>(module);
    bindMaking<double>(module);
    module.def("split_cells", &splitCells, nb::arg("cells").noconvert());
}

} // namespace veltrane
