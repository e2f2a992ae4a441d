/// A list of types that are element kinds, and what can be done with all of them or with one that is told by its code.
#ifndef VELTRANE_ELEMENT_KIND_LIST_H
#define VELTRANE_ELEMENT_KIND_LIST_H

#include "ElementConcepts.h"

#include <tuple>
#include <type_traits>

template <class... Kinds> struct ElementKindList
{
    static_assert((AnyElementKind<Kinds> && ...), "an element kind lacks what every kind has");
    static_assert(((VolumeElementKind<Kinds> || SurfaceElementKind<Kinds>)&&...),
                  "an element kind of three dimensions lacks what volumes have");
    static_assert((hasItsNodes<Kinds>() && ...), "an element kind whose shape functions belong to other nodes");

    static constexpr std::size_t size = sizeof...(Kinds);

    /// Calls visitor(Kind{}) with the kind of a type code; false, and no call, if the list has no such kind.
    template <class Visitor> static constexpr bool visit(int typeCode, Visitor&& visitor)
    {
        return ((Kinds::typeCode == typeCode && (static_cast<void>(visitor(Kinds{})), true)) || ...);
    }

    /// Calls visitor(Kind{}) with every kind, in the order of the list.
    template <class Visitor> static constexpr void visitAll(Visitor&& visitor) { (visitor(Kinds{}), ...); }

    /// This list and others behind it.
    template <class... Others> using And = ElementKindList<Kinds..., Others...>;

    /// Template<Kinds...>.
    template <template <class...> class Template> using Into = Template<Kinds...>;
};

namespace kinds
{
template <class... Kinds>
using VolumesAmong =
    decltype(std::tuple_cat(std::conditional_t<Kinds::dimension == 3, std::tuple<Kinds>, std::tuple<>>{}...));

template <class... Kinds> ElementKindList<Kinds...> listOf(std::tuple<Kinds...>);
} // namespace kinds

/// Those kinds of a list that are volumes, as a list.
template <class List> using VolumesOf = decltype(kinds::listOf(typename List::template Into<kinds::VolumesAmong>{}));

#endif
