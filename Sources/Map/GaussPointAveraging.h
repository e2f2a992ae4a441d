/// From values at Gauss points to values at nodes.
#ifndef VELTRANE_GAUSS_POINT_AVERAGING_H
#define VELTRANE_GAUSS_POINT_AVERAGING_H

#include "../Elements/ElementKinds.h"

#include <cstdint>

/// Number of Gauss points of a type with shape functions, otherwise 0.
constexpr int nbGaussPointsOf(int typeCode)
{
    int count = 0;
    visitElementKind(typeCode, [&]<class Kind>(Kind) { count = Kind::nbGaussPoints; });
    return count;
}

/// Adds what one element gives its nodes to `nodeValues`, [nbNodes][nbComponents] of the mesh. `value(gaussPoint,
/// component)` reads the element's values, Gauss points from 0, in the precision of the node values, which is that of
/// the sums, too. False at a type without a rule.
template <class Real, class Value>
bool addGaussPointsToNodes(int typeCode, const int* nodes, int nbComponents, Value value, Real* nodeValues)
{
    return visitElementKind(typeCode,
                            [&]<class Kind>(Kind)
                            {
                                for (int component = 0; component < nbComponents; ++component)
                                {
                                    NodeValues<Kind::nbGaussPoints, Real> atGaussPoints;
                                    for (std::size_t i = 0; i < Kind::nbGaussPoints; ++i)
                                    {
                                        atGaussPoints[i] = value(i, component);
                                    }
                                    NodeValues<Kind::nbNodes, Real> atNodes;
                                    Kind::gaussPointsToNodes(atGaussPoints, atNodes);
                                    for (std::size_t i = 0; i < Kind::nbNodes; ++i)
                                    {
                                        const std::int64_t node = nodes[i];
                                        nodeValues[node * nbComponents + component] += atNodes[i];
                                    }
                                }
                            });
}

#endif
