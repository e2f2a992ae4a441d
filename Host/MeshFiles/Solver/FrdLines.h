/// The lines and the binary numbers of CalculiX's result files one after the other.
#ifndef VELTRANE_HOST_FRD_LINES_H
#define VELTRANE_HOST_FRD_LINES_H

#include "NumberText.h"
#include "SourceText.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace veltrane
{

static_assert(std::endian::native == std::endian::little, "blocks of binary numbers have the lowest byte first");

/// Of the numbers in a block.
enum class FrdStorage
{
    shortText = 0, ///< numbers of nodes and elements in 5 columns
    longText = 1,  ///< in 10 columns
    floats = 2,
    doubles = 3
};

class FrdLines
{
public:
    static constexpr std::size_t keyWidth = 3; ///< of " -1" in front of a line of values
    static constexpr std::size_t realWidth = 12;

    explicit FrdLines(const SourceText& source) : source_(source), at_(source.begin()) {}

    static bool isText(FrdStorage storage)
    {
        return storage == FrdStorage::shortText || storage == FrdStorage::longText;
    }
    static std::size_t numberWidth(FrdStorage storage) { return storage == FrdStorage::shortText ? 5 : 10; }
    static std::size_t realSize(FrdStorage storage) { return storage == FrdStorage::floats ? 4 : 8; }

    const SourceText& source() const { return source_; }
    bool atEnd() const { return at_ == source_.end(); }
    const char* place() const { return at_; }
    void goTo(const char* place) { at_ = place; }

    /// The line that begins here, without its end.
    std::string_view peek() const
    {
        const auto rest = static_cast<std::size_t>(source_.end() - at_);
        const auto* end = static_cast<const char*>(std::memchr(at_, '\n', rest));
        std::size_t length = end == nullptr ? rest : static_cast<std::size_t>(end - at_);
        if (length > 0 && at_[length - 1] == '\r')
        {
            --length;
        }
        return {at_, length};
    }

    void skip(std::string_view line)
    {
        at_ = line.data() + line.size();
        at_ += at_ != source_.end() && *at_ == '\r' ? 1 : 0;
        at_ += at_ != source_.end() ? 1 : 0;
    }

    /// Goes behind the line that ends a block of text.
    void skipBlock(std::string_view what)
    {
        const auto begin = static_cast<std::size_t>(at_ - source_.begin());
        // The end may come at once, behind the line break before it.
        const std::size_t end = source_.bytes().find("\n -3", begin > 0 ? begin - 1 : 0);
        if (end == std::string_view::npos)
        {
            source_.fail(text("it ends within the ", what));
        }
        at_ = source_.begin() + end + 1;
        skip(peek());
    }

    static std::string_view columns(std::string_view line, std::size_t begin, std::size_t width)
    {
        return begin < line.size() ? line.substr(begin, width) : std::string_view();
    }

    long long integerAt(std::string_view line, std::size_t begin, std::size_t width, std::string_view what) const
    {
        const std::string_view piece = columns(line, begin, width);
        const char* at = firstLetter(piece);
        const char* end = piece.data() + piece.size();
        long long value = 0;
        if (!takeInteger(at, end, value) || (at != end && !trimmed({at, end}).empty()))
        {
            failWithPiece(line, piece, what);
        }
        return value;
    }

    double realAt(std::string_view line, std::size_t begin, std::string_view what) const
    {
        const std::string_view piece = columns(line, begin, realWidth);
        const char* at = firstLetter(piece);
        const char* end = piece.data() + piece.size();
        double value = 0;
        if (!takeReal(at, end, value) || (at != end && !trimmed({at, end}).empty()))
        {
            failWithPiece(line, piece, what);
        }
        return value;
    }

    struct Heading
    {
        long long count;
        FrdStorage storage;
    };

    /// How many rows a block has, which must have room in the rest of the file.
    Heading headingOf(std::string_view line, std::string_view what) const
    {
        const long long count = integerAt(line, 24, 12, text("the number of ", what));
        const long long storage = integerAt(line, 73, 2, "the format of a block");
        if (storage < 0 || storage > 3)
        {
            source_.failAtLine(line.data(), "tells of a format ", storage, ", but there are the formats 0 to 3");
        }
        constexpr std::ptrdiff_t fewestBytes = 8; // of a row
        if (count < 0 || count > (source_.end() - at_) / fewestBytes)
        {
            source_.failAtLine(line.data(), "tells of ", count, " ", what, ", more than the file has room for");
        }
        return {count, static_cast<FrdStorage>(storage)};
    }

    /// Whether a line of a block follows, and not its end, which is passed over.
    bool takesRow(std::string_view line, std::string_view what)
    {
        if (line.starts_with(" -1"))
        {
            return true;
        }
        if (line.starts_with(" -3"))
        {
            skip(line);
            return false;
        }
        if (atEnd())
        {
            source_.fail(text("it ends within the ", what));
        }
        source_.failAtLine(at_, "begins with ", shown(columns(line, 0, keyWidth)), " among the ", what);
    }

    void checkCount(long long found, long long announced, const char* heading, std::string_view what) const
    {
        if (found != announced)
        {
            source_.failAtLine(heading, "tells of ", announced, " ", what, ", but ", found, " follow");
        }
    }

    /// That a block of binary rows is whole.
    void checkBytes(long long count, std::size_t each, std::string_view what) const
    {
        const auto rest = static_cast<unsigned long long>(source_.end() - at_);
        if (static_cast<unsigned long long>(count) > rest / each)
        {
            source_.failAtByte(at_, "begins ", count, " ", what, ", but the file ends before them");
        }
    }

    /// A number of a binary block, whose bytes have been checked.
    template <typename Number> Number takeBinary()
    {
        Number value{};
        std::memcpy(&value, at_, sizeof value);
        at_ += sizeof value;
        return value;
    }

    double takeBinaryReal(FrdStorage storage)
    {
        return storage == FrdStorage::floats ? static_cast<double>(takeBinary<float>()) : takeBinary<double>();
    }

private:
    static const char* firstLetter(std::string_view piece)
    {
        const char* at = piece.data();
        const char* end = at + piece.size();
        while (at != end && *at == ' ')
        {
            ++at;
        }
        return at;
    }

    [[noreturn]] void failWithPiece(std::string_view line, std::string_view piece, std::string_view what) const
    {
        source_.failAtLine(line.data(), "has ", shown(piece), " where ", what, " should be");
    }

    const SourceText& source_;
    const char* at_;
};

} // namespace veltrane

#endif
