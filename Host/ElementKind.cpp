#include "ElementKind.h"

#include "Elements/ElementKinds.h"

#include <algorithm>
#include <array>
#include <cstddef>

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

constexpr auto& infos = ElementKinds::Into<Infos>::values;

/// By type code.
constexpr auto infoPerCode = []
{
    constexpr auto last = std::ranges::max(infos, {}, &ElementKindInfo::kind).kind;
    std::array<const ElementKindInfo*, static_cast<std::size_t>(last) + 1> table{};
    for (const ElementKindInfo& info : infos)
    {
        table[static_cast<std::size_t>(info.kind)] = &info;
    }
    return table;
}();

} // namespace

constinit const std::span<const ElementKindInfo> elementKinds = infos;

const ElementKindInfo* findElementKind(ElementKind kind)
{
    const auto code = static_cast<std::size_t>(kind); // beyond the table if it is negative
    return code < infoPerCode.size() ? infoPerCode[code] : nullptr;
}

} // namespace veltrane
