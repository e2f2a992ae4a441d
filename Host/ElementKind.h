/// The kinds of elements that transfers work on.
#ifndef VELTRANE_HOST_ELEMENT_KIND_H
#define VELTRANE_HOST_ELEMENT_KIND_H

#include <array>
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

inline constexpr std::array<ElementKindInfo, 7> elementKinds{{
    {ElementKind::hexahedron, 8, 8, true, "hexahedron", "hexahedra"},
    {ElementKind::tetrahedron, 4, 1, true, "tetrahedron", "tetrahedra"},
    {ElementKind::wedge, 6, 6, true, "wedge", "wedges"},
    {ElementKind::quadrilateral, 4, 4, false, "quadrilateral", "quadrilaterals"},
    {ElementKind::triangle, 3, 3, false, "triangle", "triangles"},
    {ElementKind::quadraticTetrahedron, 10, 5, true, "quadratic tetrahedron", "quadratic tetrahedra"},
    {ElementKind::pyramid, 5, 8, true, "pyramid", "pyramids"},
}};

/// Null if there is no such kind, as when a code was cast to ElementKind unseen.
constexpr const ElementKindInfo* findElementKind(ElementKind kind)
{
    for (const ElementKindInfo& info : elementKinds)
    {
        if (info.kind == kind)
        {
            return &info;
        }
    }
    return nullptr;
}

} // namespace veltrane

#endif
