#include "Allocation.h"

#include <new>

#if defined(__linux__)
#    include <cerrno>
#    include <sys/mman.h>
#endif

namespace
{
/// Large arrays are filled from one end to the other: pages of 2 MiB spare most of the time that the system takes to
/// hand them out one by one. A hint, which a system may leave alone.
void askForLargePages([[maybe_unused]] void* bytes, [[maybe_unused]] std::size_t size)
{
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    constexpr std::size_t pageSize = std::size_t{1} << 21;
    constexpr std::size_t worthwhile = 2 * pageSize;
    if (bytes == nullptr || size < worthwhile)
    {
        return;
    }
    const std::size_t offset = (pageSize - reinterpret_cast<std::uintptr_t>(bytes) % pageSize) % pageSize;
    const int errorOfTheHost = errno;
    madvise(static_cast<char*>(bytes) + offset, (size - offset) / pageSize * pageSize, MADV_HUGEPAGE);
    errno = errorOfTheHost;
#endif
}
} // namespace

// Compilers believe that operator new never returns null. Called from here, behind a function that they cannot look
// into, its result stays a pointer that the callers can test.
void* allocateBytes(std::size_t size)
{
    void* bytes = ::operator new(size);
    askForLargePages(bytes, size);
    return bytes;
}

void releaseBytes(void* bytes) noexcept
{
    ::operator delete(bytes);
}
