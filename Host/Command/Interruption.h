/// Ctrl-C and its like, as a question that the command asks when it suits.
#ifndef VELTRANE_COMMAND_INTERRUPTION_H
#define VELTRANE_COMMAND_INTERRUPTION_H

namespace veltrane
{

/// From now on SIGINT, SIGTERM and SIGHUP do not end the process but are remembered, unless they are ignored already.
/// A second SIGINT ends it at once. Processes that end are told of, even if whoever started this one ignored that.
void catchInterruptions();

bool isInterrupted();

/// Throws Cancelled if interrupted.
void throwIfInterrupted();

} // namespace veltrane

#endif
