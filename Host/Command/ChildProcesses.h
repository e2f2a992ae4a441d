/// Work in processes of their own.
#ifndef VELTRANE_COMMAND_CHILD_PROCESSES_H
#define VELTRANE_COMMAND_CHILD_PROCESSES_H

#include "ExitStatus.h"

#include <sys/types.h>

#include <functional>
#include <vector>

namespace veltrane
{

/// Whether there is no result.
bool isFailure(ExitStatus status);

ExitStatus worse(ExitStatus first, ExitStatus second);

/// Processes that are at work. None outlives this: those that still run at the end of its life are stopped and waited
/// for.
class ChildProcesses
{
public:
    ChildProcesses() = default;
    ~ChildProcesses();
    ChildProcesses(const ChildProcesses&) = delete;
    ChildProcesses& operator=(const ChildProcesses&) = delete;

    /// Throws Error if no process can be started.
    void start(const std::function<ExitStatus()>& work);

    /// Until one of them has ended. If one has failed, or all is to be cancelled, the others are told to end, too.
    /// `meanwhile` is called again and again.
    void wait(const std::function<void()>& meanwhile);

    int count() const { return static_cast<int>(processes_.size()); }

    /// The worst of those that have ended.
    ExitStatus outcome() const { return outcome_; }

private:
    /// Whether one had ended.
    bool collect();
    void note(int status);
    void stopAll();

    std::vector<pid_t> processes_;
    ExitStatus outcome_ = ExitStatus::done;
    bool areStopped_ = false;
};

} // namespace veltrane

#endif
