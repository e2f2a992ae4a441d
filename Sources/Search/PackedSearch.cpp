#include "PackedSearch.h"

#include "PackedBoxTest.h"
#include "PackedInversionKernel.h"
#include "PackedPolishKernel.h"

PackedSearch packedSearch(std::size_t packSize)
{
    if (packSize == 4)
    {
        return {4, invertPack<4>, boxesAround<4>, polishPack<4>};
    }
#if defined(VELTRANE_HAS_WIDE_PACKS)
    if (packSize == 8 && __builtin_cpu_supports("avx2"))
    {
        return packedSearchOf8();
    }
    if (packSize == 16 && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512vl"))
    {
        return packedSearchOf16();
    }
#endif
    return {packSize, nullptr, nullptr, nullptr};
}

PackedSearch widestPackedSearch()
{
    std::size_t packSize = maxPackSize;
    while (packedSearch(packSize).invert == nullptr)
    {
        packSize /= 2;
    }
    return packedSearch(packSize);
}
