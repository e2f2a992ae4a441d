#include "FieldsAtPoints.h"

#include "../Search/Prefetch.h"

#include <algorithm>

namespace
{
template <class SourceValue>
void interpolateField(const SourceValue* source, int nbComponents, FieldClass& target, std::int64_t pointIndex,
                      const WeightedNodes& at)
{
    const std::int64_t first = pointIndex * nbComponents;
    if (target.itsPrecision == singlePrecision)
    {
        interpolateComponents(source, target.itsValuesFloat + first, nbComponents, at);
    }
    else
    {
        interpolateComponents(source, target.itsValuesDouble + first, nbComponents, at);
    }
}
} // namespace

void evaluateFields(const FieldsSetClass& sourceSet, FieldsSetClass& targetSet, Location pointKind,
                    std::int64_t pointIndex, int matlStateClass, const WeightedNodes& at)
{
    const auto sources = sourceSet.fields();
    const auto targets = targetSet.fields();
    for (std::size_t i = 0; i < std::min(sources.size(), targets.size()); ++i)
    {
        const FieldClass& source = sources[i];
        FieldClass& target = targets[i];
        if (target.itsLocation != pointKind || !target.existsOn(matlStateClass))
        {
            continue;
        }
        const int nbComponents = source.itsNbComponents;
        if (source.itsValuesInterpoNode)
        {
            interpolateField(source.itsValuesInterpoNode.get(), nbComponents, target, pointIndex, at);
        }
        else if (source.itsPrecision == singlePrecision)
        {
            interpolateField(source.itsValuesFloat, nbComponents, target, pointIndex, at);
        }
        else
        {
            interpolateField(source.itsValuesDouble, nbComponents, target, pointIndex, at);
        }
    }
}

void prefetchFields(const FieldsSetClass& sources, std::span<const int> nodes)
{
    for (const FieldClass& source : sources.fields())
    {
        for (const int node : nodes)
        {
            const std::int64_t first = static_cast<std::int64_t>(node) * source.itsNbComponents;
            if (source.itsValuesInterpoNode)
            {
                prefetch(source.itsValuesInterpoNode.get() + first);
            }
            else if (source.itsPrecision == singlePrecision)
            {
                prefetch(source.itsValuesFloat + first);
            }
            else
            {
                prefetch(source.itsValuesDouble + first);
            }
        }
    }
}

void fillFields(FieldsSetClass& targets, Location pointKind, std::int64_t pointIndex, int matlStateClass,
                float (*valueFor)(const FieldClass&))
{
    for (FieldClass& field : targets.fields())
    {
        if (field.itsLocation == pointKind && field.existsOn(matlStateClass))
        {
            field.fillLocation(pointIndex, valueFor(field));
        }
    }
}
