#include "Arguments.h"

namespace veltrane
{

Rules rulesOf(const Settings& settings)
{
    Rules rules = settings.isAsExported ? asExported() : Rules{};
    rules.pointsMayBeNear = settings.pointsMayBeNear;
    rules.nearLimit = settings.nearLimit.value_or(rules.nearLimit);
    rules.inDoublePrecision = settings.inDoublePrecision.value_or(rules.inDoublePrecision);
    return rules;
}

Tuning tuningOf(const Settings& settings)
{
    return {.tolerance = settings.tolerance, .bucketFactor = settings.bucketFactor, .maxBuckets = settings.maxBuckets};
}

ProgressCallback progressTo(nb::handle callback)
{
    return [callback](const Progress& progress)
    {
        const nb::gil_scoped_acquire gil;
        if (PyErr_CheckSignals() != 0)
        {
            throw nb::python_error();
        }
        if (callback.is_none())
        {
            return true;
        }
        const nb::object answer = callback(progress.percent, nb::str(progress.stage.data(), progress.stage.size()));
        return !answer.is(nb::bool_(false));
    };
}

} // namespace veltrane
