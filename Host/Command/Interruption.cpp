#include "Interruption.h"

#include "Errors.h"

#include <csignal>
#include <initializer_list>

namespace veltrane
{
namespace
{

volatile std::sig_atomic_t interrupted = 0;

void remember(int)
{
    interrupted = 1;
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
