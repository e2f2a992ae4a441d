#include "QualityFigures.h"

#include "NearPoints.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <numeric>

namespace veltrane
{
namespace
{

double valueAt(const Field& field, std::size_t index)
{
    const double value =
        std::visit([&](const auto& values) { return static_cast<double>(values[index]); }, field.values());
    return value > double{undefinedBound} ? value : std::numeric_limits<double>::quiet_NaN();
}

/// Euclidean norm over the components of what stands at a location.
template <typename ValueOf> double magnitudeOf(const Field& field, std::size_t location, const ValueOf& valueOf)
{
    const auto count = static_cast<std::size_t>(field.componentCount());
    double square = 0;
    for (std::size_t i = location * count; i < (location + 1) * count; ++i)
    {
        const double value = valueOf(i);
        square += value * value;
    }
    return std::sqrt(square);
}

double magnitudeAt(const Field& field, std::size_t location)
{
    return magnitudeOf(field, location, [&](std::size_t i) { return valueAt(field, i); });
}

Histogram histogramOf(std::vector<double> edges, const std::vector<double>& values)
{
    Histogram histogram{std::move(edges), {}};
    histogram.counts.resize(histogram.edges.size() - 1);
    for (const double value : values)
    {
        if (std::isfinite(value))
        {
            const auto after = std::ranges::upper_bound(histogram.edges, value) - histogram.edges.begin();
            const auto interval = std::clamp<std::ptrdiff_t>(after - 1, 0, std::ssize(histogram.counts) - 1);
            ++histogram.counts[static_cast<std::size_t>(interval)];
        }
    }
    return histogram;
}

/// Per Gauss point, or per node, an element that it belongs to, or -1.
std::vector<int> elementsOf(const Mesh& mesh, Location location)
{
    std::vector<int> elements;
    if (location == Location::gaussPoints)
    {
        for (int element = 0; element < mesh.elementCount(); ++element)
        {
            elements.insert(elements.end(), static_cast<std::size_t>(mesh.gaussPointCountOf(element)), element);
        }
        return elements;
    }
    elements.assign(static_cast<std::size_t>(mesh.nodeCount()), -1);
    for (int element = mesh.elementCount() - 1; element >= 0; --element)
    {
        for (const int node : mesh.nodesOf(element))
        {
            elements[static_cast<std::size_t>(node)] = element;
        }
    }
    return elements;
}

} // namespace

std::vector<double> differencesOf(const FieldRoundTrip& field, const Field& source)
{
    std::vector<double> differences(source.locationCount());
    for (std::size_t location = 0; location < differences.size(); ++location)
    {
        differences[location] = magnitudeOf(
            source, location, [&](std::size_t i) { return valueAt(field.returned, i) - valueAt(source, i); });
    }
    return differences;
}

Histogram histogramOfDifferences(const FieldRoundTrip& field, const Field& source)
{
    std::vector<double> edges;
    for (int halfPower = -14; halfPower <= 0; ++halfPower)
    {
        edges.push_back(std::pow(10.0, 0.5 * halfPower));
    }
    std::vector<double> parts = differencesOf(field, source);
    const double largest = field.comparison.largestReferenceMagnitude;
    std::ranges::for_each(parts, [&](double& part) { part = part == 0 ? 0 : part / largest; });
    return histogramOf(std::move(edges), parts);
}

Histogram histogramOfDistances(const std::vector<Finding>& findings, const std::vector<double>& distances)
{
    constexpr int steps = 10;
    std::vector<double> near;
    for (std::size_t i = 0; i < findings.size(); ++i)
    {
        if (findings[i] == Finding::near)
        {
            near.push_back(distances[i]);
        }
    }
    const double largest = nearDistances(findings, distances).largest;
    if (!(largest > 0))
    {
        return {};
    }
    std::vector<double> edges;
    for (int step = 0; step <= steps; ++step)
    {
        edges.push_back(largest * step / steps);
    }
    return histogramOf(std::move(edges), near);
}

std::vector<WorstPlace> worstPlaces(const FieldRoundTrip& field, const Field& source, const Mesh& mesh,
                                    std::size_t count)
{
    const std::vector<double> differences = differencesOf(field, source);
    std::vector<std::size_t> order;
    for (std::size_t location = 0; location < differences.size(); ++location)
    {
        if (differences[location] > 0)
        {
            order.push_back(location);
        }
    }
    const std::size_t most = std::min(count, order.size());
    std::partial_sort(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(most), order.end(),
                      [&](std::size_t a, std::size_t b)
                      { return differences[a] > differences[b] || (differences[a] == differences[b] && a < b); });
    order.resize(most);
    const std::vector<int> elements = elementsOf(mesh, source.location());
    std::vector<WorstPlace> places;
    std::ranges::transform(order, std::back_inserter(places),
                           [&](std::size_t location)
                           {
                               return WorstPlace{static_cast<int>(location), elements[location],
                                                 magnitudeAt(source, location), magnitudeAt(field.returned, location),
                                                 differences[location]};
                           });
    return places;
}

} // namespace veltrane
