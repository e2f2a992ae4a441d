#include "LegacyScanner.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <limits>
#include <string_view>
#include <utility>

namespace veltrane
{
namespace
{

constexpr int endOfFile = std::char_traits<char>::eof();

constexpr std::array<std::pair<std::string_view, long long>, 14> byteCounts{{
    {"char", 1},
    {"signed_char", 1},
    {"unsigned_char", 1},
    {"short", 2},
    {"unsigned_short", 2},
    {"vtkidtype", 4}, // of whatever size in memory
    {"int", 4},
    {"unsigned_int", 4},
    {"float", 4},
    {"long", sizeof(long)},
    {"unsigned_long", sizeof(long)},
    {"vtktypeint64", 8},
    {"vtktypeuint64", 8},
    {"double", 8},
}};

long long byteCountOf(const std::string& type)
{
    const auto* found = std::ranges::find(byteCounts, type, &std::pair<std::string_view, long long>::first);
    return found == byteCounts.end() ? throw LegacyScanner::Lost() : found->second;
}

std::string inSmallLetters(std::string word)
{
    std::ranges::transform(word, word.begin(),
                           [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return word;
}

} // namespace

LegacyScanner::LegacyScanner(const std::filesystem::path& path)
    : in_(path, std::ios::binary), size_(static_cast<std::streamoff>(std::filesystem::file_size(path)))
{
    std::string header;
    std::string title;
    std::string encoding;
    if (!std::getline(in_, header) || !std::getline(in_, title) || !std::getline(in_, encoding) ||
        std::sscanf(header.c_str(), "# vtk DataFile Version %d", &version_) != 1)
    {
        throw Lost();
    }
    isBinary_ = inSmallLetters(encoding).starts_with("binary");
}

bool LegacyScanner::isAtEnd()
{
    return in_.eof() || in_.rdbuf()->sgetc() == endOfFile;
}

std::string LegacyScanner::word()
{
    std::string word;
    in_ >> word;
    return word;
}

std::string LegacyScanner::keyword()
{
    return inSmallLetters(word());
}

long long LegacyScanner::integer()
{
    long long value = 0;
    return in_ >> value ? value : throw Lost();
}

long long LegacyScanner::count()
{
    const long long count = integer();
    return count >= 0 ? count : throw Lost();
}

void LegacyScanner::beginSection()
{
    if (isBinary_)
    {
        skipLine();
    }
}

/// Of large sections, thus letter by letter.
long long LegacyScanner::integer(int byteCount)
{
    std::streambuf& letters = *in_.rdbuf();
    if (!isBinary_)
    {
        return textInteger();
    }
    long long value = 0;
    for (int i = 0; i < byteCount; ++i)
    {
        const int byte = letters.sbumpc();
        if (byte == endOfFile)
        {
            throw Lost();
        }
        value = i == 0 && byte >= 128 ? byte - 256 : value * 256 + byte;
    }
    return value;
}

long long LegacyScanner::textInteger()
{
    std::streambuf& letters = *in_.rdbuf();
    int letter = letters.sgetc();
    while (letter != endOfFile && std::isspace(letter) != 0)
    {
        letter = letters.snextc();
    }
    const bool isNegative = letter == '-';
    letter = isNegative ? letters.snextc() : letter;
    long long value = 0;
    int digitCount = 0;
    constexpr int mostDigits = 18;
    for (; letter != endOfFile && std::isdigit(letter) != 0; letter = letters.snextc())
    {
        value = 10 * value + (letter - '0');
        if (++digitCount > mostDigits)
        {
            throw Lost();
        }
    }
    return digitCount == 0 ? throw Lost() : isNegative ? -value : value;
}

void LegacyScanner::array(long long tupleCount, long long componentCount)
{
    arrayOf(keyword(), tupleCount, componentCount);
}

void LegacyScanner::arrayOf(const std::string& type, long long tupleCount, long long componentCount)
{
    if (componentCount > 0 && tupleCount > std::numeric_limits<long long>::max() / 8 / componentCount)
    {
        throw Lost();
    }
    const long long valueCount = tupleCount * componentCount;
    if (valueCount > 0)
    {
        skipValues(type, valueCount);
    }
    skipMetadata(componentCount);
}

/// The end of the file is a place like others.
std::streamoff LegacyScanner::position()
{
    if (in_.eof() && !in_.fail())
    {
        in_.clear();
    }
    const std::streamoff place = in_.tellg();
    return place >= 0 ? place : throw Lost();
}

void LegacyScanner::skipLine()
{
    in_.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
}

void LegacyScanner::skipWords(long long wordCount)
{
    for (; wordCount > 0; --wordCount)
    {
        if (word().empty())
        {
            throw Lost();
        }
    }
}

/// The reader takes neither infinite values nor such that are not a number.
void LegacyScanner::skipNumbers(long long valueCount)
{
    std::streambuf& letters = *in_.rdbuf();
    int letter = letters.sgetc();
    for (; valueCount > 0; --valueCount)
    {
        while (letter != endOfFile && std::isspace(letter) != 0)
        {
            letter = letters.snextc();
        }
        if (letter == '-' || letter == '+')
        {
            letter = letters.snextc();
        }
        if (letter == endOfFile || (std::isdigit(letter) == 0 && letter != '.'))
        {
            throw MissingValues();
        }
        while (letter != endOfFile && std::isspace(letter) == 0)
        {
            letter = letters.snextc();
        }
    }
}

void LegacyScanner::skipBytes(long long byteCount)
{
    if (byteCount > size_ - position())
    {
        throw MissingValues();
    }
    in_.seekg(byteCount, std::ios::cur);
}

/// Lines, or binary with their lengths before them: the two highest bits of the first byte tell how many bytes a length
/// has.
void LegacyScanner::skipStrings(long long stringCount)
{
    skipLine();
    for (long long i = 0; i < stringCount; ++i)
    {
        if (in_.peek() == endOfFile)
        {
            throw MissingValues();
        }
        if (!isBinary_)
        {
            skipLine();
            continue;
        }
        const int first = in_.get();
        constexpr std::array<int, 4> furtherBytes{7, 3, 1, 0};
        long long length = first & 63;
        for (int left = furtherBytes[static_cast<std::size_t>(first >> 6)]; left > 0; --left)
        {
            length = length * 256 + (in_.get() & 255);
        }
        skipBytes(length);
    }
}

void LegacyScanner::skipValues(const std::string& type, long long valueCount)
{
    if (type == "string" || type == "utf8_string")
    {
        skipStrings(valueCount);
    }
    else if (type == "variant")
    {
        skipWords(2 * valueCount); // a number for the type, and the value
    }
    else if (!isBinary_)
    {
        skipNumbers(valueCount);
    }
    else
    {
        skipLine();
        skipBytes(type == "bit" ? (valueCount + 7) / 8 : valueCount * byteCountOf(type));
    }
}

/// Names of the components and the like, if there are such; an empty line ends them.
void LegacyScanner::skipMetadata(long long componentCount)
{
    const std::streamoff place = position();
    if (keyword() != "metadata")
    {
        in_.clear(); // the file may end here
        in_.seekg(place);
        return;
    }
    skipLine();
    for (std::string line; std::getline(in_, line) && line.find_first_not_of(" \r") != std::string::npos;)
    {
        if (inSmallLetters(line).starts_with("component_names"))
        {
            for (long long i = 0; i < componentCount; ++i)
            {
                skipLine(); // empty if it has no name
            }
        }
    }
}

} // namespace veltrane
