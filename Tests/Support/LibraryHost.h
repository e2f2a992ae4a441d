/// A host of the loaded library: it answers the callback, keeps what it is told and what the library prints, and sees
/// how a call ends.
#ifndef LIBRARY_HOST_H
#define LIBRARY_HOST_H

#include "LibraryUnderTest.h"

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

/// One call of the callback.
struct Report
{
    int progress = 0;
    std::string title;
    std::string text;
    int kind = 0;

    bool operator==(const Report&) const = default;
};
std::ostream& operator<<(std::ostream& stream, const Report& report);

/// The callback for the next call, which begins a new transcript.
VeltraneCallback callbackAnswering(std::function<int(const Report&)> answer);

/// What the callback has been told since then.
const std::vector<Report>& transcript();

/// Makes a call that is to return, and gives what it printed on standard output. If the library ends the process
/// instead, the process fails and names the call: otherwise the test would end with status 0.
std::string printedByReturningCall(const std::string& name, const std::function<void()>& call);

/// How a call in a child process came to its end.
struct ChildsEnd
{
    bool returned = false;
    int exitStatus = -1; ///< -1: a signal ended it
    std::string printed; ///< on standard output
};

ChildsEnd endOfCallInChild(const std::function<void()>& call);

#endif
