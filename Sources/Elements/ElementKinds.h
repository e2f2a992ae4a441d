/// The element kinds. A new kind is a header beside this one and a line in the list; the compiler names what the header
/// lacks.
#ifndef VELTRANE_ELEMENT_KINDS_H
#define VELTRANE_ELEMENT_KINDS_H

#include "ElementKindList.h"
#include "LinearHexahedron.h"
#include "LinearPyramid.h"
#include "LinearQuadrilateral.h"
#include "LinearTetrahedron.h"
#include "LinearTriangle.h"
#include "LinearWedge.h"
#include "QuadraticTetrahedron.h"

using ElementKinds = ElementKindList<LinearHexahedron,     //
                                     LinearTetrahedron,    //
                                     LinearWedge,          //
                                     LinearQuadrilateral,  //
                                     LinearTriangle,       //
                                     QuadraticTetrahedron, //
                                     LinearPyramid>;

/// Those that have shape functions.
using VolumeElementKinds = VolumesOf<ElementKinds>;

/// Most nodes and Gauss points of any type code, of those without shape functions too.
inline constexpr int maxNbNodes = 12;
inline constexpr int maxNbGaussPoints = 8;

/// Calls visit(Kind{}) with the kind of a type code; false, and no call, if the code has no shape functions.
template <class Visitor> constexpr bool visitElementKind(int typeCode, Visitor&& visitor)
{
    return VolumeElementKinds::visit(typeCode, visitor);
}

/// Whether fields can be interpolated in elements of this type.
constexpr bool hasShapeFunctions(int typeCode)
{
    return visitElementKind(typeCode, [](auto) {});
}

#endif
