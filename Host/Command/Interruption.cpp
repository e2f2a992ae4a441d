#include "Interruption.h"

#include "Errors.h"
#include "ExitStatus.h"

#include <unistd.h>

#include <csignal>
#include <initializer_list>
#include <string_view>

namespace veltrane
{
namespace
{

volatile std::sig_atomic_t interrupted = 0;

/// Of a terminal's signal the second one ends the process, whatever it is at. Does nothing but what may be done at any
/// moment.
void remember(int signal)
{
    if (signal == SIGINT && interrupted == SIGINT)
    {
        constexpr std::string_view message = "\nveltrane: cancelled at once\n";
        [[maybe_unused]] const ssize_t count = ::write(STDERR_FILENO, message.data(), message.size());
        ::_exit(static_cast<int>(ExitStatus::cancelled));
    }
    interrupted = interrupted == SIGINT ? SIGINT : signal;
}

} // namespace

void catchInterruptions()
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
    {
        struct sigaction action = {};
        if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN)
        {
            action = {};
            action.sa_handler = remember;
            action.sa_flags = SA_RESTART;
            sigaction(signal, &action, nullptr);
        }
    }
    // Where it is ignored, the system tells nobody how a process has ended.
    std::signal(SIGCHLD, SIG_DFL);
}

bool isInterrupted()
{
    return interrupted != 0;
}

void throwIfInterrupted()
{
    if (isInterrupted())
    {
        throw Cancelled("cancelled");
    }
}

} // namespace veltrane
