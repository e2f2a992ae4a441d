// Lets the second process that a program starts fail. To be preloaded.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <sys/types.h>

pid_t fork(void)
{
    static int count = 0;
    if (++count == 2)
    {
        errno = EAGAIN;
        return -1;
    }
    pid_t (*real)(void) = (pid_t(*)(void))dlsym(RTLD_NEXT, "fork");
    return real();
}
