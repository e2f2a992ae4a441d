/// Asking for memory ahead of its use. Only the time that a program takes depends on it.
#ifndef VELTRANE_PREFETCH_H
#define VELTRANE_PREFETCH_H

#include <cstddef>

inline void prefetch(const void* address)
{
    __builtin_prefetch(address);
}

/// All cache lines of a stretch of memory.
inline void prefetchRange(const void* begin, const void* end)
{
    constexpr std::ptrdiff_t cacheLine = 64;
    for (const auto* line = static_cast<const char*>(begin); line < static_cast<const char*>(end); line += cacheLine)
    {
        prefetch(line);
    }
}

#endif
