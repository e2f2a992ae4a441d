/// The frame around every call of the library.
#ifndef VELTRANE_HOST_LIBRARY_CALL_H
#define VELTRANE_HOST_LIBRARY_CALL_H

#include "CallSettings.h"

#include <Veltrane.h>

#include <functional>
#include <optional>
#include <string>

namespace veltrane
{

/// What a call that has not failed leaves.
struct LibraryOutcome
{
    int code;            ///< 0, or -1 for a warning
    std::string message; ///< in one line
    std::optional<std::string> log;
    std::string output; ///< what was written to standard output meanwhile
};

/// One of the library's computing functions, bound to all its arguments but the last three.
using Computation = std::function<void(char* message, int* errorCode, VeltraneCallback callback)>;

/// Runs a computation in a private directory, with the tuning in a file of the given name, as described in Transfer.h.
/// Throws TransferError, TargetOutside, Cancelled, what the progress callback throws, or Error.
LibraryOutcome callLibrary(const char* tuningFileName, const Tuning& tuning, const ProgressCallback& progress,
                           const Computation& computation);

} // namespace veltrane

#endif
