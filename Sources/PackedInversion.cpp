#include "PackedInversion.h"

#include "PackedInversionKernel.h"

void invertPackOf4(int typeCode, const PackedProblem& problem, PackedSolution& solution)
{
    invertPack<4>(typeCode, problem, solution);
}

PackedInversion packedInversion(std::size_t packSize)
{
    if (packSize == 4)
    {
        return {4, invertPackOf4};
    }
#if defined(VELTRANE_HAS_WIDE_PACKS)
    if (packSize == 8 && __builtin_cpu_supports("avx2"))
    {
        return {8, invertPackOf8};
    }
    if (packSize == 16 && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512vl"))
    {
        return {16, invertPackOf16};
    }
#endif
    return {packSize, nullptr};
}

PackedInversion widestPackedInversion()
{
    std::size_t packSize = maxPackSize;
    while (packedInversion(packSize).invert == nullptr)
    {
        packSize /= 2;
    }
    return packedInversion(packSize);
}
