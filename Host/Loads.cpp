#include "Loads.h"

#include "Errors.h"
#include "Text.h"
#include "VolumeElements.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <variant>

namespace veltrane
{
namespace
{

using Place = std::array<double, 3>;

Place placeOf(const Mesh& mesh, std::size_t node)
{
    const auto take = [&](const auto& coordinates)
    {
        return Place{static_cast<double>(coordinates[3 * node]), static_cast<double>(coordinates[3 * node + 1]),
                     static_cast<double>(coordinates[3 * node + 2])};
    };
    return mesh.exactCoordinates().empty() ? take(mesh.coordinates()) : take(mesh.exactCoordinates());
}

/// Adds up loads one by one.
class Sums
{
public:
    Sums(int componentCount, const Place& about) : about_(about)
    {
        sums_.sum.resize(static_cast<std::size_t>(componentCount));
        sums_.moment.resize(componentCount == 1 || componentCount == 3 ? 3 : 0);
    }

    void add(const Place& place, std::span<const double> load)
    {
        const Place way{place[0] - about_[0], place[1] - about_[1], place[2] - about_[2]};
        double square = 0;
        for (std::size_t i = 0; i < load.size(); ++i)
        {
            sums_.sum[i] += load[i];
            square += load[i] * load[i];
        }
        sums_.magnitude += std::sqrt(square);
        sums_.momentMagnitude += std::sqrt(square) * std::hypot(way[0], way[1], way[2]);
        for (std::size_t i = 0; i < sums_.moment.size(); ++i)
        {
            const std::size_t j = (i + 1) % 3;
            const std::size_t k = (i + 2) % 3;
            sums_.moment[i] += load.size() == 1 ? way[i] * load[0] : way[j] * load[k] - way[k] * load[j];
        }
    }

    const LoadSums& sums() const { return sums_; }

private:
    Place about_;
    LoadSums sums_;
};

/// In double precision, node by node, component by component.
std::vector<double> doublesOf(const Field& field)
{
    return std::visit([](const auto& values) { return std::vector<double>(values.begin(), values.end()); },
                      field.values());
}

void checkLoads(const Field& loads, const Mesh& mesh)
{
    if (loads.location() != Location::nodes || loads.locationCount() != static_cast<std::size_t>(mesh.nodeCount()))
    {
        throw InvalidData(
            text("the loads '", loads.name(), "' are not at the ", mesh.nodeCount(), " nodes of the mesh"));
    }
}

/// Node by node, those for which there is something.
LoadSums sumsOf(std::span<const double> values, int componentCount, const Mesh& mesh, const Place& about)
{
    Sums sums(componentCount, about);
    const auto step = static_cast<std::size_t>(componentCount);
    for (std::size_t node = 0; node < values.size() / step; ++node)
    {
        sums.add(placeOf(mesh, node), values.subspan(node * step, step));
    }
    return sums.sums();
}

/// The loads that are not 0, where they are.
struct LoadedNodes
{
    std::vector<std::size_t> nodes;
    std::vector<double> values;

    LoadedNodes(const Field& loads, std::span<const double> all)
    {
        const auto step = static_cast<std::size_t>(loads.componentCount());
        for (std::size_t node = 0; node < loads.locationCount(); ++node)
        {
            const auto load = all.subspan(node * step, step);
            if (!std::ranges::all_of(load, [](double value) { return std::isfinite(value); }))
            {
                throw InvalidData(text("the load '", loads.name(), "' at node ", node + 1,
                                       ", counted from 1, is not a finite number"));
            }
            if (std::ranges::any_of(load, [](double value) { return value != 0; }))
            {
                nodes.push_back(node);
                values.insert(values.end(), load.begin(), load.end());
            }
        }
    }
};

PointCloud cloudOf(const Mesh& mesh, const std::vector<std::size_t>& nodes)
{
    std::vector<int> materialOfNode(static_cast<std::size_t>(mesh.nodeCount()), 0);
    for (int element = mesh.elementCount() - 1; element >= 0; --element)
    {
        for (const int node : mesh.nodesOf(element))
        {
            materialOfNode[static_cast<std::size_t>(node)] = mesh.materialOf(element);
        }
    }
    std::vector<double> exact;
    std::vector<int> materials;
    for (const std::size_t node : nodes)
    {
        const Place place = placeOf(mesh, node);
        exact.insert(exact.end(), place.begin(), place.end());
        materials.push_back(materialOfNode[node]);
    }
    return PointCloud({}, std::move(exact), std::move(materials), mesh.materials());
}

/// The Euclidean norm of a difference as part of a magnitude.
double differencePart(std::span<const double> first, std::span<const double> second, double magnitude)
{
    double square = 0;
    for (std::size_t i = 0; i < first.size(); ++i)
    {
        square += (first[i] - second[i]) * (first[i] - second[i]);
    }
    return square == 0 ? 0 : magnitude > 0 ? std::sqrt(square) / magnitude : std::numeric_limits<double>::infinity();
}

std::string numbersText(std::span<const double> numbers)
{
    std::string words;
    for (const double number : numbers)
    {
        words += text(words.empty() ? "" : ", ", static_cast<float>(number));
    }
    return words;
}

} // namespace

double relativeDifference(const LoadSums& sums, const LoadSums& reference)
{
    return std::max(differencePart(sums.sum, reference.sum, reference.magnitude),
                    differencePart(sums.moment, reference.moment, reference.momentMagnitude));
}

std::array<double, 3> middleOf(const Mesh& mesh)
{
    const Box box = mesh.boundingBox();
    Place middle{};
    for (std::size_t i = 0; i < 3; ++i)
    {
        middle[i] = (double{box.min[i]} + double{box.max[i]}) / 2;
    }
    return middle;
}

LoadSums loadSumsOf(const Field& loads, const Mesh& mesh, const std::array<double, 3>& about)
{
    checkLoads(loads, mesh);
    return sumsOf(doublesOf(loads), loads.componentCount(), mesh, about);
}

DistributedLoads distributeLoads(const Mesh& source, const Field& loads, const Mesh& target, const LoadOptions& options)
{
    checkLoads(loads, source);
    if (options.mode == OutsideMode::propagate)
    {
        throw InvalidOption(
            "loads outside the target cannot be propagated; they are an error, or left out and summed up");
    }
    const std::vector<double> all = doublesOf(loads);
    const LoadedNodes loaded(loads, all);
    const VolumeElements elements(target, "target");
    const int componentCount = loads.componentCount();
    const auto step = static_cast<std::size_t>(componentCount);
    const Place about = middleOf(source);
    const auto nothing = [&] { return Sums(componentCount, about).sums(); };
    DistributedLoads result{.atTarget = Field(loads.name(), Location::nodes, componentCount,
                                              std::vector<double>(static_cast<std::size_t>(target.nodeCount()) * step)),
                            .about = about,
                            .source = sumsOf(all, componentCount, source, about),
                            .target = nothing(),
                            .outside = nothing(),
                            .loadedNodes = loaded.nodes.size()};
    if (loaded.nodes.empty())
    {
        return result;
    }
    Rules rules = options.rules;
    rules.pointsMayBeNear = true;
    const Map map(elements.mesh(), cloudOf(source, loaded.nodes),
                  {.mode = OutsideMode::defaultValue,
                   .takesChecksums = false,
                   .rules = rules,
                   .tuning = options.tuning,
                   .threads = options.threads,
                   .progress = options.progress});
    const Places places = map.places();
    Sums outside(componentCount, about);
    for (std::size_t i = 0; i < loaded.nodes.size(); ++i)
    {
        if (places.findings[i] == Finding::near)
        {
            ++result.nearNodes;
            result.largestNearDistance = std::max(result.largestNearDistance, places.distances[i]);
        }
        else if (places.findings[i] != Finding::inside)
        {
            ++result.outsideNodes;
            outside.add(placeOf(source, loaded.nodes[i]), std::span(loaded.values).subspan(i * step, step));
        }
    }
    result.outside = outside.sums();
    if (result.outsideNodes > 0 && options.mode == OutsideMode::error)
    {
        throw TargetOutside(text(result.outsideNodes, " of ", result.loadedNodes, " nodes with loads '", loads.name(),
                                 "' are outside the target, with ", numbersText(result.outside.sum), " in sum"));
    }
    result.atTarget = map.applyTransposed(Field(loads.name(), Location::nodes, componentCount, loaded.values)).atSource;
    result.target = loadSumsOf(result.atTarget, target, about);
    return result;
}

} // namespace veltrane
