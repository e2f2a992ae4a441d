#include "NearPoints.h"

#include "ElementSizes.h"
#include "Report.h"
#include "Text.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace veltrane
{
namespace
{

} // namespace

NearDistances nearDistances(const std::vector<Finding>& findings, const std::vector<double>& distances)
{
    NearDistances near;
    double sum = 0;
    for (std::size_t i = 0; i < findings.size(); ++i)
    {
        if (findings[i] == Finding::near)
        {
            ++near.count;
            sum += distances[i];
            near.largest = std::max(near.largest, distances[i]);
        }
    }
    near.mean = near.count == 0 ? 0 : sum / static_cast<double>(near.count);
    return near;
}

void warnOfNearPoints(const Mesh& source, const std::vector<Finding>& findings, const std::vector<double>& distances,
                      const std::string& points)
{
    const NearDistances near = nearDistances(findings, distances);
    if (near.count == 0)
    {
        return;
    }
    const auto found = static_cast<double>(near.count + std::ranges::count(findings, Finding::inside));
    const double size = meanElementSize(source);
    constexpr double manyPart = 0.1;
    constexpr double notableDistance = 0.02; // as part of the size; rounding and curved sides stay below
    constexpr double farDistance = 0.25;
    const bool areMany = static_cast<double>(near.count) > manyPart * found && near.mean > notableDistance * size;
    if (areMany || near.largest > farDistance * size)
    {
        constexpr int digits = 3;
        warn(text(near.count, " of ", static_cast<long long>(found), " ", points,
                  " are not in the source but near it and take values from up to ", inDigits(digits, near.largest),
                  " away, where source cells are ", inDigits(digits, size),
                  " long on average: do both lie where they should? --near-limit makes those farther away far"),
             "near points");
    }
}

Field distanceField(const std::vector<Finding>& findings, const std::vector<double>& distances, Location location)
{
    std::vector<double> values(distances);
    for (std::size_t i = 0; i < values.size(); ++i)
    {
        if (findings[i] != Finding::inside && findings[i] != Finding::near)
        {
            values[i] = std::numeric_limits<double>::quiet_NaN();
        }
    }
    return Field(distanceFieldName, location, 1, std::move(values));
}

} // namespace veltrane
