#include "FieldStatistics.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace veltrane
{

ComponentStatistics statisticsOf(const Field& field, int component,
                                 const std::function<bool(std::size_t location)>& isCounted)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    double min = infinity;
    double max = -infinity;
    long double sum = 0;
    std::size_t count = 0;
    std::size_t unusableCount = 0;
    const auto add = [&](const auto& values)
    {
        const auto step = static_cast<std::size_t>(field.componentCount());
        for (std::size_t location = 0; location < field.locationCount(); ++location)
        {
            if (isCounted && !isCounted(location))
            {
                continue;
            }
            const auto value = static_cast<double>(values[location * step + static_cast<std::size_t>(component)]);
            if (!std::isfinite(value) || value <= double{undefinedBound})
            {
                ++unusableCount;
                continue;
            }
            min = std::min(min, value);
            max = std::max(max, value);
            sum += value;
            ++count;
        }
    };
    std::visit(add, field.values());

    if (count == 0)
    {
        constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
        return {notANumber, notANumber, notANumber, unusableCount};
    }
    return {min, max, static_cast<double>(sum / static_cast<long double>(count)), unusableCount};
}

} // namespace veltrane
