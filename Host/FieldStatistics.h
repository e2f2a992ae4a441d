/// What the values of a field are like.
#ifndef VELTRANE_HOST_FIELD_STATISTICS_H
#define VELTRANE_HOST_FIELD_STATISTICS_H

#include "Field.h"

#include <cstddef>

namespace veltrane
{

/// Figures of one component over all locations, those without a usable value left out: NaN, infinite or undefined (see
/// undefinedBound). Without any usable value the figures are not numbers.
struct ComponentStatistics
{
    double min;
    double max;
    double mean; ///< every location counts the same, whatever the volume around it
    std::size_t unusableCount;
};

/// \param component  counts from 0
ComponentStatistics statisticsOf(const Field& field, int component);

} // namespace veltrane

#endif
