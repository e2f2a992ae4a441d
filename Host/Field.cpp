#include "Field.h"

#include "Errors.h"
#include "Text.h"

#include <utility>

namespace veltrane
{

Field::Field(std::string name, Location location, int componentCount, FieldValues values)
    : name_(std::move(name)), location_(location), componentCount_(componentCount), values_(std::move(values))
{
    if (name_.empty())
    {
        throw InvalidData("a field has no name");
    }
    if (location_ != Location::nodes && location_ != Location::gaussPoints)
    {
        throw InvalidData(text("field '", name_, "' has the unknown location code ", static_cast<int>(location_)));
    }
    if (componentCount_ < 1 || componentCount_ > maxComponentCount)
    {
        throw InvalidData(text("field '", name_, "' has ", componentCount_, " components; 1 to ", maxComponentCount,
                               " can be transferred"));
    }
    if (valueCount() % static_cast<std::size_t>(componentCount_) != 0)
    {
        throw InvalidData(text("field '", name_, "' has ", valueCount(), " values, which do not make whole rows of ",
                               componentCount_, " components"));
    }
}

std::size_t Field::valueCount() const
{
    return std::visit([](const auto& values) { return values.size(); }, values_);
}

} // namespace veltrane
