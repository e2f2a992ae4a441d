#include "Propagation.h"

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
