/// What becomes of failures.
#ifndef VELTRANE_COMMAND_FAILURES_H
#define VELTRANE_COMMAND_FAILURES_H

#include "ExitStatus.h"

#include <exception>
#include <functional>
#include <string>

namespace veltrane
{

/// Whether it is told that the work was cancelled, too; a part of the work leaves that to the whole.
enum class CancellationReport
{
    none,
    message
};

struct Failure
{
    ExitStatus status;
    std::string sentence;
};

/// What becomes of an exception.
Failure failureOf(const std::exception_ptr& thrown);

/// Does the work; turns what it throws into a message on standard error and a status.
ExitStatus runReportingFailures(const std::function<ExitStatus()>& work,
                                CancellationReport cancellation = CancellationReport::message);

} // namespace veltrane

#endif
