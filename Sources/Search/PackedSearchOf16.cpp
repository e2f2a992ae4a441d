// Compiled for processors with AVX-512: see PackedSearch.h.
#include "PackedSearch.h"

#include "PackedKernelsBegin.h"

namespace packs_of_16
{
#include "PackedBoxTest.h"
#include "PackedInversionKernel.h"
#include "PackedPolishKernel.h"
} // namespace packs_of_16

PackedSearch packedSearchOf16()
{
    return {16, packs_of_16::invertPack<16>, packs_of_16::boxesAround<16>, packs_of_16::polishPack<16>};
}
