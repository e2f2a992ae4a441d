#include "FEutilities.h"

#include "MappingStringUtilities.h"

#include <algorithm>

namespace
{
constexpr const char* unitName = "FEutilities";

struct Counts
{
    int typeCode;
    int nbNodes;
    int nbGaussPoints;
};

/// Codes that are no element kind here but count nodes and Gauss points all the same.
constexpr Counts countsOfOtherTypes[] = {{4, 8, 8},   {5, 6, 6},  {8, 4, 4}, {9, 2, 2},
                                         {11, 12, 8}, {13, 4, 0}, {14, 3, 0}};

/// Those type codes that have shape functions.
using InterpolatedKinds = VolumesOf<TypeCodeKinds>;
} // namespace

FEUtilities::FEUtilities()
{
    for (const Counts& counts : countsOfOtherTypes)
    {
        itsNbNodesPerType[counts.typeCode] = counts.nbNodes;
        itsNbGaussPointsPerType[counts.typeCode] = counts.nbGaussPoints;
    }
    TypeCodeKinds::visitAll(
        [this]<class Kind>(Kind)
        {
            itsNbNodesPerType[Kind::typeCode] = Kind::nbNodes;
            itsNbGaussPointsPerType[Kind::typeCode] = Kind::nbGaussPoints;
        });
    for (int typeCode = 0; typeCode < nbTypeCodes; ++typeCode)
    {
        InterpolatedKinds::visit(typeCode,
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
    const bool known = InterpolatedKinds::visit(typeCode,
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
    const bool known = InterpolatedKinds::visit(typeCode,
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
