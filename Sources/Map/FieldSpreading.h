/// Values of fields that spread from filled nodes to far ones.
#ifndef VELTRANE_FIELD_SPREADING_H
#define VELTRANE_FIELD_SPREADING_H

#include "Propagation.h"
#include "TransferMap.h"

/// Reads and writes a target value in the precision of the map.
template <class Real> Real targetValue(const MapField& field, std::int64_t index)
{
    return field.targetFloats != nullptr ? static_cast<Real>(field.targetFloats[index])
                                         : static_cast<Real>(field.targetDoubles[index]);
}

template <class Real> void setTargetValue(const MapField& field, std::int64_t index, Real value)
{
    if (field.targetFloats != nullptr)
    {
        field.targetFloats[index] = static_cast<float>(value);
    }
    else
    {
        field.targetDoubles[index] = static_cast<double>(value);
    }
}

inline bool existsOn(const MapField& field, int matlStateClass)
{
    return !(field.isClassOneOnly && matlStateClass == 2);
}

/// Fills far nodes step by step, in the fields at nodes.
template <class Real> void spreadFields(const PropagationPlan& plan, std::span<const MapField> fields)
{
    const auto spread = [&](int matlStateClass, std::span<const int> filled, std::span<const int> far)
    {
        for (const MapField& field : fields)
        {
            const bool isConcerned = field.targetLocation == atNodes && existsOn(field, matlStateClass);
            for (int component = 0; isConcerned && component < field.nbComponents; ++component)
            {
                const auto indexOf = [&](int node)
                { return static_cast<std::int64_t>(node) * field.nbComponents + component; };
                spreadMean<Real>(
                    filled, far, [&](int node) { return targetValue<Real>(field, indexOf(node)); },
                    [&](int node, Real mean) { setTargetValue(field, indexOf(node), mean); });
            }
        }
    };
    plan.forEachStep(spread);
}

#endif
