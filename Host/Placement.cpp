#include "Placement.h"

#include <cmath>
#include <cstddef>
#include <numbers>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

namespace veltrane
{
namespace
{

/// Where the components of a symmetric tensor stand in its matrix.
constexpr std::array<std::pair<std::size_t, std::size_t>, 6> symmetricPlaces{
    {{0, 0}, {1, 1}, {2, 2}, {0, 1}, {1, 2}, {0, 2}}};

Rotation transposed(const Rotation& matrix)
{
    Rotation result{};
    for (std::size_t row = 0; row < 3; ++row)
    {
        for (std::size_t column = 0; column < 3; ++column)
        {
            result[column][row] = matrix[row][column];
        }
    }
    return result;
}

Point3 product(const Rotation& rotation, const Point3& vector)
{
    Point3 result{};
    for (std::size_t row = 0; row < 3; ++row)
    {
        for (std::size_t column = 0; column < 3; ++column)
        {
            result[row] += rotation[row][column] * vector[column];
        }
    }
    return result;
}

/// Turns the components of one location, in place.
template <typename Value> void turn(std::span<Value> components, const Rotation& rotation)
{
    if (components.size() == 3)
    {
        const Point3 result = product(rotation, {components[0], components[1], components[2]});
        for (std::size_t i = 0; i < 3; ++i)
        {
            components[i] = static_cast<Value>(result[i]);
        }
        return;
    }
    const bool isSymmetric = components.size() == symmetricPlaces.size();
    Rotation tensor{};
    for (std::size_t i = 0; i < components.size(); ++i)
    {
        const auto [row, column] = isSymmetric ? symmetricPlaces[i] : std::pair(i / 3, i % 3);
        tensor[row][column] = components[i];
        if (isSymmetric)
        {
            tensor[column][row] = components[i];
        }
    }
    const Rotation result = rotation * tensor * transposed(rotation);
    for (std::size_t i = 0; i < components.size(); ++i)
    {
        const auto [row, column] = isSymmetric ? symmetricPlaces[i] : std::pair(i / 3, i % 3);
        components[i] = static_cast<Value>(result[row][column]);
    }
}

} // namespace

Rotation rotationAbout(int axis, double degrees)
{
    const double quarters = degrees / 90;
    const bool isExact = quarters == std::floor(quarters);
    const auto quarter = static_cast<int>(isExact ? std::fmod(std::fmod(quarters, 4) + 4, 4) : 0);
    constexpr std::array<double, 4> cosines{1, 0, -1, 0};
    constexpr std::array<double, 4> sines{0, 1, 0, -1};
    const double angle = degrees * std::numbers::pi / 180;
    const double cosine = isExact ? cosines[static_cast<std::size_t>(quarter)] : std::cos(angle);
    const double sine = isExact ? sines[static_cast<std::size_t>(quarter)] : std::sin(angle);
    const auto along = static_cast<std::size_t>(axis);
    const std::size_t first = (along + 1) % 3;
    const std::size_t second = (along + 2) % 3;
    Rotation rotation{};
    rotation[along][along] = 1;
    rotation[first][first] = cosine;
    rotation[second][second] = cosine;
    rotation[second][first] = sine;
    rotation[first][second] = -sine;
    return rotation;
}

Rotation operator*(const Rotation& first, const Rotation& second)
{
    Rotation result{};
    for (std::size_t row = 0; row < 3; ++row)
    {
        for (std::size_t column = 0; column < 3; ++column)
        {
            for (std::size_t i = 0; i < 3; ++i)
            {
                result[row][column] += first[row][i] * second[i][column];
            }
        }
    }
    return result;
}

bool Placement::isIdentity() const
{
    const Placement identity;
    return scale == identity.scale && rotation == identity.rotation && translation == identity.translation;
}

Point3 Placement::operator()(const Point3& position) const
{
    Point3 result = product(rotation, {scale * position[0], scale * position[1], scale * position[2]});
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        result[axis] += translation[axis];
    }
    return result;
}

Field turned(const Field& field, const Rotation& rotation)
{
    const auto componentCount = static_cast<std::size_t>(field.componentCount());
    if (componentCount != 3 && componentCount != 6 && componentCount != 9)
    {
        return field;
    }
    FieldValues values = field.values();
    std::visit(
        [&](auto& numbers)
        {
            using Value = typename std::remove_reference_t<decltype(numbers)>::value_type;
            const std::span<Value> all(numbers);
            for (std::size_t first = 0; first < all.size(); first += componentCount)
            {
                turn(all.subspan(first, componentCount), rotation);
            }
        },
        values);
    return Field(field.name(), field.location(), field.componentCount(), std::move(values));
}

} // namespace veltrane
