/// How many threads a rank has for itself.
#ifndef VELTRANE_CLUSTER_RANK_THREADS_H
#define VELTRANE_CLUSTER_RANK_THREADS_H

#include "Communicator.h"

namespace veltrane
{

/// Collective. The cores that the launcher gave this rank, divided by the ranks of the machine that it gave the same.
int threadsOfRank(const Communicator& ranks);

} // namespace veltrane

#endif
