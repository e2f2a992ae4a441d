#include "AppendedData.h"

#include "DataSetReader.h"
#include "Text.h"

#include <vtkNew.h>
#include <vtkXMLDataElement.h>
#include <vtkXMLDataParser.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace veltrane
{
namespace
{

using Bytes = std::vector<unsigned char>;

bool hasValue(vtkXMLDataElement& element, const char* attribute, std::string_view value)
{
    const char* found = element.GetAttribute(attribute);
    return found != nullptr && found == value;
}

/// Where the section ends, at its closing tag; nothing if it or the file's closing tag is missing.
std::optional<std::uint64_t> findEnd(std::ifstream& file)
{
    constexpr std::uint64_t tailSize = 65536; // spaces and comments may follow
    file.seekg(0, std::ios::end);
    const auto size = static_cast<std::uint64_t>(file.tellg());
    std::string tail(static_cast<std::size_t>(std::min(size, tailSize)), '\0');
    file.seekg(static_cast<std::streamoff>(size - tail.size()));
    file.read(tail.data(), static_cast<std::streamsize>(tail.size()));
    const std::size_t fileTag = tail.rfind("</VTKFile");
    const std::size_t sectionTag = tail.rfind("</AppendedData", fileTag);
    if (fileTag == std::string::npos || sectionTag == std::string::npos || tail.find('>', fileTag) == std::string::npos)
    {
        return std::nullopt;
    }
    return size - tail.size() + sectionTag;
}

Bytes decodeBase64(std::string_view text)
{
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    Bytes bytes;
    std::uint32_t bits = 0;
    int bitCount = 0;
    for (const char letter : text)
    {
        const std::size_t digit = digits.find(letter);
        if (digit == std::string_view::npos)
        {
            break;
        }
        bits = bits << 6 | static_cast<std::uint32_t>(digit);
        bitCount += 6;
        if (bitCount >= 8)
        {
            bitCount -= 8;
            bytes.push_back(static_cast<unsigned char>(bits >> bitCount & 255));
        }
    }
    return bytes;
}

/// The section between the underscore and the closing tag.
class AppendedSection
{
public:
    AppendedSection(vtkXMLDataElement& root, std::ifstream& file, std::uint64_t begin, std::uint64_t end, bool isRaw)
        : file_(file), begin_(begin), end_(end), isRaw_(isRaw),
          isCompressed_(root.GetAttribute("compressor") != nullptr),
          isBigEndian_(hasValue(root, "byte_order", "BigEndian")),
          wordSize_(hasValue(root, "header_type", "UInt64") ? 8 : 4)
    {
    }

    /// Whether an array whose data begin at this offset has all that its header tells of.
    bool holds(std::uint64_t offset) const
    {
        if (offset > end_ - begin_)
        {
            return false;
        }
        const std::uint64_t room = end_ - begin_ - offset;
        const auto first = words(offset, 1, room);
        if (!first)
        {
            return false;
        }
        const std::uint64_t count = first->front();
        if (!isCompressed_)
        {
            return count <= room && sizeOf(wordSize_ + count) <= room;
        }
        return count == 0 || (count <= room / wordSize_ && holdsBlocks(offset, count, room));
    }

private:
    /// Behind the number of blocks come the size of a block, that of the last one, and the compressed sizes.
    bool holdsBlocks(std::uint64_t offset, std::uint64_t blockCount, std::uint64_t room) const
    {
        const auto header = words(offset, 3 + blockCount, room);
        if (!header)
        {
            return false;
        }
        std::uint64_t size = 0;
        for (std::size_t block = 3; block < header->size(); ++block)
        {
            if ((*header)[block] > room)
            {
                return false;
            }
            size += (*header)[block];
        }
        return size <= room && sizeOf(header->size() * wordSize_) + sizeOf(size) <= room;
    }

    /// Of so many bytes in the file.
    std::uint64_t sizeOf(std::uint64_t byteCount) const { return isRaw_ ? byteCount : (byteCount + 2) / 3 * 4; }

    std::optional<std::vector<std::uint64_t>> words(std::uint64_t offset, std::uint64_t count, std::uint64_t room) const
    {
        const std::uint64_t size = sizeOf(count * wordSize_);
        if (size > room)
        {
            return std::nullopt;
        }
        std::string text(static_cast<std::size_t>(size), '\0');
        file_.seekg(static_cast<std::streamoff>(begin_ + offset));
        file_.read(text.data(), static_cast<std::streamsize>(text.size()));
        const Bytes bytes = isRaw_ ? Bytes(text.begin(), text.end()) : decodeBase64(text);
        if (bytes.size() < count * wordSize_)
        {
            return std::nullopt;
        }
        std::vector<std::uint64_t> result;
        for (std::size_t word = 0; word < count; ++word)
        {
            std::uint64_t number = 0;
            for (std::size_t i = 0; i < wordSize_; ++i)
            {
                const std::size_t place = isBigEndian_ ? i : wordSize_ - 1 - i;
                number = number << 8 | bytes[word * wordSize_ + place];
            }
            result.push_back(number);
        }
        return result;
    }

    std::ifstream& file_;
    std::uint64_t begin_;
    std::uint64_t end_;
    bool isRaw_;
    bool isCompressed_;
    bool isBigEndian_;
    std::size_t wordSize_;
};

void checkArrays(vtkXMLDataElement& element, const AppendedSection& section, const std::filesystem::path& path)
{
    for (int i = 0; i < element.GetNumberOfNestedElements(); ++i)
    {
        vtkXMLDataElement& child = *element.GetNestedElement(i);
        double offset = 0;
        if (hasValue(child, "format", "appended") && child.GetScalarAttribute("offset", offset) != 0 &&
            !(offset >= 0 && section.holds(static_cast<std::uint64_t>(offset))))
        {
            const char* name = child.GetAttribute("Name");
            throw BadFile(text("cannot read ", quoted(path), ": it does not have all the values of ",
                               name == nullptr ? "an array" : text("array '", name, "'"), " that it tells of"));
        }
        checkArrays(child, section, path);
    }
}

} // namespace

void checkAppendedData(vtkXMLDataParser& parser, const std::filesystem::path& path)
{
    vtkXMLDataElement* root = parser.GetRootElement();
    vtkXMLDataElement* data = root == nullptr ? nullptr : root->FindNestedElementWithName("AppendedData");
    if (data == nullptr || parser.GetAppendedDataPosition() == 0)
    {
        return;
    }
    std::ifstream file(path, std::ios::binary);
    const std::optional<std::uint64_t> end = findEnd(file);
    const auto begin = static_cast<std::uint64_t>(parser.GetAppendedDataPosition());
    if (!end || *end < begin)
    {
        throw BadFile(text("cannot read ", quoted(path), ": it is cut off, its closing tag is missing"));
    }
    checkArrays(*root, AppendedSection(*root, file, begin, *end, hasValue(*data, "encoding", "raw")), path);
}

void checkAppendedData(const std::filesystem::path& path)
{
    const vtkNew<vtkXMLDataParser> parser;
    parser->SetFileName(path.c_str());
    if (parser->Parse() != 0)
    {
        checkAppendedData(*parser, path);
    }
}

} // namespace veltrane
