/// The Gauss points of the element kinds.
#ifndef VELTRANE_HOST_GAUSS_POINTS_H
#define VELTRANE_HOST_GAUSS_POINTS_H

#include "Field.h"
#include "Mesh.h"

#include <array>
#include <span>
#include <vector>

namespace veltrane
{

/// The Gauss points of a kind in the library's order; they are those of common integration rules.
struct GaussRule
{
    std::vector<std::vector<double>> shapeValues; ///< per Gauss point, of each node in the kind's node order
    /// Their derivatives by the reference coordinates.
    std::vector<std::vector<std::array<double, 3>>> shapeGradients;
    std::vector<double> weights; ///< of the integration over the reference element
};

/// Empty for kinds that are no volumes.
GaussRule gaussRuleOf(ElementKind kind, GaussPointRule rule = GaussPointRule::full);

/// The rule by which fields on a mesh are, as their numbers of rows tell; the mesh's own where they do not tell
/// another.
GaussPointRule gaussPointRuleOf(std::span<const Field> fields, const Mesh& mesh);

} // namespace veltrane

#endif
