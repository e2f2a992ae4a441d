/// The order in which values spread through a target mesh to the nodes that are far from the source.
#ifndef VELTRANE_PROPAGATION_H
#define VELTRANE_PROPAGATION_H

#include "MapTable.h"
#include "TargetPoints.h"

#include <cstdint>
#include <span>

/// The nodes of one target element, told apart by whether they have a value yet.
struct ElementFront
{
    int nbFilled = 0;
    int nbFar = 0;
};

inline std::span<const int> nodesOfElt(const ModelClass& mesh, int elt)
{
    return {mesh.itsConnectivity[elt], static_cast<std::size_t>(mesh.nbNodesOfElt(elt))};
}

inline ElementFront frontOf(const ModelClass& mesh, int elt, const unsigned char* isFar)
{
    const auto nodes = nodesOfElt(mesh, elt);
    int nbFar = 0;
    for (const int node : nodes)
    {
        nbFar += static_cast<int>(isFar[node] == 1);
    }
    return {.nbFilled = static_cast<int>(nodes.size()) - nbFar, .nbFar = nbFar};
}

/// The number of selected target elements with far nodes; where `openElts` is not null they are written into it, in
/// element order.
int listOpenElements(const Target& target, const unsigned char* isFar, int* openElts);

/// Gives the nodes `far` the mean of the nodes `filled`, in the precision of `Real`. `value(node)` reads one component,
/// `setValue(node, mean)` writes it.
template <class Real, class Value, class SetValue>
void spreadMean(std::span<const int> filled, std::span<const int> far, Value value, SetValue setValue)
{
    Real sum{0};
    for (const int node : filled)
    {
        sum += value(node);
    }
    const Real mean = sum / static_cast<Real>(filled.size());
    for (const int node : far)
    {
        setValue(node, mean);
    }
}

/// Sweeps over the open elements, in element order, until no far node is left or none was filled any more: an element
/// with filled and far nodes has its far nodes filled by `fill(elt, front)`. The flags are cleared at once, so that
/// later elements of the same sweep already see these nodes as filled: the result depends on the order of the elements,
/// which is intended. Flags are never set again, so an element whose nodes are all filled is done with. Returns how
/// many of the `nbFar` far nodes were not counted as filled.
template <class Fill>
int propagate(const ModelClass& mesh, unsigned char* isFar, int nbFar, std::span<int> openElts, Fill fill)
{
    std::size_t nbOpen = openElts.size();
    int remaining = nbFar;
    int previous = -1;
    while (remaining != 0 && remaining != previous)
    {
        previous = remaining;
        std::size_t nbStillOpen = 0;
        for (std::size_t i = 0; i < nbOpen; ++i)
        {
            const int elt = openElts[i];
            const ElementFront front = frontOf(mesh, elt, isFar);
            if (front.nbFar > 0 && front.nbFilled > 0)
            {
                fill(elt, front);
                for (const int node : nodesOfElt(mesh, elt))
                {
                    isFar[node] = 0;
                }
                remaining -= front.nbFar;
            }
            else if (front.nbFar > 0)
            {
                openElts[nbStillOpen++] = elt;
            }
        }
        nbOpen = nbStillOpen;
    }
    return remaining;
}

/// Plans the sweeps. `isFar`, per node of the target, is 1 at far nodes, and is left so at those that values do not
/// reach. False if there is no memory.
bool planSpreading(const Target& target, unsigned char* isFar, PropagationPlan& plan);

#endif
