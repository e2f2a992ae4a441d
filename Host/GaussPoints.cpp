#include "GaussPoints.h"

#include "Elements/ElementKinds.h"

#include <algorithm>

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

GaussPointRule gaussPointRuleOf(std::span<const Field> fields, const Mesh& mesh)
{
    for (const GaussPointRule rule : {mesh.gaussPointRule(), GaussPointRule::full, GaussPointRule::reduced})
    {
        const auto isByRule = [&](const Field& field)
        { return field.location() == Location::gaussPoints && field.locationCount() == mesh.gaussPointCount(rule); };
        if (std::ranges::any_of(fields, isByRule))
        {
            return rule;
        }
    }
    return mesh.gaussPointRule();
}

} // namespace veltrane
