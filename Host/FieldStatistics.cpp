#include "FieldStatistics.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace veltrane
{

ComponentStatistics statisticsOf(const Field& field, int component)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    double min = infinity;
    double max = -infinity;
    long double sum = 0;
    std::size_t count = 0;
    const auto add = [&](const auto& values)
    {
        const auto step = static_cast<std::size_t>(field.componentCount());
        for (auto i = static_cast<std::size_t>(component); i < values.size(); i += step)
        {
            const auto value = static_cast<double>(values[i]);
            if (std::isfinite(value) && value > double{undefinedBound})
            {
                min = std::min(min, value);
                max = std::max(max, value);
                sum += value;
                ++count;
            }
        }
    };
    std::visit(add, field.values());

    const std::size_t unusableCount = field.locationCount() - count;
    if (count == 0)
    {
        constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
        return {notANumber, notANumber, notANumber, unusableCount};
    }
    return {min, max, static_cast<double>(sum / static_cast<long double>(count)), unusableCount};
}

} // namespace veltrane
