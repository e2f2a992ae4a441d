#include "Propagation.h"

#include <algorithm>

int listOpenElements(const Target& target, const unsigned char* isFar, int* openElts)
{
    int nbOpen = 0;
    for (int elt = 0; elt < target.model.itsNbElts; ++elt)
    {
        if (target.isEltSelected(elt) && frontOf(target.model, elt, isFar).nbFar > 0)
        {
            if (openElts != nullptr)
            {
                openElts[nbOpen] = elt;
            }
            ++nbOpen;
        }
    }
    return nbOpen;
}

bool planSpreading(const Target& target, unsigned char* isFar, PropagationPlan& plan)
{
    const std::int64_t nbNodes = target.model.itsNbNodes;
    OwnedArray<unsigned char> wasFar;
    OwnedArray<int> openElts;
    const int nbOpen = listOpenElements(target, isFar, nullptr);
    if (!wasFar.allocate(nbNodes) || !openElts.allocate(nbOpen))
    {
        return false;
    }
    std::copy_n(isFar, nbNodes, wasFar.get());
    const auto nbFar = static_cast<int>(std::count(isFar, isFar + nbNodes, 1));
    // Once to know how much room the steps take, and once to write them down.
    const auto sweep = [&](auto fill)
    {
        std::copy_n(wasFar.get(), nbNodes, isFar);
        listOpenElements(target, isFar, openElts.get());
        return propagate(target.model, isFar, nbFar, {openElts.get(), static_cast<std::size_t>(nbOpen)}, fill);
    };
    sweep([&](int, const ElementFront& front)
          { plan.size += PropagationPlan::headerSize + front.nbFilled + front.nbFar; });
    if (!plan.steps.allocate(plan.size))
    {
        return false;
    }
    int* step = plan.steps.get();
    const auto writeStep = [&](int elt, const ElementFront& front)
    {
        *step++ = target.model.matlStateClassOfItem(elt);
        *step++ = front.nbFilled;
        *step++ = front.nbFar;
        const auto nodes = nodesOfElt(target.model, elt);
        step = std::ranges::copy_if(nodes, step, [&](int node) { return isFar[node] != 1; }).out;
        step = std::ranges::copy_if(nodes, step, [&](int node) { return isFar[node] == 1; }).out;
    };
    plan.isComplete = sweep(writeStep) == 0;
    plan.nbUnreached = static_cast<int>(std::count(isFar, isFar + nbNodes, 1));
    return true;
}
