/// Points of the target that are in no element of the source and take the values of a near one.
#ifndef VELTRANE_COMMAND_NEAR_POINTS_H
#define VELTRANE_COMMAND_NEAR_POINTS_H

#include "Transfer.h"

#include <string>
#include <vector>

namespace veltrane
{

/// How far they are from the places whose values they take.
struct NearDistances
{
    long long count = 0;
    double mean = 0;
    double largest = 0;
};

NearDistances nearDistances(const std::vector<Finding>& findings, const std::vector<double>& distances);

/// Warns if they are many and not quite at the source, or if one is far from it as elements go.
///
/// \param points  what they are: "nodes"
void warnOfNearPoints(const Mesh& source, const std::vector<Finding>& findings, const std::vector<double>& distances,
                      const std::string& points);

/// The distances as a field for the output: 0 of points in an element, and not a number of those that take no values
/// of one.
Field distanceField(const std::vector<Finding>& findings, const std::vector<double>& distances, Location location);

/// Arrays that a transfer writes about itself.
inline constexpr const char* distanceFieldName = "SourceDistance";
inline constexpr const char* gaussPointMaskName = "ValidGaussPointMask";

} // namespace veltrane

#endif
