/// From a located point to the weights of its element's nodes.
#ifndef VELTRANE_WEIGHTS_H
#define VELTRANE_WEIGHTS_H

#include "../ModelClass.h"
#include "../Search/PointLocator.h"

#include <algorithm>
#include <span>

/// The weights of an element's nodes at a point.
struct ShapeValues
{
    int nbNodes = 0;
    float values[maxNbNodes];
};

/// The shape functions at a located point.
inline ShapeValues shapeValuesAt(const ModelClass& sourceModel, const LocatedPoint& located)
{
    ShapeValues shape;
    visitElementKind(sourceModel.itsEltTypes[located.elt],
                     [&]<class Kind>(Kind)
                     {
                         const auto values = shapeFunctionsAt<Kind>(located.referenceCoords);
                         shape.nbNodes = Kind::nbNodes;
                         std::copy(values.begin(), values.end(), shape.values);
                     });
    return shape;
}

/// Brings the weights of a point outside its element back into [0, 1] with sum 1; false if all are 0 then.
template <class Number> bool normaliseNearMiss(std::span<Number> weights)
{
    constexpr Number zero{0};
    constexpr Number one{1};
    Number sum = zero;
    for (Number& weight : weights)
    {
        weight = weight < zero ? zero : weight;
        weight = weight > one ? one : weight;
        sum += weight;
    }
    if (sum == zero)
    {
        return false;
    }
    for (Number& weight : weights)
    {
        weight /= sum;
    }
    return true;
}

inline bool normaliseNearMiss(ShapeValues& shape)
{
    return normaliseNearMiss(std::span(shape.values, static_cast<std::size_t>(shape.nbNodes)));
}

/// Turns the shape functions at reference coordinates outside an element into the weights that a near point gets; false
/// if all are 0 then. Those of curved elements, which may be negative within them, become those at a near place within.
template <class Kind, class Number>
bool bringIntoElement(const std::array<Number, 3>& referenceCoords, std::span<Number> weights)
{
    if constexpr (CurvedElementKind<Kind>)
    {
        std::ranges::copy(shapeFunctionsAt<Kind>(Kind::clamped(referenceCoords)), weights.begin());
        return true;
    }
    else
    {
        return normaliseNearMiss(weights);
    }
}

inline bool bringIntoElement(const ModelClass& sourceModel, const LocatedPoint& located, ShapeValues& shape)
{
    bool hasWeights = false;
    visitElementKind(sourceModel.itsEltTypes[located.elt],
                     [&]<class Kind>(Kind)
                     {
                         hasWeights = bringIntoElement<Kind>(
                             located.referenceCoords, std::span(shape.values, static_cast<std::size_t>(shape.nbNodes)));
                     });
    return hasWeights;
}

#endif
