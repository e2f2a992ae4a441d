/// What the values of a field are like.
#ifndef VELTRANE_HOST_FIELD_STATISTICS_H
#define VELTRANE_HOST_FIELD_STATISTICS_H

#include "Field.h"

#include <cstddef>
#include <functional>

namespace veltrane
{

/// Figures of one component over the locations, those without a usable value left out: NaN, infinite or undefined (see
/// undefinedBound). Without any usable value the figures are not numbers.
struct ComponentStatistics
{
    double min;
    double max;
    double mean; ///< every location counts the same, whatever the volume around it
    std::size_t unusableCount;
};

/// \param field  may have values that are not usable
/// \param component  counts from 0
/// \param isCounted  whether a location takes part; all do if there is no such function
ComponentStatistics statisticsOf(const Field& field, int component,
                                 const std::function<bool(std::size_t location)>& isCounted = {});

} // namespace veltrane

#endif
