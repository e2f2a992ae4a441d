/// The plain part of XML that VTK's own writers use.
#ifndef VELTRANE_HOST_XML_TEXT_H
#define VELTRANE_HOST_XML_TEXT_H

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace veltrane
{

struct XmlElement
{
    std::string name{};
    std::vector<std::pair<std::string, std::string>> attributes{};
    std::vector<XmlElement> children{};
    std::string_view text{}; ///< from its tag to the next one, of the parsed text

    /// Null if there is no such attribute.
    const std::string* attribute(std::string_view attributeName) const;
};

/// The one element that the text consists of. Nothing if the text is not well-formed, or has what VTK does not write:
/// document types, sections of raw characters, characters by numbers beyond ASCII, text behind an element's children,
/// elements nested more than 16 deep.
std::optional<XmlElement> parseXml(std::string_view text);

} // namespace veltrane

#endif
