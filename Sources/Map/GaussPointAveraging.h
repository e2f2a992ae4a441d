/// From values at Gauss points to values at nodes.
#ifndef VELTRANE_GAUSS_POINT_AVERAGING_H
#define VELTRANE_GAUSS_POINT_AVERAGING_H

#include "../Elements/ElementKinds.h"

#include <cstdint>

/// Calls visit(Kind{}, constant) with the kind of a number and the number of points of the rule that it uses; false,
/// and no call, if it has no shape functions.
template <class Visitor> bool visitGaussRule(int typeCode, GaussRuleChoice rule, Visitor&& visitor)
{
    return visitElementKind(typeCode,
                            [&]<class Kind>(Kind kind)
                            {
                                constexpr std::size_t full = Kind::nbGaussPoints;
                                constexpr std::size_t reduced =
                                    gaussRuleOfKind<Kind, GaussRuleChoice::reduced>().points.size();
                                if (full == reduced || rule == GaussRuleChoice::full)
                                {
                                    visitor(kind, std::integral_constant<std::size_t, full>());
                                }
                                else
                                {
                                    visitor(kind, std::integral_constant<std::size_t, reduced>());
                                }
                            });
}

/// Adds what one element gives its nodes to `nodeValues`, [nbNodes][nbComponents] of the mesh. `value(gaussPoint,
/// component)` reads the element's values, Gauss points from 0, in the precision of the node values, which is that of
/// the sums, too. False at a type without a rule.
template <class Real, class Value>
bool addGaussPointsToNodes(int typeCode, GaussRuleChoice rule, const int* nodes, int nbComponents, Value value,
                           Real* nodeValues)
{
    return visitGaussRule(typeCode, rule,
                          [&]<class Kind, std::size_t nbPoints>(Kind, std::integral_constant<std::size_t, nbPoints>)
                          {
                              for (int component = 0; component < nbComponents; ++component)
                              {
                                  std::array<Real, nbPoints> atGaussPoints;
                                  for (std::size_t i = 0; i < nbPoints; ++i)
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
