// Compiled for processors with AVX2: see PackedSearch.h.
#include "PackedSearch.h"

#include "PackedKernelsBegin.h"

namespace packs_of_8
{
#include "PackedBoxTest.h"
#include "PackedInversionKernel.h"
#include "PackedPolishKernel.h"
} // namespace packs_of_8

PackedSearch packedSearchOf8()
{
    return {8, packs_of_8::invertPack<8>, packs_of_8::boxesAround<8>, packs_of_8::polishPack<8>};
}
