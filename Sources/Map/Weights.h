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
inline bool normaliseNearMiss(std::span<float> weights)
{
    float sum = 0.0F;
    for (float& weight : weights)
    {
        weight = weight < 0.0F ? 0.0F : weight;
        weight = weight > 1.0F ? 1.0F : weight;
        sum += weight;
    }
    if (sum == 0.0F)
    {
        return false;
    }
    for (float& weight : weights)
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
