/// The kinds of elements that transfers work on.
#ifndef VELTRANE_HOST_ELEMENT_KIND_H
#define VELTRANE_HOST_ELEMENT_KIND_H

#include <span>
#include <string_view>

namespace veltrane
{

/// An element kind; its value is the library's type code.
enum class ElementKind : int
{
    hexahedron = 1,
    tetrahedron = 2,
    wedge = 3,
    quadrilateral = 6,
    triangle = 7,
    quadraticTetrahedron = 10,
    pyramid = 12
};

/// What the host side knows about an element kind.
struct ElementKindInfo
{
    ElementKind kind;
    int nodeCount;
    int gaussPointCount;
    bool isVolume; ///< only volume elements can be a source and carry Gauss-point fields
    std::string_view name;
    std::string_view plural;
};

/// All kinds.
extern const std::span<const ElementKindInfo> elementKinds;

/// Null if there is no such kind, as when a code was cast to ElementKind unseen.
const ElementKindInfo* findElementKind(ElementKind kind);

} // namespace veltrane

#endif
