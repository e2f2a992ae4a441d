// Where a fault leads that the engine meets in its data: into an exception.
#include "Errors.h"
#include "Text.h"

#include "Fault.h"

void leaveOnFault(const Fault& fault)
{
    if (fault.sourceElt != noElement)
    {
        throw veltrane::SingularElement(fault.sourceElt);
    }
    throw veltrane::TransferError(veltrane::oneLine(fault.text), 1);
}
