/// Arrays laid out so that every access outside them, and every write to an input, ends the test at once.
///
/// An array lies between two pages that may not be touched, flush with the one behind it (or, on request, with the one
/// before it). Inputs are in read-only pages. Outputs start out filled with a recognisable pattern and are shared with
/// child processes, so that what a child wrote before it ended can be looked at.
#ifndef VELTRANE_TESTS_GUARDED_ARRAY_H
#define VELTRANE_TESTS_GUARDED_ARRAY_H

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <span>
#include <type_traits>
#include <utility>

#include <sys/mman.h>
#include <unistd.h>

/// The byte that fills an output array, and the room beside it, before the library is called.
constexpr unsigned char untouchedByte = 0x5A;

enum class FlushWith
{
    end,
    start
};

class GuardedBytes
{
public:
    /// Where arrays made from now on are placed.
    static inline FlushWith placement = FlushWith::end;

    explicit GuardedBytes(std::size_t nbBytes) : itsNbBytes(nbBytes)
    {
        const std::size_t page = pageSize();
        itsRoom = (nbBytes + page - 1) / page * page;
        void* region = mmap(nullptr, itsRoom + 2 * page, PROT_NONE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (region == MAP_FAILED)
        {
            std::abort();
        }
        itsRegion = static_cast<unsigned char*>(region);
        protect(PROT_READ | PROT_WRITE);
        if (itsRoom != 0)
        {
            std::memset(itsRegion + page, untouchedByte, itsRoom);
        }
        itsData = itsRegion + page + (placement == FlushWith::end ? itsRoom - nbBytes : 0);
    }

    GuardedBytes(GuardedBytes&& other) noexcept
        : itsRegion(std::exchange(other.itsRegion, nullptr)), itsData(other.itsData), itsNbBytes(other.itsNbBytes),
          itsRoom(other.itsRoom)
    {
    }

    GuardedBytes& operator=(GuardedBytes&&) = delete;

    ~GuardedBytes()
    {
        if (itsRegion != nullptr)
        {
            munmap(itsRegion, itsRoom + 2 * pageSize());
        }
    }

    void makeReadOnly() { protect(PROT_READ); }

    unsigned char* data() const { return itsData; }

    /// True when nothing was written into the room between the array and the pages around it.
    bool surroundingsUntouched() const
    {
        const unsigned char* roomBegin = itsRegion + pageSize();
        for (const unsigned char* byte = roomBegin; byte != roomBegin + itsRoom; ++byte)
        {
            const bool inArray = byte >= itsData && byte < itsData + itsNbBytes;
            if (!inArray && *byte != untouchedByte)
            {
                return false;
            }
        }
        return true;
    }

private:
    static std::size_t pageSize() { return static_cast<std::size_t>(sysconf(_SC_PAGESIZE)); }

    void protect(int access)
    {
        if (itsRoom != 0 && mprotect(itsRegion + pageSize(), itsRoom, access) != 0)
        {
            std::abort();
        }
    }

    unsigned char* itsRegion;
    unsigned char* itsData;
    std::size_t itsNbBytes;
    std::size_t itsRoom;
};

/// A read-only copy of some values. The data pointer is not const because the library's interface is not.
template <typename T> class InputArray
{
    static_assert(std::is_trivially_copyable_v<T>);

public:
    explicit InputArray(std::span<const T> values) : itsBytes(values.size_bytes())
    {
        if (!values.empty())
        {
            std::memcpy(itsBytes.data(), values.data(), values.size_bytes());
        }
        itsBytes.makeReadOnly();
    }

    T* data() const { return reinterpret_cast<T*>(itsBytes.data()); }

private:
    GuardedBytes itsBytes;
};

/// An array for the library to write.
template <typename T> class OutputArray
{
    static_assert(std::is_trivially_copyable_v<T>);

public:
    explicit OutputArray(std::size_t nbValues) : itsBytes(nbValues * sizeof(T)), itsNbValues(nbValues) {}

    T* data() const { return reinterpret_cast<T*>(itsBytes.data()); }
    std::size_t size() const { return itsNbValues; }
    const T& operator[](std::size_t index) const { return data()[index]; }

    /// True when the value still has the pattern that the array was filled with.
    bool untouched(std::size_t index) const
    {
        const unsigned char* bytes = itsBytes.data() + index * sizeof(T);
        for (std::size_t i = 0; i < sizeof(T); ++i)
        {
            if (bytes[i] != untouchedByte)
            {
                return false;
            }
        }
        return true;
    }

    bool surroundingsUntouched() const { return itsBytes.surroundingsUntouched(); }

private:
    GuardedBytes itsBytes;
    std::size_t itsNbValues;
};

#endif
