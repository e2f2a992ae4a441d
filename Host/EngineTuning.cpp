#include "EngineTuning.h"

#include "Errors.h"
#include "Text.h"

namespace veltrane
{

SearchTuning engineTuning(const Tuning& tuning)
{
    // Written so that "not a number" fails too.
    if (tuning.tolerance && !(*tuning.tolerance > 0 && *tuning.tolerance < 1))
    {
        throw InvalidOption(text("the tolerance ", *tuning.tolerance, " is not between 0 and 1"));
    }
    if (tuning.bucketFactor && !(*tuning.bucketFactor >= 0 && *tuning.bucketFactor <= 1000))
    {
        throw InvalidOption(text("the bucket factor ", *tuning.bucketFactor, " is not between 0 and 1000"));
    }
    if (tuning.maxBuckets && *tuning.maxBuckets < 1)
    {
        throw InvalidOption(text("the number of buckets cannot be limited to ", *tuning.maxBuckets));
    }
    SearchTuning result;
    result.refCoordTolerance = tuning.tolerance.value_or(result.refCoordTolerance);
    result.bucketFactor = tuning.bucketFactor.value_or(result.bucketFactor);
    result.maxNbBuckets = tuning.maxBuckets.value_or(result.maxNbBuckets);
    return result;
}

EngineRules engineRules(const Rules& rules)
{
    return {.refusesOverhang = rules.refusesOverhang,
            .admitsTypeCodesOnly = rules.admitsExportedKindsOnly,
            .singularElements =
                rules.leavesOutSingularElements ? SingularElements::leaveOut : SingularElements::endComputation,
            .cloudsHaveNoNearMisses = !rules.pointsMayBeNear,
            .stopsAtUnreachedNodes = rules.stopsAtUnreachedNodes};
}

} // namespace veltrane
