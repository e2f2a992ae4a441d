/// A sparse matrix in compressed rows.
#ifndef VELTRANE_SPARSE_ROWS_H
#define VELTRANE_SPARSE_ROWS_H

#include "../Allocation.h"

#include <cstdint>

struct SparseRows
{
    std::int64_t nbRows = 0;
    std::int64_t nbColumns = 0;
    OwnedArray<std::int64_t> rowStarts; ///< nbRows + 1
    OwnedArray<int> columns;            ///< in increasing order within a row, each once
    OwnedArray<double> values;

    std::int64_t nbEntries() const { return rowStarts ? rowStarts[nbRows] : 0; }
};

#endif
