/// Colours for values.
#ifndef VELTRANE_HOST_COLOUR_SCALE_H
#define VELTRANE_HOST_COLOUR_SCALE_H

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace veltrane
{

/// Red, green and blue from 0 to 1.
using Colour = std::array<double, 3>;

/// From dark blue over green to yellow: evenly for the eye, in print and for people who do not see all colours.
class ColourScale
{
public:
    ColourScale(double min, double max) : ColourScale(min, max, {min, max}) {}

    /// \param seen  the smallest and the largest value that there is, which may be outside the scale
    ColourScale(double min, double max, std::array<double, 2> seen) : min_(min), max_(max), seen_(seen) {}

    double min() const { return min_; }
    double max() const { return max_; }
    double seenMin() const { return seen_[0]; }
    double seenMax() const { return seen_[1]; }

    /// Values outside have the colour of the nearer end.
    Colour of(double value) const;

    /// Round numbers within the scale, about as many as asked for.
    std::vector<double> ticks(int count) const;

private:
    double min_;
    double max_;
    std::array<double, 2> seen_;
};

/// The scale of all these values but for the smallest and the largest ones, if they are so few that they would take the
/// colours away from all others; nothing without a finite value.
std::optional<ColourScale> scaleOf(std::vector<double> values);

/// The scale that reaches over both.
std::optional<ColourScale> united(const std::optional<ColourScale>& first, const std::optional<ColourScale>& second);

/// All in as many decimal places as are needed to tell them apart.
std::vector<std::string> tickTexts(const std::vector<double>& ticks);

} // namespace veltrane

#endif
