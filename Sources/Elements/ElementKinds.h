/// The element kinds. A new kind is a header beside this one and a line in a list; the compiler names what the header
/// lacks.
#ifndef VELTRANE_ELEMENT_KINDS_H
#define VELTRANE_ELEMENT_KINDS_H

#include "BiquadraticWedge.h"
#include "ElementKindList.h"
#include "LinearHexahedron.h"
#include "LinearPyramid.h"
#include "LinearQuadrilateral.h"
#include "LinearTetrahedron.h"
#include "LinearTriangle.h"
#include "LinearWedge.h"
#include "QuadraticHexahedron.h"
#include "QuadraticPyramid.h"
#include "QuadraticTetrahedron.h"
#include "QuadraticWedge.h"
#include "TriquadraticHexahedron.h"

/// Those that the exported functions know: their numbers are type codes.
using TypeCodeKinds = ElementKindList<LinearHexahedron,     //
                                      LinearTetrahedron,    //
                                      LinearWedge,          //
                                      LinearQuadrilateral,  //
                                      LinearTriangle,       //
                                      QuadraticTetrahedron, //
                                      LinearPyramid>;

/// All, those that the exported functions refuse included: their numbers are 100 and that of their nodes.
using ElementKinds = TypeCodeKinds::And<QuadraticHexahedron,    //
                                        TriquadraticHexahedron, //
                                        QuadraticWedge,         //
                                        BiquadraticWedge,       //
                                        QuadraticPyramid>;

/// Those that have shape functions.
using VolumeElementKinds = VolumesOf<ElementKinds>;

/// One more than the highest number of a kind.
inline constexpr int endOfKindNumbers = 128;

/// Most nodes and Gauss points of any kind.
inline constexpr int maxNbNodes = 27;
inline constexpr int maxNbGaussPoints = 27;

/// Which of its integration rules an element uses, where it has two.
enum class GaussRuleChoice : unsigned char
{
    full,
    reduced
};

template <class Kind>
concept HasReducedRule = requires
{
    Kind::reducedGaussRule;
};

/// The rule of a kind, a GaussRule of as many points as it has.
template <class Kind, GaussRuleChoice choice> constexpr const auto& gaussRuleOfKind()
{
    if constexpr (choice == GaussRuleChoice::reduced && HasReducedRule<Kind>)
    {
        return Kind::reducedGaussRule;
    }
    else
    {
        return Kind::gaussRule;
    }
}

/// A point of the chosen rule of a kind.
template <class Kind> constexpr const ReferencePoint& gaussPointOf(GaussRuleChoice choice, int gaussPoint)
{
    const auto i = static_cast<std::size_t>(gaussPoint);
    return choice == GaussRuleChoice::reduced ? gaussRuleOfKind<Kind, GaussRuleChoice::reduced>().points[i]
                                              : gaussRuleOfKind<Kind, GaussRuleChoice::full>().points[i];
}

/// Calls visit(Kind{}) with the kind of a number; false, and no call, if it has no shape functions.
template <class Visitor> constexpr bool visitElementKind(int typeCode, Visitor&& visitor)
{
    return VolumeElementKinds::visit(typeCode, visitor);
}

/// Whether fields can be interpolated in elements of this kind.
constexpr bool hasShapeFunctions(int typeCode)
{
    return visitElementKind(typeCode, [](auto) {});
}

namespace kinds
{
/// What is said of a kind by its number.
struct Counts
{
    unsigned char nbNodes = 0;
    unsigned char nbGaussPoints = 0;
    unsigned char nbReducedGaussPoints = 0;
    unsigned char volume = 0; ///< its position among the volumes
};

inline constexpr auto counts = []
{
    std::array<Counts, endOfKindNumbers> table{};
    ElementKinds::visitAll(
        [&]<class Kind>(Kind)
        {
            Counts& entry = table[Kind::typeCode];
            entry.nbNodes = Kind::nbNodes;
            entry.nbGaussPoints = Kind::nbGaussPoints;
            entry.nbReducedGaussPoints = Kind::nbGaussPoints;
            if constexpr (HasReducedRule<Kind>)
            {
                entry.nbReducedGaussPoints = static_cast<unsigned char>(Kind::reducedGaussRule.points.size());
            }
        });
    unsigned char volume = 0;
    VolumeElementKinds::visitAll([&]<class Kind>(Kind) { table[Kind::typeCode].volume = volume++; });
    return table;
}();

constexpr const Counts& countsOf(int typeCode)
{
    const bool isInTable = typeCode >= 0 && typeCode < endOfKindNumbers;
    return counts[isInTable ? static_cast<std::size_t>(typeCode) : 0];
}
} // namespace kinds

/// Nodes of a kind by its number; 0 if there is none.
constexpr int nbNodesOfKind(int typeCode)
{
    return kinds::countsOf(typeCode).nbNodes;
}

/// Gauss points of a kind by its number; 0 if there is none.
constexpr int nbGaussPointsOfKind(int typeCode, GaussRuleChoice rule = GaussRuleChoice::full)
{
    const kinds::Counts& counts = kinds::countsOf(typeCode);
    return rule == GaussRuleChoice::full ? counts.nbGaussPoints : counts.nbReducedGaussPoints;
}

/// The position of a kind among the volumes, for tables with an entry for each.
constexpr std::size_t volumeIndexOf(int typeCode)
{
    return kinds::countsOf(typeCode).volume;
}

#endif
