#include "GaussPoints.h"

#include "Elements/ElementKinds.h"

namespace veltrane
{
namespace
{

template <class Kind> GaussRule ruleOf()
{
    GaussRule rule;
    for (const ReferencePoint& point : Kind::gaussRule.points)
    {
        const NodeValues<Kind::nbNodes, double> values = shapeFunctionsAt<Kind>(point);
        rule.shapeValues.emplace_back(values.begin(), values.end());
        const NodeGradients<Kind::nbNodes, double> gradients = derivativesAt<Kind>(point);
        rule.shapeGradients.emplace_back(gradients.begin(), gradients.end());
    }
    rule.weights.assign(Kind::gaussRule.weights.begin(), Kind::gaussRule.weights.end());
    return rule;
}

} // namespace

GaussRule gaussRuleOf(ElementKind kind)
{
    GaussRule rule;
    visitElementKind(static_cast<int>(kind), [&]<class Kind>(Kind) { rule = ruleOf<Kind>(); });
    return rule;
}

} // namespace veltrane
