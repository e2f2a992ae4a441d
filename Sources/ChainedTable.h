/// A three-level table T[n0][n1][n2] in three blocks: n0 pointers, n0 * n1 pointers, and the values, first index
/// slowest.
#ifndef VELTRANE_CHAINED_TABLE_H
#define VELTRANE_CHAINED_TABLE_H

#include "Allocation.h"

#include <cstdint>
#include <memory>
#include <type_traits>

/// The blocks of a table in the order in which they are allocated.
enum class TableBlock
{
    none,
    outerPointers,
    innerPointers,
    values
};

template <class T> class ChainedTable
{
public:
    ChainedTable() = default;
    ChainedTable(const ChainedTable&) = delete;
    ChainedTable& operator=(const ChainedTable&) = delete;
    ~ChainedTable()
    {
        if (itsValues)
        {
            std::destroy_n(itsValues.get(), nbValues());
        }
    }

    /// Allocates the blocks and links them; plain values are left undefined, others are default-constructed.
    /// Returns the block that could not be allocated, or TableBlock::none.
    TableBlock allocate(std::int64_t n0, std::int64_t n1, std::int64_t n2)
    {
        itsIsLinked = false;
        if (!itsOuterPointers.allocate(n0))
        {
            return TableBlock::outerPointers;
        }
        if (!itsInnerPointers.allocate(n0 * n1))
        {
            return TableBlock::innerPointers;
        }
        if (!itsValues.allocate(n0 * n1 * n2))
        {
            return TableBlock::values;
        }
        if constexpr (!std::is_trivially_default_constructible_v<T>)
        {
            std::uninitialized_default_construct_n(itsValues.get(), n0 * n1 * n2);
        }
        itsSizes[0] = n0;
        itsSizes[1] = n1;
        itsSizes[2] = n2;
        return TableBlock::none;
    }

    explicit operator bool() const { return static_cast<bool>(itsValues); }
    T** operator[](std::int64_t i) const
    {
        if (!itsIsLinked)
        {
            link();
        }
        return itsOuterPointers[i];
    }

    /// The block of values, or null.
    T* values() const { return itsValues.get(); }
    std::int64_t nbValues() const { return itsSizes[0] * itsSizes[1] * itsSizes[2]; }

private:
    void link() const
    {
        for (std::int64_t i = 0; i < itsSizes[0]; ++i)
        {
            itsOuterPointers[i] = itsInnerPointers.get() + i * itsSizes[1];
        }
        for (std::int64_t row = 0; row < itsSizes[0] * itsSizes[1]; ++row)
        {
            itsInnerPointers[row] = itsValues.get() + row * itsSizes[2];
        }
        itsIsLinked = true;
    }

    OwnedArray<T**> itsOuterPointers;
    OwnedArray<T*> itsInnerPointers;
    OwnedArray<T> itsValues;
    std::int64_t itsSizes[3]{};
    mutable bool itsIsLinked = false;
};

#endif
