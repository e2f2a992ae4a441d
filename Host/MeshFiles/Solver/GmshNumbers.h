/// The numbers and words of a file of Gmsh one after the other, whether they are text or binary.
#ifndef VELTRANE_HOST_GMSH_NUMBERS_H
#define VELTRANE_HOST_GMSH_NUMBERS_H

#include "NumberText.h"
#include "SourceText.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string_view>

namespace veltrane
{

class GmshNumbers
{
public:
    explicit GmshNumbers(const SourceText& source) : source_(source), at_(source.begin()) {}

    bool isBinary() const { return isBinary_; }
    void setBinary() { isBinary_ = true; }

    /// A whole number of 4 bytes.
    long long integer(std::string_view what) { return isBinary_ ? bytes<std::int32_t>(what) : integerOfText(what); }

    /// One that has 8 bytes where binary.
    long long size(std::string_view what) { return isBinary_ ? bytes<std::int64_t>(what) : integerOfText(what); }

    double real(std::string_view what) { return isBinary_ ? bytes<double>(what) : realOfText(what); }

    /// A whole number that is text even among binary ones.
    long long integerOfText(std::string_view what)
    {
        skipBlanks();
        long long value = 0;
        const char* begin = at_;
        if (!takeInteger(at_, source_.end(), value) || !isSeparated())
        {
            at_ = begin;
            failWithWord(what);
        }
        return value;
    }

    double realOfText(std::string_view what)
    {
        skipBlanks();
        double value = 0;
        const char* begin = at_;
        if (!takeReal(at_, source_.end(), value) || !isSeparated())
        {
            at_ = begin;
            failWithWord(what);
        }
        return value;
    }

    /// A number of things, each of which takes so many numbers or more.
    ///
    /// \param isSize  whether it has 8 bytes where binary
    std::size_t count(std::string_view things, bool isSize, std::size_t numbersEach = 1)
    {
        const char* place = at_;
        const long long value = isSize ? size(things) : integer(things);
        return checkedCount(value, place, things, numbersEach);
    }

    std::size_t countOfText(std::string_view things, std::size_t numbersEach = 1)
    {
        const char* place = at_;
        return checkedCount(integerOfText(things), place, things, numbersEach);
    }

    /// A whole number that fits into an int.
    int tag(std::string_view what)
    {
        const char* place = at_;
        const long long value = integer(what);
        if (value < -std::numeric_limits<int>::max() || value > std::numeric_limits<int>::max())
        {
            fail(place, "has the number ", value, " for ", what, ", which is too large");
        }
        return static_cast<int>(value);
    }

    /// The words of a line, which the place is in or before.
    std::string_view word()
    {
        skipBlanks();
        const char* begin = at_;
        while (at_ != source_.end() && !isBlank(*at_))
        {
            ++at_;
        }
        return {begin, static_cast<std::size_t>(at_ - begin)};
    }

    /// A text in quotation marks, or else a word.
    std::string_view quotedText()
    {
        skipBlanks();
        if (at_ == source_.end() || *at_ != '"')
        {
            return word();
        }
        const char* begin = at_ + 1;
        const char* end = std::find(begin, source_.end(), '"');
        if (end == source_.end())
        {
            fail(at_, "begins a text without the quotation mark behind it");
        }
        at_ = end + 1;
        return {begin, static_cast<std::size_t>(end - begin)};
    }

    void skipLine()
    {
        at_ = std::find(at_, source_.end(), '\n');
        at_ += at_ == source_.end() ? 0 : 1;
    }

    void skipBlanks()
    {
        while (at_ != source_.end() && isBlank(*at_))
        {
            ++at_;
        }
    }

    /// Goes on behind a text that must come, wherever it is.
    void skipBehind(const std::string& wanted, std::string_view sectionName)
    {
        const std::size_t found = source_.bytes().find(wanted, static_cast<std::size_t>(at_ - source_.begin()));
        if (found == std::string_view::npos)
        {
            source_.fail(text("it ends within the section '", sectionName, "', without '", wanted, "'"));
        }
        at_ = source_.begin() + found + wanted.size();
    }

    bool atEnd() const { return at_ == source_.end(); }
    const char* place() const { return at_; }
    void goTo(const char* place) { at_ = place; }
    const SourceText& source() const { return source_; }

    /// Throws BadFile with the line, or the byte of a binary file.
    template <typename... Parts> [[noreturn]] void fail(const char* place, const Parts&... parts) const
    {
        if (isBinary_)
        {
            source_.failAtByte(place, parts...);
        }
        while (place != source_.end() && isBlank(*place))
        {
            ++place;
        }
        source_.failAtLine(place, parts...);
    }

private:
    bool isSeparated() const { return at_ == source_.end() || isBlank(*at_); }

    template <typename Number> Number bytes(std::string_view what)
    {
        Number value{};
        if (static_cast<std::size_t>(source_.end() - at_) < sizeof value)
        {
            source_.fail(text("it ends at byte ", source_.bytes().size(), ", where ", what, " should be"));
        }
        std::memcpy(&value, at_, sizeof value);
        at_ += sizeof value;
        return value;
    }

    std::size_t checkedCount(long long value, const char* place, std::string_view things, std::size_t numbersEach) const
    {
        const std::size_t bytesPerNumber = isBinary_ ? 4 : 2;
        const auto rest = static_cast<unsigned long long>(source_.end() - at_) + 1;
        if (value < 0 || static_cast<unsigned long long>(value) > rest / (bytesPerNumber * numbersEach))
        {
            fail(place, "tells of ", value, " as ", things, ", more than the file has room for");
        }
        return static_cast<std::size_t>(value);
    }

    [[noreturn]] void failWithWord(std::string_view what)
    {
        skipBlanks();
        if (atEnd())
        {
            source_.fail(text("it ends where ", what, " should be"));
        }
        const char* place = at_;
        source_.failAtLine(place, "has ", shown(word()), " where ", what, " should be");
    }

    const SourceText& source_;
    const char* at_;
    bool isBinary_ = false;
};

} // namespace veltrane

#endif
