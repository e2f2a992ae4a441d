/// Failing allocations. A test program with this in it replaces the runtime's allocation by one that can fail on
/// demand.
#ifndef ALLOCATION_FAILURE_H
#define ALLOCATION_FAILURE_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// Lets one request fail while it lives. Nothing but the library may allocate meanwhile.
class AllocationFailure
{
public:
    enum class Answer
    {
        null,
        exception ///< std::bad_alloc
    };

    /// The n-th request from now on fails, counted from 1.
    explicit AllocationFailure(int n, Answer answer = Answer::null);
    AllocationFailure(const AllocationFailure&) = delete;
    AllocationFailure& operator=(const AllocationFailure&) = delete;
    ~AllocationFailure();

    /// Whether there were as many requests.
    bool happened() const;
};

/// Requests until now, and blocks of them that were not given back.
std::int64_t nbAllocationRequests();
std::int64_t nbLiveAllocations();

/// Runs `run` again and again, each time in a process of its own: first its first request fails, then its second, until
/// it needs no more. Returns what each run wrote to standard output; a run that ended in any other way than by an exit
/// with status 0, or leaked, is named with its end.
std::vector<std::string> outcomesOfFailedRequests(const std::function<void()>& run);

/// The same without the runs in which a message buffer could not be allocated: how many there are is nobody's concern.
std::vector<std::string> outcomesOfFailedTables(const std::function<void()>& run);

#endif
