#include "ElementKind.h"

#include "Elements/ElementKinds.h"

#include <algorithm>
#include <array>

namespace veltrane
{
namespace
{

/// Whether the enumeration has a name for this number: compilers write a number without one as a cast.
template <ElementKind kind> consteval bool hasName()
{
    return std::string_view(__PRETTY_FUNCTION__).find("(veltrane::ElementKind)") == std::string_view::npos;
}

template <class Kind> constexpr ElementKindInfo infoOf()
{
    constexpr auto kind = static_cast<ElementKind>(Kind::typeCode);
    static_assert(hasName<kind>(), "an element kind that the enumeration ElementKind does not have");
    return {kind,
            Kind::nbNodes,
            nbGaussPointsOfKind(Kind::typeCode),
            nbGaussPointsOfKind(Kind::typeCode, GaussRuleChoice::reduced),
            Kind::dimension == 3,
            Kind::name,
            Kind::plural};
}

template <class... Kinds> struct Infos
{
    static constexpr std::array<ElementKindInfo, sizeof...(Kinds)> values{infoOf<Kinds>()...};
};

} // namespace

constinit const std::span<const ElementKindInfo> elementKinds = ElementKinds::Into<Infos>::values;

const ElementKindInfo* findElementKind(ElementKind kind)
{
    const auto found = std::ranges::find(elementKinds, kind, &ElementKindInfo::kind);
    return found == elementKinds.end() ? nullptr : &*found;
}

} // namespace veltrane
