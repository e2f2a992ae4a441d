/// From a located point to the weights of its element's nodes.
#ifndef VELTRANE_WEIGHTS_H
#define VELTRANE_WEIGHTS_H

#include "../ModelClass.h"
#include "../Search/PointLocator.h"

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
    shape.nbNodes = sourceModel.nbNodesOfElt(located.elt);
    FEUtilities::shapeFunctions(sourceModel.itsEltTypes[located.elt], located.referenceCoords, shape.values);
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

#endif
