#include "NastranSystems.h"

#include "NumberText.h"

#include <cmath>
#include <numbers>

namespace veltrane
{
namespace
{

Position difference(const Position& a, const Position& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

Position cross(const Position& a, const Position& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// Of length 1; false if it has none.
bool normalise(Position& a)
{
    const double length = std::hypot(a[0], a[1], a[2]);
    for (double& component : a)
    {
        component /= length;
    }
    return length > 0 && std::isfinite(length);
}

/// From a system's own coordinates, in degrees, to x, y and z along its axes.
Position straight(char shape, const Position& a)
{
    constexpr double degree = std::numbers::pi / 180;
    if (shape == 'C')
    {
        return {a[0] * std::cos(a[1] * degree), a[0] * std::sin(a[1] * degree), a[2]};
    }
    if (shape == 'S')
    {
        const double fromAxis = a[0] * std::sin(a[1] * degree);
        return {fromAxis * std::cos(a[2] * degree), fromAxis * std::sin(a[2] * degree), a[0] * std::cos(a[1] * degree)};
    }
    return a;
}

} // namespace

bool NastranSystems::isDefinition(std::string_view name)
{
    return name.size() == 6 && (name.starts_with("CORD1") || name.starts_with("CORD2")) &&
           std::string_view("RCS").find(name.back()) != std::string_view::npos;
}

void NastranSystems::add(const NastranCard& card, const NastranCards& cards)
{
    const auto integer = [&](std::size_t i, long long& value)
    {
        if (!card.field(i).empty() && !isInteger(card.field(i), value))
        {
            cards.fail(card.place, "has ", shown(card.field(i)), " as a number of a coordinate system");
        }
    };
    Definition definition{.shape = card.name.back(), .byNodes = card.name[4] == '1', .place = card.place};
    long long number = 0;
    if (definition.byNodes)
    {
        // Two systems may stand on one card.
        for (std::size_t first : {std::size_t{0}, std::size_t{4}})
        {
            if (!card.field(first).empty())
            {
                integer(first, number);
                for (std::size_t i = 0; i < 3; ++i)
                {
                    integer(first + 1 + i, definition.nodes[i]);
                }
                definitions_[number] = definition;
            }
        }
        return;
    }
    integer(0, number);
    integer(1, definition.reference);
    for (std::size_t i = 0; i < 9; ++i)
    {
        if (!isNastranReal(card.field(2 + i), definition.points[i / 3][i % 3]))
        {
            cards.fail(card.place, "has ", shown(card.field(2 + i)), " as a coordinate");
        }
    }
    definitions_[number] = definition;
}

Position NastranSystems::basic(const Node& node, const NodeOf& nodeOf, const NastranCards& cards, const char* place)
{
    if (node.system == 0)
    {
        return node.coordinates;
    }
    const System& own = system(node.system, nodeOf, cards, place);
    const Position along = straight(own.shape, node.coordinates);
    Position result = own.origin;
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        for (std::size_t i = 0; i < 3; ++i)
        {
            result[i] += along[axis] * own.axes[axis][i];
        }
    }
    return result;
}

const NastranSystems::System& NastranSystems::system(long long number, const NodeOf& nodeOf, const NastranCards& cards,
                                                     const char* place)
{
    if (const auto known = systems_.find(number); known != systems_.end())
    {
        return known->second;
    }
    const auto found = definitions_.find(number);
    if (found == definitions_.end())
    {
        cards.fail(place, "needs the coordinate system ", number, ", which is not there");
    }
    const Definition& definition = found->second;
    constexpr int deepest = 50;
    if (++depth_ > deepest)
    {
        cards.fail(definition.place, "defines the coordinate system ", number, " by others that need it itself");
    }
    std::array<Position, 3> points{};
    for (std::size_t i = 0; i < 3; ++i)
    {
        const Node* node = definition.byNodes ? nodeOf(definition.nodes[i]) : nullptr;
        if (definition.byNodes && node == nullptr)
        {
            cards.fail(definition.place, "needs the node ", definition.nodes[i], ", which is not there");
        }
        points[i] = basic(node != nullptr ? *node : Node{definition.reference, definition.points[i]}, nodeOf, cards,
                          definition.place);
    }
    --depth_;
    System system{definition.shape, points[0], {}};
    system.axes[2] = difference(points[1], points[0]);
    const bool hasAxis = normalise(system.axes[2]);
    system.axes[1] = cross(system.axes[2], difference(points[2], points[0]));
    if (!hasAxis || !normalise(system.axes[1]))
    {
        cards.fail(definition.place, "defines the coordinate system ", number, " by points on one line");
    }
    system.axes[0] = cross(system.axes[1], system.axes[2]);
    return systems_.emplace(number, system).first->second;
}

} // namespace veltrane
