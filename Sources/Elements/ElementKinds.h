/// The element kinds that have shape functions. A new kind is a header beside this one and a case below.
#ifndef VELTRANE_ELEMENT_KINDS_H
#define VELTRANE_ELEMENT_KINDS_H

#include "LinearHexahedron.h"
#include "LinearPyramid.h"
#include "LinearTetrahedron.h"
#include "LinearWedge.h"
#include "QuadraticTetrahedron.h"

/// Most nodes and Gauss points of any type code, of those without shape functions too.
inline constexpr int maxNbNodes = 12;
inline constexpr int maxNbGaussPoints = 8;

/// Calls visit(Kind{}) with the kind of a type code; false, and no call, if the code has no shape functions.
template <class Visitor> constexpr bool visitElementKind(int typeCode, Visitor&& visit)
{
    switch (typeCode)
    {
    case LinearHexahedron::typeCode: visit(LinearHexahedron{}); return true;
    case LinearTetrahedron::typeCode: visit(LinearTetrahedron{}); return true;
    case LinearWedge::typeCode: visit(LinearWedge{}); return true;
    case QuadraticTetrahedron::typeCode: visit(QuadraticTetrahedron{}); return true;
    case LinearPyramid::typeCode: visit(LinearPyramid{}); return true;
    default: return false;
    }
}

/// Whether fields can be interpolated in elements of this type.
constexpr bool hasShapeFunctions(int typeCode)
{
    return visitElementKind(typeCode, [](auto) {});
}

#endif
