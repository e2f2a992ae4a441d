/// What is asked of an XML file by a reader that takes files of one usual shape only.
#ifndef VELTRANE_HOST_USUAL_XML_H
#define VELTRANE_HOST_USUAL_XML_H

#include "XmlText.h"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace veltrane
{

/// Thrown for whatever is left to VTK's reader.
struct NotUsual
{
};

inline void require(bool condition)
{
    if (!condition)
    {
        throw NotUsual();
    }
}

/// All of these throw NotUsual. Numbers are whole, from 0 on.
std::uint64_t numberOf(const std::string& digits);
std::uint64_t numberOf(const XmlElement& element, std::string_view attribute);

/// A number of points, cells or the like, which fits into an int.
std::uint64_t countOf(const XmlElement& element, std::string_view attribute);

/// Attributes of other names may mean anything.
void requireOnly(const XmlElement& element, std::initializer_list<std::string_view> names);

const XmlElement& onlyChild(const XmlElement& element, std::string_view name);

} // namespace veltrane

#endif
