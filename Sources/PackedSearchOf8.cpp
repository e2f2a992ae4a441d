// Compiled for processors with AVX2: see PackedSearch.h.
#include "PackedSearch.h"

#include "PackedBoxTest.h"
#include "PackedInversionKernel.h"

PackedSearch packedSearchOf8()
{
    return {8, invertPack<8>, boxesAround<8>};
}
