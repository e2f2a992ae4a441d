#include "FEutilities.h"

#include "MappingStringUtilities.h"

#include <algorithm>
#include <iterator>

namespace
{
constexpr const char* unitName = "FEutilities";

// Types 6 and 7 are the linear quadrilateral and triangle, which serve as targets. The others without shape functions
// still count nodes and Gauss points.
constexpr int nbNodesPerType[nbTypeCodes] = {0, 8, 4, 6, 8, 6, 4, 3, 4, 2, 10, 12, 5, 4, 3};
constexpr int nbGaussPointsPerType[nbTypeCodes] = {0, 8, 1, 6, 8, 6, 4, 3, 4, 2, 5, 8, 8, 0, 0};
} // namespace

FEUtilities::FEUtilities()
{
    std::copy(std::begin(nbNodesPerType), std::end(nbNodesPerType), itsNbNodesPerType);
    std::copy(std::begin(nbGaussPointsPerType), std::end(nbGaussPointsPerType), itsNbGaussPointsPerType);
    for (int typeCode = 0; typeCode < nbTypeCodes; ++typeCode)
    {
        visitElementKind(typeCode,
                         [&]<class Kind>(Kind)
                         {
                             for (std::size_t gaussPoint = 0; gaussPoint < Kind::nbGaussPoints; ++gaussPoint)
                             {
                                 NodeValues<Kind::nbNodes> values{};
                                 Kind::shapeFunctionsAtGaussPoint(gaussPoint, values);
                                 for (std::size_t node = 0; node < Kind::nbNodes; ++node)
                                 {
                                     itsShapeValuesAtGaussPoints[typeCode][node][gaussPoint] = values[node];
                                 }
                             }
                         });
    }
}

void FEUtilities::shapeFunctions(int typeCode, const Vector3& point, float* values)
{
    const bool known = visitElementKind(typeCode,
                                        [&]<class Kind>(Kind)
                                        {
                                            if (values != nullptr)
                                            {
                                                NodeValues<Kind::nbNodes> kindValues;
                                                Kind::shapeFunctions(point, kindValues);
                                                std::copy(kindValues.begin(), kindValues.end(), values);
                                            }
                                        });
    if (!known)
    {
        endProcess("Error in %s file at line %d: shape functions of elements different from linear or quadratic "
                   "tetrahedrons, linear wedges, linear hexahedrons, linear pyramids not implemented yet.\n",
                   unitName, 290);
    }
}

void FEUtilities::shapeFunctionDerivatives(int typeCode, const Vector3& point, float* derivatives)
{
    const bool known = visitElementKind(typeCode,
                                        [&]<class Kind>(Kind)
                                        {
                                            NodeGradients<Kind::nbNodes> gradients;
                                            Kind::shapeFunctionDerivatives(point, gradients);
                                            for (const Vector3& g : gradients)
                                            {
                                                derivatives = std::copy(g.begin(), g.end(), derivatives);
                                            }
                                        });
    if (!known)
    {
        endProcess("Error in %s file at line %d: derivatives of shape functions of elements different from linear or "
                   "quadratic tetrahedrons, linear wedges, linear hexahedrons, linear pyramids not implemented yet.\n",
                   unitName, 384);
    }
}
