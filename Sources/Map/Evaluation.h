/// Values at a point as weighted sums of values at nodes. Knows nodes and weights, neither elements nor search.
#ifndef VELTRANE_EVALUATION_H
#define VELTRANE_EVALUATION_H

#include "../VectorHelpers.h"

#include <cstdint>

/// Source values at or below this are undefined, and make the interpolated value undefined.
inline constexpr float undefinedBelow = single(-8.888e13);
inline constexpr float undefinedValue = single(-9.999e13);

/// The nodes whose values are summed up, and their weights, in single or double precision.
template <class Weight> struct WeightedNodesOf
{
    const int* nodes;
    const Weight* weights;
    int count;
};
using WeightedNodes = WeightedNodesOf<float>;

/// `NbTogether` components in a row at one point: weighted sums in node order. `source` holds their values at node 0;
/// a node's values are `stride` after those of the node before it. Where all source values are known to be defined,
/// they are not looked at. All is computed in the precision of the weights. A count of nodes that is known beforehand
/// may be given.
template <int NbTogether, bool mayBeUndefined, int knownCount = 0, class SourceValue, class TargetValue, class Weight>
inline void interpolateTogether(const SourceValue* source, TargetValue* target, int stride,
                                const WeightedNodesOf<Weight>& at)
{
    Weight sums[NbTogether]{};
    bool areUndefined[NbTogether]{};
    const int count = knownCount > 0 ? knownCount : at.count;
    for (int i = 0; i < count; ++i)
    {
        const SourceValue* values = source + static_cast<std::int64_t>(at.nodes[i]) * stride;
        for (int c = 0; c < NbTogether; ++c)
        {
            const auto value = static_cast<Weight>(values[c]);
            if constexpr (mayBeUndefined)
            {
                areUndefined[c] |= value <= Weight{undefinedBelow};
            }
            sums[c] += at.weights[i] * value;
        }
    }
    for (int c = 0; c < NbTogether; ++c)
    {
        target[c] = areUndefined[c] ? Weight{undefinedValue} : sums[c];
    }
}

/// All components of one field at one point; the target holds as many components as the source.
template <class SourceValue, class TargetValue>
void interpolateComponents(const SourceValue* source, TargetValue* target, int nbComponents, const WeightedNodes& at)
{
    constexpr int together = 3;
    int component = 0;
    for (; component + together <= nbComponents; component += together)
    {
        interpolateTogether<together, true>(source + component, target + component, nbComponents, at);
    }
    for (; component < nbComponents; ++component)
    {
        interpolateTogether<1, true>(source + component, target + component, nbComponents, at);
    }
}

#endif
