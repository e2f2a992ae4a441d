#include "ColourScale.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace veltrane
{
namespace
{

// Viridis, by St. van der Walt and N. Smith (public domain), at equal steps.
constexpr std::array<Colour, 9> colours{{{0.267, 0.005, 0.329},
                                         {0.283, 0.141, 0.458},
                                         {0.230, 0.322, 0.546},
                                         {0.173, 0.449, 0.558},
                                         {0.128, 0.567, 0.551},
                                         {0.158, 0.684, 0.502},
                                         {0.369, 0.789, 0.383},
                                         {0.678, 0.864, 0.190},
                                         {0.993, 0.906, 0.144}}};

/// 1, 2 or 5 times a power of ten.
double roundStep(double step)
{
    const double power = std::pow(10, std::floor(std::log10(step)));
    for (const double factor : {1.0, 2.0, 5.0})
    {
        if (factor * power >= step * (1 - 1e-9))
        {
            return factor * power;
        }
    }
    return 10 * power;
}

} // namespace

Colour ColourScale::of(double value) const
{
    const double part = max_ > min_ ? std::clamp((value - min_) / (max_ - min_), 0.0, 1.0) : 0.5;
    const double place = part * (colours.size() - 1);
    const auto lower = std::min(static_cast<std::size_t>(place), colours.size() - 2);
    const double weight = place - static_cast<double>(lower);
    Colour colour{};
    for (std::size_t i = 0; i < 3; ++i)
    {
        colour[i] = (1 - weight) * colours[lower][i] + weight * colours[lower + 1][i];
    }
    return colour;
}

std::vector<double> ColourScale::ticks(int count) const
{
    if (!(max_ > min_))
    {
        return {min_};
    }
    const double step = roundStep((max_ - min_) / count);
    std::vector<double> result;
    const double slack = 1e-9 * (max_ - min_);
    for (double number = std::ceil((min_ - slack) / step); number * step <= max_ + slack; ++number)
    {
        result.push_back(number == 0 ? 0 : number * step); // no -0
    }
    return result;
}

std::optional<ColourScale> scaleOf(std::vector<double> values)
{
    std::erase_if(values, [](double value) { return !std::isfinite(value); });
    if (values.empty())
    {
        return std::nullopt;
    }
    const auto [smallest, largest] = std::ranges::minmax(values);
    constexpr double fewest = 0.005;    // of all
    constexpr double worthwhile = 0.15; // of the range
    const auto skipped = static_cast<std::ptrdiff_t>(fewest * static_cast<double>(values.size()));
    const auto inOrder = [&](std::ptrdiff_t place)
    {
        std::nth_element(values.begin(), values.begin() + place, values.end());
        return values[static_cast<std::size_t>(place)];
    };
    double min = inOrder(skipped);
    double max = inOrder(std::ssize(values) - 1 - skipped);
    const double range = largest - smallest;
    if (min - smallest < worthwhile * range)
    {
        min = smallest;
    }
    if (largest - max < worthwhile * range)
    {
        max = largest;
    }
    return ColourScale(min, max, {smallest, largest});
}

std::optional<ColourScale> united(const std::optional<ColourScale>& first, const std::optional<ColourScale>& second)
{
    if (!first || !second)
    {
        return first ? first : second;
    }
    return ColourScale(std::min(first->min(), second->min()), std::max(first->max(), second->max()),
                       {std::min(first->seenMin(), second->seenMin()), std::max(first->seenMax(), second->seenMax())});
}

std::vector<std::string> tickTexts(const std::vector<double>& ticks)
{
    double largest = 0;
    for (const double tick : ticks)
    {
        largest = std::max(largest, std::abs(tick));
    }
    // Numbers below a million get no exponent.
    const int digitsBeforePoint = largest >= 1 && largest < 1e6 ? static_cast<int>(std::log10(largest)) + 1 : 1;
    std::vector<std::string> texts;
    for (int digits = digitsBeforePoint; digits < 17; ++digits)
    {
        texts.clear();
        for (const double tick : ticks)
        {
            std::array<char, 40> buffer{};
            std::snprintf(buffer.data(), buffer.size(), "%.*g", digits, tick);
            texts.emplace_back(buffer.data());
        }
        const bool isExact = std::ranges::equal(
            ticks, texts,
            [&](double tick, const std::string& text)
            { return std::abs(std::stod(text) - tick) <= 1e-6 * std::abs(ticks.back() - ticks.front()); });
        if (isExact)
        {
            break;
        }
    }
    return texts;
}

} // namespace veltrane
