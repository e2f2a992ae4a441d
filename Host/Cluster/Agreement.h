/// Faults that end the work of all ranks.
#ifndef VELTRANE_HOST_AGREEMENT_H
#define VELTRANE_HOST_AGREEMENT_H

#include "Communicator.h"

#include "Errors.h"

#include <exception>
#include <functional>

namespace veltrane
{

/// Something on another rank that has no type of its own among the exceptions of the C++ interface.
class FailedElsewhere : public Error
{
public:
    using Error::Error;
};

/// Collective. Does the work, in which nothing is collective. If it throws on any rank, all ranks throw what the lowest
/// of these has thrown: that rank itself the very same, the others an exception of the same type if it is one of
/// Errors.h, else FailedElsewhere with the same sentence.
void agree(const Communicator& ranks, const std::function<void()>& work);

/// Whether agree() has ever thrown here, and so on all ranks.
bool hasFailedTogether();

} // namespace veltrane

#endif
