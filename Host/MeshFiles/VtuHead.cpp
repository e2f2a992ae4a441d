#include "VtuHead.h"

#include "UsualXml.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace veltrane
{
namespace
{

/// What VTK's readers do not look for: the end of a file with appended arrays.
void requireEnd(const ReadFile& file)
{
    constexpr std::uint64_t mostSize = 256; // of the closing tags with all blanks around them
    std::string tail(static_cast<std::size_t>(std::min(mostSize, file.size())), ' ');
    require(file.read(file.size() - tail.size(), std::as_writable_bytes(std::span(tail))));
    const std::size_t tag = tail.rfind("</AppendedData>");
    require(tag != std::string::npos && tail.find("</VTKFile>", tag) != std::string::npos);
}

constexpr std::string_view appendedTag = "<AppendedData";

} // namespace

VtuHead readVtuHead(const ReadFile& file)
{
    constexpr std::uint64_t firstSize = std::uint64_t{1} << 16;
    VtuHead head;
    std::size_t tag = std::string::npos;
    for (std::uint64_t size = std::min(firstSize, file.size());; size = std::min(2 * size, file.size()))
    {
        const std::size_t before = head.text.size();
        head.text.resize(static_cast<std::size_t>(size));
        require(file.read(before, std::as_writable_bytes(std::span(head.text)).subspan(before)));
        tag = head.text.find(appendedTag, before - std::min(before, appendedTag.size()));
        constexpr std::size_t tagRoom = 200; // for its end and for what stands in front of the arrays
        if (size == file.size() || (tag != std::string::npos && tag + tagRoom < size))
        {
            break;
        }
    }
    if (tag == std::string::npos)
    {
        return head;
    }
    const std::size_t tagEnd = head.text.find('>', tag);
    require(tagEnd != std::string::npos);
    const std::size_t mark = head.text.find_first_not_of(" \t\r\n", tagEnd + 1);
    require(mark != std::string::npos && head.text[mark] == '_');
    const auto element = parseXml(head.text.substr(tag, tagEnd - tag) + "/>");
    require(element && element->attribute("encoding") != nullptr && element->attributes.size() == 1);
    const std::string& encoding = *element->attribute("encoding");
    require(encoding == "raw" || encoding == "base64");
    requireEnd(file);
    head.appended = StoredBytes{.file = &file, .place = mark + 1, .isBase64 = encoding == "base64"};
    head.text.resize(tag);
    head.text += "</VTKFile>";
    return head;
}

} // namespace veltrane
