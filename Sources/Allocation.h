/// The one place where the library obtains and gives back memory.
#ifndef VELTRANE_ALLOCATION_H
#define VELTRANE_ALLOCATION_H

#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>

/// `size` bytes of the runtime's standard allocation. An exhausted heap raises the runtime's exception; a host may have
/// replaced the allocation by one that returns null instead, so every caller tests the result.
void* allocateBytes(std::size_t size);

/// Gives back what allocateBytes returned; null is allowed.
void releaseBytes(void* bytes) noexcept;

/// Room for `count` values, none of them constructed; null if the request cannot be met, a negative count included.
template <class T> T* allocateArray(std::int64_t count)
{
    constexpr auto most = std::numeric_limits<std::ptrdiff_t>::max() / static_cast<std::ptrdiff_t>(sizeof(T));
    if (count < 0 || count > most)
    {
        return nullptr;
    }
    return static_cast<T*>(allocateBytes(static_cast<std::size_t>(count) * sizeof(T)));
}

/// An array of plain values that is given back with its owner.
template <class T> class OwnedArray
{
public:
    OwnedArray() = default;
    OwnedArray(const OwnedArray&) = delete;
    OwnedArray& operator=(const OwnedArray&) = delete;
    OwnedArray(OwnedArray&& other) noexcept : itsValues(std::exchange(other.itsValues, nullptr)) {}
    OwnedArray& operator=(OwnedArray&& other) noexcept
    {
        std::swap(itsValues, other.itsValues);
        return *this;
    }
    ~OwnedArray() { releaseBytes(itsValues); }

    /// Takes room for `count` values, undefined, in the place of what it held; false if the request cannot be met.
    bool allocate(std::int64_t count)
    {
        release();
        itsValues = allocateArray<T>(count);
        return itsValues != nullptr;
    }

    /// Gives its memory back.
    void release()
    {
        releaseBytes(itsValues);
        itsValues = nullptr;
    }

    explicit operator bool() const { return itsValues != nullptr; }
    T* get() const { return itsValues; }
    T& operator[](std::int64_t i) const { return itsValues[i]; }

private:
    T* itsValues = nullptr;
};

#endif
