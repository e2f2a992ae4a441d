/// veltrane transfer, by all ranks.
#ifndef VELTRANE_CLUSTER_CLUSTER_TRANSFER_H
#define VELTRANE_CLUSTER_CLUSTER_TRANSFER_H

#include "Communicator.h"

#include "ExitStatus.h"
#include "TransferCommand.h"

namespace veltrane
{

/// Collective. What is thrown on one rank is thrown on all, as agree() does.
ExitStatus transferOnAllRanks(const Communicator& ranks, const TransferChoices& choices);

} // namespace veltrane

#endif
