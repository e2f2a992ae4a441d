// Compiled for processors with AVX2: see PackedInversionKernel.h.
#include "PackedInversionKernel.h"

void invertPackOf8(int typeCode, const PackedProblem& problem, PackedSolution& solution)
{
    invertPack<8>(typeCode, problem, solution);
}
