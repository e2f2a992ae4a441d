// Compiled for processors with AVX-512: see PackedSearch.h.
#include "PackedSearch.h"

#include "PackedBoxTest.h"
#include "PackedInversionKernel.h"

PackedSearch packedSearchOf16()
{
    return {16, invertPack<16>, boxesAround<16>};
}
