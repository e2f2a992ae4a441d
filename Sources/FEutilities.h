/// The element library: what each element type code means.
#ifndef VELTRANE_FE_UTILITIES_H
#define VELTRANE_FE_UTILITIES_H

#include "Elements/ElementKinds.h"

inline constexpr int nbTypeCodes = 15;

/// Most nodes and Gauss points of any type code, of those without shape functions too.
inline constexpr int maxNbNodesOfTypeCode = 12;
inline constexpr int maxNbGaussPointsOfTypeCode = 8;

class FEUtilities
{
public:
    FEUtilities();
    virtual ~FEUtilities() = default;

    /// Number of nodes, or of Gauss points, of a type code; 0 for a code outside 0 to 14.
    int nbNodes(int typeCode) const { return isTypeCode(typeCode) ? itsNbNodesPerType[typeCode] : 0; }
    int nbGaussPoints(int typeCode) const { return isTypeCode(typeCode) ? itsNbGaussPointsPerType[typeCode] : 0; }

    /// Values of the shape functions at a reference point, one per node; nothing is written into a null array.
    /// A type without shape functions ends the process.
    static void shapeFunctions(int typeCode, const Vector3& point, float* values);

    /// Derivatives of the shape functions by xi, eta, zeta: float[nodes of the type][3].
    /// A type without shape functions ends the process.
    static void shapeFunctionDerivatives(int typeCode, const Vector3& point, float* derivatives);

    int itsNbNodesPerType[nbTypeCodes]{};
    int itsNbGaussPointsPerType[nbTypeCodes]{};
    /// Shape function of each node at each Gauss point; 0 for types without shape functions.
    float itsShapeValuesAtGaussPoints[nbTypeCodes][maxNbNodesOfTypeCode][maxNbGaussPointsOfTypeCode]{};

private:
    static bool isTypeCode(int typeCode) { return typeCode >= 0 && typeCode < nbTypeCodes; }
};

#endif
