#include "Fault.h"

#include <cstdio>
#include <cstdlib>

// Hosts know the library to end their process with status 0 here.
void leaveOnFault(const Fault& fault)
{
    std::fputs(fault.text, stdout);
    std::exit(0);
}
