// Values of the source fields at a located point. Knows elements' nodes and weights, neither grid nor search.
#include "MappingClass.h"

#include <algorithm>
#include <cstddef>

namespace
{
/// Source values at or below this are undefined, and make the interpolated value undefined.
constexpr float undefinedBelow = single(-8.888e13);
constexpr float undefinedValue = single(-9.999e13);

/// `NbTogether` components in a row at one point: weighted sums in node order. `source` holds their values at node 0;
/// there are `nbComponents` per node.
template <int NbTogether, class SourceValue, class TargetValue>
void interpolateTogether(const SourceValue* source, TargetValue* target, int nbComponents, const int* nodeNumbers,
                         const ShapeValues& shape)
{
    float sums[NbTogether]{};
    bool areUndefined[NbTogether]{};
    for (int i = 0; i < shape.nbNodes; ++i)
    {
        const SourceValue* values = source + static_cast<std::int64_t>(nodeNumbers[i]) * nbComponents;
        for (int c = 0; c < NbTogether; ++c)
        {
            const auto value = static_cast<float>(values[c]);
            areUndefined[c] |= value <= undefinedBelow;
            sums[c] += shape.values[i] * value;
        }
    }
    for (int c = 0; c < NbTogether; ++c)
    {
        target[c] = areUndefined[c] ? undefinedValue : sums[c];
    }
}

/// All components of one field at one point; the target holds as many components as the source.
template <class SourceValue, class TargetValue>
void interpolateComponents(const SourceValue* source, TargetValue* target, int nbComponents, const int* nodeNumbers,
                           const ShapeValues& shape)
{
    constexpr int together = 3;
    int component = 0;
    for (; component + together <= nbComponents; component += together)
    {
        interpolateTogether<together>(source + component, target + component, nbComponents, nodeNumbers, shape);
    }
    for (; component < nbComponents; ++component)
    {
        interpolateTogether<1>(source + component, target + component, nbComponents, nodeNumbers, shape);
    }
}

template <class SourceValue>
void interpolateField(const SourceValue* source, int nbComponents, FieldClass& target, std::int64_t pointIndex,
                      const int* nodeNumbers, const ShapeValues& shape)
{
    const std::int64_t first = pointIndex * nbComponents;
    if (target.itsPrecision == singlePrecision)
    {
        interpolateComponents(source, target.itsValuesFloat + first, nbComponents, nodeNumbers, shape);
    }
    else
    {
        interpolateComponents(source, target.itsValuesDouble + first, nbComponents, nodeNumbers, shape);
    }
}
} // namespace

/// Asks, step by step, for what the points that follow the first of `located` need: each step finds the address that
/// the next one reads.
void MappingClass::prefetchAhead(std::span<const LocatedPoint> located) const
{
    constexpr std::size_t step = 6;
    const auto eltAhead = [&](std::size_t nbSteps)
    { return nbSteps * step < located.size() ? located[nbSteps * step].elt : -1; };
    if (const int elt = eltAhead(3); elt != -1)
    {
        prefetch(itsRefMesh.itsConnectivity + elt);
        prefetch(itsRefMesh.itsEltTypes + elt);
    }
    if (const int elt = eltAhead(2); elt != -1)
    {
        const int* nodeNumbers = itsRefMesh.itsConnectivity[elt];
        prefetchRange(nodeNumbers, nodeNumbers + itsRefMesh.nbNodesOfElt(elt));
    }
    if (const int elt = eltAhead(1); elt != -1)
    {
        prefetchFields(elt);
    }
}

/// Asks for the source values that the evaluation in an element is going to read.
void MappingClass::prefetchFields(int elt) const
{
    const int* nodeNumbers = itsRefMesh.itsConnectivity[elt];
    const int nbNodes = itsRefMesh.nbNodesOfElt(elt);
    for (const FieldClass& source : itsRefFields.fields())
    {
        for (int i = 0; i < nbNodes; ++i)
        {
            const std::int64_t first = static_cast<std::int64_t>(nodeNumbers[i]) * source.itsNbComponents;
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

void MappingClass::evaluateFields(Location pointKind, std::int64_t pointIndex, int matlStateClass,
                                  const int* nodeNumbers, const ShapeValues& shape)
{
    const auto sources = itsRefFields.fields();
    const auto targets = itsTargetFields.fields();
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
            interpolateField(source.itsValuesInterpoNode.get(), nbComponents, target, pointIndex, nodeNumbers, shape);
        }
        else if (source.itsPrecision == singlePrecision)
        {
            interpolateField(source.itsValuesFloat, nbComponents, target, pointIndex, nodeNumbers, shape);
        }
        else
        {
            interpolateField(source.itsValuesDouble, nbComponents, target, pointIndex, nodeNumbers, shape);
        }
    }
}

void MappingClass::zeroGaussPoint(std::int64_t pointIndex, int matlStateClass)
{
    for (FieldClass& field : itsTargetFields.fields())
    {
        if (field.itsLocation == atGaussPoints && field.existsOn(matlStateClass))
        {
            field.fillLocation(pointIndex, 0.0F);
        }
    }
}
