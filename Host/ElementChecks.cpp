#include "ElementChecks.h"

#include "Errors.h"
#include "Text.h"

#include <array>
#include <cstddef>
#include <span>

namespace veltrane
{
namespace
{

using Derivatives = std::array<float, 3>; // of one node's shape function, by the reference coordinates

// The derivatives of the shape functions at the starting points of the search: (0, 0, 0) in the hexahedron,
// (1/3, 1/3, 0) in the wedge, (0, 0, 0.2) in the pyramid and (1/4, 1/4, 1/4) in the tetrahedra.
constexpr float e = 0.125F;
constexpr std::array<Derivatives, 8> inHexahedron{
    {{-e, -e, -e}, {e, -e, -e}, {e, e, -e}, {-e, e, -e}, {-e, -e, e}, {e, -e, e}, {e, e, e}, {-e, e, e}}};

constexpr std::array<Derivatives, 4> inTetrahedron{{{-1, -1, -1}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};

constexpr float third = 1.0F / 3.0F;
constexpr float half = 0.5F;
constexpr float sixth = static_cast<float>(0.5 * third);
constexpr float rest = static_cast<float>(0.5 * (1.0 - third - third)); // not the same float as a sixth
constexpr std::array<Derivatives, 6> inWedge{{{-half, -half, -rest},
                                              {half, 0, -sixth},
                                              {0, half, -sixth},
                                              {-half, -half, rest},
                                              {half, 0, sixth},
                                              {0, half, sixth}}};

constexpr std::array<Derivatives, 10> inQuadraticTetrahedron{{{0, 0, 0},
                                                              {0, 0, 0},
                                                              {0, 0, 0},
                                                              {0, 0, 0},
                                                              {1, 1, 0},
                                                              {-1, 0, -1},
                                                              {0, -1, -1},
                                                              {1, 0, 1},
                                                              {0, 1, 1},
                                                              {-1, -1, 0}}};

constexpr float q = 0.25F;
constexpr std::array<Derivatives, 5> inPyramid{{{-q, -q, -q}, {q, -q, -q}, {q, q, -q}, {-q, q, -q}, {0, 0, 1}}};

std::span<const Derivatives> derivativesAtStart(ElementKind kind)
{
    switch (kind)
    {
    case ElementKind::hexahedron: return inHexahedron;
    case ElementKind::tetrahedron: return inTetrahedron;
    case ElementKind::wedge: return inWedge;
    case ElementKind::quadraticTetrahedron: return inQuadraticTetrahedron;
    case ElementKind::pyramid: return inPyramid;
    case ElementKind::triangle:
    case ElementKind::quadrilateral: break;
    }
    return {};
}

/// The determinant as the library computes it, in single precision and in this order: it takes exactly 0 for singular
/// and nothing else.
float jacobianDeterminantAtStart(const Mesh& mesh, int element)
{
    float jacobian[3][3] = {};
    const std::span<const int> nodes = mesh.nodesOf(element);
    const std::span<const Derivatives> derivatives = derivativesAtStart(mesh.kindOf(element).kind);
    for (std::size_t node = 0; node < nodes.size(); ++node)
    {
        const std::span<const float, 3> position = mesh.nodePosition(nodes[node]);
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

std::optional<int> findFlatElement(const Mesh& mesh)
{
    for (int element = 0; element < mesh.elementCount(); ++element)
    {
        if (mesh.kindOf(element).isVolume && jacobianDeterminantAtStart(mesh, element) == 0.0F)
        {
            return element;
        }
    }
    return std::nullopt;
}

std::vector<int> findInvertedElements(const Mesh& mesh)
{
    std::vector<int> inverted;
    for (int element = 0; element < mesh.elementCount(); ++element)
    {
        if (mesh.kindOf(element).isVolume && jacobianDeterminantAtStart(mesh, element) < 0.0F)
        {
            inverted.push_back(element);
        }
    }
    return inverted;
}

void checkSourceElements(const Mesh& source)
{
    checkSourceKinds(source);
    if (const std::optional<int> element = findFlatElement(source))
    {
        throw InvalidData(text("source element ", *element, ", a ", source.kindOf(*element).name,
                               ", has no volume in single precision: its Jacobian is singular"));
    }
}

} // namespace veltrane
