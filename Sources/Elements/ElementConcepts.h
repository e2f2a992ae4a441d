/// What every element kind must have, for the compiler: it names what a header lacks.
#ifndef VELTRANE_ELEMENT_CONCEPTS_H
#define VELTRANE_ELEMENT_CONCEPTS_H

#include "ReferenceElement.h"

template <class Kind>
concept AnyElementKind = requires
{
    Kind::typeCode;
    Kind::name;
    Kind::plural;
    Kind::dimension;
    Kind::nbNodes;
    Kind::nbCorners;
    Kind::nbGaussPoints;
    Kind::nodes;
    Kind::faces;
    Kind::vtkCells;
};

template <class Kind>
concept SurfaceElementKind = AnyElementKind<Kind> && Kind::dimension == 2;

template <class Kind>
concept VolumeElementKind = AnyElementKind<Kind> && Kind::dimension == 3 &&
                            requires(const Vector3& point, NodeValues<Kind::nbNodes>& values,
                                     NodeGradients<Kind::nbNodes>& derivatives,
                                     const NodeValues<Kind::nbGaussPoints>& gaussPointValues)
{
    Kind::initialGuess;
    Kind::gaussRule;
    Kind::shapeFunctions(point, values);
    Kind::shapeFunctionDerivatives(point, derivatives);
    Kind::isConstantAlong(0, 0);
    Kind::shapeFunctionsAtGaussPoint(0, values);
    Kind::contains(point, 0.001);
    Kind::gaussPointsToNodes(gaussPointValues, values);
};

/// Whether the shape function of each node is 1 there and 0 at the others; surfaces have none.
template <class Kind> constexpr bool hasItsNodes()
{
    if constexpr (VolumeElementKind<Kind>)
    {
        for (std::size_t node = 0; node < Kind::nbNodes; ++node)
        {
            NodeValues<Kind::nbNodes> expected{};
            expected[node] = 1.0F;
            if (shapeFunctionsAt<Kind>(Kind::nodes[node]) != expected)
            {
                return false;
            }
        }
    }
    return true;
}

#endif
