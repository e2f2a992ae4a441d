// Compiled for processors with AVX-512: see PackedInversionKernel.h.
#include "PackedInversionKernel.h"

void invertPackOf16(int typeCode, const PackedProblem& problem, PackedSolution& solution)
{
    invertPack<16>(typeCode, problem, solution);
}
