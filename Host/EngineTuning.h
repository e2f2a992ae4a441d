/// The settings of a search as the engine has them.
#ifndef VELTRANE_HOST_ENGINE_TUNING_H
#define VELTRANE_HOST_ENGINE_TUNING_H

#include "CallSettings.h"

#include "Map/EngineRules.h"

namespace veltrane
{

/// Throws InvalidOption if a setting is out of its range.
SearchTuning engineTuning(const Tuning& tuning);

EngineRules engineRules(const Rules& rules);

} // namespace veltrane

#endif
