#include "Arguments.h"
#include "Bindings.h"
#include "CellMesh.h"
#include "Unnumbered.h"

#include "ElementSizes.h"
#include "Map.h"

#include <nanobind/stl/filesystem.h>
#include <nanobind/stl/optional.h>
#include <nanobind/stl/pair.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/variant.h>
#include <nanobind/stl/vector.h>

#include <algorithm>
#include <array>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace veltrane
{
namespace
{

/// What a map is to do, apart from the settings that all computations take.
struct Task
{
    int mode = 0;
    std::vector<bool> selection{}; ///< per target material
    bool toNodes = true;
    bool toGaussPoints = false;
    bool fromGaussPoints = false;
    bool usesMaterials = true;
    bool takesChecksums = true;
};

const Mesh& modelOf(const CellMesh& mesh)
{
    return mesh.mesh;
}

const PointCloud& modelOf(const PointCloud& points)
{
    return points;
}

/// Places that are farther from the source than any of its elements is long are not near it. The exported functions'
/// rules have no limit.
float nearLimitOf(const Settings& settings, const Mesh& source, bool canBeNear)
{
    const Rules rules = rulesOf(settings);
    return settings.nearLimit || settings.isAsExported || !canBeNear ? rules.nearLimit : largestElementSize(source);
}

template <class Target>
Map makeMap(const CellMesh& source, const Target& target, const Task& task, const Settings& settings,
            nb::handle progress)
{
    MapOptions options{.mode = static_cast<OutsideMode>(task.mode),
                       .targetMapping = task.selection,
                       .toNodes = task.toNodes,
                       .toGaussPoints = task.toGaussPoints,
                       .fromGaussPoints = task.fromGaussPoints,
                       .takesChecksums = task.takesChecksums,
                       .rules = rulesOf(settings),
                       .tuning = tuningOf(settings),
                       .threads = settings.threads,
                       .progress = progressTo(progress)};
    const nb::gil_scoped_release noGil;
    constexpr bool isToMesh = std::is_same_v<Target, CellMesh>;
    options.rules.nearLimit = nearLimitOf(settings, source.mesh, isToMesh || settings.pointsMayBeNear);
    if (task.usesMaterials)
    {
        return Map(source.mesh, modelOf(target), options);
    }
    return Map(Unnumbered(source.mesh).model(), Unnumbered(modelOf(target)).model(), options);
}

Location locationOf(bool isAtGaussPoints)
{
    return isAtGaussPoints ? Location::gaussPoints : Location::nodes;
}

/// Where values come from, where they go, and what stands where none go.
struct Way
{
    int componentCount = 1;
    bool fromGaussPoints = false;
    bool toGaussPoints = false;
    float defaultValue = 0;
    bool fillsFirst = true;
    int threads = 1;
};

template <class Number>
void apply(const Map& map, const ArrayIn<Number>& values, const ArrayInOut<Number>& out, const Way& way)
{
    const FieldView view{.source = spanOf(values),
                         .target = spanOf(out),
                         .componentCount = way.componentCount,
                         .sourceLocation = locationOf(way.fromGaussPoints),
                         .targetLocation = locationOf(way.toGaussPoints),
                         .defaultValue = way.defaultValue};
    const nb::gil_scoped_release noGil;
    const std::span<const FieldView> fields(&view, 1);
    std::vector<std::byte> workspace(map.workspaceSize(fields));
    if (way.fillsFirst)
    {
        std::ranges::fill(spanOf(out), Number{way.defaultValue});
    }
    map.apply(fields, workspace, way.threads);
}

template <class Number>
nb::tuple applyTransposed(const Map& map, const ArrayIn<Number>& values, int componentCount, bool isAtGaussPoints)
{
    const std::span<const Number> numbers = spanOf(values);
    TransposedField result = [&]
    {
        const nb::gil_scoped_release noGil;
        return map.applyTransposed(Field("values", locationOf(isAtGaussPoints), componentCount,
                                         FieldValues(std::vector<Number>(numbers.begin(), numbers.end()))));
    }();
    return nb::make_tuple(arrayOf(std::get<std::vector<double>>(result.atSource.values())),
                          arrayOf(std::move(result.left)));
}

nb::tuple matrix(const Map& map, bool toGaussPoints, bool fromGaussPoints, bool hasReducedRule,
                 bool resolvesPropagation)
{
    SparseMatrix matrix = [&]
    {
        const nb::gil_scoped_release noGil;
        return map.matrix({.target = locationOf(toGaussPoints),
                           .source = locationOf(fromGaussPoints),
                           .sourceRule = hasReducedRule ? GaussPointRule::reduced : GaussPointRule::full,
                           .resolvesPropagation = resolvesPropagation});
    }();
    return nb::make_tuple(arrayOf(std::move(matrix.values)), arrayOf(std::move(matrix.columns)),
                          arrayOf(std::move(matrix.rowStarts)), matrix.rowCount, matrix.columnCount);
}

nb::tuple places(const Map& map, bool isAtGaussPoints)
{
    Places places = [&]
    {
        const nb::gil_scoped_release noGil;
        return map.places(locationOf(isAtGaussPoints));
    }();
    const std::size_t count = places.findings.size();
    return nb::make_tuple(arrayOf(std::move(places.findings), {count}, static_cast<std::uint8_t*>(nullptr)),
                          arrayOf(std::move(places.elements)),
                          arrayOf(std::move(places.referenceCoordinates), {count, 3}, static_cast<float*>(nullptr)),
                          arrayOf(std::move(places.distances)));
}

nb::dict statistics(const Map& map)
{
    const TransferStatistics& figures = map.statistics();
    const auto counts = [](const std::optional<OutsideCounts>& outside)
    { return outside ? nb::object(nb::make_tuple(outside->near, outside->far)) : nb::none(); };
    nb::dict dict;
    dict["bucket_count"] = figures.bucketCount;
    dict["used_bucket_count"] = figures.usedBucketCount;
    dict["mean_elements_per_used_bucket"] = figures.meanElementsPerUsedBucket;
    dict["interpolated_point_count"] = figures.interpolatedPointCount;
    dict["mean_iterations"] = figures.meanIterations;
    dict["nodes_near_and_far"] = counts(figures.nodes);
    dict["gauss_points_near_and_far"] = counts(figures.gaussPoints);
    dict["unconverged_point_count"] = figures.unconvergedPointCount;
    dict["singular_element_count"] = figures.singularElementCount;
    dict["origin"] = nb::make_tuple(figures.origin[0], figures.origin[1], figures.origin[2]);
    return dict;
}

nb::bytes bytesOf(const Map& map)
{
    const std::vector<std::byte> bytes = [&]
    {
        const nb::gil_scoped_release noGil;
        return map.bytes();
    }();
    return nb::bytes(bytes.data(), bytes.size());
}

Map fromBytes(const nb::bytes& bytes)
{
    const std::span content(static_cast<const std::byte*>(bytes.data()), bytes.size());
    const nb::gil_scoped_release noGil;
    return Map::fromBytes(content);
}

// A map that disregards materials was built from models without their numbers.
bool isFrom(const Map& map, const CellMesh& source)
{
    return map.isFrom(source.mesh) || map.isFrom(Unnumbered(source.mesh).model());
}

template <class Target> bool isTo(const Map& map, const Target& target)
{
    return map.isTo(modelOf(target)) || map.isTo(Unnumbered(modelOf(target)).model());
}

template <class Number> void bindApply(nb::class_<Map>& map)
{
    map.def("apply", &apply<Number>, nb::arg("values").noconvert(), nb::arg("out").noconvert(), nb::arg("way"));
    map.def("apply_transposed", &applyTransposed<Number>, nb::arg("values").noconvert(), nb::arg("component_count"),
            nb::arg("at_gauss_points"));
}

template <class Target> void bindMakeMap(nb::module_& module)
{
    module.def("make_map", &makeMap<Target>, nb::arg("source"), nb::arg("target"), nb::arg("task"), nb::arg("settings"),
               nb::arg("progress").none());
}

} // namespace

void bindSettings(nb::module_& module)
{
    nb::class_<Settings>(module, "Settings")
        .def(nb::init<>())
        .def_rw("as_exported", &Settings::isAsExported)
        .def_rw("points_may_be_near", &Settings::pointsMayBeNear)
        .def_rw("near_limit", &Settings::nearLimit)
        .def_rw("in_double_precision", &Settings::inDoublePrecision)
        .def_rw("tolerance", &Settings::tolerance)
        .def_rw("bucket_factor", &Settings::bucketFactor)
        .def_rw("max_buckets", &Settings::maxBuckets)
        .def_rw("threads", &Settings::threads);
    nb::class_<Task>(module, "Task")
        .def(nb::init<>())
        .def_rw("mode", &Task::mode)
        .def_rw("selection", &Task::selection)
        .def_rw("to_nodes", &Task::toNodes)
        .def_rw("to_gauss_points", &Task::toGaussPoints)
        .def_rw("from_gauss_points", &Task::fromGaussPoints)
        .def_rw("uses_materials", &Task::usesMaterials)
        .def_rw("takes_checksums", &Task::takesChecksums);
    nb::class_<Way>(module, "Way")
        .def(nb::init<>())
        .def_rw("component_count", &Way::componentCount)
        .def_rw("from_gauss_points", &Way::fromGaussPoints)
        .def_rw("to_gauss_points", &Way::toGaussPoints)
        .def_rw("default_value", &Way::defaultValue)
        .def_rw("fills_first", &Way::fillsFirst)
        .def_rw("threads", &Way::threads);
}

void bindMap(nb::module_& module)
{
    nb::class_<Map> map(module, "Map");
    map.def_prop_ro("source_node_count", &Map::sourceNodeCount)
        .def_prop_ro(
            "source_gauss_point_counts", [](const Map& self)
            { return std::pair(self.sourceGaussPointCount(), self.sourceGaussPointCount(GaussPointRule::reduced)); })
        .def("location_count",
             [](const Map& self, bool isAtGaussPoints) { return self.locationCount(locationOf(isAtGaussPoints)); })
        .def_prop_ro("mode", [](const Map& self) { return static_cast<int>(self.mode()); })
        .def_prop_ro("has_unreached_nodes", &Map::hasUnreachedNodes)
        .def("singular_elements", [](const Map& self) { return arrayOf(self.singularElements()); })
        .def("statistics", &statistics)
        .def("places", &places)
        .def("matrix", &matrix)
        .def("save", &Map::save, nb::call_guard<nb::gil_scoped_release>())
        .def_static("load", &Map::load, nb::call_guard<nb::gil_scoped_release>())
        .def("to_bytes", &bytesOf)
        .def_static("from_bytes", &fromBytes)
        .def("is_from", &isFrom, nb::call_guard<nb::gil_scoped_release>())
        .def("is_to", &isTo<CellMesh>, nb::call_guard<nb::gil_scoped_release>())
        .def("is_to", &isTo<PointCloud>, nb::call_guard<nb::gil_scoped_release>());
    bindApply<float>(map);
    bindApply<double>(map);
    bindMakeMap<CellMesh>(module);
    bindMakeMap<PointCloud>(module);
}

} // namespace veltrane
