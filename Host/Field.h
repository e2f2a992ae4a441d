/// Owning fields.
#ifndef VELTRANE_HOST_FIELD_H
#define VELTRANE_HOST_FIELD_H

#include <cstddef>
#include <string>
#include <variant>
#include <vector>

namespace veltrane
{

/// Where the values of a field are; the value is the library's location code.
enum class Location : int
{
    nodes = 1,
    gaussPoints = 2
};

/// Single- or double-precision values, location by location, component by component.
using FieldValues = std::variant<std::vector<float>, std::vector<double>>;

/// Most components per location that the library takes.
inline constexpr int maxComponentCount = 9;

/// A source value at or below this bound is undefined; so is every value interpolated from it.
inline constexpr float undefinedBound = -88880002891776.0F;

/// What an interpolated value is when one of the source values that it depends on is undefined.
inline constexpr float undefinedValue = -99990001156096.0F;

/// Named values at the nodes or at the Gauss points of a mesh, or at points. Gauss points run over the elements in
/// order, and over each element's points in the order of its kind.
class Field
{
public:
    /// Throws InvalidData if the name is empty, the number of components is not 1 to 9, or the values do not make whole
    /// locations.
    Field(std::string name, Location location, int componentCount, FieldValues values);

    const std::string& name() const { return name_; }
    Location location() const { return location_; }
    int componentCount() const { return componentCount_; }
    const FieldValues& values() const { return values_; }
    std::size_t valueCount() const;
    std::size_t locationCount() const { return valueCount() / static_cast<std::size_t>(componentCount_); }
    bool isSinglePrecision() const { return std::holds_alternative<std::vector<float>>(values_); }

private:
    std::string name_;
    Location location_;
    int componentCount_;
    FieldValues values_;
};

} // namespace veltrane

#endif
