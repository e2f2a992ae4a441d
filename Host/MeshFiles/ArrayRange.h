/// Between which numbers the values of an array lie.
#ifndef VELTRANE_HOST_ARRAY_RANGE_H
#define VELTRANE_HOST_ARRAY_RANGE_H

#include <limits>

class vtkDataArray;

namespace veltrane
{

struct ArrayRange
{
    double min = std::numeric_limits<double>::quiet_NaN(); ///< over all components; not a number if there are none
    double max = std::numeric_limits<double>::quiet_NaN();
    long long notANumberCount = 0; ///< among all components
};

/// \param threads  0: as many as usableThreadCount() tells
ArrayRange rangeOf(vtkDataArray& array, int threads);

} // namespace veltrane

#endif
