/// Why a computation of the engine has no result.
#ifndef VELTRANE_MAP_FAILURE_H
#define VELTRANE_MAP_FAILURE_H

#include "../MappingStringUtilities.h"

struct MapFailure
{
    enum Reason
    {
        none = 0,
        refused = 1,   ///< the models cannot be mapped, or there is no memory
        outside = 2,   ///< a target point is far from the source, and that is refused
        cancelled = -1 ///< the workers were stopped
    };

    MapFailure() = default;
    MapFailure(Reason failureReason, const char* failureText) : reason(failureReason)
    {
        formatMessage(text, "%s", failureText);
    }

    Reason reason = none;
    char text[messageCapacity] = "";

    explicit operator bool() const { return reason != none; }
};

inline MapFailure noMemoryFailure()
{
    return {MapFailure::refused, "There is not enough memory."};
}

inline MapFailure cancelledFailure()
{
    return {MapFailure::cancelled, "cancelled"};
}

#endif
