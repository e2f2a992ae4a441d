#include "Allocation.h"

#include <new>

// Compilers believe that operator new never returns null. Called from here, behind a function that they cannot look
// into, its result stays a pointer that the callers can test.
void* allocateBytes(std::size_t size)
{
    return ::operator new(size);
}

void releaseBytes(void* bytes) noexcept
{
    ::operator delete(bytes);
}
