#include "Arguments.h"
#include "Bindings.h"
#include "CellMesh.h"
#include "Unnumbered.h"

#include "Validation.h"

#include <nanobind/stl/vector.h>

#include <cmath>
#include <utility>
#include <variant>
#include <vector>

namespace veltrane
{
namespace
{

/// What is validated, apart from the meshes and the values.
struct ValidationTask
{
    int componentCount = 1;
    bool fromGaussPoints = false;
    bool toGaussPoints = false;
    std::vector<bool> selection{}; ///< per target material
    bool usesMaterials = true;
    int threads = 1;
};

Validation validationOf(const Map& map, const Mesh& source, const Mesh& target, const Field& field,
                        const ValidationTask& task)
{
    ValidationOptions options;
    options.apply.targetLocations = {task.toGaussPoints ? Location::gaussPoints : Location::nodes};
    options.targetMapping = task.selection;
    options.threads = task.threads;
    return map.validate(source, target, std::span(&field, 1), options);
}

nb::dict coverageOf(const Coverage& coverage)
{
    nb::dict dict;
    dict["nodes"] = coverage.nodes;
    dict["mapped_nodes"] = coverage.mappedNodes;
    dict["near_nodes"] = coverage.nearNodes;
    dict["mean_near_distance"] = coverage.meanNearDistance;
    dict["largest_near_distance"] = coverage.largestNearDistance;
    dict["cells"] = coverage.elements;
    dict["mapped_cells"] = coverage.mappedElements;
    dict["volume"] = coverage.volume;
    dict["mapped_volume"] = coverage.mappedVolume;
    return dict;
}

/// Numbers of one side: in all, or of each material one after another.
std::vector<double> perMaterial(const FieldIntegrals& integrals)
{
    std::vector<double> numbers;
    for (const FieldIntegral& material : integrals.materials)
    {
        numbers.insert(numbers.end(), material.components.begin(), material.components.end());
    }
    return numbers;
}

template <class Number>
nb::dict validate(const Map& map, const CellMesh& source, const CellMesh& target, const ArrayIn<Number>& values,
                  const ValidationTask& task)
{
    const std::span<const Number> numbers = spanOf(values);
    Validation validation = [&]
    {
        const nb::gil_scoped_release noGil;
        const Field field("values", task.fromGaussPoints ? Location::gaussPoints : Location::nodes, task.componentCount,
                          std::vector<Number>(numbers.begin(), numbers.end()));
        return task.usesMaterials
                   ? validationOf(map, source.mesh, target.mesh, field, task)
                   : validationOf(map, Unnumbered(source.mesh).model(), Unnumbered(target.mesh).model(), field, task);
    }();
    FieldRoundTrip& field = validation.fields.front();
    nb::dict dict;
    dict["returned"] = std::visit([](const auto& returned)
                                  { return nb::cast(arrayOf(std::vector<Number>(returned.begin(), returned.end()))); },
                                  field.returned.values());
    dict["difference"] = field.comparison.relativeDifference;
    dict["largest"] = field.comparison.largestDifference;
    dict["largest_at"] = field.comparison.largestDifferenceNode;
    dict["compared"] = field.comparison.comparedNodeCount;
    dict["source"] = coverageOf(validation.source);
    dict["target"] = coverageOf(validation.target);
    dict["source_integral"] = arrayOf(std::vector<double>(field.atSource.all.components));
    dict["target_integral"] = arrayOf(std::vector<double>(field.atTarget.all.components));
    dict["source_integral_per_material"] = arrayOf(perMaterial(field.atSource));
    dict["target_integral_per_material"] = arrayOf(perMaterial(field.atTarget));
    dict["integral_difference"] = field.integralDifference();
    return dict;
}

template <class Number> void bindValidate(nb::module_& module)
{
    module.def("validate", &validate<Number>, nb::arg("map"), nb::arg("source"), nb::arg("target"),
               nb::arg("values").noconvert(), nb::arg("task"));
}

} // namespace

void bindValidation(nb::module_& module)
{
    nb::class_<ValidationTask>(module, "ValidationTask")
        .def(nb::init<>())
        .def_rw("component_count", &ValidationTask::componentCount)
        .def_rw("from_gauss_points", &ValidationTask::fromGaussPoints)
        .def_rw("to_gauss_points", &ValidationTask::toGaussPoints)
        .def_rw("selection", &ValidationTask::selection)
        .def_rw("uses_materials", &ValidationTask::usesMaterials)
        .def_rw("threads", &ValidationTask::threads);
    bindValidate<float>(module);
    bindValidate<double>(module);
}

} // namespace veltrane
