#include "Arguments.h"
#include "Bindings.h"
#include "CellMesh.h"
#include "Unnumbered.h"

#include "Match.h"

#include <nanobind/stl/vector.h>

#include <utility>
#include <vector>

namespace veltrane
{
namespace
{

MatchOptions optionsOf(std::vector<bool> selection, const Settings& settings, nb::handle progress)
{
    return {.targetMapping = std::move(selection),
            .tuning = tuningOf(settings),
            .rules = rulesOf(settings),
            .threads = settings.threads,
            .progress = progressTo(progress)};
}

template <class Matching>
auto match(const Matching& matching, const CellMesh& source, const CellMesh& target, bool usesMaterials,
           const MatchOptions& options)
{
    const nb::gil_scoped_release noGil;
    return usesMaterials ? matching(source.mesh, target.mesh, options)
                         : matching(Unnumbered(source.mesh).model(), Unnumbered(target.mesh).model(), options);
}

ArrayOut<int> nodes(const CellMesh& source, const CellMesh& target, bool usesMaterials, std::vector<bool> selection,
                    const Settings& settings, nb::handle progress)
{
    NodeMatch result =
        match(matchNodes, source, target, usesMaterials, optionsOf(std::move(selection), settings, progress));
    return arrayOf(std::move(result.sourceNodes));
}

nb::tuple gaussPoints(const CellMesh& source, const CellMesh& target, bool usesMaterials, std::vector<bool> selection,
                      const Settings& settings, nb::handle progress)
{
    GaussPointMatch result =
        match(matchGaussPoints, source, target, usesMaterials, optionsOf(std::move(selection), settings, progress));
    return nb::make_tuple(arrayOf(std::move(result.sourceElements)), arrayOf(std::move(result.sourceGaussPoints)));
}

void bindMatching(nb::module_& module, const char* name, auto matching)
{
    module.def(name, matching, nb::arg("source"), nb::arg("target"), nb::arg("uses_materials"), nb::arg("selection"),
               nb::arg("settings"), nb::arg("progress").none());
}

} // namespace

void bindMatch(nb::module_& module)
{
    bindMatching(module, "match_nodes", &nodes);
    bindMatching(module, "match_gauss_points", &gaussPoints);
}

} // namespace veltrane
