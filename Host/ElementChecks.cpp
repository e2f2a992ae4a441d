#include "ElementChecks.h"

#include "CommonOrigin.h"
#include "Errors.h"
#include "Text.h"
#include "ThreadWorkers.h"

#include "Elements/ElementKinds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

namespace veltrane
{
namespace
{

constexpr Stage stage{"checking", 0, 100};

/// What a node's shape function adds at a corner to the direction in which a reference coordinate grows.
struct Share
{
    std::size_t node;
    std::size_t direction;
    double derivative;
};

/// Those that are not 0.
template <class Kind> constexpr std::size_t shareCountAt(std::size_t corner)
{
    const auto& [xi, eta, zeta] = Kind::nodes[corner];
    std::size_t count = 0;
    for (const auto& derivatives : derivativesAt<Kind>(ReferencePoint{xi, eta, zeta}))
    {
        count += static_cast<std::size_t>(std::ranges::count_if(derivatives, [](auto value) { return value != 0; }));
    }
    return count;
}

template <class Kind, std::size_t corner>
constexpr auto sharesAt = []
{
    std::array<Share, shareCountAt<Kind>(corner)> shares{};
    const auto& [xi, eta, zeta] = Kind::nodes[corner];
    const auto derivatives = derivativesAt<Kind>(ReferencePoint{xi, eta, zeta});
    std::size_t count = 0;
    for (std::size_t node = 0; node < derivatives.size(); ++node)
    {
        for (std::size_t direction = 0; direction < 3; ++direction)
        {
            if (derivatives[node][direction] != 0)
            {
                shares[count++] = {node, direction, double{derivatives[node][direction]}};
            }
        }
    }
    return shares;
}();

/// Whether the derivatives are the same at all corners.
template <class Kind>
constexpr bool isJacobianConstant = []
{
    const auto& first = Kind::nodes[0];
    return std::ranges::all_of(Kind::nodes,
                               [&](const auto& node)
                               {
                                   return derivativesAt<Kind>(ReferencePoint{node[0], node[1], node[2]}) ==
                                          derivativesAt<Kind>(ReferencePoint{first[0], first[1], first[2]});
                               });
}();

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
    return determinant < 0 && determinant < -rounding * length(d[0]) * length(d[1]) * length(d[2]);
}

template <class Kind, std::size_t corner>
bool isInsideOutAt(const PositionsInMesh& positions, std::span<const int> nodes)
{
    std::array<std::array<double, 3>, 3> directions{};
    for (const Share& share : sharesAt<Kind, corner>)
    {
        const std::span<const float, 3> position = positions[nodes[share.node]];
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            directions[share.direction][axis] += share.derivative * double{position[axis]};
        }
    }
    return isLeftHanded(directions);
}

template <class Kind> bool isInsideOutAtACorner(const PositionsInMesh& positions, std::span<const int> nodes)
{
    constexpr std::size_t cornerCount = isJacobianConstant<Kind> ? 1 : Kind::nbCorners;
    return [&]<std::size_t... corners>(std::index_sequence<corners...>)
    {
        return (isInsideOutAt<Kind, corners>(positions, nodes) || ...);
    }
    (std::make_index_sequence<cornerCount>());
}

/// The derivatives of a kind at the starting point of the search.
template <class Kind> constexpr auto derivativesAtGuess = derivativesAt<Kind>(Kind::initialGuess);

/// The determinant as the library computes it, in single precision and in this order: it takes exactly 0 for singular
/// and nothing else.
template <class Kind> float jacobianDeterminantAtStart(const PositionsInMesh& positions, std::span<const int> nodes)
{
    float jacobian[3][3] = {};
    for (std::size_t node = 0; node < Kind::nbNodes; ++node)
    {
        const std::span<const float, 3> position = positions[nodes[node]];
        for (std::size_t row = 0; row < 3; ++row)
        {
            for (std::size_t column = 0; column < 3; ++column)
            {
                jacobian[row][column] += derivativesAtGuess<Kind>[node][column] * position[row];
            }
        }
    }
    const auto& a = jacobian;
    const float adjugate00 = a[1][1] * a[2][2] - a[1][2] * a[2][1];
    const float adjugate10 = -a[1][0] * a[2][2] + a[1][2] * a[2][0];
    const float adjugate20 = a[1][0] * a[2][1] - a[1][1] * a[2][0];
    return a[0][0] * adjugate00 + a[0][1] * adjugate10 + a[0][2] * adjugate20;
}

/// Looks at one volume element.
void findFault(const Mesh& mesh, const PositionsInMesh& positions, int element, ElementFaults& faults)
{
    const std::span<const int> nodes = mesh.nodesOf(element);
    const auto look = [&]<class Kind>(Kind)
    {
        const float determinant = jacobianDeterminantAtStart<Kind>(positions, nodes);
        if (determinant == 0.0F)
        {
            faults.flat.push_back(element);
        }
        if (determinant < 0.0F || isInsideOutAtACorner<Kind>(positions, nodes))
        {
            faults.inverted.push_back(element);
        }
    };
    visitElementKind(static_cast<int>(mesh.kinds()[static_cast<std::size_t>(element)]), look);
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

ElementFaults findElementFaults(const Mesh& mesh, int threads)
{
    ThreadWorkers workers(threads);
    const PositionsInMesh positions(mesh, threads);
    const Pieces pieces = piecesFor(workers, mesh.elementCount());
    std::vector<ElementFaults> found(static_cast<std::size_t>(pieces.count()));
    const auto lookAtPiece = [&](std::int64_t piece, int)
    {
        for (std::int64_t element = pieces.first(piece); element < pieces.end(piece); ++element)
        {
            findFault(mesh, positions, static_cast<int>(element), found[static_cast<std::size_t>(piece)]);
        }
    };
    workers.run(stage, pieces.count(), lookAtPiece);
    ElementFaults all;
    for (const ElementFaults& faults : found)
    {
        all.flat.insert(all.flat.end(), faults.flat.begin(), faults.flat.end());
        all.inverted.insert(all.inverted.end(), faults.inverted.begin(), faults.inverted.end());
    }
    return all;
}

void checkSourceElements(const Mesh& source)
{
    checkSourceKinds(source);
    if (const std::vector<int> flat = findElementFaults(source).flat; !flat.empty())
    {
        throw InvalidData(text("source element ", flat.front(), ", a ", source.kindOf(flat.front()).name,
                               ", has no volume in single precision: its Jacobian is singular"));
    }
}

} // namespace veltrane
