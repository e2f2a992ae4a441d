/// The kinds of elements that transfers work on.
#ifndef VELTRANE_HOST_ELEMENT_KIND_H
#define VELTRANE_HOST_ELEMENT_KIND_H

#include <span>
#include <string_view>

namespace veltrane
{

/// An element kind. Values up to 14 are the type codes of the exported functions, which do not know the others: these
/// are 100 and the number of nodes.
enum class ElementKind : int
{
    hexahedron = 1,
    tetrahedron = 2,
    wedge = 3,
    quadrilateral = 6,
    triangle = 7,
    quadraticTetrahedron = 10,
    pyramid = 12,
    quadraticPyramid = 113,
    quadraticWedge = 115,
    biquadraticWedge = 118,
    quadraticHexahedron = 120,
    triquadraticHexahedron = 127
};

/// Which Gauss points hexahedra of 20 and 27 nodes have. All other kinds have one set of them.
enum class GaussPointRule : int
{
    full = 0,   ///< 27
    reduced = 1 ///< 8
};

/// What the host side knows about an element kind.
struct ElementKindInfo
{
    ElementKind kind;
    int nodeCount;
    int gaussPointCount; ///< of the full rule
    int reducedGaussPointCount;
    bool isVolume; ///< only volume elements can be a source and carry Gauss-point fields
    std::string_view name;
    std::string_view plural;

    int gaussPointCountOf(GaussPointRule rule) const
    {
        return rule == GaussPointRule::full ? gaussPointCount : reducedGaussPointCount;
    }
};

/// All kinds.
extern const std::span<const ElementKindInfo> elementKinds;

/// Null if there is no such kind, as when a code was cast to ElementKind unseen.
const ElementKindInfo* findElementKind(ElementKind kind);

} // namespace veltrane

#endif
