/// The way out of a computation that meets a fault in its data from which it cannot go on.
#ifndef VELTRANE_FAULT_H
#define VELTRANE_FAULT_H

inline constexpr int noElement = -1;

struct Fault
{
    const char* text;          ///< one line, with its end
    int sourceElt = noElement; ///< the source element that is to blame, from 0, if there is one
};

/// Does not return. Whoever links the units gives it: the library prints the text and ends the process with status 0
/// (FaultEndsProcess.cpp), the C++ interface throws an exception, which the units let pass without losing anything.
[[noreturn]] void leaveOnFault(const Fault& fault);

#endif
