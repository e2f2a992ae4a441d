/// The parts of a search that work on several points or boxes at once. How many these are depends on the processor; the
/// bits of the results do not.
///
/// Each file that makes packs of one size is compiled for other processors, and includes the kernels in a namespace of
/// its own: an inline function outside could be taken by the linker for all.
#ifndef VELTRANE_PACKED_SEARCH_H
#define VELTRANE_PACKED_SEARCH_H

#include "BoxSides.h"
#include "PackedInversion.h"
#include "PackedPolish.h"

struct PackedSearch
{
    std::size_t packSize; ///< 4, 8 or 16 lanes
    InvertPack invert;
    BoxesAround boxesAround;
    PolishPack polish;
};

/// The one of a given pack size, with null functions if this processor or build does not have it.
PackedSearch packedSearch(std::size_t packSize);

/// The widest that there is.
PackedSearch widestPackedSearch();

PackedSearch packedSearchOf8();
PackedSearch packedSearchOf16();

#endif
