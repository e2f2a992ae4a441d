#include "UsualXml.h"

#include <algorithm>
#include <charconv>
#include <climits>

namespace veltrane
{

std::uint64_t numberOf(const std::string& digits)
{
    std::uint64_t number = 0;
    const char* end = digits.data() + digits.size();
    const auto [stop, failure] = std::from_chars(digits.data(), end, number);
    require(failure == std::errc() && stop == end);
    return number;
}

std::uint64_t numberOf(const XmlElement& element, std::string_view attribute)
{
    const std::string* digits = element.attribute(attribute);
    require(digits != nullptr);
    return numberOf(*digits);
}

std::uint64_t countOf(const XmlElement& element, std::string_view attribute)
{
    const std::uint64_t count = numberOf(element, attribute);
    require(count <= INT_MAX);
    return count;
}

void requireOnly(const XmlElement& element, std::initializer_list<std::string_view> names)
{
    for (const auto& [name, value] : element.attributes)
    {
        require(std::ranges::find(names, name) != names.end());
    }
}

const XmlElement& onlyChild(const XmlElement& element, std::string_view name)
{
    require(element.children.size() == 1 && element.children.front().name == name);
    return element.children.front();
}

} // namespace veltrane
