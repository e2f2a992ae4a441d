#include "ChildProcesses.h"

#include "Errors.h"
#include "Interruption.h"
#include "Text.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <system_error>
#include <thread>

namespace veltrane
{

bool isFailure(ExitStatus status)
{
    return status != ExitStatus::done && status != ExitStatus::propagationWarning &&
           status != ExitStatus::requirementMissed;
}

ExitStatus worse(ExitStatus first, ExitStatus second)
{
    return first == ExitStatus::done || isFailure(second) ? second : first;
}

ChildProcesses::~ChildProcesses()
{
    stopAll();
    for (const pid_t process : processes_)
    {
        while (::waitpid(process, nullptr, 0) < 0 && errno == EINTR)
        {
        }
    }
}

void ChildProcesses::start(const std::function<ExitStatus()>& work)
{
    std::cout.flush();
    std::fflush(nullptr);
    const pid_t parent = ::getpid();
    const pid_t process = ::fork();
    if (process < 0)
    {
        throw Error(text("cannot start a process: ", std::generic_category().message(errno)));
    }
    if (process == 0)
    {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL); // nobody would want the result any more
        const ExitStatus status = ::getppid() == parent ? work() : ExitStatus::cancelled;
        std::fflush(nullptr);
        std::_Exit(static_cast<int>(status));
    }
    processes_.push_back(process);
}

void ChildProcesses::wait(const std::function<void()>& meanwhile)
{
    constexpr std::chrono::milliseconds pause(10);
    for (bool hasOneEnded = false; !hasOneEnded;)
    {
        if (isInterrupted() || isFailure(outcome_))
        {
            stopAll();
        }
        hasOneEnded = collect();
        if (!hasOneEnded)
        {
            meanwhile();
            std::this_thread::sleep_for(pause);
        }
    }
}

/// Once: a second signal of a terminal ends a process at once, and it would have no time to clear away its files.
void ChildProcesses::stopAll()
{
    if (!areStopped_)
    {
        std::ranges::for_each(processes_, [](pid_t process) { ::kill(process, SIGTERM); });
        areStopped_ = true;
    }
}

/// Each by its number: whoever started the command may have left it children of his own.
bool ChildProcesses::collect()
{
    for (auto process = processes_.begin(); process != processes_.end(); ++process)
    {
        int status = 0;
        const pid_t ended = ::waitpid(*process, &status, WNOHANG);
        if (ended == 0 || (ended < 0 && errno == EINTR))
        {
            continue;
        }
        processes_.erase(process);
        note(status);
        return true;
    }
    return false;
}

void ChildProcesses::note(int status)
{
    if (isFailure(outcome_))
    {
        return; // what the others say then is but that they were stopped
    }
    if (!WIFEXITED(status) && !isInterrupted())
    {
        std::cerr << text("veltrane: the process of a step has been ended by a signal: ", ::strsignal(WTERMSIG(status)),
                          "\n");
    }
    outcome_ = worse(outcome_, WIFEXITED(status) ? static_cast<ExitStatus>(WEXITSTATUS(status)) : ExitStatus::failed);
}

} // namespace veltrane
