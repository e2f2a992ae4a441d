#include "ElementChecks.h"

#include "CommonOrigin.h"
#include "Errors.h"
#include "Text.h"

#include "Elements/ElementKinds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <span>

namespace veltrane
{
namespace
{

using Derivatives = std::array<float, 3>; // of one node's shape function, by the reference coordinates

/// Those of a kind at the starting point of the search.
template <class Kind> constexpr auto derivativesAtGuess = derivativesAt<Kind>(Kind::initialGuess);

std::span<const Derivatives> derivativesAtStart(ElementKind kind)
{
    std::span<const Derivatives> derivatives;
    visitElementKind(static_cast<int>(kind), [&]<class Kind>(Kind) { derivatives = derivativesAtGuess<Kind>; });
    return derivatives;
}

using ExactDerivatives = std::array<double, 3>;

/// Those of a kind at its corners, corner after corner.
template <class Kind>
constexpr auto derivativesAtCorners = []
{
    std::array<ExactDerivatives, Kind::nbCorners * Kind::nbNodes> result{};
    for (std::size_t corner = 0; corner < Kind::nbCorners; ++corner)
    {
        const auto& [xi, eta, zeta] = Kind::nodes[corner];
        const auto derivatives = derivativesAt<Kind>(ReferencePoint{xi, eta, zeta});
        std::ranges::copy(derivatives, result.begin() + corner * Kind::nbNodes);
    }
    return result;
}();

std::span<const ExactDerivatives> allDerivativesAtCorners(ElementKind kind)
{
    std::span<const ExactDerivatives> derivatives;
    visitElementKind(static_cast<int>(kind), [&]<class Kind>(Kind) { derivatives = derivativesAtCorners<Kind>; });
    return derivatives;
}

double length(const std::array<double, 3>& v)
{
    return std::hypot(v[0], v[1], v[2]);
}

/// Whether the three directions in which reference coordinates grow form a left-handed system, by more than rounding.
bool isLeftHanded(const std::array<std::array<double, 3>, 3>& d)
{
    constexpr double rounding = 1e-6;
    const double determinant = d[0][0] * (d[1][1] * d[2][2] - d[1][2] * d[2][1]) -
                               d[0][1] * (d[1][0] * d[2][2] - d[1][2] * d[2][0]) +
                               d[0][2] * (d[1][0] * d[2][1] - d[1][1] * d[2][0]);
    return determinant < -rounding * length(d[0]) * length(d[1]) * length(d[2]);
}

bool isInsideOutAtACorner(const Mesh& mesh, const PositionsInMesh& positions, int element)
{
    const std::span<const int> nodes = mesh.nodesOf(element);
    auto derivatives = allDerivativesAtCorners(mesh.kindOf(element).kind);
    for (; !derivatives.empty(); derivatives = derivatives.subspan(nodes.size()))
    {
        std::array<std::array<double, 3>, 3> directions{};
        for (std::size_t node = 0; node < nodes.size(); ++node)
        {
            const std::span<const float, 3> position = positions[nodes[node]];
            for (std::size_t i = 0; i < 3; ++i)
            {
                for (std::size_t axis = 0; axis < 3; ++axis)
                {
                    directions[i][axis] += derivatives[node][i] * double{position[axis]};
                }
            }
        }
        if (isLeftHanded(directions))
        {
            return true;
        }
    }
    return false;
}

/// The determinant as the library computes it, in single precision and in this order: it takes exactly 0 for singular
/// and nothing else.
float jacobianDeterminantAtStart(const Mesh& mesh, const PositionsInMesh& positions, int element)
{
    float jacobian[3][3] = {};
    const std::span<const int> nodes = mesh.nodesOf(element);
    const std::span<const Derivatives> derivatives = derivativesAtStart(mesh.kindOf(element).kind);
    for (std::size_t node = 0; node < nodes.size(); ++node)
    {
        const std::span<const float, 3> position = positions[nodes[node]];
        for (std::size_t row = 0; row < 3; ++row)
        {
            for (std::size_t column = 0; column < 3; ++column)
            {
                jacobian[row][column] += derivatives[node][column] * position[row];
            }
        }
    }
    const auto& a = jacobian;
    const float adjugate00 = a[1][1] * a[2][2] - a[1][2] * a[2][1];
    const float adjugate10 = -a[1][0] * a[2][2] + a[1][2] * a[2][0];
    const float adjugate20 = a[1][0] * a[2][1] - a[1][1] * a[2][0];
    return a[0][0] * adjugate00 + a[0][1] * adjugate10 + a[0][2] * adjugate20;
}

} // namespace

void checkVolumeElements(const Mesh& mesh, std::string_view side, std::string_view requirement,
                         std::span<const int> flags)
{
    for (int element = 0; element < mesh.elementCount(); ++element)
    {
        const ElementKindInfo& kind = mesh.kindOf(element);
        const bool isConcerned = flags.empty() || flags[static_cast<std::size_t>(mesh.materialOf(element))] == 1;
        if (isConcerned && !kind.isVolume)
        {
            throw InvalidData(text(side, " element ", element, " is a ", kind.name, "; ", requirement));
        }
    }
}

void checkSourceKinds(const Mesh& source)
{
    checkVolumeElements(source, "source", "only volume elements can be a source");
}

std::vector<int> findFlatElements(const Mesh& mesh)
{
    std::vector<int> flat;
    const PositionsInMesh positions(mesh);
    for (int element = 0; element < mesh.elementCount(); ++element)
    {
        if (mesh.kindOf(element).isVolume && jacobianDeterminantAtStart(mesh, positions, element) == 0.0F)
        {
            flat.push_back(element);
        }
    }
    return flat;
}

std::vector<int> findInvertedElements(const Mesh& mesh)
{
    std::vector<int> inverted;
    const PositionsInMesh positions(mesh);
    for (int element = 0; element < mesh.elementCount(); ++element)
    {
        if (mesh.kindOf(element).isVolume && (jacobianDeterminantAtStart(mesh, positions, element) < 0.0F ||
                                              isInsideOutAtACorner(mesh, positions, element)))
        {
            inverted.push_back(element);
        }
    }
    return inverted;
}

void checkSourceElements(const Mesh& source)
{
    checkSourceKinds(source);
    if (const std::vector<int> flat = findFlatElements(source); !flat.empty())
    {
        throw InvalidData(text("source element ", flat.front(), ", a ", source.kindOf(flat.front()).name,
                               ", has no volume in single precision: its Jacobian is singular"));
    }
}

} // namespace veltrane
