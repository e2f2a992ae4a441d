#include "GaussPoints.h"

#include "Elements/ElementKinds.h"

namespace veltrane
{
namespace
{

template <class Kind, GaussRuleChoice choice> GaussRule ruleOf()
{
    constexpr const auto& points = gaussRuleOfKind<Kind, choice>();
    GaussRule rule;
    for (const ReferencePoint& point : points.points)
    {
        const NodeValues<Kind::nbNodes, double> values = shapeFunctionsAt<Kind>(point);
        rule.shapeValues.emplace_back(values.begin(), values.end());
        const NodeGradients<Kind::nbNodes, double> gradients = derivativesAt<Kind>(point);
        rule.shapeGradients.emplace_back(gradients.begin(), gradients.end());
    }
    rule.weights.assign(points.weights.begin(), points.weights.end());
    return rule;
}

} // namespace

GaussRule gaussRuleOf(ElementKind kind, GaussPointRule rule)
{
    GaussRule result;
    visitElementKind(static_cast<int>(kind),
                     [&]<class Kind>(Kind)
                     {
                         result = rule == GaussPointRule::reduced ? ruleOf<Kind, GaussRuleChoice::reduced>()
                                                                  : ruleOf<Kind, GaussRuleChoice::full>();
                     });
    return result;
}

} // namespace veltrane
